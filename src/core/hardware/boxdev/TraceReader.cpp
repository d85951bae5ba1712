#include "core/hardware/boxdev/TraceReader.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "quill_os/threads.h"

namespace RV::BoxDev {
namespace {
// Frames are held back 240 ms for sorting, so a poll every few ms delays nothing.
constexpr std::chrono::milliseconds kIdlePoll{4};

int64_t hostNowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}
}  // namespace

void TraceOutlet::setSink(TraceSink sink) {
    const std::lock_guard lock(m_mutex);
    m_sink.swap(sink);
}

void TraceOutlet::deliver(rv::FrameType type, std::vector<rv::FrameHolder>& batch) {
    m_in.fetch_add(batch.size(), std::memory_order_relaxed);
    m_meter.note(batch, hostNowNs());
    size_t taken = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (m_sink) taken = m_sink(type, batch);
    }
    m_out.fetch_add(taken, std::memory_order_relaxed);
    m_dropped.fetch_add(batch.size() - taken, std::memory_order_relaxed);
    batch.clear();
}

rv::HandOver TraceOutlet::counters() const {
    rv::HandOver result;
    result.out = m_out.load(std::memory_order_relaxed);
    result.dropped = m_dropped.load(std::memory_order_relaxed);
    result.in = m_in.load(std::memory_order_relaxed);
    result.held = result.in - result.out - result.dropped;
    return result;
}

DeviceTraffic TraceOutlet::traffic() const { return m_meter.read(hostNowNs()); }

TraceReader::TraceReader(std::string threadName, Poll poll)
    : m_threadName(std::move(threadName)), m_poll(std::move(poll)) {}

TraceReader::~TraceReader() { stop(); }

void TraceReader::start() {
    if (m_thread.joinable()) return;
    m_stop = false;
    m_thread = std::thread([this] { run(); });
}

void TraceReader::stop() {
    if (!m_thread.joinable()) return;
    if (m_thread.get_id() == std::this_thread::get_id()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void TraceReader::run() {
    quill::os::setCurrentThreadName(m_threadName.c_str());
    std::unique_lock lock(m_mutex);
    while (!m_stop) {
        lock.unlock();
        const bool more = m_poll();
        lock.lock();
        if (!more) m_wake.wait_for(lock, kIdlePoll, [this] { return m_stop; });
    }
}

}  // namespace RV::BoxDev
