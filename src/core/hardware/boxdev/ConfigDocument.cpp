#include "core/hardware/boxdev/ConfigDocument.h"

#include "core/hardware/boxdev/JsonFields.h"

namespace RV::BoxDev {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const rv::CanChannelSettings& c) {
    return {{"channel", c.channel},
            {"enabled", c.enabled},
            {"fd", c.fd},
            {"bitrate", c.bitrate},
            {"data_bitrate", c.dataBitrate},
            {"sample_point", c.samplePoint},
            {"data_sample_point", c.dataSamplePoint},
            {"termination", c.termination},
            {"listen_only", c.listenOnly}};
}

Json toJson(const rv::LinChannelSettings& c) {
    return {{"channel", c.channel},
            {"enabled", c.enabled},
            {"baudrate", c.baudrate},
            {"master", c.master},
            {"version", c.version}};
}

Json toJson(const rv::EthChannelSettings& c) {
    return {
        {"channel", c.channel}, {"enabled", c.enabled}, {"speed", c.speed}, {"master", c.master}};
}

void readChannel(JsonFields& fields, rv::CanChannelSettings& c) {
    fields.read("channel", c.channel, 0, 255);
    fields.read("enabled", c.enabled);
    fields.read("fd", c.fd);
    fields.read("bitrate", c.bitrate, 10'000, 1'000'000);
    fields.read("data_bitrate", c.dataBitrate, 10'000, 10'000'000);
    fields.read("sample_point", c.samplePoint, 50.0, 95.0);
    fields.read("data_sample_point", c.dataSamplePoint, 50.0, 95.0);
    fields.read("termination", c.termination);
    fields.read("listen_only", c.listenOnly);
}

void readChannel(JsonFields& fields, rv::LinChannelSettings& c) {
    fields.read("channel", c.channel, 0, 255);
    fields.read("enabled", c.enabled);
    fields.read("baudrate", c.baudrate, 1'000, 20'000);
    fields.read("master", c.master);
    fields.read("version", c.version);
    if (fields.ok() && c.version != 13 && c.version != 20 && c.version != 21 && c.version != 22) {
        fields.fail("version", "is not 13, 20, 21 or 22");
    }
}

void readChannel(JsonFields& fields, rv::EthChannelSettings& c) {
    fields.read("channel", c.channel, 0, 255);
    fields.read("enabled", c.enabled);
    fields.read("speed", c.speed);
    fields.read("master", c.master);
    if (fields.ok() && c.speed != 100 && c.speed != 1000) {
        fields.fail("speed", "is not 100 or 1000");
    }
}

template <class Channel>
Json listOf(const std::vector<Channel>& channels) {
    Json list = Json::array();
    for (const Channel& channel : channels) list.push_back(toJson(channel));
    return list;
}

template <class Channel>
bool readList(const nlohmann::json& document, const char* key, std::vector<Channel>& channels,
              std::string& reason) {
    if (!document.contains(key)) return true;
    const nlohmann::json& list = document[key];
    if (!list.is_array() || list.size() > 256) {
        reason = std::string("\"") + key + "\" is not a list of channels";
        return false;
    }
    for (const auto& item : list) {
        Channel channel;
        JsonFields fields(item, std::string(key) + "[" + std::to_string(channels.size()) + "].");
        readChannel(fields, channel);
        if (!fields.ok()) {
            reason = fields.reason();
            return false;
        }
        channels.push_back(channel);
    }
    return true;
}

void addLists(Json& document, const rv::BoxConfig& config) {
    if (!config.can.empty()) document["can_channels"] = listOf(config.can);
    if (!config.lin.empty()) document["lin_channels"] = listOf(config.lin);
    if (!config.eth.empty()) document["eth_channels"] = listOf(config.eth);
}

}  // namespace

std::string buildConfigDocument(const std::string& cmd, const std::string& deviceId,
                                const rv::BoxConfig& config) {
    Json document = {{"cmd", cmd}, {"id", deviceId}};
    addLists(document, config);
    return document.dump();
}

std::string configBody(const rv::BoxConfig& config) {
    Json body = Json::object();
    addLists(body, config);
    return body.dump();
}

std::optional<rv::BoxConfig> parseConfig(const nlohmann::json& document, std::string& reason) {
    rv::BoxConfig config;
    if (!document.is_object()) {
        reason = "the configuration is not an object";
        return std::nullopt;
    }
    if (!readList(document, "can_channels", config.can, reason) ||
        !readList(document, "lin_channels", config.lin, reason) ||
        !readList(document, "eth_channels", config.eth, reason)) {
        return std::nullopt;
    }
    return config;
}

std::string identityBody(const rv::BoxIdentity& identity) {
    return Json{{"com", identity.com},
                {"mac", identity.mac},
                {"model", identity.model},
                {"networkCard", identity.networkCard},
                {"sn", identity.serial},
                {"version", identity.version},
                {"dip",
                 {{"program", identity.dip.program},
                  {"sel2", identity.dip.sel2},
                  {"sel1", identity.dip.sel1},
                  {"sel0", identity.dip.sel0}}}}
        .dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<rv::BoxIdentity> parseIdentity(const std::string& body, std::string& reason) {
    const auto document = nlohmann::json::parse(body, nullptr, false);
    rv::BoxIdentity identity;
    JsonFields fields(document);
    fields.read("com", identity.com);
    fields.read("mac", identity.mac);
    fields.read("model", identity.model);
    fields.read("networkCard", identity.networkCard);
    fields.read("sn", identity.serial);
    fields.read("version", identity.version);
    JsonFields dip(fields.child("dip"), "dip.");
    dip.read("program", identity.dip.program);
    dip.read("sel2", identity.dip.sel2);
    dip.read("sel1", identity.dip.sel1);
    dip.read("sel0", identity.dip.sel0);
    reason = fields.ok() ? dip.reason() : fields.reason();
    if (!reason.empty()) return std::nullopt;
    return identity;
}

std::optional<rv::BoxConfig> parseConfigBody(const std::string& body, std::string& reason) {
    return parseConfig(nlohmann::json::parse(body, nullptr, false), reason);
}

}  // namespace RV::BoxDev
