#include "databaseitem/EthArxmlDatabaseItem.h"

#include <utility>

#include "databaseitem/ArxmlPduReader.h"
#include "databaseitem/JsonObjectReader.h"

namespace Model::database {
namespace {

std::optional<int64_t> optionalInteger(JsonObjectReader& json, const char* key) {
    if (!json.has(key)) return std::nullopt;
    return json.longInteger(key);
}

EthService readService(JsonObjectReader& json) {
    EthService service;
    service.name = json.text("name");
    service.isProvided = json.text("role") == "PROVIDED";
    service.serviceId = optionalInteger(json, "service_id");
    service.instanceId = optionalInteger(json, "instance_id");
    service.majorVersion = optionalInteger(json, "major_version");
    return service;
}

void readSocket(JsonObjectReader& json, EthSocket& socket) {
    socket.name = json.text("name");
    socket.protocol = json.text("protocol");
    if (json.has("port")) socket.port = json.integer("port");
    socket.endpoint = json.text("endpoint");
    socket.address = json.text("address");
    socket.nodes = json.texts("nodes");
    json.eachObject("services", [&](JsonObjectReader& element) {
        socket.services.push_back(readService(element));
    });
}

void readEndpoint(JsonObjectReader& json, EthEndpoint& endpoint) {
    endpoint.name = json.text("name");
    endpoint.ipv4 = json.text("ipv4");
    endpoint.netmask = json.text("netmask");
    endpoint.ipv6 = json.text("ipv6");
}

void readEthPdu(JsonObjectReader& json, EthPdu& pdu) {
    pdu.headerId = optionalInteger(json, "header_id");
    pdu.connection = json.text("connection");
    pdu.server = json.text("server");
    pdu.client = json.text("client");
    json.eachObject("ipdu", [&](JsonObjectReader& element) {
        auto content = std::make_shared<CanFdPdu>();
        readPdu(element, *content);
        pdu.pdus.push_back(std::move(content));
    });
}

void readEthChannel(JsonObjectReader& json, EthChannel& channel) {
    channel.name = json.text("name");
    if (json.has("vlan_id")) channel.vlanId = json.integer("vlan_id");
    channel.vlanName = json.text("vlan_name");
    json.eachObject("endpoints", [&](JsonObjectReader& element) {
        readEndpoint(element, channel.endpoints.emplace_back());
    });
    json.eachObject("sockets", [&](JsonObjectReader& element) {
        readSocket(element, channel.sockets.emplace_back());
    });
    json.eachObject("ipdus", [&](JsonObjectReader& element) {
        auto pdu = std::make_shared<EthPdu>();
        readEthPdu(element, *pdu);
        channel.pdus.push_back(std::move(pdu));
    });
}

}  // namespace

EthArxmlDatabaseItem::EthArxmlDatabaseItem() : m_database(std::make_shared<EthArxmlDatabase>()) {}

bool EthArxmlDatabaseItem::readDocument(const QJsonObject& root, std::string& fault) {
    JsonObjectReader json(root, fault);
    auto database = std::make_shared<EthArxmlDatabase>();
    json.eachObject("eth_cluster", [&](JsonObjectReader& element) {
        auto cluster = std::make_shared<EthCluster>();
        cluster->name = element.text("name");
        cluster->baudRate = element.longInteger("baud_rate");
        cluster->nodes = element.namesOrTexts("node_infos");
        element.eachObject("channels", [&](JsonObjectReader& inner) {
            auto channel = std::make_shared<EthChannel>();
            readEthChannel(inner, *channel);
            cluster->channels.push_back(std::move(channel));
        });
        database->clusters.push_back(std::move(cluster));
    });
    if (json.failed()) return false;
    m_database = std::move(database);
    return true;
}

void EthArxmlDatabaseItem::clear() { m_database = std::make_shared<EthArxmlDatabase>(); }

}  // namespace Model::database
