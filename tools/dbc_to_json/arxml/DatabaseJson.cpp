#include "arxml/DatabaseJson.h"

#include <algorithm>

#include "arxml/JsonPut.h"
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
    m_json.beginArray("node_infos");
    for (const uint32_t index : nodes) {
        const Ecu& ecu = m_database.ecus[index];
        m_json.beginObject();
        put(m_json, "name", ecu.name);
        if (!ecu.comment.empty()) put(m_json, "comment", ecu.comment);
        m_json.endObject();
    }
    m_json.endArray();
}

void ClusterJson::writeCluster(const Cluster& cluster, bool isFlexRay) {
    m_json.beginObject();
    put(m_json, "name", cluster.name);
    if (!cluster.comment.empty()) put(m_json, "comment", cluster.comment);
    put(m_json, "protocol", cluster.protocol);
    put(m_json, "protoclo_version", cluster.protocolVersion);
    put(m_json, "baud_rate", cluster.baudRate);
    if (isFlexRay) {
        writeFlexRayTimes(cluster);
    } else {
        put(m_json, "can_fd_baud_rate", cluster.fdBaudRate);
        put(m_json, "fd_baud_rate", cluster.fdBaudRate);
    }
    writeNodes(cluster.nodes);
    writeChannels(cluster, isFlexRay);
    m_json.beginArray("frames");
    for (const Frame& frame : cluster.frames) writeFrame(frame, cluster, isFlexRay);
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeFlexRayTimes(const Cluster& cluster) {
    put(m_json, "cycle_us", cluster.cycleUs);
    put(m_json, "macrotick_us", cluster.macrotickUs);
    put(m_json, "macroticks_per_cycle", cluster.macroticksPerCycle);
    put(m_json, "static_slots", cluster.staticSlots);
    put(m_json, "static_slot_macroticks", cluster.staticSlotMacroticks);
    put(m_json, "minislots", cluster.minislots);
    put(m_json, "minislot_macroticks", cluster.minislotMacroticks);
    put(m_json, "static_payload_length", cluster.staticPayloadBytes);
}

void ClusterJson::writeChannels(const Cluster& cluster, bool isFlexRay) {
    std::vector<std::vector<const Frame*>> byChannel(cluster.channels.size());
    for (const Frame& frame : cluster.frames) byChannel[frame.channel].push_back(&frame);
    m_json.beginArray("channels");
    for (size_t index = 0; index < cluster.channels.size(); ++index) {
        m_json.beginObject();
        put(m_json, "name", cluster.channels[index].name);
        if (isFlexRay) put(m_json, "channel", cluster.channels[index].kind);
        m_json.beginArray("frames");
        for (const Frame* frame : byChannel[index]) m_json.text(frame->name);
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
    put(m_json, "id", frame.id);
    put(m_json, "length", frame.lengthBytes);
    put(m_json, "name", frame.name);
    put(m_json, "triggering", frame.triggering);
    put(m_json, "comment", frame.comment);
    if (isFlexRay) {
        writeSlots(frame, channel);
    } else {
        put(m_json, "is_extended_frame", frame.isExtended);
        put(m_json, "is_canfd", frame.isCanFd);
        put(m_json, "rx_behavior", frame.rxBehavior);
        put(m_json, "tx_behavior", frame.txBehavior);
    }
    put(m_json, "channel", channel.name);
    if (const auto cycle = cycleOf(frame, m_database)) put(m_json, "cycle_time", *cycle);
    writeEcus(m_json, "senders", m_database, parties.senders);
    writeEcus(m_json, "receivers", m_database, parties.receivers);
    m_json.beginArray("ipdus");
    for (const PduMapping& mapping : frame.pdus) {
        m_pdus.writeMapped(mapping, channel, parties.receivers);
    }
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeSlots(const Frame& frame, const Channel& channel) {
    put(m_json, "channel_name", channel.kind);
    const FlexRaySlot first = frame.slots.empty() ? FlexRaySlot{} : frame.slots.front();
    put(m_json, "slot_id", first.slotId);
    put(m_json, "base_cycle", first.baseCycle);
    put(m_json, "repetition", first.repetition);
    m_json.beginArray("slots");
    for (const FlexRaySlot& slot : frame.slots) {
        m_json.beginObject();
        put(m_json, "slot_id", slot.slotId);
        put(m_json, "base_cycle", slot.baseCycle);
        put(m_json, "repetition", slot.repetition);
        m_json.endObject();
    }
    m_json.endArray();
}

void ClusterJson::writeEth(const EthCluster& cluster) {
    m_json.beginObject();
    put(m_json, "name", cluster.name);
    if (!cluster.comment.empty()) put(m_json, "comment", cluster.comment);
    put(m_json, "baud_rate", cluster.baudRate);
    writeNodes(cluster.nodes);
    m_json.beginArray("channels");
    for (const EthChannel& channel : cluster.channels) writeEthChannel(channel);
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeEthChannel(const EthChannel& channel) {
    m_json.beginObject();
    put(m_json, "name", channel.name);
    if (channel.vlanId) put(m_json, "vlan_id", *channel.vlanId);
    if (!channel.vlanName.empty()) put(m_json, "vlan_name", channel.vlanName);
    m_json.beginArray("endpoints");
    for (const EthEndpoint& endpoint : channel.endpoints) writeEndpoint(endpoint);
    m_json.endArray();
    m_json.beginArray("sockets");
    for (const EthSocket& socket : channel.sockets) writeSocket(socket, channel);
    m_json.endArray();
    m_json.beginArray("ipdus");
    for (const EthPdu& pdu : channel.pdus) writeEthPdu(pdu, channel);
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeEndpoint(const EthEndpoint& endpoint) {
    m_json.beginObject();
    put(m_json, "name", endpoint.name);
    put(m_json, "ipv4", endpoint.ipv4);
    put(m_json, "netmask", endpoint.netmask);
    put(m_json, "ipv6", endpoint.ipv6);
    m_json.endObject();
}

void ClusterJson::writeSocket(const EthSocket& socket, const EthChannel& channel) {
    m_json.beginObject();
    put(m_json, "name", socket.name);
    put(m_json, "protocol", socket.protocol);
    if (socket.port) put(m_json, "port", *socket.port);
    if (socket.endpoint) {
        const EthEndpoint& endpoint = channel.endpoints[*socket.endpoint];
        put(m_json, "endpoint", endpoint.name);
        put(m_json, "address", endpoint.ipv4.empty() ? endpoint.ipv6 : endpoint.ipv4);
    }
    writeEcus(m_json, "nodes", m_database, socket.ecus);
    m_json.beginArray("services");
    for (const EthService& service : socket.services) {
        m_json.beginObject();
        put(m_json, "name", service.name);
        put(m_json, "role", service.isProvided ? "PROVIDED" : "CONSUMED");
        if (service.serviceId) put(m_json, "service_id", *service.serviceId);
        if (service.instanceId) put(m_json, "instance_id", *service.instanceId);
        if (service.majorVersion) put(m_json, "major_version", *service.majorVersion);
        m_json.endObject();
    }
    m_json.endArray();
    m_json.endObject();
}

void ClusterJson::writeEthPdu(const EthPdu& pdu, const EthChannel& channel) {
    if (m_pdus.isTooLarge()) return;
    m_json.beginObject();
    if (pdu.headerId) put(m_json, "header_id", *pdu.headerId);
    put(m_json, "connection", pdu.connection);
    put(m_json, "server", pdu.server);
    put(m_json, "client", pdu.client);
    m_json.beginArray("ipdu");
    m_pdus.writeAlone(pdu.pdu, channel.parties);
    m_json.endArray();
    m_json.endObject();
}

}  // namespace

std::optional<ReadError> writeDatabase(const Database& database, size_t maxBytes,
                                       dbjson::JsonWriter& json) {
    ClusterJson writer(json, database, maxBytes);
    json.beginObject();
    put(json, "version", database.version);
    if (!database.containerHeaderByteOrder.empty()) {
        put(json, "container_header_byte_order", database.containerHeaderByteOrder);
    }
    json.beginArray("can_cluster");
    for (const Cluster& cluster : database.canClusters) writer.writeCluster(cluster, false);
    json.endArray();
    json.beginArray("flexray_cluster");
    for (const Cluster& cluster : database.flexRayClusters) writer.writeCluster(cluster, true);
    json.endArray();
    json.beginArray("eth_cluster");
    for (const EthCluster& cluster : database.ethClusters) writer.writeEth(cluster);
    json.endArray();
    json.endObject();
    if (!writer.isTooLarge()) return std::nullopt;
    return ReadError{-1, "the database would fill more than " + std::to_string(maxBytes >> 20) +
                             " MB when written out"};
}

}  // namespace quill::arxml
