#include "engine/CycleJob.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "engine/Box.h"
#include "engine/TypedBus.h"

namespace simcore::engine {

namespace {

constexpr int64_t kNsPerMs = 1'000'000;
// Waking a thread costs far more than sending a frame, so many jobs share few points of time.
constexpr int64_t kShortestStepNs = 125'000;
constexpr int64_t kMostSteps = 10;

std::string uuidOf(const char (&text)[64]) {
    return std::string(text, std::find(text, text + sizeof text, '\0'));
}

}  // namespace

CycleJob::CycleJob(Core& core, Box& box, Port& port, std::string uuid, int32_t periodMs, int limit)
    : m_core(core),
      m_box(box),
      m_port(port),
      m_uuid(std::move(uuid)),
      m_periodNs(periodMs * kNsPerMs),
      m_limit(limit) {}

int64_t CycleJob::phaseOf(int number, int64_t periodNs) {
    const int64_t steps = std::clamp<int64_t>(periodNs / kShortestStepNs, 1, kMostSteps);
    // A stride near the golden section that shares no divisor with the steps visits all of them.
    int64_t stride = std::max<int64_t>(steps * 618 / 1000, 1);
    while (std::gcd(stride, steps) != 1) ++stride;
    return (number * stride % steps) * (periodNs / steps);
}

void CycleJob::start(int64_t from, int phaseNumber) {
    m_phaseNumber = phaseNumber;
    m_phasePeriodNs = m_periodNs;
    m_due = from + phaseOf(phaseNumber, m_periodNs);
    m_core.schedule(shared_from_this(), m_due);
}

void CycleJob::pause() {
    m_paused = true;
    m_core.agenda.cancel(*this);
}

void CycleJob::resume() {
    if (!m_paused) return;
    m_paused = false;
    const int64_t now = m_core.clock.now();
    if (m_due < now) m_due += (now - m_due + m_periodNs - 1) / m_periodNs * m_periodNs;
    m_core.schedule(shared_from_this(), m_due);
}

void CycleJob::setPeriod(int32_t periodMs) {
    m_periodNs = periodMs * kNsPerMs;
    // Before the first transmission only the distance after it changes.
    if (m_lastDue >= 0) m_due = std::max(m_lastDue + m_periodNs, m_core.clock.now());
    if (!m_paused) m_core.schedule(shared_from_this(), m_due);
}

void CycleJob::run(int64_t now, Lock& lock) {
    const int64_t skipped = std::max<int64_t>(now - m_due, 0) / m_periodNs;
    m_counters.missed += static_cast<uint64_t>(skipped);
    m_lastDue = m_due + skipped * m_periodNs;
    m_due = m_lastDue + m_periodNs;
    m_core.schedule(shared_from_this(), m_due);

    const int result = transmit(lock);
    if (retired()) return;
    if (result != kRvOk) {
        ++m_counters.refused;
        m_counters.lastError = result;
        return;
    }
    ++m_counters.transmitted;
    if (m_limit > 0 && m_counters.transmitted >= static_cast<uint64_t>(m_limit)) {
        m_box.removeJob(m_port.kind, m_uuid);
    }
}

CanCycleJob::CanCycleJob(Core& core, Box& box, Port& port, const RvCanCycleJob& description)
    : CycleJob(core, box, port, uuidOf(description.uuid), description.periodMs,
               description.limitCount),
      m_frame(description.frame),
      m_update(description.update),
      m_settings(description.settings),
      m_release(description.release) {}

CanCycleJob::~CanCycleJob() {
    if (m_release != nullptr) m_release(m_settings);
}

int CanCycleJob::transmit(Lock& lock) {
    if (m_replacement) {
        m_frame = *m_replacement;
        m_replacement.reset();
    }
    // Asked first: a transmission that the channel refuses must not step counters in the payload.
    const int admitted = targetPort().admit(isFd(m_frame));
    if (admitted != kRvOk) return admitted;
    // Each transmission starts from the frame as it was given: writers of counters rely on it.
    RvCanFrame frame = m_frame;
    if (m_update != nullptr) {
        lock.unlock();  // user code may call back into the library
        const bool wanted = m_update(frame.data, frame.length, m_settings);
        lock.lock();
        if (retired()) return kRvErrorUnknownJob;
        if (!wanted) return kRvErrorRefused;
    }
    return static_cast<CanBus*>(targetPort().bus)->send(&targetPort(), frame);
}

EthernetCycleJob::EthernetCycleJob(Core& core, Box& box, Port& port,
                                   const RvEthCycleJob& description)
    : CycleJob(core, box, port, uuidOf(description.uuid), description.periodMs,
               description.limitCount),
      m_frame(description.frame) {}

int EthernetCycleJob::transmit(Lock& /*lock*/) {
    const int admitted = targetPort().admit(false);
    if (admitted != kRvOk) return admitted;
    return static_cast<EthernetBus*>(targetPort().bus)->send(&targetPort(), m_frame);
}

}  // namespace simcore::engine
