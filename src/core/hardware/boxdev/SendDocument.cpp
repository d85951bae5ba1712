#include "core/hardware/boxdev/SendDocument.h"

#include <array>
#include <charconv>

#include "core/hardware/boxdev/JsonFields.h"

namespace RV::BoxDev {
namespace {

using Json = nlohmann::ordered_json;
constexpr size_t kMostCanBytes = 64;
constexpr size_t kMostLinBytes = 8;
constexpr size_t kMostEthBytes = 1522;
constexpr size_t kMostSlots = 1024;

Json rollingCountPart(const rv::FrameUpdate& update) {
    return {{"is_rc", update.counterEnabled},
            {"rc_start_bit", update.counterStartBit},
            {"rc_data_length", update.counterLength},
            {"is_rc_bigEndian", update.counterBigEndian},
            {"is_reset", update.counterReset}};
}

Json canFramePart(const rv::CanSendFrame& frame) {
    return {{"can_id", frame.id},
            {"can_data", frame.data},
            {"can_bFd", frame.extend.EDL() != 0},
            {"can_brs", frame.extend.BRS() != 0},
            {"can_extended", frame.extend.IDE() != 0},
            {"can_esi", frame.extend.ESI() != 0},
            {"can_remote", frame.extend.RTR() != 0},
            {"data_length", frame.data.size()}};
}

void readCycle(JsonFields& fields, bool& cyclic, std::string& uuid, int32_t& ms, int32_t& limit) {
    std::string option;
    fields.read("cycle_option", option);
    if (fields.ok() && option != "once" && option != "cycle") {
        fields.fail("cycle_option", "is neither \"once\" nor \"cycle\"");
    }
    cyclic = option == "cycle";
    if (!cyclic) return;
    fields.read("cycle_uuid", uuid);
    fields.read("cycle_ms", ms, 1);
    fields.read("limit_count", limit);
    if (fields.ok() && (uuid.empty() || uuid.size() > 63)) {
        fields.fail("cycle_uuid", "has not 1 to 63 characters");
    }
}

void readCanFrame(JsonFields& fields, rv::CanSendFrame& frame) {
    JsonFields part(fields.child("can_frame"), "can_frame.");
    bool fd = false;
    bool brs = false;
    bool extended = false;
    bool esi = false;
    bool remote = false;
    size_t length = 0;
    part.read("can_id", frame.id, 0, 0x1FFFFFFF);
    part.readBytes("can_data", frame.data, kMostCanBytes);
    part.read("can_bFd", fd);
    part.read("can_brs", brs);
    part.read("can_extended", extended);
    if (part.has("can_esi")) part.read("can_esi", esi);
    if (part.has("can_remote")) part.read("can_remote", remote);
    part.read("data_length", length, 0, kMostCanBytes);
    if (part.ok() && length != frame.data.size()) {
        part.fail("data_length", "is not the length of can_data");
    }
    if (part.ok() && !extended && frame.id > 0x7FF) part.fail("can_id", "has more than 11 bits");
    frame.extend.setEDL(fd);
    frame.extend.setBRS(brs);
    frame.extend.setIDE(extended);
    frame.extend.setESI(esi);
    frame.extend.setRTR(remote);
    if (!part.ok() && fields.ok()) fields.fail("can_frame", part.reason());
}

void readUpdate(JsonFields& fields, rv::FrameUpdate& update) {
    JsonFields part(fields.child("rolling_count"), "rolling_count.");
    part.read("is_rc", update.counterEnabled);
    part.read("rc_start_bit", update.counterStartBit);
    part.read("rc_data_length", update.counterLength);
    part.read("is_rc_bigEndian", update.counterBigEndian);
    part.read("is_reset", update.counterReset);
    if (!part.ok() && fields.ok()) fields.fail("rolling_count", part.reason());
    fields.read("crc_type", update.crcType);
    fields.read("crc_start_bit", update.crcStartBit);
    fields.read("crc_data_length", update.crcLength);
    fields.read("is_crc_bigEndian", update.crcBigEndian);
    fields.readBytes("crc_key", update.crcKey, kMostCanBytes);
}

bool appendMac(const std::string& text, std::vector<uint8_t>& bytes) {
    if (text.size() != 17) return false;
    for (size_t i = 0; i < 6; ++i) {
        const char* first = text.data() + 3 * i;
        uint8_t byte = 0;
        const auto parsed = std::from_chars(first, first + 2, byte, 16);
        if (parsed.ec != std::errc{} || parsed.ptr != first + 2) return false;
        bytes.push_back(byte);
    }
    return true;
}

void appendBig16(std::vector<uint8_t>& bytes, uint16_t value) {
    bytes.push_back(static_cast<uint8_t>(value >> 8U));
    bytes.push_back(static_cast<uint8_t>(value));
}

// Puts the MAC header in front of the payload when the document gives its parts.
void readEthHeader(JsonFields& fields, std::vector<uint8_t>& bytes) {
    std::string destination;
    std::string source;
    uint16_t etherType = 0;
    fields.read("dst_mac", destination);
    fields.read("src_mac", source);
    fields.read("eth_type", etherType);
    if (!fields.ok()) return;
    if (!appendMac(destination, bytes)) return fields.fail("dst_mac", "is not a MAC address");
    if (!appendMac(source, bytes)) return fields.fail("src_mac", "is not a MAC address");
    if (fields.has("vlan_id")) {
        uint16_t vlan = 0;
        fields.read("vlan_id", vlan, 0, 4094);
        appendBig16(bytes, 0x8100);
        appendBig16(bytes, vlan);
    }
    appendBig16(bytes, etherType);
}

}  // namespace

std::string buildCanSendDocument(const std::string& cmd, const std::string& deviceId,
                                 const CanSendRequest& request) {
    const bool fd = request.frame.extend.EDL() != 0;
    Json document = {{"cmd", cmd},
                     {"id", deviceId},
                     {"type", fd ? "canfd" : "can"},
                     {"port_id", request.frame.channel},
                     {"dlc", request.frame.extend.DLC()},
                     {"can_frame", canFramePart(request.frame)},
                     {"rolling_count", rollingCountPart(request.update)},
                     {"crc_type", request.update.crcType},
                     {"crc_start_bit", request.update.crcStartBit},
                     {"crc_data_length", request.update.crcLength},
                     {"is_crc_bigEndian", request.update.crcBigEndian},
                     {"crc_key", request.update.crcKey},
                     {"signal_type", "raw"},
                     {"cycle_option", request.cyclic ? "cycle" : "once"}};
    if (request.cyclic) {
        document["cycle_uuid"] = request.uuid;
        document["cycle_ms"] = request.cycleMs;
        document["limit_count"] = request.limitCount;
    }
    return document.dump();
}

std::optional<CanSendRequest> parseCanSendDocument(const nlohmann::json& document,
                                                   std::string& reason) {
    CanSendRequest request;
    JsonFields fields(document);
    std::string type;
    uint8_t dlc = 0;
    fields.read("type", type);
    fields.read("port_id", request.frame.channel);
    fields.read("dlc", dlc, 0, 15);
    readCanFrame(fields, request.frame);
    request.frame.extend.setDLC(dlc);
    readUpdate(fields, request.update);
    readCycle(fields, request.cyclic, request.uuid, request.cycleMs, request.limitCount);
    reason = fields.reason();
    if (!fields.ok()) return std::nullopt;
    return request;
}

std::string buildJobDocument(const std::string& cmd, const std::string& deviceId,
                             const std::string& uuid) {
    return Json{{"cmd", cmd}, {"id", deviceId}, {"cycle_uuid", uuid}}.dump();
}

std::string buildLinScheduleDocument(const std::string& deviceId,
                                     const LinScheduleRequest& request) {
    Json slots = Json::array();
    for (const rv::LinSlot& slot : request.slots) {
        slots.push_back({{"id", slot.id},
                         {"time_interval", slot.intervalMs},
                         {"msg_type", slot.msgType},
                         {"check_type", slot.checkType},
                         {"data", slot.data}});
    }
    return Json{{"cmd", "StartLinScheduleTable"},
                {"id", deviceId},
                {"port_id", request.channel},
                {"lin_schedule_table", {{"name", request.name}, {"slot_array", slots}}}}
        .dump();
}

std::optional<LinScheduleRequest> parseLinScheduleDocument(const nlohmann::json& document,
                                                           std::string& reason) {
    LinScheduleRequest request;
    JsonFields fields(document);
    fields.read("port_id", request.channel, 0, 255);
    JsonFields table(fields.child("lin_schedule_table"), "lin_schedule_table.");
    table.read("name", request.name);
    const nlohmann::json& slots = table.child("slot_array");
    if (table.ok() && (!slots.is_array() || slots.empty() || slots.size() > kMostSlots)) {
        table.fail("slot_array", "is not a list of 1 to 1024 slots");
    }
    if (table.ok()) {
        for (const auto& item : slots) {
            rv::LinSlot slot;
            JsonFields part(item, "slot_array[" + std::to_string(request.slots.size()) + "].");
            part.read("id", slot.id, 0, 63);
            part.read("time_interval", slot.intervalMs, 1, 3'600'000);
            part.read("msg_type", slot.msgType, 3, 4);
            part.read("check_type", slot.checkType, 0, 1);
            part.readBytes("data", slot.data, kMostLinBytes);
            if (!part.ok()) {
                table.fail("", part.reason());
                break;
            }
            request.slots.push_back(std::move(slot));
        }
    }
    reason = fields.ok() ? table.reason() : fields.reason();
    if (!reason.empty()) return std::nullopt;
    return request;
}

std::optional<EthSendRequest> parseEthSendDocument(const nlohmann::json& document,
                                                   std::string& reason) {
    EthSendRequest request;
    JsonFields fields(document);
    fields.read("port_id", request.channel, 0, 255);
    if (fields.has("dst_mac")) readEthHeader(fields, request.bytes);
    std::vector<uint8_t> rest;
    fields.readBytes("eth_frame", rest, kMostEthBytes);
    request.bytes.insert(request.bytes.end(), rest.begin(), rest.end());
    readCycle(fields, request.cyclic, request.uuid, request.cycleMs, request.limitCount);
    if (fields.ok() && (request.bytes.size() < 14 || request.bytes.size() > kMostEthBytes)) {
        fields.fail("eth_frame", "gives a frame of other than 14 to 1522 bytes");
    }
    reason = fields.reason();
    if (!fields.ok()) return std::nullopt;
    return request;
}

}  // namespace RV::BoxDev
