#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "core/hardware/RVFrameResortBuffer.h"

namespace rv {

// The dispatch thread: every 10 ms takes from the resort buffer what is old enough and hands it to
// the subscribers, one frame at a time in time-stamp order.
class FrameDispatcher {
public:
    explicit FrameDispatcher(RVFrameResortBuffer& buffer) : m_buffer(buffer) {}
    ~FrameDispatcher();
    FrameDispatcher(const FrameDispatcher&) = delete;
    FrameDispatcher& operator=(const FrameDispatcher&) = delete;

    void start();  // does nothing when the thread runs
    void stop();   // joins; from the thread itself a system error

    // No receiver is called any more once this has returned true; false when one still runs after
    // `waitMs`. The thread has ended in the first case. Frames that come later are dropped.
    [[nodiscard]] bool close(int waitMs);

    [[nodiscard]] HandOver counters() const;
    [[nodiscard]] uint64_t backlogAgeUs() const;

private:
    void run();
    void deliver(std::vector<ReceivedFrame>& taken);
    void noteReceiver(const ReceiveCallback& receiver);
    void endPass();
    void watchBacklog();
    [[nodiscard]] uint64_t overdueInDeliveryUs() const;

    RVFrameResortBuffer& m_buffer;
    std::atomic<bool> m_stop{true};
    std::atomic<bool> m_closed{false};
    std::atomic<bool> m_delivering{false};
    std::atomic<uint64_t> m_in{0};
    std::atomic<uint64_t> m_out{0};
    std::atomic<uint64_t> m_dropped{0};
    std::atomic<uint64_t> m_deliveringNs{0};  // stamp of the frame in delivery, 0 between passes
    // Used by the thread only.
    bool m_backlogWarned = false;
    std::vector<ReceiveCallback> m_receivers;  // those to be told of the pass's end
    std::thread m_thread;
};

}  // namespace rv
