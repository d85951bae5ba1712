// Ethernet clusters: channels with their VLAN, network endpoints, sockets and the PDUs that socket
// connections carry.
#pragma once

#include <pugixml.hpp>
#include <unordered_map>

#include "arxml/ClusterReader.h"

namespace quill::arxml {

class EthernetReader {
public:
    EthernetReader(ReadContext& context, PduReader& pdus, PartyReader& parties,
                   ClusterReader& clusters)
        : m_context(context), m_pdus(pdus), m_parties(parties), m_clusters(clusters) {}

    [[nodiscard]] bool read(pugi::xml_node cluster);

private:
    [[nodiscard]] bool readChannel(pugi::xml_node channel, EthCluster& out);
    void readEndpoints(pugi::xml_node channel, EthChannel& out);
    void readSockets(pugi::xml_node config, EthChannel& out);
    void readServices(pugi::xml_node endpoint, EthSocket& out);
    [[nodiscard]] bool readBundles(pugi::xml_node config, EthChannel& out);
    [[nodiscard]] bool readStaticConnections(pugi::xml_node channel, EthChannel& out);
    [[nodiscard]] bool readPdu(pugi::xml_node identifier, EthPdu named, EthChannel& out);

    ReadContext& m_context;
    PduReader& m_pdus;
    PartyReader& m_parties;
    ClusterReader& m_clusters;
    std::unordered_map<const void*, uint32_t> m_endpoints;
};

}  // namespace quill::arxml
