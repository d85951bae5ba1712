#include <string>

#include "DatabaseTest.h"
#include "databaseitem/EthArxmlDatabaseItem.h"
#include "databaseitem/FlexRayArxmlDatabaseItem.h"
#include "databaseitem/FlexRayFibexDatabaseItem.h"

namespace {

using namespace Model::database;

class OtherBusTest : public DatabaseTest {};

constexpr const char* kFlexRay = R"({"flexray_cluster": [{"name": "Chassis", "protocol": "FLEXRAY",
    "protoclo_version": "2.1", "baud_rate": 10000000, "cycle_us": 5000, "macrotick_us": 1,
    "macroticks_per_cycle": 5000, "static_slots": 60, "static_slot_macroticks": 40,
    "minislots": 200, "minislot_macroticks": 10, "static_payload_length": 32,
    "node_infos": [{"name": "E1"}, {"name": "E2"}],
    "channels": [{"name": "ChA", "channel": "A", "frames": ["F"]}],
    "frames": [{"id": 3, "length": 16, "name": "F", "comment": "c", "channel": "ChA",
        "channel_name": "A", "slots": [{"slot_id": 3, "base_cycle": 1, "repetition": 4},
        {"slot_id": 9}], "senders": ["E1"], "receivers": ["E2"],
        "ipdus": [{"name": "P", "isignals": [{"name": "S", "length": 4}]}]},
        {"name": "G", "slot_id": 7, "repetition": 2}]}]})";

TEST_F(OtherBusTest, flexRayClustersAreReadFromBothKinds) {
    FlexRayArxmlDatabaseItem arxml;
    FlexRayFibexDatabaseItem fibex;
    ASSERT_TRUE(arxml.pyLoadDB(write("a.arxml", kFlexRay))) << logText();
    ASSERT_TRUE(fibex.pyLoadDB(write("b.xml", kFlexRay))) << logText();
    for (const FlexRayDatabaseItem* item :
         {static_cast<FlexRayDatabaseItem*>(&arxml), static_cast<FlexRayDatabaseItem*>(&fibex)}) {
        const FlexRayCluster& cluster = *item->database()->clusters.at(0);
        EXPECT_EQ(cluster.name + cluster.protocol + cluster.protocolVersion, "ChassisFLEXRAY2.1");
        EXPECT_EQ(cluster.baudRate, 10'000'000);
        EXPECT_EQ(cluster.cycleUs, 5000);
        EXPECT_EQ(cluster.staticSlots + cluster.minislots * 100, 20060);
        EXPECT_EQ(cluster.nodes.size(), 2u);
        EXPECT_EQ(cluster.channels.at(0).name + cluster.channels.at(0).kind, "ChAA");
        const FlexRayFrame& frame = *cluster.frames.at(0);
        ASSERT_EQ(frame.slots.size(), 2u);
        EXPECT_EQ(
            frame.slots[0].slotId * 100 + frame.slots[0].baseCycle * 10 + frame.slots[0].repetition,
            314);
        EXPECT_EQ(frame.slots[1].repetition, 1);
        EXPECT_EQ(frame.pdus.at(0)->signals.at(0)->bitLength, 4);
        EXPECT_EQ(cluster.frames.at(1)->slots.at(0).slotId, 7);
    }
    EXPECT_FALSE(fibex.pyLoadDB(path("a.arxml")));
    EXPECT_TRUE(fibex.database()->clusters.empty());
}

TEST_F(OtherBusTest, ethernetClustersAreRead) {
    EthArxmlDatabaseItem item;
    ASSERT_TRUE(item.pyLoadDB(write("e.arxml", R"({"eth_cluster": [{"name": "Backbone",
        "baud_rate": 1000000000, "node_infos": [{"name": "E1"}], "channels": [{"name": "V5",
        "vlan_id": 5, "vlan_name": "diag",
        "endpoints": [{"name": "EP", "ipv4": "10.0.0.1", "netmask": "255.0.0.0", "ipv6": "::1"}],
        "sockets": [{"name": "So", "protocol": "UDP", "port": 30490, "endpoint": "EP",
            "address": "10.0.0.1", "nodes": ["E1"], "services": [{"name": "Sv",
            "role": "PROVIDED", "service_id": 4660, "instance_id": 1}]}],
        "ipdus": [{"header_id": 4294967295, "connection": "C", "server": "So", "client": "Sc",
            "ipdu": [{"name": "P"}]}]}]}]})")))
        << logText();
    const EthCluster& cluster = *item.database()->clusters.at(0);
    EXPECT_EQ(cluster.baudRate, 1'000'000'000);
    const EthChannel& channel = *cluster.channels.at(0);
    EXPECT_EQ(channel.vlanId, 5);
    EXPECT_EQ(channel.endpoints.at(0).ipv4 + channel.endpoints.at(0).ipv6, "10.0.0.1::1");
    const EthSocket& socket = channel.sockets.at(0);
    EXPECT_EQ(socket.port, 30490);
    EXPECT_TRUE(socket.services.at(0).isProvided);
    EXPECT_EQ(socket.services.at(0).serviceId, 4660);
    EXPECT_FALSE(socket.services.at(0).majorVersion.has_value());
    const EthPdu& pdu = *channel.pdus.at(0);
    EXPECT_EQ(pdu.headerId, 4294967295);
    EXPECT_EQ(pdu.connection + pdu.server + pdu.client, "CSoSc");
    EXPECT_EQ(pdu.pdus.at(0)->name, "P");
    EXPECT_FALSE(item.pyLoadDB(write("bad.json", R"({"eth_cluster": [{"channels": 1}]})")));
}

}  // namespace
