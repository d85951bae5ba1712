#include "engine/FaultTable.h"

#include <algorithm>
#include <utility>

#include "engine/Network.h"

namespace simcore::engine {

namespace {
constexpr int kLogInfo = 2;
}

FaultTable::FaultTable(Network& network, std::vector<FaultPlan> plan, std::optional<uint64_t> seed)
    : m_network(network), m_seed(seed ? *seed : std::random_device()()) {
    m_random.seed(m_seed);
    m_entries.reserve(plan.size());
    for (FaultPlan& fault : plan) {
        m_random_used = m_random_used || fault.chance < 1.0 || fault.jitterNs > 0;
        m_entries.push_back({std::move(fault), 0, 0});
    }
}

void FaultTable::start() {
    Core& core = m_network.core();
    if (m_random_used) {
        core.sink.log(kLogInfo, "fault timetable uses seed " + std::to_string(m_seed));
    }
    const int64_t now = core.clock.now();
    for (Entry& entry : m_entries) {
        entry.gridNs = now + entry.plan.atNs;
        place(entry);
    }
    scheduleNext();
}

void FaultTable::place(Entry& entry) {
    entry.dueNs = entry.gridNs;
    if (entry.plan.jitterNs > 0) {
        entry.dueNs +=
            static_cast<int64_t>(m_random() % (static_cast<uint64_t>(entry.plan.jitterNs) + 1));
    }
}

void FaultTable::scheduleNext() {
    if (m_entries.empty()) return;
    const auto next =
        std::min_element(m_entries.begin(), m_entries.end(),
                         [](const Entry& a, const Entry& b) { return a.dueNs < b.dueNs; });
    m_network.core().schedule(shared_from_this(), next->dueNs);
}

void FaultTable::run(int64_t now, Lock& /*lock*/) {
    for (size_t i = 0; i < m_entries.size();) {
        Entry& entry = m_entries[i];
        if (entry.dueNs > now) {
            ++i;
            continue;
        }
        constexpr double kRange = 18446744073709551616.0;  // 2^64
        const bool happens = entry.plan.chance >= 1.0 ||
                             static_cast<double>(m_random()) / kRange < entry.plan.chance;
        if (happens) perform(entry.plan);
        if (entry.plan.everyNs > 0) {
            entry.gridNs += entry.plan.everyNs;
            place(entry);
            ++i;
        } else {
            m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    scheduleNext();
}

void FaultTable::perform(const FaultPlan& fault) {
    switch (fault.kind) {
        case FaultKind::unplug:
            m_network.unplug(fault.box);
            break;
        case FaultKind::plug:
            m_network.plug(fault.box);
            break;
        case FaultKind::failCalls:
        case FaultKind::slowCalls:
            m_network.core().sink.callFault(fault.call);
            break;
        default:
            performOnBox(fault);
    }
}

void FaultTable::performOnBox(const FaultPlan& fault) {
    Box* box = m_network.boxByName(fault.box);
    if (box == nullptr) return;
    switch (fault.kind) {
        case FaultKind::busStatus:
            box->setBusStatus(fault.channel, fault.value);
            break;
        case FaultKind::busTimeout:
            box->raiseBusTimeout(fault.channel);
            break;
        case FaultKind::dip:
            box->setDip(fault.dip);
            break;
        case FaultKind::clock:
            box->setClock(fault.clockOffsetNs, fault.clockDriftPpm);
            break;
        case FaultKind::refuse:
            if (Port* port = box->port(BusKind::can, fault.channel)) port->refuse = fault.value;
            break;
        default:
            break;
    }
}

}  // namespace simcore::engine
