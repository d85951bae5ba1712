#include <algorithm>
#include <vector>

#include "core/hardware/boxdev/FrameConversion.h"
#include "core/hardware/boxdev/Hub4e.h"
#include "core/hardware/boxdev/Library.h"

// Tracing of a network box: start, stop and the polls of the two reader threads.
namespace RV::BoxDev {
namespace {

constexpr int32_t kCanBatch = 512;
constexpr int32_t kLinBatch = 128;
constexpr int32_t kEthernetBatch = 64;
constexpr int32_t kFlexRayBatch = 128;

// Reads one batch through `read`, converts it and delivers it. True when the batch was full, so
// that more is likely to wait.
template <class Record, int32_t Capacity, class Read>
bool pollBatch(int32_t handle, Read read, rv::FrameType type, std::vector<rv::FrameHolder>& batch,
               TraceOutlet& outlet) {
    // One buffer per reader thread and kind, kept between polls.
    thread_local std::vector<Record> records(Capacity);
    int32_t count = 0;
    const int result = withLibrary([&] { return read(handle, records.data(), Capacity, &count); });
    if (result != kRvOk || count <= 0) return false;
    batch.reserve(static_cast<size_t>(Capacity));
    for (int32_t i = 0; i < count; ++i) {
        batch.push_back(fromLibrary(records[static_cast<size_t>(i)]));
    }
    outlet.deliver(type, batch);
    return count == Capacity;
}

}  // namespace

void Hub4e::startTrace(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    m_busStatus.clearTimeouts();
    const int result = withLibrary([&] { return start_trace(m_cfg.handle); });
    if (result != kRvOk)
        return refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
    m_canReader.start();
    m_ethernetReader.start();
}

void Hub4e::stopTrace(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    stopReaders();
    drainTrace();
    const int result = withLibrary([&] { return stop_trace(m_cfg.handle); });
    if (result != kRvOk) refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
}

// Takes what the box has queued so far, so that a stop loses nothing that was received before it. A
// busy bus goes on meanwhile; what it adds is not waited for.
void Hub4e::drainTrace() {
    const rv::HandOver before = libraryCounters();
    const uint64_t target = before.out + before.held;
    bool some = true;
    while (some && libraryCounters().out < target) {
        const uint64_t read = libraryCounters().out;
        pollCan();
        pollLin();
        pollEthernet();
        pollFlexRay();
        some = libraryCounters().out != read;
    }
}

void Hub4e::stopReaders() {
    m_ethernetReader.stop();
    m_canReader.stop();
}

bool Hub4e::pollCan() {
    return pollBatch<RvCanFrame, kCanBatch>(m_cfg.handle, &read_can_frames, rv::FrameType::Can,
                                            m_canBatch, m_outlet);
}

bool Hub4e::pollLin() {
    return pollBatch<RvLinFrame, kLinBatch>(m_cfg.handle, &read_lin_frames, rv::FrameType::Lin,
                                            m_canBatch, m_outlet);
}

bool Hub4e::pollEthernet() {
    return pollBatch<RvEthFrame, kEthernetBatch>(
        m_cfg.handle, &read_eth_frames, rv::FrameType::Ethernet, m_ethernetBatch, m_outlet);
}

bool Hub4e::pollFlexRay() {
    return pollBatch<RvFlexRayFrame, kFlexRayBatch>(
        m_cfg.handle, &read_flexray_frames, rv::FrameType::FlexRay, m_ethernetBatch, m_outlet);
}

void Hub4e::noteLibraryCounters() const {
    RvTraceCounters raw;
    if (withLibrary([&] { return get_trace_counters(m_cfg.handle, &raw); }) != kRvOk) return;
    const std::lock_guard lock(m_countersMutex);
    m_libraryCounters.in = raw.queued + raw.dropped;
    m_libraryCounters.out = raw.read;
    m_libraryCounters.dropped = raw.dropped + raw.discarded;
    m_libraryCounters.held = raw.queued - raw.read - raw.discarded;
}

rv::HandOver Hub4e::libraryCounters() const {
    noteLibraryCounters();
    const uint64_t taken = m_outlet.counters().in;
    const std::lock_guard lock(m_countersMutex);
    // A box that is gone or does not answer tells nothing new, but what the readers took from it
    // since its last answer is known all the same.
    if (taken > m_libraryCounters.out) {
        const uint64_t more = taken - m_libraryCounters.out;
        m_libraryCounters.out = taken;
        m_libraryCounters.held -= std::min(m_libraryCounters.held, more);
        m_libraryCounters.in =
            m_libraryCounters.out + m_libraryCounters.held + m_libraryCounters.dropped;
    }
    return m_libraryCounters;
}

}  // namespace RV::BoxDev
