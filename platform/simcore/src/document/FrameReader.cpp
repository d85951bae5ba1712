#include <algorithm>
#include <cstdlib>
#include <string>

#include "document/PlanBuilder.h"

// Frames, periodic sources, replays and responders of a document.
namespace simcore::document {

namespace {

using engine::AnyFrame;
using engine::BusKind;

constexpr double kNsPerMilli = 1e6;

// Identifiers are integers, or texts in the way that tools write them: "0x123", "18FEF100x".
int64_t readId(const Node& node, int64_t most) {
    const auto id = node.child("id");
    if (!id) {
        node.complain("id", "is missing");
        return 0;
    }
    const bool isText = id->isText();
    const int64_t value =
        isText ? std::strtoll(id->asText().c_str(), nullptr, 16) : id->asInteger(0);
    if (value >= 0 && value <= most) return value;
    id->complain(isText ? "expected a hexadecimal identifier up to " + std::to_string(most)
                        : "expected an integer from 0 to " + std::to_string(most));
    return 0;
}

template <class Frame>
uint16_t takeBytes(const Node& node, Frame& frame, size_t most) {
    const auto bytes = node.bytes("data", most);
    std::copy(bytes.begin(), bytes.end(), frame.data);
    return static_cast<uint16_t>(bytes.size());
}

RvCanFrame readCanFrame(const Node& node) {
    namespace flag = engine::canflag;
    RvCanFrame frame;
    const bool fd = node.flag("fd", false);
    const bool extended = node.flag("extended", false);
    if (fd) frame.extend[0] |= flag::kEdl;
    if (fd && node.flag("brs", true)) frame.extend[0] |= flag::kBrs;
    if (extended) frame.extend[1] |= flag::kIde;
    if (node.flag("remote", false)) frame.extend[1] |= flag::kRtr;
    frame.id = static_cast<uint32_t>(readId(node, extended ? 0x1FFFFFFF : 0x7FF));
    frame.length = static_cast<uint8_t>(takeBytes(node, frame, fd ? 64 : 8));
    return frame;
}

RvEthFrame readEthFrame(const Node& node) {
    RvEthFrame frame;
    frame.length = takeBytes(node, frame, kRvEthMaxLength);
    return frame;
}

RvFlexRayFrame readFlexRayFrame(const Node& node) {
    RvFlexRayFrame frame;
    frame.slot = static_cast<uint16_t>(node.integer("slot", 1));
    frame.cycle = static_cast<uint8_t>(node.integer("cycle", 0));
    frame.flags = 2;  // valid data
    frame.length = takeBytes(node, frame, 254);
    return frame;
}

int payloadLength(const AnyFrame& frame) {
    return std::visit([](const auto& f) { return static_cast<int>(f.length); }, frame);
}

}  // namespace

RvLinFrame readLinFrame(const Node& node) {
    RvLinFrame frame;
    frame.id = static_cast<uint8_t>(readId(node, 63));
    frame.checkMode = static_cast<uint8_t>(node.choice("checksum", {"classic", "enhanced"}, 1));
    frame.length = static_cast<uint8_t>(takeBytes(node, frame, 8));
    frame.checksum = engine::linChecksum(frame);
    return frame;
}

AnyFrame readFrame(const Node& node, BusKind kind) {
    AnyFrame frame;
    switch (kind) {
        case BusKind::can:
            frame = readCanFrame(node);
            break;
        case BusKind::lin:
            frame = readLinFrame(node);
            break;
        case BusKind::ethernet:
            frame = readEthFrame(node);
            break;
        case BusKind::flexray:
            frame = readFlexRayFrame(node);
            break;
    }
    const bool valid = std::visit([](auto& f) { return engine::normalise(f); }, frame);
    if (!valid) node.complain("data", "is not a payload of this kind of bus");
    return frame;
}

void PlanBuilder::readSource(const Node& node) {
    const std::string bus = node.text("bus", "");
    if (node.has("bus") && findBus(bus) == nullptr) {
        return node.complain("bus", "there is no bus \"" + bus + "\"");
    }
    const auto periodic = node.child("periodic");
    const auto replay = node.child("replay");
    if (periodic) return readPeriodic(*periodic, bus);
    if (replay) readReplay(*replay, bus);
}

void PlanBuilder::readPeriodic(const Node& node, const std::string& bus) {
    const engine::BusPlan* target = findBus(bus);
    if (target == nullptr) return;
    engine::PeriodicPlan plan;
    plan.bus = bus;
    plan.frame = readFrame(node, target->kind);
    const double period = node.number("period_ms", 1.0);
    plan.periodNs = static_cast<int64_t>(period * kNsPerMilli);
    constexpr int64_t kShortestPeriodNs = 10'000;
    if (period > 0.0 && plan.periodNs < kShortestPeriodNs) {
        node.complain("period_ms", "expected 0, or 0.01 and more");
    }
    plan.offsetNs = static_cast<int64_t>(node.number("offset_ms", 0.0) * kNsPerMilli);
    plan.count = static_cast<uint64_t>(node.integer("count", 0));
    if (const auto counter = node.child("counter")) {
        plan.counterByte = static_cast<int>(counter->integer("byte", 0));
        plan.counterBytes = static_cast<int>(counter->integer("bytes", 4));
        if (plan.counterByte + plan.counterBytes > payloadLength(plan.frame)) {
            counter->complain("lies outside the payload");
        }
    }
    m_plan.sources.emplace_back(std::move(plan));
}

void PlanBuilder::readReplay(const Node& node, const std::string& bus) {
    engine::ReplayPlan plan;
    constexpr size_t kLongestPath = 4096;
    plan.file = resolveFile(node.text("file", "", kLongestPath));
    plan.speed = node.number("speed", 1.0);
    plan.loop = node.flag("loop", false);
    plan.onTrace = node.choice("start", {"trace", "load"}, 0) == 0;
    for (const auto& [channel, target] : node.members("channels")) {
        const std::string name = target.asText();
        if (findBus(name) == nullptr) target.complain("there is no bus \"" + name + "\"");
        plan.channels[channel] = name;
    }
    for (const engine::BusPlan& known : m_plan.buses) {
        // With a bus named, everything of its kind goes there and nothing else is played.
        if (!bus.empty() && known.name != bus) continue;
        plan.buses[static_cast<size_t>(known.kind)].push_back(known.name);
    }
    m_plan.sources.emplace_back(std::move(plan));
}

void PlanBuilder::readResponder(const Node& node) {
    engine::ResponderPlan plan;
    plan.bus = node.text("bus", "");
    const engine::BusPlan* bus = findBus(plan.bus);
    if (bus == nullptr || bus->kind != BusKind::lin) {
        return node.complain("bus", "there is no LIN bus \"" + plan.bus + "\"");
    }
    plan.frame = readLinFrame(node);
    m_plan.responders.push_back(std::move(plan));
}

}  // namespace simcore::document
