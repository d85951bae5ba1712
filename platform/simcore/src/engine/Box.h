#pragma once

#include <array>
#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "engine/Core.h"
#include "engine/Port.h"
#include "engine/TraceQueue.h"

namespace simcore::engine {

class CycleJob;
class LinSchedule;
struct BoxPlan;

enum class BoxType : int32_t { hub4e = 1, usbCan = 2, etas = 3 };

// What a device says about itself.
struct DeviceIdentity {
    BoxType type = BoxType::hub4e;
    std::string name;
    std::string model;
    std::array<uint8_t, 6> mac{};
    std::string serial;
    std::string version;
    std::string buildTime;
    std::string networkCard;
    std::string path;
    std::array<uint8_t, 16> snr{};
    std::array<uint8_t, 11> status{255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
    int32_t comPort = 0;
    std::array<int32_t, kBusKinds> channels{};
};

struct BoxCapacity {
    size_t can = 262144;
    size_t lin = 65536;
    size_t ethernet = 16384;
    size_t flexray = 65536;
};

// One device of the virtual network: identity, channels, trace queues, running jobs. Everything but
// the queues is guarded by the engine's lock.
class Box {
public:
    Box(Core& core, DeviceIdentity identity, const BoxCapacity& capacity);
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;
    ~Box();

    [[nodiscard]] Core& core() { return m_core; }
    [[nodiscard]] const std::string& name() const { return m_name; }  // needs no lock
    [[nodiscard]] const DeviceIdentity& identity() const { return m_identity; }
    void setIdentity(const DeviceIdentity& identity);
    Port& addPort(BusKind kind, Bus& bus);
    [[nodiscard]] Port* port(BusKind kind, int32_t channel);

    // The handle of the session that can be had now; a box gets a new one whenever it comes back.
    [[nodiscard]] int32_t handle() const { return m_handle.load(std::memory_order_acquire); }
    [[nodiscard]] bool present() const { return m_present.load(std::memory_order_acquire); }
    [[nodiscard]] bool isOpen() const { return m_open.load(std::memory_order_acquire); }
    [[nodiscard]] bool linPortUsable() const { return m_linPortUsable; }
    [[nodiscard]] bool tracing() const { return m_tracing; }

    // Before the network runs.
    void setInitial(int32_t handle, const BoxPlan& plan);
    void plug(int32_t newHandle);
    void unplug();

    // Operations of the user; kRvOk or a kRvError code.
    int open();
    int close();
    int startTrace();
    int stopTrace();
    int sync();
    int canConfig(int32_t channel, RvCanChannelConfig& config) const;
    int setCanConfig(int32_t channel, const RvCanChannelConfig& config, bool atOnce);
    int linConfig(int32_t channel, RvLinChannelConfig& config) const;
    int setLinConfig(int32_t channel, const RvLinChannelConfig& config);
    int ethConfig(int32_t channel, RvEthChannelConfig& config) const;
    int setEthConfig(int32_t channel, const RvEthChannelConfig& config);

    int sendCan(RvCanFrame frame);
    int sendLin(RvLinFrame frame);
    int sendEthernet(RvEthFrame frame);
    int sendFlexRay(RvFlexRayFrame frame);

    int startLinSchedule(int32_t channel, std::vector<RvLinSlot> slots);
    int stopLinSchedule(int32_t channel);

    // Cyclic jobs, separate names for CAN and Ethernet.
    using Jobs = std::map<std::string, std::shared_ptr<CycleJob>, std::less<>>;
    [[nodiscard]] Jobs& jobs(BusKind kind) { return kind == BusKind::can ? m_canJobs : m_ethJobs; }
    int addJob(const std::shared_ptr<CycleJob>& job);  // and starts it
    int removeJob(BusKind kind, const std::string& uuid);
    [[nodiscard]] std::shared_ptr<CycleJob> findJob(BusKind kind, const std::string& uuid);

    template <class Frame>
    [[nodiscard]] TraceQueue<Frame>& queue();
    [[nodiscard]] TraceCounters counters() const;

    // Faults and state.
    bool setBusStatus(int32_t channel, int32_t status);
    bool raiseBusTimeout(int32_t channel);
    void setDip(const RvDipStatus& status);
    [[nodiscard]] RvDipStatus dip() const { return m_dip; }
    void setClock(int64_t offsetNs, double driftPpm);
    // A stamp of the bus as this box's clock has it.
    [[nodiscard]] uint64_t boxTime(uint64_t wallNs) const;

private:
    int report(RvConnectionEventType type, int32_t channel = 0, int32_t value = 0);
    // Number of a job among those of its period on this box, from which its phase follows.
    [[nodiscard]] int takePhase(int64_t periodNs);
    void returnPhase(int64_t periodNs, int number);
    void endSession();
    void discardQueues();

    Core& m_core;
    const std::string m_name;
    DeviceIdentity m_identity;
    bool m_linPortUsable = true;
    std::atomic<int32_t> m_handle{0};
    std::atomic<bool> m_present{true};
    std::atomic<bool> m_open{false};
    bool m_tracing = false;
    RvDipStatus m_dip;
    int64_t m_clockOffsetNs = 0;
    double m_clockDrift = 0.0;
    uint64_t m_driftFrom = 0;

    std::array<std::deque<Port>, kBusKinds> m_ports;
    std::vector<RvCanChannelConfig> m_canConfigs;
    std::vector<RvLinChannelConfig> m_linConfigs;
    std::vector<RvEthChannelConfig> m_ethConfigs;
    Jobs m_canJobs;
    Jobs m_ethJobs;
    int64_t m_gridOrigin = 0;                       // start of the first of the jobs
    std::map<int64_t, std::vector<bool>> m_phases;  // by period: numbers in use
    std::map<int32_t, std::shared_ptr<LinSchedule>> m_linSchedules;

    TraceQueue<RvCanFrame> m_canQueue;
    TraceQueue<RvLinFrame> m_linQueue;
    TraceQueue<RvEthFrame> m_ethQueue;
    TraceQueue<RvFlexRayFrame> m_flexrayQueue;
};

template <>
inline TraceQueue<RvCanFrame>& Box::queue<RvCanFrame>() {
    return m_canQueue;
}
template <>
inline TraceQueue<RvLinFrame>& Box::queue<RvLinFrame>() {
    return m_linQueue;
}
template <>
inline TraceQueue<RvEthFrame>& Box::queue<RvEthFrame>() {
    return m_ethQueue;
}
template <>
inline TraceQueue<RvFlexRayFrame>& Box::queue<RvFlexRayFrame>() {
    return m_flexrayQueue;
}

}  // namespace simcore::engine
