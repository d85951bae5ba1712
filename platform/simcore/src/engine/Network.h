#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/Box.h"
#include "engine/Bus.h"
#include "engine/NetworkPlan.h"
#include "engine/Scheduler.h"

namespace simcore::engine {

class FaultTable;
class Pump;
class Source;

// One virtual network: its buses, boxes, sources and the threads that move them. Built from a plan,
// started once, stopped by stop() or the destructor. Boxes and buses live as long as the network.
class Network {
public:
    // `generation` goes into the handles, so that handles of an earlier network are recognised.
    Network(Clock& clock, EventSink& sink, uint32_t generation);
    ~Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    // False with a reason, which names the file, when a recorded log cannot be played.
    [[nodiscard]] bool build(const NetworkPlan& plan, std::string& reason);
    void start();
    void stop();
    void advance(int64_t ns);
    // The clock changed between manual and system.
    void clockChanged();

    [[nodiscard]] Core& core() { return m_core; }
    [[nodiscard]] const std::vector<std::unique_ptr<Box>>& boxes() const { return m_boxes; }
    [[nodiscard]] const std::vector<std::shared_ptr<Bus>>& buses() const { return m_buses; }
    [[nodiscard]] Box* boxByName(const std::string& name) const;
    [[nodiscard]] Bus* busByName(const std::string& name) const;
    // The box of a handle; null with kRvErrorHandle for a handle that never was, kRvErrorGone for
    // one of a box that has left since. Needs no lock.
    [[nodiscard]] Box* boxByHandle(int32_t handle, int& error) const;

    // Lock held.
    bool unplug(const std::string& name);
    bool plug(const std::string& name);

private:
    [[nodiscard]] int32_t handleFor(size_t index, uint32_t session) const;
    void buildBox(const BoxPlan& plan);
    [[nodiscard]] bool buildSource(const SourcePlan& plan, std::string& reason);

    Core m_core;
    const uint32_t m_generation;
    std::vector<std::shared_ptr<Bus>> m_buses;
    std::vector<std::unique_ptr<Box>> m_boxes;
    std::vector<uint32_t> m_sessions;  // by box: how often it was plugged in
    std::vector<std::shared_ptr<Source>> m_sources;
    std::shared_ptr<FaultTable> m_faults;
    Scheduler m_scheduler;
    std::vector<std::unique_ptr<Pump>> m_pumps;
};

}  // namespace simcore::engine
