#include <array>

#include "api/Calls.h"
#include "document/PlanBuilder.h"

// The fault timetable of a document.
namespace simcore::document {

namespace {

using engine::FaultKind;
using engine::FaultPlan;

constexpr int64_t kNsPerMs = 1'000'000;
constexpr int64_t kLongestMs = 31LL * 24 * 3'600'000;
constexpr int64_t kLongestDelayMs = 60'000;
constexpr int64_t kMostTimes = 1'000'000'000;

}  // namespace

void PlanBuilder::readFault(const Node& node) {
    node.expectObject({"at_ms", "every_ms", "chance", "jitter_ms", "box", "do", "channel", "status",
                       "times", "dip", "offset_ns", "drift_ppm", "function", "code", "delay_ms"});
    FaultPlan fault;
    fault.atNs = node.integer("at_ms", 0, 0, kLongestMs) * kNsPerMs;
    fault.everyNs = node.integer("every_ms", 0, 0, kLongestMs) * kNsPerMs;
    fault.jitterNs = node.integer("jitter_ms", 0, 0, kLongestMs) * kNsPerMs;
    fault.chance = node.number("chance", 1.0, 0.0, 1.0);
    static constexpr std::array kKinds{
        FaultKind::unplug,     FaultKind::plug,     FaultKind::busStatus, FaultKind::busStatus,
        FaultKind::busTimeout, FaultKind::dip,      FaultKind::clock,     FaultKind::refuse,
        FaultKind::failCalls,  FaultKind::slowCalls};
    const size_t kind = node.choice("do", {"unplug", "plug", "busStatus", "busOff", "busTimeout",
                                           "dip", "clock", "refuse", "fail", "slow"});
    fault.kind = kKinds[kind];
    constexpr size_t kBusOff = 3;
    if (kind == kBusOff) fault.value = RvCanBusStatusTypeBusOff;
    const bool concernsCalls =
        fault.kind == FaultKind::failCalls || fault.kind == FaultKind::slowCalls;
    fault.box = concernsCalls ? node.text("box", "") : node.requiredText("box");
    if (!fault.box.empty() && findBox(fault.box) == nullptr) {
        node.complain("box", "there is no box \"" + fault.box + "\"");
    }
    readFaultDetails(node, fault);
    m_plan.faults.push_back(std::move(fault));
}

void PlanBuilder::readFaultDetails(const Node& node, FaultPlan& fault) {
    fault.channel = static_cast<int32_t>(node.integer("channel", 0, 0, 63));
    const auto times = static_cast<int32_t>(node.integer("times", 1, -1, kMostTimes));
    if (const engine::BoxPlan* box = findBox(fault.box)) {
        const auto channels = box->channelBuses[static_cast<size_t>(engine::BusKind::can)].size();
        if (node.has("channel") && static_cast<size_t>(fault.channel) >= channels) {
            node.complain("channel", "the box has no such CAN channel");
        }
    }
    if (fault.kind == FaultKind::busStatus && fault.value != RvCanBusStatusTypeBusOff) {
        fault.value = static_cast<int32_t>(
            node.choice("status", {"active", "heavy", "warning", "passive", "off"}));
    }
    if (fault.kind == FaultKind::refuse) fault.value = times;
    if (fault.kind == FaultKind::clock) {
        constexpr int64_t kFarthestNs = INT64_C(1'000'000'000'000'000'000);
        fault.clockOffsetNs = node.integer("offset_ns", 0, -kFarthestNs, kFarthestNs);
        fault.clockDriftPpm = node.number("drift_ppm", 0.0, -100'000.0, 100'000.0);
    }
    if (fault.kind == FaultKind::dip) {
        if (const auto dip = node.child("dip")) {
            fault.dip = readDip(*dip);
        } else {
            node.complain("dip", "is missing");
        }
    }
    if (fault.kind == FaultKind::failCalls || fault.kind == FaultKind::slowCalls) {
        fault.call.box = fault.box;
        fault.call.function = node.requiredText("function");
        if (!fault.call.function.empty() && !api::callByName(fault.call.function)) {
            node.complain("function",
                          "there is no imported function \"" + fault.call.function + "\"");
        }
        fault.call.times = times;
        if (fault.kind == FaultKind::failCalls) {
            fault.call.code = static_cast<int>(node.integer("code", kRvErrorRefused, 1, 1000));
        } else {
            fault.call.delayMs = static_cast<int>(node.integer("delay_ms", 0, 1, kLongestDelayMs));
            if (!node.has("delay_ms")) node.complain("delay_ms", "is missing");
        }
    }
}

}  // namespace simcore::document
