#include "arxml/DatabaseJson.h"

#include <algorithm>

#include "arxml/PartyReader.h"
#include "arxml/PduJson.h"

namespace quill::arxml {
namespace {

// The shortest cycle of the PDUs that stand in a frame themselves; a secured PDU is sent when its
// payload is.
std::optional<double> cycleOf(const Frame& frame, const Database& database) {
    std::optional<double> shortest;
    const auto consider = [&](const Pdu& pdu) {
        if (!pdu.timing.cycleMs || *pdu.timing.cycleMs <= 0) return false;
        if (!shortest || *pdu.timing.cycleMs < *shortest) shortest = pdu.timing.cycleMs;
        return true;
    };
    for (const PduMapping& mapping : frame.pdus) {
        const Pdu& pdu = database.pdus[mapping.pdu];
        if (!consider(pdu) && pdu.secure && !pdu.parts.empty()) {
            consider(database.pdus[pdu.parts[0].pdu]);
        }
    }
    return shortest;
}

class ClusterJson {
public:
    ClusterJson(dbjson::JsonWriter& json, const Database& database, size_t maxBytes)
        : m_json(json), m_database(database), m_pdus(json, database, maxBytes) {}

    void writeCluster(const Cluster& cluster, bool isFlexRay);
    void writeEth(const EthCluster& cluster);
    [[nodiscard]] bool isTooLarge() const { return m_pdus.isTooLarge(); }

private:
    void writeNodes(const EcuSet& nodes);
    void writeFlexRayTimes(const Cluster& cluster);
    void writeChannels(const Cluster& cluster, bool isFlexRay);
    void writeFrame(const Frame& frame, const Cluster& cluster, bool isFlexRay);
    void writeSlots(const Frame& frame, const Channel& channel);
    void writeEthChannel(const EthChannel& channel);
    void writeEndpoint(const EthEndpoint& endpoint);
    void writeSocket(const EthSocket& socket, const EthChannel& channel);
    void writeEthPdu(const EthPdu& pdu, const EthChannel& channel);

    dbjson::JsonWriter& m_json;
    const Database& m_database;
    PduJson m_pdus;
};

void ClusterJson::writeNodes(const EcuSet& nodes) {
    m_json.key("node_infos").beginArray();
    for (const uint32_t index : nodes) {
        const Ecu& ecu = m_database.ecus[index];
        m_json.beginObject();
        m_json.member("name", ecu.name);
        if (!ecu.comment.empty()) m_json.member("comment", ecu.comment);
        m_json.endObject();
    }
    m_json.endArray();
}

void ClusterJson::writeCluster(const Cluster& cluster, bool isFlexRay) {
    m_json.beginObject();
    m_json.member("name", cluster.name);
    if (!cluster.comment.empty()) m_json.member("comment", cluster.comment);
    m_json.member("protocol", cluster.protocol);
    m_json.member("protoclo_version", cluster.protocolVersion);
    m_json.member("baud_rate", cluster.baudRate);
    if (isFlexRay) {
        writeFlexRayTimes(cluster);
    } else {
        m_json.member("can_fd_baud_rate", cluster.fdBaudRate);
        m_json.member("fd_baud_rate", cluster.fdBaudRate);
    }
    writeNodes(cluster.nodes);
    writeChannels(cluster, isFlexRay);
    m_json.key("frames").beginArray();
    for (const Frame& frame : cluster.frames) writeFrame(frame, cluster, isFlexRay);
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeFlexRayTimes(const Cluster& cluster) {
    m_json.member("cycle_us", cluster.cycleUs);
    m_json.member("macrotick_us", cluster.macrotickUs);
    m_json.member("macroticks_per_cycle", cluster.macroticksPerCycle);
    m_json.member("static_slots", cluster.staticSlots);
    m_json.member("static_slot_macroticks", cluster.staticSlotMacroticks);
    m_json.member("minislots", cluster.minislots);
    m_json.member("minislot_macroticks", cluster.minislotMacroticks);
    m_json.member("static_payload_length", cluster.staticPayloadBytes);
}

void ClusterJson::writeChannels(const Cluster& cluster, bool isFlexRay) {
    std::vector<std::vector<const Frame*>> byChannel(cluster.channels.size());
    for (const Frame& frame : cluster.frames) byChannel[frame.channel].push_back(&frame);
    m_json.key("channels").beginArray();
    for (size_t index = 0; index < cluster.channels.size(); ++index) {
        m_json.beginObject();
        m_json.member("name", cluster.channels[index].name);
        if (isFlexRay) m_json.member("channel", cluster.channels[index].kind);
        m_json.key("frames").beginArray();
        for (const Frame* frame : byChannel[index]) m_json.value(frame->name);
        m_json.endArray();
        m_json.endObject();
    }
    m_json.endArray();
}

void ClusterJson::writeFrame(const Frame& frame, const Cluster& cluster, bool isFlexRay) {
    if (m_pdus.isTooLarge()) return;
    const Channel& channel = cluster.channels[frame.channel];
    Parties parties = frame.ports;
    for (const PduMapping& mapping : frame.pdus) {
        const auto known = channel.pduParties.find(mapping.pdu);
        if (known == channel.pduParties.end()) continue;
        addAll(parties.senders, known->second.senders);
        addAll(parties.receivers, known->second.receivers);
    }
    m_json.beginObject();
    m_json.member("id", frame.id);
    m_json.member("length", frame.lengthBytes);
    m_json.member("name", frame.name);
    m_json.member("triggering", frame.triggering);
    m_json.member("comment", frame.comment);
    if (isFlexRay) {
        writeSlots(frame, channel);
    } else {
        m_json.member("is_extended_frame", frame.isExtended);
        m_json.member("is_canfd", frame.isCanFd);
        m_json.member("rx_behavior", frame.rxBehavior);
        m_json.member("tx_behavior", frame.txBehavior);
    }
    m_json.member("channel", channel.name);
    if (const auto cycle = cycleOf(frame, m_database)) m_json.member("cycle_time", *cycle);
    writeEcus(m_json, "senders", m_database, parties.senders);
    writeEcus(m_json, "receivers", m_database, parties.receivers);
    m_json.key("ipdus").beginArray();
    for (const PduMapping& mapping : frame.pdus) {
        m_pdus.writeMapped(mapping, channel, parties.receivers);
    }
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeSlots(const Frame& frame, const Channel& channel) {
    m_json.member("channel_name", channel.kind);
    const FlexRaySlot first = frame.slots.empty() ? FlexRaySlot{} : frame.slots.front();
    m_json.member("slot_id", first.slotId);
    m_json.member("base_cycle", first.baseCycle);
    m_json.member("repetition", first.repetition);
    m_json.key("slots").beginArray();
    for (const FlexRaySlot& slot : frame.slots) {
        m_json.beginObject();
        m_json.member("slot_id", slot.slotId);
        m_json.member("base_cycle", slot.baseCycle);
        m_json.member("repetition", slot.repetition);
        m_json.endObject();
    }
    m_json.endArray();
}

void ClusterJson::writeEth(const EthCluster& cluster) {
    m_json.beginObject();
    m_json.member("name", cluster.name);
    if (!cluster.comment.empty()) m_json.member("comment", cluster.comment);
    m_json.member("baud_rate", cluster.baudRate);
    writeNodes(cluster.nodes);
    m_json.key("channels").beginArray();
    for (const EthChannel& channel : cluster.channels) writeEthChannel(channel);
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeEthChannel(const EthChannel& channel) {
    m_json.beginObject();
    m_json.member("name", channel.name);
    if (channel.vlanId) m_json.member("vlan_id", *channel.vlanId);
    if (!channel.vlanName.empty()) m_json.member("vlan_name", channel.vlanName);
    m_json.key("endpoints").beginArray();
    for (const EthEndpoint& endpoint : channel.endpoints) writeEndpoint(endpoint);
    m_json.endArray();
    m_json.key("sockets").beginArray();
    for (const EthSocket& socket : channel.sockets) writeSocket(socket, channel);
    m_json.endArray();
    m_json.key("ipdus").beginArray();
    for (const EthPdu& pdu : channel.pdus) writeEthPdu(pdu, channel);
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeEndpoint(const EthEndpoint& endpoint) {
    m_json.beginObject();
    m_json.member("name", endpoint.name);
    m_json.member("ipv4", endpoint.ipv4);
    m_json.member("netmask", endpoint.netmask);
    m_json.member("ipv6", endpoint.ipv6);
    m_json.endObject();
}

void ClusterJson::writeSocket(const EthSocket& socket, const EthChannel& channel) {
    m_json.beginObject();
    m_json.member("name", socket.name);
    m_json.member("protocol", socket.protocol);
    if (socket.port) m_json.member("port", *socket.port);
    if (socket.endpoint) {
        const EthEndpoint& endpoint = channel.endpoints[*socket.endpoint];
        m_json.member("endpoint", endpoint.name);
        m_json.member("address", endpoint.ipv4.empty() ? endpoint.ipv6 : endpoint.ipv4);
    }
    writeEcus(m_json, "nodes", m_database, socket.ecus);
    m_json.key("services").beginArray();
    for (const EthService& service : socket.services) {
        m_json.beginObject();
        m_json.member("name", service.name);
        m_json.member("role", std::string_view(service.isProvided ? "PROVIDED" : "CONSUMED"));
        if (service.serviceId) m_json.member("service_id", *service.serviceId);
        if (service.instanceId) m_json.member("instance_id", *service.instanceId);
        if (service.majorVersion) m_json.member("major_version", *service.majorVersion);
        m_json.endObject();
    }
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeEthPdu(const EthPdu& pdu, const EthChannel& channel) {
    if (m_pdus.isTooLarge()) return;
    m_json.beginObject();
    if (pdu.headerId) m_json.member("header_id", *pdu.headerId);
    m_json.member("connection", pdu.connection);
    m_json.member("server", pdu.server);
    m_json.member("client", pdu.client);
    m_json.key("ipdu").beginArray();
    m_pdus.writeAlone(pdu.pdu, channel.parties);
    m_json.endArray();
    m_json.endObject();
}

}  // namespace

std::optional<ReadError> writeDatabase(const Database& database, size_t maxBytes,
                                       dbjson::JsonWriter& json) {
    ClusterJson writer(json, database, maxBytes);
    json.beginObject();
    json.member("version", database.version);
    if (!database.containerHeaderByteOrder.empty()) {
        json.member("container_header_byte_order", database.containerHeaderByteOrder);
    }
    json.key("can_cluster").beginArray();
    for (const Cluster& cluster : database.canClusters) writer.writeCluster(cluster, false);
    json.endArray();
    json.key("flexray_cluster").beginArray();
    for (const Cluster& cluster : database.flexRayClusters) writer.writeCluster(cluster, true);
    json.endArray();
    json.key("eth_cluster").beginArray();
    for (const EthCluster& cluster : database.ethClusters) writer.writeEth(cluster);
    json.endArray();
    json.endObject();
    if (!writer.isTooLarge()) return std::nullopt;
    return ReadError{-1, "the database would fill more than " + std::to_string(maxBytes >> 20) +
                             " MB when written out"};
}

}  // namespace quill::arxml
