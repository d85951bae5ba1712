#include "document/PlanBuilder.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "quill_os/paths.h"

namespace simcore::document {

namespace {

using engine::BoxPlan;
using engine::BoxType;
using engine::BusKind;
using engine::BusPlan;

constexpr size_t kMostBoxes = 200;

BusKind kindOf(size_t choice) { return static_cast<BusKind>(choice); }

std::optional<std::array<uint8_t, 6>> parseMac(const std::string& text) {
    std::array<unsigned, 6> parts{};
    int used = 0;
    const int got = std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%n", &parts[0], &parts[1],
                                &parts[2], &parts[3], &parts[4], &parts[5], &used);
    if (got != 6 || static_cast<size_t>(used) != text.size() || text.size() != 17) {
        return std::nullopt;
    }
    std::array<uint8_t, 6> mac{};
    std::transform(parts.begin(), parts.end(), mac.begin(),
                   [](unsigned part) { return static_cast<uint8_t>(part); });
    return mac;
}

// Raw serial number of a device that does not state one: the text, cut or filled with zeros.
std::array<uint8_t, 16> snrOf(const std::string& serial) {
    std::array<uint8_t, 16> snr{};
    std::copy_n(serial.begin(), std::min(serial.size(), snr.size()), snr.begin());
    return snr;
}

void readCommon(const Node& node, BoxPlan& plan) {
    plan.identity.version = node.text("version", "1.4.2");
    plan.identity.buildTime = node.text("buildTime", "2025-03-14 12:00:00");
    plan.plugged = node.flag("plugged", true);
    const int64_t capacity = node.integer("traceCapacity", 0);
    if (capacity > 0) {
        const auto frames = static_cast<size_t>(capacity);
        plan.capacity = {frames, frames, frames, frames};
    }
    const auto snr = node.bytes("snr", plan.identity.snr.size());
    plan.identity.snr = snrOf(plan.identity.serial);
    if (!snr.empty()) {
        plan.identity.snr.fill(0);
        std::copy(snr.begin(), snr.end(), plan.identity.snr.begin());
    }
}

}  // namespace

RvDipStatus readDip(const Node& node) {
    RvDipStatus dip;
    dip.program = static_cast<uint8_t>(node.integer("program", 0));
    dip.sel2 = static_cast<uint8_t>(node.integer("sel2", 0));
    dip.sel1 = static_cast<uint8_t>(node.integer("sel1", 0));
    dip.sel0 = static_cast<uint8_t>(node.integer("sel0", 0));
    return dip;
}

void PlanBuilder::readDocument(const Node& root) {
    for (const auto& [name, node] : root.members("buses")) readBus(name, node);
    for (const Node& node : root.items("boxes")) readBox(node);
    for (const Node& node : root.items("usb")) readUsbDevice(node);
    for (const Node& node : root.items("sources")) readSource(node);
    for (const Node& node : root.items("responders")) readResponder(node);
    for (const Node& node : root.items("faults")) readFault(node);
    if (root.has("seed")) {
        m_plan.seed = static_cast<uint64_t>(root.integer("seed", 0));
    }
}

void PlanBuilder::readBus(const std::string& name, const Node& node) {
    if (name.empty()) node.complain("a bus needs a name");
    BusPlan bus;
    bus.name = name;
    bus.kind = kindOf(node.choice("kind", {"can", "lin", "ethernet", "flexray"}));
    bus.rates.bitrate = node.integer("bitrate", 0);
    bus.rates.dataBitrate = node.integer("dataBitrate", 0);
    if (bus.rates.dataBitrate > 0 && (bus.kind != BusKind::can || bus.rates.bitrate == 0)) {
        node.complain("dataBitrate", "is for CAN buses that have a bitrate");
    }
    m_plan.buses.push_back(std::move(bus));
}

void PlanBuilder::readBox(const Node& node) {
    const size_t number = m_plan.boxes.size() + 1;
    BoxPlan plan;
    plan.identity.type = BoxType::hub4e;
    plan.identity.name = node.text("name", "RV-Hub4e-" + std::to_string(number));
    plan.identity.model = node.text("model", "RV-Hub4e");
    char serial[32];
    std::snprintf(serial, sizeof serial, "RVH4E-%04zu", number);
    plan.identity.serial = node.text("serial", serial);
    plan.identity.networkCard = node.text("networkCard", "virtual0");
    plan.identity.comPort = static_cast<int32_t>(node.integer("com", 0));
    plan.identity.mac = {0x02, 0x51, 0x55, 0x49, 0x4C, static_cast<uint8_t>(number)};
    if (node.has("mac")) {
        const auto mac = parseMac(node.text("mac", ""));
        plan.identity.mac = mac.value_or(plan.identity.mac);
    }
    plan.identity.path = "net:" + plan.identity.serial;
    plan.linPortUsable = node.flag("linPort", true);
    if (const auto dip = node.child("dip")) plan.dip = readDip(*dip);
    readCommon(node, plan);
    const auto channels = node.child("channels");
    readChannels(node, plan, "can", BusKind::can, 4);
    readChannels(node, plan, "lin", BusKind::lin, 4);
    readChannels(node, plan, "eth", BusKind::ethernet, 6);
    readChannels(node, plan, "flexray", BusKind::flexray, 4);
    addBox(node, std::move(plan));
}

void PlanBuilder::readUsbDevice(const Node& node) {
    const size_t number = m_plan.boxes.size() + 1;
    const auto model = node.choice("model", {"USB-CAN", "RV-CANFD2", "ETAS"});
    BoxPlan plan;
    plan.identity.type = model == 2 ? BoxType::etas : BoxType::usbCan;
    plan.identity.model = node.text("model", "");
    plan.identity.serial =
        node.text("serial", plan.identity.model + "-" + std::to_string(1000 + number));
    plan.identity.name = node.text("name", plan.identity.serial);
    plan.identity.path = node.text("path", "usb:" + plan.identity.serial, 127);
    plan.identity.comPort = static_cast<int32_t>(node.integer("com", 0));
    const auto status = node.bytes("status", plan.identity.status.size());
    std::copy(status.begin(), status.end(), plan.identity.status.begin());
    readCommon(node, plan);
    const auto channels = node.child("channels");
    readChannels(node, plan, "can", BusKind::can, 2);
    addBox(node, std::move(plan));
}

void PlanBuilder::addBox(const Node& node, BoxPlan plan) {
    if (plan.identity.name.empty() && findBox("") == nullptr) {
        // A box without a name exists on the wire but cannot be addressed by faults.
        m_plan.boxes.push_back(std::move(plan));
        return;
    }
    if (findBox(plan.identity.name) != nullptr) node.complain("name", "is used twice");
    if (m_plan.boxes.size() >= kMostBoxes) node.complain("too many boxes");
    m_plan.boxes.push_back(std::move(plan));
}

void PlanBuilder::readChannels(const Node& box, BoxPlan& plan, const char* key, BusKind kind,
                               int64_t fallbackCount) {
    const auto channels = box.child("channels");
    const auto list = channels ? channels->child(key) : std::nullopt;
    if (!list) return addChannelCount(plan, kind, fallbackCount);
    if (list->isInteger()) {
        return addChannelCount(plan, kind, list->asInteger(0));
    }
    auto& buses = plan.channelBuses[static_cast<size_t>(kind)];
    for (const Node& channel : list->items()) {
        std::string bus = channel.isText() ? channel.asText() : channel.text("bus", "");
        if (bus.empty()) {
            bus = plan.identity.name + "." + key + std::to_string(buses.size());
        }
        useBus(bus, kind, channel);
        buses.push_back(bus);
    }
}

// The first two channels share a bus, each further one has a bus of its own.
void PlanBuilder::addChannelCount(BoxPlan& plan, BusKind kind, int64_t count) {
    static constexpr std::array<const char*, engine::kBusKinds> kShort{"can", "lin", "eth",
                                                                       "flexray"};
    auto& buses = plan.channelBuses[static_cast<size_t>(kind)];
    for (int64_t i = 0; i < count; ++i) {
        const std::string bus = plan.identity.name + "." + kShort[static_cast<size_t>(kind)] +
                                std::to_string(i == 1 ? 0 : i);
        if (findBus(bus) == nullptr) m_plan.buses.push_back({bus, kind, {}});
        buses.push_back(bus);
    }
}

void PlanBuilder::useBus(const std::string& name, BusKind kind, const Node& where) {
    const BusPlan* known = findBus(name);
    if (known == nullptr) {
        m_plan.buses.push_back({name, kind, {}});
    } else if (known->kind != kind) {
        where.complain("bus \"" + name + "\" is a " + engine::busKindName(known->kind) + " bus");
    }
}

const BusPlan* PlanBuilder::findBus(const std::string& name) const {
    const auto at = std::find_if(m_plan.buses.begin(), m_plan.buses.end(),
                                 [&](const BusPlan& bus) { return bus.name == name; });
    return at == m_plan.buses.end() ? nullptr : &*at;
}

BoxPlan* PlanBuilder::findBox(const std::string& name) {
    const auto at = std::find_if(m_plan.boxes.begin(), m_plan.boxes.end(),
                                 [&](const BoxPlan& box) { return box.identity.name == name; });
    return at == m_plan.boxes.end() ? nullptr : &*at;
}

std::string PlanBuilder::resolveFile(const std::string& file) const {
    const auto path = quill::os::pathFromUtf8(file);
    if (m_folder.empty() || path.is_absolute()) return file;
    return quill::os::pathToUtf8(quill::os::pathFromUtf8(m_folder) / path);
}

}  // namespace simcore::document
