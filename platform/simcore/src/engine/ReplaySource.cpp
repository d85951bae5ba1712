#include "engine/ReplaySource.h"

#include <algorithm>
#include <utility>

#include "engine/Network.h"
#include "engine/TypedBus.h"
#include "logs/Words.h"

namespace simcore::engine {

namespace {

constexpr size_t kReadAhead = 64;
constexpr int64_t kLeastPassGapNs = 1'000'000;
constexpr int kLevelDebug = 1;
constexpr int kLevelWarning = 3;

}  // namespace

std::shared_ptr<ReplaySource> ReplaySource::open(Network& network, const ReplayPlan& plan,
                                                 std::string& reason) {
    auto reader = logs::LogReader::open(plan.file, reason);
    if (reader == nullptr) return nullptr;
    return std::make_shared<ReplaySource>(network, plan, std::move(reader));
}

ReplaySource::ReplaySource(Network& network, const ReplayPlan& plan,
                           std::unique_ptr<logs::LogReader> reader)
    : m_core(network.core()), m_plan(plan), m_reader(std::move(reader)), m_batch(kReadAhead) {
    for (size_t kind = 0; kind < kBusKinds; ++kind) {
        for (const auto& name : m_plan.buses[kind]) {
            m_inTurn[kind].push_back(network.busByName(name));
            m_targets.push_back(m_inTurn[kind].back());
        }
    }
    for (const auto& [channel, name] : m_plan.channels) {
        m_byChannel[channel] = network.busByName(name);
        m_targets.push_back(m_byChannel[channel]);
    }
    std::sort(m_targets.begin(), m_targets.end());
    m_targets.erase(std::unique(m_targets.begin(), m_targets.end()), m_targets.end());
}

void ReplaySource::start() {
    if (!m_plan.onTrace) begin();
}

// A log that has come to its end is played again for whoever begins to trace then.
void ReplaySource::traceStarted() {
    if (!m_plan.onTrace || (m_started && !m_finished)) return;
    const auto observed = [](const Bus* bus) { return bus->observed(); };
    if (std::any_of(m_targets.begin(), m_targets.end(), observed)) begin();
}

void ReplaySource::begin() {
    if (m_started) m_reader->rewind();
    m_started = true;
    m_finished = false;
    m_shiftNs = 0;
    m_frames = 0;
    m_framesOfPass = 0;
    m_startedAt = m_core.clock.now();
    if (!unpaced()) m_core.schedule(shared_from_this(), m_startedAt);
}

bool ReplaySource::ready() const {
    if (!m_started || m_finished || m_reading) return false;
    bool observed = false;
    for (const Bus* bus : m_targets) {
        if (!bus->observed()) continue;
        if (!bus->roomy()) return false;
        observed = true;
    }
    return observed;
}

void ReplaySource::burst(Lock& lock) {
    while (true) {
        if (m_at == m_held && !refill(lock)) return;
        const logs::LogFrame& next = m_batch[m_at];
        const Bus* bus = busFor(next);
        // A bus that nobody listens to does not hold up the others.
        if (bus != nullptr && bus->observed() && bus->room(1) == 0) return;
        ++m_at;
        deliver(next);
    }
}

void ReplaySource::run(int64_t now, Lock& lock) {
    while (m_at < m_held || refill(lock)) {
        const int64_t due = dueOf(m_batch[m_at]);
        if (due > now) {
            m_core.schedule(shared_from_this(), due);
            return;
        }
        deliver(m_batch[m_at++]);
    }
}

// Reads the next frames without the engine's lock. False when there are none.
bool ReplaySource::refill(Lock& lock) {
    if (m_reading || m_finished) return false;
    m_reading = true;
    lock.unlock();
    readBatch();
    lock.lock();
    m_reading = false;
    m_at = 0;
    if (m_held > 0) return true;
    m_finished = true;
    m_core.sink.log(m_skipped > 0 ? kLevelWarning : kLevelDebug,
                    "replay of " + m_plan.file + ": " + std::to_string(m_frames) + " frames, " +
                        std::to_string(m_skipped) + " lines skipped");
    return false;
}

void ReplaySource::readBatch() {
    m_held = 0;
    while (m_held < kReadAhead) {
        logs::LogFrame& frame = m_batch[m_held];
        if (!m_reader->next(frame)) {
            m_skipped = m_reader->unreadableLines();
            if (!nextPass()) return;
            continue;
        }
        if (m_framesOfPass == 0) m_firstRaw = frame.timeNs;
        frame.timeNs = std::min(frame.timeNs + m_shiftNs, logs::kLatestNs);
        if (m_frames == 0) m_firstNs = frame.timeNs;
        if (m_frames > 0 && frame.timeNs < m_lastNs) {
            m_shiftNs = std::min(m_shiftNs + m_lastNs - frame.timeNs, logs::kLatestNs);
            frame.timeNs = m_lastNs;
        }
        m_lastNs = frame.timeNs;
        ++m_frames;
        ++m_framesOfPass;
        ++m_held;
    }
}

// A further pass begins one mean frame distance after the end of the last one. False when there is
// none.
bool ReplaySource::nextPass() {
    if (!m_plan.loop || m_framesOfPass == 0) return false;
    const auto gaps = static_cast<int64_t>(std::max<uint64_t>(m_frames, 2) - 1);
    const int64_t mean = (m_lastNs - m_firstNs) / gaps;
    const int64_t next = m_lastNs + std::max(mean, kLeastPassGapNs) - m_firstRaw;
    m_shiftNs = std::min(next, logs::kLatestNs);
    m_framesOfPass = 0;
    m_reader->rewind();
    return true;
}

int64_t ReplaySource::dueOf(const logs::LogFrame& frame) const {
    const auto since = static_cast<double>(frame.timeNs - m_firstNs);
    const auto latest = static_cast<double>(logs::kLatestNs);
    return m_startedAt + static_cast<int64_t>(std::min(since / m_plan.speed, latest));
}

Bus* ReplaySource::busFor(const logs::LogFrame& frame) const {
    const auto kind =
        std::visit([]<class Frame>(const Frame&) { return FrameKind<Frame>::kKind; }, frame.frame);
    const auto named = m_byChannel.find(frame.channel);
    if (named != m_byChannel.end()) {
        return named->second->kind() == kind ? named->second : nullptr;
    }
    const auto& inTurn = m_inTurn[static_cast<size_t>(kind)];
    return inTurn.empty() ? nullptr : inTurn[(frame.number - 1) % inTurn.size()];
}

void ReplaySource::deliver(const logs::LogFrame& frame) {
    Bus* bus = busFor(frame);
    if (bus == nullptr) return;
    std::visit(
        [bus]<class Frame>(const Frame& f) {
            // A busy bus with a bit rate loses the frame, as any node's controller would.
            static_cast<void>(static_cast<TypedBus<Frame>*>(bus)->send(nullptr, f));
        },
        frame.frame);
}

}  // namespace simcore::engine
