#include "core/hardware/FrameDispatcher.h"

#include <chrono>
#include <system_error>

#include "core/log/Log.h"
#include "quill_os/threads.h"

namespace rv {
namespace {

constexpr std::chrono::milliseconds kPassInterval{10};
constexpr int64_t kHoldUs = 240000;
// A backlog is worth a warning when its oldest frame has waited this long beyond its hold time.
constexpr uint64_t kBacklogWarnUs = 500'000;
constexpr uint64_t kBacklogFineUs = 50'000;

}  // namespace

FrameDispatcher::~FrameDispatcher() { stop(); }

void FrameDispatcher::start() {
    if (m_thread.joinable()) return;
    m_stop = false;
    m_thread = std::thread([this] { run(); });
}

void FrameDispatcher::stop() {
    if (!m_thread.joinable()) return;
    if (m_thread.get_id() == std::this_thread::get_id()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    m_stop = true;
    m_thread.join();
}

bool FrameDispatcher::close(int waitMs) {
    m_closed = true;
    m_stop = true;
    if (!m_thread.joinable()) return true;
    if (m_thread.get_id() == std::this_thread::get_id()) return false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(waitMs);
    while (m_delivering) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    m_thread.join();
    return true;
}

HandOver FrameDispatcher::counters() const {
    HandOver result;
    result.out = m_out.load(std::memory_order_relaxed);
    result.dropped = m_dropped.load(std::memory_order_relaxed);
    result.in = m_in.load(std::memory_order_relaxed);
    result.held = result.in - result.out - result.dropped;
    return result;
}

uint64_t FrameDispatcher::backlogAgeUs() const { return m_buffer.overdueUs(kHoldUs); }

// A receiver may end this thread from inside (the interpreter does so while it shuts down), so
// nothing on the way to it swallows the unwinding.
void FrameDispatcher::run() {
    quill::os::setCurrentThreadName("frame-dispatch");
    while (!m_stop) {
        std::this_thread::sleep_for(kPassInterval);
        watchBacklog();
        std::vector<ReceivedFrame> taken = m_buffer.take(kHoldUs);
        if (taken.empty()) continue;
        m_in.fetch_add(taken.size(), std::memory_order_relaxed);
        deliver(taken);
    }
}

void FrameDispatcher::deliver(std::vector<ReceivedFrame>& taken) {
    for (ReceivedFrame& record : taken) {
        FrameReceiver* receiver = record.subscription->callback.get();
        m_delivering = true;
        if (receiver == nullptr || m_closed) {
            m_delivering = false;
            m_dropped.fetch_add(1, std::memory_order_relaxed);
            continue;
        }
        receiver->deliver(record.frame->type, record.frame, record.subscription->info);
        m_delivering = false;
        m_out.fetch_add(1, std::memory_order_relaxed);
        record.frame.reset();
    }
}

void FrameDispatcher::watchBacklog() {
    const uint64_t ageUs = m_buffer.overdueUs(kHoldUs);
    if (ageUs < kBacklogFineUs) m_backlogWarned = false;
    if (ageUs < kBacklogWarnUs || m_backlogWarned) return;
    m_backlogWarned = true;
    QUILL_WARN(quill::log::kHardware,
               "delivery to scripts is behind: {} frames wait, the oldest for {} ms too long",
               m_buffer.counters().held, ageUs / 1000);
}

}  // namespace rv
