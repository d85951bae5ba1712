#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/hardware/boxdev/DeviceInterface.h"

namespace RV::BoxDev {

// Where a device's reader threads hand their batches, with the counters of that hand-over.
class TraceOutlet {
public:
    void setSink(TraceSink sink);
    // Hands a batch over; clears it. Frames that nobody takes are dropped and counted.
    void deliver(rv::FrameType type, std::vector<rv::FrameHolder>& batch);
    [[nodiscard]] rv::HandOver counters() const;
    [[nodiscard]] DeviceTraffic traffic() const;

private:
    std::mutex m_mutex;
    TraceSink m_sink;  // guarded by m_mutex
    std::atomic<uint64_t> m_in{0};
    std::atomic<uint64_t> m_out{0};
    std::atomic<uint64_t> m_dropped{0};
    TrafficMeter m_meter;
};

// One reader thread: polls the device library until it is stopped.
class TraceReader {
public:
    // Reads what is there and hands it on; returns false when there was little or nothing left.
    using Poll = std::function<bool()>;

    TraceReader(std::string threadName, Poll poll);
    ~TraceReader();
    TraceReader(const TraceReader&) = delete;
    TraceReader& operator=(const TraceReader&) = delete;

    void start();  // does nothing when already running
    // Joins the thread after the poll in hand. From the thread itself it is a system error.
    void stop();

private:
    void run();

    std::string m_threadName;
    Poll m_poll;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stop = false;  // guarded by m_mutex
    std::thread m_thread;
};

}  // namespace RV::BoxDev
