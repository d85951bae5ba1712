#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "core/hardware/boxdev/ConfigDocument.h"
#include "core/hardware/boxdev/SendDocument.h"

namespace RV::BoxDev {
namespace {

CanSendRequest fullRequest() {
    CanSendRequest request;
    request.frame.channel = 3;
    request.frame.id = 0x1ABCDEF0;
    request.frame.extend.setIDE(true);
    request.frame.extend.setEDL(true);
    request.frame.extend.setBRS(true);
    request.frame.extend.setDLC(9);
    request.frame.data = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 255};
    request.update = {true, 4, 4, true, true, 16, 8, 16, true, {9, 8, 7}};
    request.cyclic = true;
    request.uuid = "job-1";
    request.cycleMs = 10;
    request.limitCount = 5;
    return request;
}

// What the box manager writes is what the handler reads, key for key.
TEST(SendDocument, survivesTheRoundTrip) {
    const CanSendRequest sent = fullRequest();
    const auto document =
        nlohmann::json::parse(buildCanSendDocument("StartSendCANFrame", "AA", sent));
    std::string reason;
    const auto read = parseCanSendDocument(document, reason);
    ASSERT_TRUE(read) << reason;
    EXPECT_EQ(read->frame.id, sent.frame.id);
    EXPECT_EQ(read->frame.extend, sent.frame.extend);
    EXPECT_EQ(read->frame.data, sent.frame.data);
    EXPECT_EQ(read->update.crcKey, sent.update.crcKey);
    EXPECT_EQ(read->update.counterReset, sent.update.counterReset);
    EXPECT_EQ(buildCanSendDocument("StartSendCANFrame", "AA", *read),
              buildCanSendDocument("StartSendCANFrame", "AA", sent));
}

struct BadKey {
    const char* name;
    const char* pointer;  // JSON pointer of the key to change
    const char* value;    // JSON text put there; empty removes the key
    const char* told;     // what the reason must name
};
class BadSendDocument : public ::testing::TestWithParam<BadKey> {};

TEST_P(BadSendDocument, isRefusedByTheNameOfTheKey) {
    auto document =
        nlohmann::json::parse(buildCanSendDocument("StartSendCANFrame", "AA", fullRequest()));
    const nlohmann::json::json_pointer pointer(GetParam().pointer);
    if (*GetParam().value == '\0') {
        document[pointer.parent_pointer()].erase(pointer.back());
    } else {
        document[pointer] = nlohmann::json::parse(GetParam().value);
    }
    std::string reason;
    EXPECT_FALSE(parseCanSendDocument(document, reason));
    EXPECT_NE(reason.find(GetParam().told), std::string::npos) << reason;
}

INSTANTIATE_TEST_SUITE_P(
    Keys, BadSendDocument,
    ::testing::Values(BadKey{"missing", "/port_id", "", "port_id"},
                      BadKey{"dlcBeyondNibble", "/dlc", "16", "dlc"},
                      BadKey{"wideIdentifier", "/can_frame/can_id", "536870912", "can_id"},
                      BadKey{"elevenBits", "/can_frame/can_extended", "false", "can_id"},
                      BadKey{"byteTooLarge", "/can_frame/can_data", "[256]", "can_data"},
                      BadKey{"lengthDiffers", "/can_frame/data_length", "3", "data_length"},
                      BadKey{"counterIsText", "/rolling_count/is_rc", "\"yes\"", "is_rc"},
                      BadKey{"partMissing", "/can_frame", "", "can_frame"},
                      BadKey{"cycleOfZero", "/cycle_ms", "0", "cycle_ms"},
                      BadKey{"noJobName", "/cycle_uuid", "\"\"", "cycle_uuid"},
                      BadKey{"otherOption", "/cycle_option", "\"twice\"", "cycle_option"},
                      BadKey{"crcCode", "/crc_type", "256", "crc_type"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(LinScheduleDocument, survivesTheRoundTripAndNamesTheBadSlot) {
    LinScheduleRequest table{2, "normal", {{0x10, 10, 4, 1, {1, 2}}, {0x3D, 20, 3, 0, {}}}};
    std::string reason;
    auto document = nlohmann::json::parse(buildLinScheduleDocument("AA", table));
    const auto read = parseLinScheduleDocument(document, reason);
    ASSERT_TRUE(read) << reason;
    EXPECT_EQ(buildLinScheduleDocument("AA", *read), buildLinScheduleDocument("AA", table));
    document["lin_schedule_table"]["slot_array"][1]["id"] = 64;
    EXPECT_FALSE(parseLinScheduleDocument(document, reason));
    EXPECT_NE(reason.find("slot_array[1].id"), std::string::npos) << reason;
}

TEST(EthSendDocument, buildsTheMacHeaderFromItsParts) {
    const auto document = nlohmann::json::parse(R"({"port_id": 1, "dst_mac": "01:02:03:04:05:06",
        "src_mac": "0A:0B:0C:0D:0E:0F", "eth_type": 2048, "vlan_id": 5, "eth_frame": [170, 187],
        "cycle_option": "once"})");
    std::string reason;
    const auto read = parseEthSendDocument(document, reason);
    ASSERT_TRUE(read) << reason;
    EXPECT_EQ(read->bytes, (std::vector<uint8_t>{1,  2,  3,    4, 5, 6, 10, 11, 12,  13,
                                                 14, 15, 0x81, 0, 0, 5, 8,  0,  170, 187}));
}

TEST(ConfigDocument, survivesTheRoundTripAndRefusesWhatABoxCannotDo) {
    rv::BoxConfig config;
    config.can.push_back({1, false, true, 250000, 4000000, 87.5, 70.0, false, true});
    config.lin.push_back({0, true, 9600, false, 20});
    config.eth.push_back({2, true, 1000, false});
    std::string reason;
    auto document = nlohmann::json::parse(buildConfigDocument("SetChannelsConfig", "AA", config));
    EXPECT_EQ(parseConfig(document, reason), config) << reason;
    document["can_channels"][0]["sample_point"] = 99.0;
    EXPECT_FALSE(parseConfig(document, reason));
    EXPECT_NE(reason.find("can_channels[0].sample_point"), std::string::npos) << reason;
    document = nlohmann::json::parse(R"({"eth_channels": [{"channel": 0, "enabled": true,
        "speed": 10, "master": true}]})");
    EXPECT_FALSE(parseConfig(document, reason));
    EXPECT_NE(reason.find("speed"), std::string::npos) << reason;
}

}  // namespace
}  // namespace RV::BoxDev
