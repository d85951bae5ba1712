// Flat functions: tracing, sending, cyclic jobs, schedule tables.
#include <memory>
#include <vector>

#include "api/DeviceText.h"
#include "api/JobCalls.h"
#include "api/OnBox.h"
#include "simcore/flat.h"

namespace api = simcore::api;
namespace engine = simcore::engine;
using api::Call;
using api::onBox;
using engine::BusKind;

int start_trace(int32_t handle) {
    return onBox(Call::startTrace, handle, [](engine::Box& box) { return box.startTrace(); });
}

int stop_trace(int32_t handle) {
    return onBox(Call::stopTrace, handle, [](engine::Box& box) { return box.stopTrace(); });
}

int read_can_frames(int32_t handle, RvCanFrame* frames, int32_t capacity, int32_t* count) {
    return api::readFrames(Call::readCan, handle, frames, capacity, count);
}
int read_lin_frames(int32_t handle, RvLinFrame* frames, int32_t capacity, int32_t* count) {
    return api::readFrames(Call::readLin, handle, frames, capacity, count);
}
int read_eth_frames(int32_t handle, RvEthFrame* frames, int32_t capacity, int32_t* count) {
    return api::readFrames(Call::readEth, handle, frames, capacity, count);
}
int read_flexray_frames(int32_t handle, RvFlexRayFrame* frames, int32_t capacity, int32_t* count) {
    return api::readFrames(Call::readFlexRay, handle, frames, capacity, count);
}

int get_trace_counters(int32_t handle, RvTraceCounters* counters) {
    return onBox(Call::traceCounters, handle, [&](engine::Box& box) -> int {
        if (counters == nullptr) return kRvErrorParam;
        const engine::TraceCounters sum = box.counters();
        *counters = {sum.queued, sum.read, sum.dropped, sum.discarded};
        return kRvOk;
    });
}

int send_can_frame_once(int32_t handle, const RvCanFrame* frame) {
    return onBox(Call::sendCan, handle, [&](engine::Box& box) {
        return frame == nullptr ? kRvErrorParam : box.sendCan(*frame);
    });
}
int send_lin_frame_once(int32_t handle, const RvLinFrame* frame) {
    return onBox(Call::sendLin, handle, [&](engine::Box& box) {
        return frame == nullptr ? kRvErrorParam : box.sendLin(*frame);
    });
}
int send_eth_frame_once(int32_t handle, const RvEthFrame* frame) {
    return onBox(Call::sendEth, handle, [&](engine::Box& box) {
        return frame == nullptr ? kRvErrorParam : box.sendEthernet(*frame);
    });
}
int send_flexray_frame_once(int32_t handle, const RvFlexRayFrame* frame) {
    return onBox(Call::sendFlexRay, handle, [&](engine::Box& box) {
        return frame == nullptr ? kRvErrorParam : box.sendFlexRay(*frame);
    });
}

int add_can_cycle_frame(int32_t handle, const RvCanCycleJob* job) {
    if (job == nullptr) return api::finish(kRvErrorParam);
    const api::JobTicket ticket(*job);
    return onBox(Call::addCanCycle, handle,
                 [&](engine::Box& box) { return api::addCanJob(box, *job, ticket); });
}
int pause_can_cycle_frame(int32_t handle, const char* uuid) {
    return onBox(Call::pauseCanCycle, handle,
                 [&](engine::Box& box) { return api::pauseJob(box, BusKind::can, uuid); });
}
int resume_can_cycle_frame(int32_t handle, const char* uuid) {
    return onBox(Call::resumeCanCycle, handle,
                 [&](engine::Box& box) { return api::resumeJob(box, BusKind::can, uuid); });
}
int remove_can_cycle_frame(int32_t handle, const char* uuid) {
    return onBox(Call::removeCanCycle, handle, [&](engine::Box& box) {
        return box.removeJob(BusKind::can, api::uuidText(uuid));
    });
}
int update_can_cycle_frame(int32_t handle, const char* uuid, const RvCanFrame* frame) {
    return onBox(Call::updateCanCycle, handle, [&](engine::Box& box) {
        return frame == nullptr ? kRvErrorParam : api::replaceJobFrame(box, uuid, *frame);
    });
}
int set_can_cycle_period(int32_t handle, const char* uuid, int32_t periodMs) {
    return onBox(Call::setCanCyclePeriod, handle,
                 [&](engine::Box& box) { return api::setJobPeriod(box, uuid, periodMs); });
}
int get_can_cycle_counters(int32_t handle, const char* uuid, RvCycleCounters* counters) {
    return onBox(Call::canCycleCounters, handle, [&](engine::Box& box) {
        return counters == nullptr ? kRvErrorParam : api::jobCounters(box, uuid, *counters);
    });
}

int add_eth_cycle_frame(int32_t handle, const RvEthCycleJob* job) {
    return onBox(Call::addEthCycle, handle, [&](engine::Box& box) {
        return job == nullptr ? kRvErrorParam : api::addEthernetJob(box, *job);
    });
}
int pause_eth_cycle_frame(int32_t handle, const char* uuid) {
    return onBox(Call::pauseEthCycle, handle,
                 [&](engine::Box& box) { return api::pauseJob(box, BusKind::ethernet, uuid); });
}
int resume_eth_cycle_frame(int32_t handle, const char* uuid) {
    return onBox(Call::resumeEthCycle, handle,
                 [&](engine::Box& box) { return api::resumeJob(box, BusKind::ethernet, uuid); });
}
int remove_eth_cycle_frame(int32_t handle, const char* uuid) {
    return onBox(Call::removeEthCycle, handle, [&](engine::Box& box) {
        return box.removeJob(BusKind::ethernet, api::uuidText(uuid));
    });
}

int start_lin_schedule(int32_t handle, int32_t channel, const RvLinSlot* slots, int32_t count) {
    return onBox(Call::startLinSchedule, handle, [&](engine::Box& box) -> int {
        constexpr int32_t kMostSlots = 4096;
        if (slots == nullptr || count <= 0 || count > kMostSlots) return kRvErrorParam;
        return box.startLinSchedule(channel, std::vector<RvLinSlot>(slots, slots + count));
    });
}
int stop_lin_schedule(int32_t handle, int32_t channel) {
    return onBox(Call::stopLinSchedule, handle,
                 [&](engine::Box& box) { return box.stopLinSchedule(channel); });
}
