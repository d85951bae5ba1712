#include "engine/Bus.h"

#include <algorithm>
#include <utility>

#include "engine/Box.h"

namespace simcore::engine {

namespace {
// A wall clock that was set back by more than this takes the stamps with it.
constexpr uint64_t kClockSetBackNs = 1'000'000'000;
}  // namespace

int Port::admit(bool fdFrame) {
    if (!enabled) return kRvErrorChannel;
    if (status == RvCanBusStatusTypeBusOff) return kRvErrorBusOff;
    if (listenOnly || (fdFrame && !fd)) return kRvErrorRefused;
    if (refuse != 0) {
        if (refuse > 0) --refuse;
        return kRvErrorRefused;
    }
    return kRvOk;
}

bool Port::receives() const {
    return enabled && status != RvCanBusStatusTypeBusOff && box->tracing();
}

void LoadMeter::occupied(int64_t from, int64_t to) {
    while (from < to) {
        const int64_t number = from / kStepNs;
        const int64_t end = std::min(to, (number + 1) * kStepNs);
        Step& step = m_steps[static_cast<size_t>(number % kRing)];
        if (step.number != number) step = {number, 0};
        step.busyNs += end - from;
        from = end;
    }
}

double LoadMeter::load(int64_t now) const {
    const int64_t current = now / kStepNs;
    int64_t busy = 0;
    for (const Step& step : m_steps) {
        if (step.number >= current - kSteps && step.number < current) busy += step.busyNs;
    }
    return static_cast<double>(busy) / static_cast<double>(kStepNs * kSteps);
}

Bus::Bus(Core& core, std::string name, BusKind kind, BusRates rates)
    : m_core(core), m_name(std::move(name)), m_kind(kind), m_rates(rates) {}

double Bus::load() const { return paced() ? m_load.load(m_core.clock.now()) : -1.0; }

bool Bus::observed() const {
    return std::any_of(m_ports.begin(), m_ports.end(), [](const Port* p) { return p->receives(); });
}

uint64_t Bus::takeStamps(int64_t at, size_t count) {
    const uint64_t wall = m_core.clock.wallAt(at);
    uint64_t first = std::max(wall, m_lastStamp);
    if (m_lastStamp > wall + kClockSetBackNs) first = wall;
    m_lastStamp = first + (count - 1);
    return first;
}

}  // namespace simcore::engine
