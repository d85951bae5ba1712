#include <array>

#include "api/Calls.h"
#include "document/PlanBuilder.h"

// The fault timetable of a document.
namespace simcore::document {

namespace {

using engine::FaultKind;
using engine::FaultPlan;

constexpr int64_t kNsPerMs = 1'000'000;

}  // namespace

void PlanBuilder::readFault(const Node& node) {
    FaultPlan fault;
    fault.atNs = node.integer("at_ms", 0) * kNsPerMs;
    fault.everyNs = node.integer("every_ms", 0) * kNsPerMs;
    fault.jitterNs = node.integer("jitter_ms", 0) * kNsPerMs;
    fault.chance = node.number("chance", 1.0);
    static constexpr std::array kKinds{
        FaultKind::unplug,     FaultKind::plug,     FaultKind::busStatus, FaultKind::busStatus,
        FaultKind::busTimeout, FaultKind::dip,      FaultKind::clock,     FaultKind::refuse,
        FaultKind::failCalls,  FaultKind::slowCalls};
    const size_t kind = node.choice("do", {"unplug", "plug", "busStatus", "busOff", "busTimeout",
                                           "dip", "clock", "refuse", "fail", "slow"});
    fault.kind = kKinds[kind];
    constexpr size_t kBusOff = 3;
    if (kind == kBusOff) fault.value = RvCanBusStatusTypeBusOff;
    fault.box = node.text("box", "");
    if (!fault.box.empty() && findBox(fault.box) == nullptr) {
        node.complain("box", "there is no box \"" + fault.box + "\"");
    }
    readFaultDetails(node, fault);
    m_plan.faults.push_back(std::move(fault));
}

void PlanBuilder::readFaultDetails(const Node& node, FaultPlan& fault) {
    fault.channel = static_cast<int32_t>(node.integer("channel", 0));
    const auto times = static_cast<int32_t>(node.integer("times", 1));
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
        fault.clockOffsetNs = node.integer("offset_ns", 0);
        fault.clockDriftPpm = node.number("drift_ppm", 0.0);
    }
    if (fault.kind == FaultKind::dip) {
        if (const auto dip = node.child("dip")) fault.dip = readDip(*dip);
    }
    if (fault.kind == FaultKind::failCalls || fault.kind == FaultKind::slowCalls) {
        fault.call.box = fault.box;
        fault.call.function = node.text("function", "");
        if (!fault.call.function.empty() && !api::callByName(fault.call.function)) {
            node.complain("function",
                          "there is no imported function \"" + fault.call.function + "\"");
        }
        fault.call.times = times;
        if (fault.kind == FaultKind::failCalls) {
            fault.call.code = static_cast<int>(node.integer("code", kRvErrorRefused));
        } else {
            fault.call.delayMs = static_cast<int>(node.integer("delay_ms", 0));
        }
    }
}

}  // namespace simcore::document
