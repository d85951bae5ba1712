#include "api/JobCalls.h"

#include <memory>

#include "api/DeviceText.h"
#include "api/OnBox.h"
#include "engine/CycleJob.h"

namespace simcore::api {

namespace {

constexpr int32_t kLongestPeriodMs = 3'600'000;

bool validPeriod(int32_t periodMs) { return periodMs >= 1 && periodMs <= kLongestPeriodMs; }

template <class Description>
int checkJob(engine::Box& box, engine::BusKind kind, const Description& job) {
    if (!box.isOpen()) return kRvErrorNotOpen;
    if (box.port(kind, job.frame.channel) == nullptr) return kRvErrorChannel;
    const std::string uuid = textOf(job.uuid);
    if (uuid.empty() || uuid.size() == sizeof job.uuid || !validPeriod(job.periodMs)) {
        return kRvErrorParam;
    }
    return box.findJob(kind, uuid) == nullptr ? kRvOk : kRvErrorDuplicateJob;
}

}  // namespace

int addCanJob(engine::Box& box, const RvCanCycleJob& job, const JobTicket& ticket) {
    const int checked = checkJob(box, engine::BusKind::can, job);
    if (checked != kRvOk) return checked;
    RvCanCycleJob accepted = job;
    if (!engine::normalise(accepted.frame)) return kRvErrorParam;
    engine::Port& port = *box.port(engine::BusKind::can, job.frame.channel);
    const auto fresh = std::make_shared<engine::CanCycleJob>(box.core(), box, port, accepted);
    ticket.hand();
    return box.addJob(fresh);
}

int addEthernetJob(engine::Box& box, const RvEthCycleJob& job) {
    const int checked = checkJob(box, engine::BusKind::ethernet, job);
    if (checked != kRvOk) return checked;
    RvEthCycleJob accepted = job;
    if (!engine::normalise(accepted.frame)) return kRvErrorParam;
    engine::Port& port = *box.port(engine::BusKind::ethernet, job.frame.channel);
    return box.addJob(std::make_shared<engine::EthernetCycleJob>(box.core(), box, port, accepted));
}

int pauseJob(engine::Box& box, engine::BusKind kind, const char* uuid) {
    const auto job = box.findJob(kind, uuidText(uuid));
    if (job == nullptr) return kRvErrorUnknownJob;
    job->pause();
    return kRvOk;
}

int resumeJob(engine::Box& box, engine::BusKind kind, const char* uuid) {
    const auto job = box.findJob(kind, uuidText(uuid));
    if (job == nullptr) return kRvErrorUnknownJob;
    job->resume();
    return kRvOk;
}

int replaceJobFrame(engine::Box& box, const char* uuid, const RvCanFrame& frame) {
    const auto job = box.findJob(engine::BusKind::can, uuidText(uuid));
    if (job == nullptr) return kRvErrorUnknownJob;
    RvCanFrame accepted = frame;
    // A job stays on the channel that it was started on.
    if (!engine::normalise(accepted) || frame.channel != job->port().index) return kRvErrorParam;
    static_cast<engine::CanCycleJob&>(*job).replaceFrame(accepted);
    return kRvOk;
}

int setJobPeriod(engine::Box& box, const char* uuid, int32_t periodMs) {
    const auto job = box.findJob(engine::BusKind::can, uuidText(uuid));
    if (job == nullptr) return kRvErrorUnknownJob;
    if (!validPeriod(periodMs)) return kRvErrorParam;
    job->setPeriod(periodMs);
    return kRvOk;
}

int jobCounters(engine::Box& box, const char* uuid, RvCycleCounters& counters) {
    const auto job = box.findJob(engine::BusKind::can, uuidText(uuid));
    if (job == nullptr) return kRvErrorUnknownJob;
    const engine::CycleCounters& c = job->counters();
    counters = {c.transmitted, c.refused, c.missed, c.lastError};
    return kRvOk;
}

}  // namespace simcore::api
