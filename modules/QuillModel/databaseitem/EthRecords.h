#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "databaseitem/CanArxmlRecords.h"
#include "databaseitem/RecordList.h"

namespace Model::database {

struct EthEndpoint {
    std::string name;
    std::string ipv4;
    std::string netmask;
    std::string ipv6;
};

// A service instance that a socket provides or uses.
struct EthService {
    std::string name;
    bool isProvided = false;
    std::optional<int64_t> serviceId;
    std::optional<int64_t> instanceId;
    std::optional<int64_t> majorVersion;
};

struct EthSocket {
    std::string name;
    std::string protocol;  // "UDP" or "TCP"
    std::optional<int32_t> port;
    std::string endpoint;  // name of its endpoint
    std::string address;
    std::vector<std::string> nodes;
    std::vector<EthService> services;
};

// A PDU on a connection between two sockets.
struct EthPdu {
    std::optional<int64_t> headerId;
    std::string connection;
    std::string server;
    std::string client;
    RecordList<CanFdPdu> pdus;
};

// One physical channel or virtual network.
struct EthChannel {
    std::string name;
    std::optional<int32_t> vlanId;
    std::string vlanName;
    std::vector<EthEndpoint> endpoints;
    std::vector<EthSocket> sockets;
    RecordList<EthPdu> pdus;
};

// One Ethernet cluster.
struct EthCluster {
    std::string name;
    int64_t baudRate = 0;  // bit/s
    std::vector<std::string> nodes;
    RecordList<EthChannel> channels;
};

// Content of an ARXML file's Ethernet part.
struct EthArxmlDatabase {
    RecordList<EthCluster> clusters;
};

}  // namespace Model::database
