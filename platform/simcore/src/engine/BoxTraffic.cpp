#include <algorithm>
#include <utility>

#include "engine/Box.h"
#include "engine/CycleJob.h"
#include "engine/LinBus.h"
#include "engine/LinSchedule.h"

// What a box transmits: single frames, cyclic jobs, schedule tables.
namespace simcore::engine {

namespace {
constexpr int64_t kGridNs = 1'000'000;
}

int Box::sendCan(RvCanFrame frame) {
    if (!isOpen()) return kRvErrorNotOpen;
    Port* from = port(BusKind::can, frame.channel);
    if (from == nullptr) return kRvErrorChannel;
    if (!normalise(frame)) return kRvErrorParam;
    const int admitted = from->admit(isFd(frame));
    if (admitted != kRvOk) return admitted;
    return static_cast<CanBus*>(from->bus)->send(from, frame);
}

int Box::sendLin(RvLinFrame frame) {
    if (!isOpen()) return kRvErrorNotOpen;
    Port* from = port(BusKind::lin, frame.channel);
    if (from == nullptr) return kRvErrorChannel;
    if (!normalise(frame)) return kRvErrorParam;
    const int admitted = from->admit(false);
    if (admitted != kRvOk) return admitted;
    frame.checksum = linChecksum(frame);
    auto& bus = *static_cast<LinBus*>(from->bus);
    bus.publish(*from, frame);
    // A slave has no header to send: its frame appears when a master asks for it.
    return from->master ? bus.send(from, frame) : kRvOk;
}

int Box::sendEthernet(RvEthFrame frame) {
    if (!isOpen()) return kRvErrorNotOpen;
    Port* from = port(BusKind::ethernet, frame.channel);
    if (from == nullptr) return kRvErrorChannel;
    if (!normalise(frame)) return kRvErrorParam;
    const int admitted = from->admit(false);
    if (admitted != kRvOk) return admitted;
    return static_cast<EthernetBus*>(from->bus)->send(from, frame);
}

int Box::sendFlexRay(RvFlexRayFrame frame) {
    if (!isOpen()) return kRvErrorNotOpen;
    Port* from = port(BusKind::flexray, frame.channel);
    if (from == nullptr) return kRvErrorChannel;
    if (!normalise(frame)) return kRvErrorParam;
    const int admitted = from->admit(false);
    if (admitted != kRvOk) return admitted;
    return static_cast<FlexRayBus*>(from->bus)->send(from, frame);
}

int Box::addJob(const std::shared_ptr<CycleJob>& job) {
    const int64_t now = m_core.clock.now();
    if (m_canJobs.empty() && m_ethJobs.empty()) m_gridOrigin = now;
    if (!jobs(job->port().kind).emplace(job->uuid(), job).second) return kRvErrorDuplicateJob;
    // All jobs of a box lie on whole milliseconds from the first one's start, so that those that
    // are due together cost one wake-up.
    const int64_t past = (now - m_gridOrigin) % kGridNs;
    const int64_t aligned = past <= kGridNs / 2 ? now - past : now - past + kGridNs;
    job->start(aligned, takePhase(job->periodNs()));
    return kRvOk;
}

int Box::removeJob(BusKind kind, const std::string& uuid) {
    auto& known = jobs(kind);
    const auto at = known.find(uuid);
    if (at == known.end()) return kRvErrorUnknownJob;
    std::shared_ptr<CycleJob> job = std::move(at->second);
    known.erase(at);
    returnPhase(job->phasePeriodNs(), job->phaseNumber());
    job->retire();
    m_core.bury(std::move(job));
    return kRvOk;
}

std::shared_ptr<CycleJob> Box::findJob(BusKind kind, const std::string& uuid) {
    auto& known = jobs(kind);
    const auto at = known.find(uuid);
    return at == known.end() ? nullptr : at->second;
}

int Box::takePhase(int64_t periodNs) {
    auto& inUse = m_phases[periodNs];
    const auto free = std::find(inUse.begin(), inUse.end(), false);
    const auto number = free - inUse.begin();
    if (free == inUse.end()) {
        inUse.push_back(true);
    } else {
        *free = true;
    }
    return static_cast<int>(number);
}

void Box::returnPhase(int64_t periodNs, int number) {
    const auto at = m_phases.find(periodNs);
    if (at == m_phases.end()) return;
    auto& inUse = at->second;
    inUse[static_cast<size_t>(number)] = false;
    while (!inUse.empty() && !inUse.back()) inUse.pop_back();
    if (inUse.empty()) m_phases.erase(at);
}

int Box::startLinSchedule(int32_t channel, std::vector<RvLinSlot> slots) {
    if (!isOpen()) return kRvErrorNotOpen;
    Port* master = port(BusKind::lin, channel);
    if (master == nullptr || !master->enabled) return kRvErrorChannel;
    if (slots.empty() || !std::all_of(slots.begin(), slots.end(), LinSchedule::valid)) {
        return kRvErrorParam;
    }
    if (!master->master) return kRvErrorRefused;
    auto& running = m_linSchedules[channel];
    if (running != nullptr) m_core.bury(running);
    running = std::make_shared<LinSchedule>(m_core, *master, std::move(slots));
    running->start();
    return kRvOk;
}

int Box::stopLinSchedule(int32_t channel) {
    if (port(BusKind::lin, channel) == nullptr) return kRvErrorChannel;
    const auto at = m_linSchedules.find(channel);
    if (at == m_linSchedules.end()) return kRvErrorUnknownJob;
    m_core.bury(at->second);
    m_linSchedules.erase(at);
    return kRvOk;
}

}  // namespace simcore::engine
