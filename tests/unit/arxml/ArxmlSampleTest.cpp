// FlexRay, Ethernet and FIBEX samples of our own making.
#include <gtest/gtest.h>

#include "ArxmlTestSupport.h"

namespace arxmltest {
namespace {

using quill::arxml::Format;

Json at(const Json& json, const char* pointer) { return json.at(Json::json_pointer(pointer)); }

TEST(FibexSample, flexRayClusterWithSlotsPdusAndCodings) {
    const auto read = convertText(readText(dataFile("chassis_fibex.xml")), Format::kFibex);
    ASSERT_EQ(read.error, "");
    const Json cluster = at(read.json, "/flexray_cluster/0");
    EXPECT_EQ(at(cluster, "/comment"), "Brakes and steering");
    EXPECT_EQ(at(cluster, "/baud_rate"), 10000000);
    EXPECT_EQ(at(cluster, "/cycle_us"), 5000);
    EXPECT_EQ(at(cluster, "/static_slots"), 91);
    EXPECT_EQ(at(cluster, "/static_payload_length"), 16);
    EXPECT_EQ(at(cluster, "/channels/0/channel"), "A");
    const Json frame = at(cluster, "/frames/0");
    EXPECT_EQ(at(frame, "/slot_id"), 12);
    EXPECT_EQ(at(frame, "/base_cycle"), 1);
    EXPECT_EQ(at(frame, "/repetition"), 4);
    EXPECT_EQ(at(frame, "/slots/1/slot_id"), 40);
    EXPECT_EQ(at(frame, "/cycle_time"), 10);
    EXPECT_EQ(at(frame, "/senders"), Json({"Brake"}));
    EXPECT_EQ(at(frame, "/receivers"), Json({"Steering"}));
    const Json speed = at(frame, "/ipdus/0/isignals/0");
    EXPECT_EQ(at(speed, "/start_position"), 32 + 12);  // bits 7..4 of byte 5 end the 12 bits
    EXPECT_EQ(at(speed, "/byte_order"), "MOST-SIGNIFICANT-BYTE-FIRST");
    EXPECT_EQ(at(speed, "/is_signed"), true);
    EXPECT_EQ(at(speed, "/init_value"), "5");
    EXPECT_EQ(at(speed, "/compu_method/compu_offset"), -2);
    EXPECT_EQ(at(speed, "/compu_method/compu_denominator"), 4);
    EXPECT_EQ(at(speed, "/compu_method/unit"), "km/h");
    EXPECT_EQ(at(speed, "/dataconstr/inter_lower_limit"), -100);
    EXPECT_EQ(at(frame, "/ipdus/0/isignals/1/update_bit"), 32 + 31);
    EXPECT_EQ(at(frame, "/ipdus/0/isignals/1/compu_method/value_table").size(), 4U);
    EXPECT_EQ(at(frame, "/ipdus/1/isignals/0/name"), "Page");
    EXPECT_EQ(at(frame, "/ipdus/1/ipdus/0/selector_code"), 3);
    EXPECT_EQ(at(frame, "/ipdus/1/ipdus/0/isignals/0/start_position"), 64 + 8);
}

TEST(FibexSample, canClusterOfOlderVersionWithSignalsInTheFrame) {
    const auto read = convertText(readText(dataFile("chassis_fibex.xml")), Format::kFibex);
    ASSERT_EQ(read.error, "");
    const Json frame = at(read.json, "/can_cluster/0/frames/0");
    EXPECT_EQ(at(frame, "/id"), 419365889);
    EXPECT_EQ(at(frame, "/is_extended_frame"), true);
    EXPECT_EQ(at(frame, "/ipdus/0/isignals/0/start_position"), 3);
}

TEST(ArxmlSample, flexRayClusterUnderAPrefix) {
    const auto read = convertText(readText(dataFile("backbone.arxml")));
    ASSERT_EQ(read.error, "");
    const Json cluster = at(read.json, "/flexray_cluster/0");
    EXPECT_EQ(at(cluster, "/cycle_us"), 5000);
    EXPECT_EQ(at(cluster, "/macrotick_us"), 1);
    EXPECT_EQ(at(cluster, "/static_payload_length"), 32);
    const Json frame = at(cluster, "/frames/0");
    EXPECT_EQ(at(frame, "/channel_name"), "B");
    EXPECT_EQ(at(frame, "/slot_id"), 17);
    EXPECT_EQ(at(frame, "/base_cycle"), 3);
    EXPECT_EQ(at(frame, "/repetition"), 8);
    EXPECT_EQ(at(frame, "/senders"), Json({"Gateway"}));
    EXPECT_EQ(at(frame, "/ipdus/0/start_position"), 64);  // position 71 names the top bit of byte 8
    EXPECT_EQ(at(frame, "/ipdus/0/isignals/0/start_position"), 64 + 8);
}

TEST(ArxmlSample, ethernetClusterWithVlanSocketsAndPdus) {
    const auto read = convertText(readText(dataFile("backbone.arxml")));
    ASSERT_EQ(read.error, "");
    const Json channel = at(read.json, "/eth_cluster/0/channels/0");
    EXPECT_EQ(at(channel, "/vlan_id"), 73);
    EXPECT_EQ(at(channel, "/vlan_name"), "Sensors");
    EXPECT_EQ(at(channel, "/endpoints/0/ipv4"), "10.7.3.21");
    const Json socket = at(channel, "/sockets/0");
    EXPECT_EQ(at(socket, "/protocol"), "UDP");
    EXPECT_EQ(at(socket, "/port"), 30490);
    EXPECT_EQ(at(socket, "/address"), "10.7.3.21");
    EXPECT_EQ(at(socket, "/nodes"), Json({"Camera"}));
    EXPECT_EQ(at(socket, "/services/0/service_id"), 0x1234);
    const Json pdu = at(channel, "/ipdus/0");
    EXPECT_EQ(at(pdu, "/header_id"), 305419896);
    EXPECT_EQ(at(pdu, "/server"), "CameraUdp");
    EXPECT_EQ(at(pdu, "/ipdu/0/name"), "Angles");
}

TEST(WrongCommand, namesTheRightOne) {
    const auto fibex = convertText(readText(dataFile("chassis_fibex.xml")), Format::kArxml);
    EXPECT_NE(fibex.error.find("fibex-parse"), std::string::npos);
    const auto arxml = convertText(readText(dataFile("backbone.arxml")), Format::kFibex);
    EXPECT_NE(arxml.error.find("arxml-parse"), std::string::npos);
}

}  // namespace
}  // namespace arxmltest
