#include "core/hardware/FrameDispatcher.h"

#include <algorithm>
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

uint64_t FrameDispatcher::backlogAgeUs() const {
    return std::max(m_buffer.overdueUs(kHoldUs), overdueInDeliveryUs());
}

// A pass takes all that is due and may deliver it for long, so its frames age outside the buffer.
uint64_t FrameDispatcher::overdueInDeliveryUs() const {
    const uint64_t stampNs = m_deliveringNs.load(std::memory_order_relaxed);
    if (stampNs == 0) return 0;
    const int64_t ageUs = std::chrono::duration_cast<std::chrono::microseconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count() -
                          static_cast<int64_t>(stampNs / 1000) - kHoldUs;
    return ageUs > 0 ? static_cast<uint64_t>(ageUs) : 0;
}

// A receiver may end this thread from inside (the interpreter does so while it shuts down), so
// nothing on the way to it swallows the unwinding.
void FrameDispatcher::run() {
    quill::os::setCurrentThreadName("frame-dispatch");
    while (!m_stop) {
        std::this_thread::sleep_for(kPassInterval);
        watchBacklog();
        std::vector<ReceivedFrame> taken = m_buffer.take(kHoldUs);
        if (!taken.empty()) {
            m_in.fetch_add(taken.size(), std::memory_order_relaxed);
            deliver(taken);
        }
        endPass();
    }
    m_receivers.clear();
}

void FrameDispatcher::deliver(std::vector<ReceivedFrame>& taken) {
    for (ReceivedFrame& record : taken) {
        const ReceiveCallback& receiver = record.subscription->callback;
        m_delivering = true;
        if (receiver == nullptr || m_closed) {
            m_delivering = false;
            m_dropped.fetch_add(1, std::memory_order_relaxed);
            continue;
        }
        m_deliveringNs.store(record.frame->timestampNs(), std::memory_order_relaxed);
        noteReceiver(receiver);
        receiver->deliver(record.frame->type, record.frame, record.subscription->info);
        m_delivering = false;
        m_out.fetch_add(1, std::memory_order_relaxed);
        record.frame.reset();
    }
    m_deliveringNs.store(0, std::memory_order_relaxed);
}

void FrameDispatcher::noteReceiver(const ReceiveCallback& receiver) {
    if (!m_receivers.empty() && m_receivers.back() == receiver) return;
    if (std::find(m_receivers.begin(), m_receivers.end(), receiver) != m_receivers.end()) return;
    m_receivers.push_back(receiver);
}

void FrameDispatcher::endPass() {
    std::erase_if(m_receivers, [this](const ReceiveCallback& receiver) {
        m_delivering = true;
        const bool again = !m_closed && receiver->passDone();
        m_delivering = false;
        return !again;
    });
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
