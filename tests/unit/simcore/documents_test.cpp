#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "support.h"

using simtest::SimTest;

namespace {

struct BadDocument {
    const char* name;
    const char* text;
    const char* complaint;  // the whole text behind the origin
};

class BadDocuments : public SimTest, public ::testing::WithParamInterface<BadDocument> {};

TEST_P(BadDocuments, areRefusedWithTheKeyNamed) {
    load(R"({"boxes": [{"name": "before"}]})");
    std::string reason;
    EXPECT_FALSE(simcore::loadNetwork(GetParam().text, reason));
    EXPECT_EQ(reason, std::string("network document: ") + GetParam().complaint);
    // The network from before is still there.
    EXPECT_EQ(scan().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Table, BadDocuments,
    ::testing::Values(
        BadDocument{"unknownTopKey", R"({"boxs": []})", "boxs: unknown key"},
        BadDocument{"unknownBoxKey", R"({"boxes": [{"nam": "x"}]})", "boxes[0].nam: unknown key"},
        BadDocument{"boxesNoList", R"({"boxes": {}})", "boxes: expected a list"},
        BadDocument{"boxNoObject", R"({"boxes": [7]})", "boxes[0]: expected an object"},
        BadDocument{"nameNoText", R"({"boxes": [{"name": 1}]})", "boxes[0].name: expected a text"},
        BadDocument{"nameTwice", R"({"boxes": [{"name": "a"}, {"name": "a"}]})",
                    "boxes[1].name: is used twice"},
        BadDocument{
            "nameTooLong",
            R"({"boxes": [{"name": "0123456789012345678901234567890123456789012345678901234567890123"}]})",
            "boxes[0].name: is longer than 63 bytes"},
        BadDocument{"mac", R"({"boxes": [{"mac": "02:00:00"}]})",
                    "boxes[0].mac: expected six hexadecimal pairs such as 02:00:00:00:00:01"},
        BadDocument{"channelCount", R"({"boxes": [{"channels": {"can": 65}}]})",
                    "boxes[0].channels.can: expected an integer from 0 to 64"},
        BadDocument{"channelKind", R"({"boxes": [{"channels": {"most": 1}}]})",
                    "boxes[0].channels.most: unknown key"},
        BadDocument{"busOfTwoKinds", R"({"boxes": [{"channels": {"can": ["a"], "lin": ["a"]}}]})",
                    "boxes[0].channels.lin[0]: bus \"a\" is a can bus"},
        BadDocument{"busKind", R"({"buses": {"a": {"kind": "usb"}}})",
                    "buses.a.kind: expected one of \"can\", \"lin\", \"ethernet\", \"flexray\""},
        BadDocument{"busKindMissing", R"({"buses": {"a": {}}})", "buses.a.kind: is missing"},
        BadDocument{"usbModel", R"({"usb": [{"model": "X"}]})",
                    "usb[0].model: expected one of \"USB-CAN\", \"RV-CANFD2\", \"ETAS\""},
        BadDocument{"sourceBus", R"({"sources": [{"bus": "q", "periodic": {"id": 1}}]})",
                    "sources[0].bus: there is no bus \"q\""},
        BadDocument{"sourceOfBothKinds",
                    R"({"buses": {"a": {"kind": "can"}},
                        "sources": [{"bus": "a", "periodic": {}, "replay": {}}]})",
                    "sources[0]: expected either \"periodic\" or \"replay\""},
        BadDocument{"identifier",
                    R"({"buses": {"a": {"kind": "can"}},
                        "sources": [{"bus": "a", "periodic": {"id": 2048, "period_ms": 1}}]})",
                    "sources[0].periodic.id: expected an integer from 0 to 2047"},
        BadDocument{"hexIdentifier",
                    R"({"buses": {"a": {"kind": "can"}},
                        "sources": [{"bus": "a", "periodic": {"id": "12G", "period_ms": 1}}]})",
                    "sources[0].periodic.id: expected a hexadecimal identifier up to 2047"},
        BadDocument{"payload",
                    R"({"buses": {"a": {"kind": "can"}},
                        "sources": [{"bus": "a", "periodic": {"id": 1, "data": "1", "period_ms": 1}}]})",
                    "sources[0].periodic.data: expected pairs of hexadecimal digits"},
        BadDocument{"payloadByte",
                    R"({"buses": {"a": {"kind": "can"}},
                        "sources": [{"bus": "a", "periodic": {"id": 1, "data": [256], "period_ms": 1}}]})",
                    "sources[0].periodic.data[0]: expected an integer from 0 to 255"},
        BadDocument{"payloadTooLong",
                    R"({"buses": {"a": {"kind": "can"}},
                        "sources": [{"bus": "a", "periodic": {"id": 1, "data": "001122334455667788", "period_ms": 1}}]})",
                    "sources[0].periodic.data: has more than 8 bytes"},
        BadDocument{"counterOutside",
                    R"({"buses": {"a": {"kind": "can"}},
                        "sources": [{"bus": "a", "periodic": {"id": 1, "data": "00", "period_ms": 1,
                                     "counter": {"byte": 0, "bytes": 2}}}]})",
                    "sources[0].periodic.counter: lies outside the payload"},
        BadDocument{"responderBus", R"({"responders": [{"bus": "x", "id": 1}]})",
                    "responders[0].bus: there is no LIN bus \"x\""},
        BadDocument{
            "faultKind", R"({"faults": [{"do": "burn"}]})",
            "faults[0].do: expected one of \"unplug\", \"plug\", \"busStatus\", \"busOff\", "
            "\"busTimeout\", \"dip\", \"clock\", \"refuse\", \"fail\", \"slow\""},
        BadDocument{"faultBox", R"({"faults": [{"do": "unplug", "box": "x"}]})",
                    "faults[0].box: there is no box \"x\""},
        BadDocument{"faultFunction", R"({"faults": [{"do": "fail"}]})",
                    "faults[0].function: is missing"},
        BadDocument{"faultUnknownFunction", R"({"faults": [{"do": "fail", "function": "x"}]})",
                    "faults[0].function: there is no imported function \"x\""},
        BadDocument{"seed", R"({"seed": -1})",
                    "seed: expected an integer from 0 to 9223372036854775807"},
        BadDocument{"hugeInteger", R"({"seed": 18446744073709551615})",
                    "seed: expected an integer from 0 to 9223372036854775807"},
        BadDocument{"numberBeyondDouble", R"({"seed": 1e999})",
                    "is not JSON: number overflow parsing '1e999'"},
        BadDocument{"replayWithoutFile", R"({"sources": [{"replay": {}}]})",
                    "sources[0].replay.file: is missing"},
        BadDocument{"notJson", "{\"boxes\": [}",
                    "is not JSON: at line 1, column 12: syntax error while parsing value - "
                    "unexpected '}'; expected '[', '{', or a literal"}),
    [](const auto& param) { return std::string(param.param.name); });

class Documents : public SimTest {};

TEST_F(Documents, everyPieceOfTheExampleIsRead) {
    load(R"({"$schema": "docs/network.schema.json", "comment": "a rig",
        "seed": 7,
        "buses": {"body": {"kind": "can", "bitrate": 500000, "dataBitrate": 2000000},
                  "doors": {"kind": "lin", "bitrate": 19200}},
        "boxes": [{"name": "left", "mac": "02:0A:0B:0C:0D:0E", "serial": "S1", "version": "9.9",
                   "networkCard": "eth7", "com": 4, "dip": {"sel1": 1},
                   "channels": {"can": ["body", {"bus": "spare"}, {}], "lin": ["doors"], "eth": 1,
                                "flexray": 0}}],
        "usb": [{"name": "stick", "model": "ETAS", "path": "usb:7", "channels": {"can": ["body"]}}]})");
    const auto handles = scan();
    ASSERT_EQ(handles.size(), 1U);
    RvHub4eDeviceInfo info{};
    ASSERT_EQ(get_device_info(handles[0], &info), 0);
    EXPECT_STREQ(info.serial, "S1");
    EXPECT_STREQ(info.version, "9.9");
    EXPECT_STREQ(info.networkCard, "eth7");
    EXPECT_EQ(info.com, 4);
    EXPECT_EQ(info.mac[5], 0x0E);
    EXPECT_EQ(info.canCount, 3);
    EXPECT_EQ(info.ethCount, 1);
    EXPECT_EQ(info.flexrayCount, 0);
    RvDipStatus dip;
    ASSERT_EQ(get_dip_status(handles[0], &dip), 0);
    EXPECT_EQ(dip.sel1, 1);
    EXPECT_GE(simcore::busLoad("body"), 0.0);
    EXPECT_LT(simcore::busLoad("spare"), 0.0);
}

// The guide's own example, with a log that exists.
TEST_F(Documents, theExampleOfTheGuideLoads) {
    std::ifstream guide(QUILL_SOURCE_DIR "/docs/virtual-network.md");
    std::stringstream text;
    text << guide.rdbuf();
    const size_t begin = text.str().find("```json") + 7;
    auto document =
        nlohmann::json::parse(text.str().substr(begin, text.str().find("```", begin) - begin));
    const std::string log = ::testing::TempDir() + "simcore_guide.asc";
    std::ofstream(log) << "0.1 1 123 Rx d 1 00\n";
    document["sources"][1]["replay"]["file"] = log;
    load(document.dump());
    EXPECT_EQ(scan().size(), 2U);
}

// Whatever the schema allows is known to the reader; a key that only one of them has is a mistake.
TEST_F(Documents, keysOfTheSchemaAreKnown) {
    std::ifstream file(QUILL_SOURCE_DIR "/docs/network.schema.json");
    const auto schema = nlohmann::json::parse(file);
    const auto wrap = [](const std::string& what, nlohmann::json entry) {
        if (what == "bus") return nlohmann::json{{"buses", {{"x", std::move(entry)}}}};
        if (what == "box") return nlohmann::json{{"boxes", {std::move(entry)}}};
        if (what == "usbDevice") return nlohmann::json{{"usb", {std::move(entry)}}};
        return nlohmann::json{{what + "s", {std::move(entry)}}};
    };
    int keys = 0;
    for (const char* what : {"bus", "box", "usbDevice", "source", "responder", "fault"}) {
        for (const auto& [key, value] : schema["$defs"][what]["properties"].items()) {
            std::string reason;
            nlohmann::json entry = {{key, nullptr}};
            simcore::loadNetwork(wrap(what, entry).dump(), reason);
            EXPECT_EQ(reason.find("unknown key"), std::string::npos) << what << ": " << reason;
            ++keys;
        }
    }
    EXPECT_GT(keys, 50);
}

TEST_F(Documents, aFileIsNamedByItsPath) {
    const std::string path = ::testing::TempDir() + "simcore_bad_network.json";
    std::ofstream(path) << R"({"boxes": [{"mac": 5}]})";
    std::string reason;
    EXPECT_FALSE(simcore::loadNetwork(path, reason));
    EXPECT_EQ(reason, path + ": boxes[0].mac: expected a text");
    EXPECT_FALSE(simcore::loadNetwork(path + ".absent", reason));
    EXPECT_EQ(reason, path + ".absent: cannot be opened");
}

TEST_F(Documents, handlesOfAnOldNetworkAreDead) {
    load(R"({"boxes": [{"name": "a"}]})");
    const int32_t old = openFirst();
    load(R"({"boxes": [{"name": "a"}]})");
    RvHub4eDeviceInfo info{};
    EXPECT_EQ(get_device_info(old, &info), kRvErrorHandle);
    EXPECT_STRNE(rvhub4e_last_error(), "");
}

}  // namespace
