#include "databaseitem/FlexRayDatabaseItem.h"

#include <utility>

#include "databaseitem/ArxmlPduReader.h"
#include "databaseitem/JsonObjectReader.h"

namespace Model::database {
namespace {

FlexRaySlot readSlot(JsonObjectReader& json) {
    FlexRaySlot slot;
    slot.slotId = json.integer("slot_id");
    slot.baseCycle = json.integer("base_cycle");
    if (json.has("repetition")) slot.repetition = json.integer("repetition");
    return slot;
}

void readFlexRayFrame(JsonObjectReader& json, FlexRayFrame& frame) {
    frame.id = json.integer("id");
    frame.length = json.integer("length");
    frame.name = json.text("name");
    frame.comment = json.text("comment");
    frame.channel = json.text("channel");
    frame.channelKind = json.text("channel_name");
    json.eachObject("slots",
                    [&](JsonObjectReader& slot) { frame.slots.push_back(readSlot(slot)); });
    if (frame.slots.empty() && json.has("slot_id")) frame.slots.push_back(readSlot(json));
    frame.senders = json.texts("senders");
    frame.receivers = json.texts("receivers");
    json.eachObject("ipdus", [&](JsonObjectReader& element) {
        auto pdu = std::make_shared<CanFdPdu>();
        readPdu(element, *pdu);
        frame.pdus.push_back(std::move(pdu));
    });
}

void readFlexRayTimes(JsonObjectReader& json, FlexRayCluster& cluster) {
    cluster.cycleUs = json.number("cycle_us");
    cluster.macrotickUs = json.number("macrotick_us");
    cluster.macroticksPerCycle = json.integer("macroticks_per_cycle");
    cluster.staticSlots = json.integer("static_slots");
    cluster.staticSlotMacroticks = json.integer("static_slot_macroticks");
    cluster.minislots = json.integer("minislots");
    cluster.minislotMacroticks = json.integer("minislot_macroticks");
    cluster.staticPayloadLength = json.integer("static_payload_length");
}

void readFlexRayCluster(JsonObjectReader& json, FlexRayCluster& cluster) {
    cluster.name = json.text("name");
    cluster.protocol = json.text("protocol");
    cluster.protocolVersion = json.textOrNumber("protoclo_version");
    cluster.baudRate = json.integer("baud_rate");
    readFlexRayTimes(json, cluster);
    cluster.nodes = json.namesOrTexts("node_infos");
    json.eachObject("channels", [&](JsonObjectReader& element) {
        FlexRayChannel& channel = cluster.channels.emplace_back();
        channel.name = element.text("name");
        channel.kind = element.text("channel");
        channel.frames = element.texts("frames");
    });
    json.eachObject("frames", [&](JsonObjectReader& element) {
        auto frame = std::make_shared<FlexRayFrame>();
        readFlexRayFrame(element, *frame);
        cluster.frames.push_back(std::move(frame));
    });
}

}  // namespace

FlexRayDatabaseItem::FlexRayDatabaseItem() : m_database(std::make_shared<FlexRayDatabase>()) {}

bool FlexRayDatabaseItem::readDocument(const QJsonObject& root, std::string& fault) {
    JsonObjectReader json(root, fault);
    auto database = std::make_shared<FlexRayDatabase>();
    json.eachObject("flexray_cluster", [&](JsonObjectReader& element) {
        auto cluster = std::make_shared<FlexRayCluster>();
        readFlexRayCluster(element, *cluster);
        database->clusters.push_back(std::move(cluster));
    });
    if (json.failed()) return false;
    m_database = std::move(database);
    return true;
}

void FlexRayDatabaseItem::clear() { m_database = std::make_shared<FlexRayDatabase>(); }

}  // namespace Model::database
