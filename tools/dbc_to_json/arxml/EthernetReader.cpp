#include "arxml/EthernetReader.h"

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

constexpr uint32_t kMaxPort = 65535;
constexpr uint32_t kMaxVlan = 4095;

std::optional<uint64_t> identifierOf(pugi::xml_node node, const char* child) {
    const auto value = integerOf(node, child);
    if (!value || *value < 0) return std::nullopt;
    return static_cast<uint64_t>(*value);
}

std::optional<uint32_t> within(std::optional<uint32_t> value, uint32_t largest) {
    return value && *value <= largest ? value : std::nullopt;
}

}  // namespace

bool EthernetReader::read(pugi::xml_node cluster) {
    const auto variant = variantOf(cluster);
    EthCluster out;
    out.name = textOf(cluster, "SHORT-NAME");
    out.comment = descriptionOf(cluster);
    const auto rate = integerOf(variant, "BAUDRATE");
    if (rate && *rate > 0) out.baudRate = static_cast<uint64_t>(*rate);
    const auto channels = variant.child("PHYSICAL-CHANNELS");
    // Sockets of one channel may name endpoints of another.
    for (const auto channel : channels.children("ETHERNET-PHYSICAL-CHANNEL")) {
        if (!readChannel(channel, out)) return false;
    }
    out.nodes = m_clusters.nodesOf(channels, {});
    m_context.database().ethClusters.push_back(std::move(out));
    return true;
}

bool EthernetReader::readChannel(pugi::xml_node channel, EthCluster& out) {
    EthChannel read;
    read.name = textOf(channel, "SHORT-NAME");
    const auto vlan = channel.child("VLAN");
    read.vlanName = textOf(vlan, "SHORT-NAME");
    read.vlanId = within(unsignedOf(vlan, "VLAN-IDENTIFIER"), kMaxVlan);
    readEndpoints(channel, read);
    const auto config = channel.child("SO-AD-CONFIG");
    readSockets(config, read);
    if (!readBundles(config, read) || !readStaticConnections(channel, read)) return false;
    PartyReader::ByElement pdus;
    PartyReader::ByElement signals;
    m_parties.readTriggerings(channel, pdus, signals);
    m_parties.resolve(pdus, signals, read.parties);
    out.channels.push_back(std::move(read));
    return true;
}

void EthernetReader::readEndpoints(pugi::xml_node channel, EthChannel& out) {
    for (const auto node : channel.child("NETWORK-ENDPOINTS").children("NETWORK-ENDPOINT")) {
        EthEndpoint endpoint;
        endpoint.name = textOf(node, "SHORT-NAME");
        const auto addresses = node.child("NETWORK-ENDPOINT-ADDRESSES");
        const auto four = addresses.child("IPV-4-CONFIGURATION");
        endpoint.ipv4 = textOf(four, "IPV-4-ADDRESS");
        endpoint.netmask = textOf(four, "NETWORK-MASK");
        endpoint.ipv6 = textOf(addresses.child("IPV-6-CONFIGURATION"), "IPV-6-ADDRESS");
        m_endpoints.emplace(node.internal_object(), static_cast<uint32_t>(out.endpoints.size()));
        out.endpoints.push_back(endpoint);
    }
}

void EthernetReader::readSockets(pugi::xml_node config, EthChannel& out) {
    for (const auto node : config.child("SOCKET-ADDRESSS").children("SOCKET-ADDRESS")) {
        EthSocket socket;
        socket.name = textOf(node, "SHORT-NAME");
        const auto application = node.child("APPLICATION-ENDPOINT");
        const auto transport = application.child("TP-CONFIGURATION");
        const auto udp = transport.child("UDP-TP");
        const auto tcp = transport.child("TCP-TP");
        if (udp) {
            socket.protocol = "UDP";
            socket.port = within(unsignedOf(udp.child("UDP-TP-PORT"), "PORT-NUMBER"), kMaxPort);
        } else if (tcp) {
            socket.protocol = "TCP";
            socket.port = within(unsignedOf(tcp.child("TCP-TP-PORT"), "PORT-NUMBER"), kMaxPort);
        }
        const auto endpoint = m_context.wish(application.child("NETWORK-ENDPOINT-REF"));
        const auto known = m_endpoints.find(endpoint.internal_object());
        if (endpoint && known != m_endpoints.end() && known->second < out.endpoints.size()) {
            socket.endpoint = known->second;
        }
        const auto addEcuOf = [&](pugi::xml_node reference) {
            const auto ecu = m_parties.ecuAround(m_context.wish(reference));
            if (ecu) addEcu(socket.ecus, *ecu);
        };
        addEcuOf(node.child("CONNECTOR-REF"));
        for (const auto reference : node.child("MULTICAST-CONNECTOR-REFS").children()) {
            addEcuOf(reference);
        }
        readServices(application, socket);
        out.sockets.push_back(std::move(socket));
    }
}

void EthernetReader::readServices(pugi::xml_node endpoint, EthSocket& out) {
    const auto readList = [&](const char* list, bool isProvided) {
        for (const auto node : endpoint.child(list).children()) {
            EthService service;
            service.name = textOf(node, "SHORT-NAME");
            service.isProvided = isProvided;
            auto source = node;
            if (const auto reference = node.child("PROVIDED-SERVICE-INSTANCE-REF")) {
                if (const auto provided = m_context.wish(reference)) source = provided;
            }
            service.serviceId = identifierOf(source, "SERVICE-IDENTIFIER");
            service.instanceId = identifierOf(source, "INSTANCE-IDENTIFIER");
            service.majorVersion = identifierOf(source, "MAJOR-VERSION");
            out.services.push_back(service);
        }
    };
    readList("PROVIDED-SERVICE-INSTANCES", true);
    readList("CONSUMED-SERVICE-INSTANCES", false);
}

bool EthernetReader::readPdu(pugi::xml_node identifier, EthPdu named, EthChannel& out) {
    const auto reference = identifier.child("PDU-TRIGGERING-REF");
    if (!reference) return true;
    const auto pdu = m_pdus.readReferenced(reference);
    if (!pdu) return false;
    named.pdu = *pdu;
    named.headerId = identifierOf(identifier, "HEADER-ID");
    out.pdus.push_back(named);
    return true;
}

bool EthernetReader::readBundles(pugi::xml_node config, EthChannel& out) {
    const auto nameBehind = [&](pugi::xml_node reference) {
        return textOf(m_context.wish(reference), "SHORT-NAME");
    };
    const auto readConnection = [&](pugi::xml_node connection, EthPdu named) {
        named.client = nameBehind(connection.child("CLIENT-PORT-REF"));
        for (const char* list : {"PDUS", "SOCKET-CONNECTION-IPDU-IDENTIFIERS"}) {
            for (const auto identifier : connection.child(list).children()) {
                if (!readPdu(identifier, named, out)) return false;
            }
        }
        return true;
    };
    for (const auto bundle : config.child("CONNECTION-BUNDLES").children()) {
        EthPdu named;
        named.connection = textOf(bundle, "SHORT-NAME");
        named.server = nameBehind(bundle.child("SERVER-PORT-REF"));
        for (const auto connection : bundle.child("BUNDLED-CONNECTIONS").children()) {
            if (!readConnection(connection, named)) return false;
        }
        for (const auto identifier : bundle.child("PDUS").children()) {
            if (!readPdu(identifier, named, out)) return false;
        }
    }
    for (const auto connection : config.child("CONNECTIONS").children()) {
        EthPdu named;
        named.connection = textOf(connection, "SHORT-NAME");
        if (!readConnection(connection, named)) return false;
    }
    return true;
}

// Newer releases tie the PDUs to the sockets by sets of identifiers.
bool EthernetReader::readStaticConnections(pugi::xml_node channel, EthChannel& out) {
    const auto config = channel.child("SO-AD-CONFIG");
    for (const auto socket : config.child("SOCKET-ADDRESSS").children("SOCKET-ADDRESS")) {
        for (const auto connection : socket.child("STATIC-SOCKET-CONNECTIONS").children()) {
            EthPdu named;
            named.connection = textOf(connection, "SHORT-NAME");
            named.server = textOf(socket, "SHORT-NAME");
            for (const auto reference : connection.child("I-PDU-IDENTIFIERS").children()) {
                const auto inner = reference.first_child();
                const bool isWrapped = nameOf(inner).ends_with("-REF");
                const auto identifier = m_context.wish(isWrapped ? inner : reference);
                if (identifier && !readPdu(identifier, named, out)) return false;
            }
        }
    }
    return true;
}

}  // namespace quill::arxml
