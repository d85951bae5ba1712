#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "document/DocumentReader.h"
#include "document/PlanBuilder.h"
#include "document/SchemaCheck.h"
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
        BadDocument{"sourceBus",
                    R"({"sources": [{"bus": "q", "periodic": {"id": 1, "period_ms": 1}}]})",
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
                    "sources[0].periodic.id: expected hexadecimal digits"},
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
        BadDocument{"sourceOfNoKind", R"({"sources": [{"comment": 1}]})",
                    "sources[0]: expected either \"periodic\" or \"replay\""},
        BadDocument{"periodicWithoutBus", R"({"sources": [{"periodic": {"period_ms": 1}}]})",
                    "sources[0].bus: is missing"},
        BadDocument{"periodMissing", R"({"sources": [{"bus": "a", "periodic": {"id": 1}}]})",
                    "sources[0].periodic.period_ms: is missing"},
        BadDocument{"periodRange",
                    R"({"sources": [{"bus": "a", "periodic": {"period_ms": 86400001}}]})",
                    "sources[0].periodic.period_ms: expected a number from 0 to 86400000"},
        BadDocument{"faultWithoutKind", R"({"faults": [{"box": "a"}]})",
                    "faults[0].do: is missing"},
        BadDocument{"faultWithoutBox", R"({"boxes": [{}], "faults": [{"do": "plug"}]})",
                    "faults[0].box: is missing"},
        BadDocument{"dipWithoutSwitches", R"({"faults": [{"do": "dip", "box": "a"}]})",
                    "faults[0].dip: is missing"},
        BadDocument{"statusMissing", R"({"faults": [{"do": "busStatus", "box": "a"}]})",
                    "faults[0].status: is missing"},
        BadDocument{"delayMissing", R"({"faults": [{"do": "slow", "function": "scan_rvhub4e"}]})",
                    "faults[0].delay_ms: is missing"},
        BadDocument{"secondOfTwo", R"({"usb": [{"model": "ETAS"}, {"model": "ETAS", "com": 1.5}]})",
                    "usb[1].com: expected an integer from 0 to 65535"},
        BadDocument{"channelsOfNoKind", R"({"boxes": [{"channels": {"can": "two"}}]})",
                    "boxes[0].channels.can: expected an integer from 0 to 64 or a list"},
        BadDocument{"channelOfNoKind", R"({"boxes": [{"channels": {"can": ["a", 1]}}]})",
                    "boxes[0].channels.can[1]: expected a text or an object"},
        BadDocument{"flag", R"({"boxes": [{"plugged": 1}]})",
                    "boxes[0].plugged: expected true or false"},
        BadDocument{"busWithoutName", R"({"buses": {"": {"kind": "can"}}})",
                    "buses.: a bus needs a name"},
        BadDocument{"busNamedLikeAPosition", R"({"buses": {"0": {"kind": "can", "x": 1}}})",
                    "buses.0.x: unknown key"},
        BadDocument{"keyWithQuotes", R"({"it's 'x'": 1})", "it's 'x': unknown key"},
        BadDocument{"replayChannel",
                    R"({"sources": [{"replay": {"file": "x", "channels": {"1": 7}}}]})",
                    "sources[0].replay.channels.1: expected a text"},
        // 62 characters, 64 bytes.
        BadDocument{
            "nameTooManyBytes",
            R"({"boxes": [{"name": "012345678901234567890123456789012345678901234567890123456789äö"}]})",
            "boxes[0].name: is longer than 63 bytes"},
        BadDocument{"notJson", "{\"boxes\": [}",
                    "is not JSON: at line 1, column 12: syntax error while parsing value - "
                    "unexpected '}'; expected '[', '{', or a literal"}),
    [](const auto& param) { return std::string(param.param.name); });

class Documents : public SimTest {};

TEST_F(Documents, everyPieceOfTheExampleIsRead) {
    load(R"({"$schema": "network.schema.json", "comment": "a rig",
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

// The guide's own examples, with a log that exists.
TEST_F(Documents, theExamplesOfTheGuideLoad) {
    std::ifstream guide(QUILL_SOURCE_DIR "/docs/virtual-network.md");
    std::stringstream stream;
    stream << guide.rdbuf();
    const std::string text = stream.str();
    const std::string log = ::testing::TempDir() + "simcore_guide.asc";
    std::ofstream(log) << "0.1 1 123 Rx d 1 00\n";
    int documents = 0;
    size_t begin = text.find("```json");
    for (; begin != std::string::npos; begin = text.find("```json", begin + 7)) {
        const size_t end = text.find("```", begin + 7);
        auto document = nlohmann::json::parse(text.substr(begin + 7, end - begin - 7));
        for (auto& source : document["sources"]) {
            if (source.contains("replay")) source["replay"]["file"] = log;
        }
        load(document.dump());
        EXPECT_EQ(scan().size(), document["boxes"].size());
        ++documents;
    }
    EXPECT_GE(documents, 1);
    ASSERT_NE(text.find(R"(`{"boxes": []}`)"), std::string::npos);
    load(R"({"boxes": []})");
    EXPECT_TRUE(scan().empty());
}

nlohmann::json jsonFile(const std::string& name) {
    std::ifstream file(std::string(QUILL_SOURCE_DIR "/") + name);
    return nlohmann::json::parse(file, nullptr, false);
}

const nlohmann::json* behindReference(const nlohmann::json& schema, const nlohmann::json* part) {
    if (!part->contains("$ref")) return part;
    return &schema.at(nlohmann::json::json_pointer((*part)["$ref"].get<std::string>().substr(1)));
}

// For every object of the schema that a document has, by its place in memory: the keys that the
// reader asked for.
using KeysOfParts = std::map<const nlohmann::json*, std::set<std::string>>;

void collectKeys(const nlohmann::json& schema, const nlohmann::json* reference,
                 const nlohmann::json& value, const std::string& path,
                 const simcore::document::KeysRead& read, KeysOfParts& parts) {
    const nlohmann::json* part = behindReference(schema, reference);
    if (value.is_array() && part->contains("items")) {
        for (size_t i = 0; i < value.size(); ++i) {
            collectKeys(schema, &(*part)["items"], value[i], path + "[" + std::to_string(i) + "]",
                        read, parts);
        }
    }
    if (!value.is_object()) return;
    if (part->contains("properties") && read.count(path) != 0) {
        parts[part].insert(read.at(path).begin(), read.at(path).end());
    }
    for (const auto& [key, member] : value.items()) {
        const nlohmann::json* next = nullptr;
        if (part->contains("properties")) {
            next = &(*part)["properties"].at(key);
        } else if (part->contains("additionalProperties")) {
            next = &(*part)["additionalProperties"];
        }
        const std::string below = path.empty() ? key : path + "." + key;
        if (next != nullptr) collectKeys(schema, next, member, below, read, parts);
    }
}

// A key that only one of the two knows would be refused, or accepted and passed over.
TEST_F(Documents, readerAndSchemaKnowTheSameKeys) {
    const auto schema = jsonFile("platform/simcore/network.schema.json");
    const auto document = jsonFile("fuzz/seeds/network/every_key.json");
    ASSERT_TRUE(schema.is_object() && document.is_object());
    EXPECT_EQ(simcore::document::checkAgainstSchema(document), "");
    simcore::document::KeysRead read;
    simcore::document::Complaint complaint(read);
    simcore::engine::NetworkPlan plan;
    simcore::document::PlanBuilder(plan, "").readDocument(
        simcore::document::Node(document, "", complaint));
    EXPECT_EQ(complaint.text(), "");
    KeysOfParts parts;
    collectKeys(schema, &schema, document, "", read, parts);
    EXPECT_EQ(parts.size(), 14U);  // objects with keys of their own
    for (const auto& [part, keys] : parts) {
        std::set<std::string> allowed;
        for (const auto& [key, value] : (*part)["properties"].items()) {
            if (key != "comment" && key != "$schema") allowed.insert(key);
        }
        EXPECT_EQ(keys, allowed);
    }
}

// The reader takes integers as they are, so each must have its bounds.
void expectBounds(const nlohmann::json& part, int& integers) {
    if (part.is_object() && part.contains("type") && part["type"].dump().find("integer") < 20) {
        EXPECT_TRUE(part.contains("minimum") && part.contains("maximum")) << part;
        ++integers;
    }
    if (!part.is_structured()) return;
    for (const auto& below : part) expectBounds(below, integers);
}

TEST_F(Documents, integersOfTheSchemaHaveBounds) {
    int integers = 0;
    expectBounds(jsonFile("platform/simcore/network.schema.json"), integers);
    EXPECT_GT(integers, 15);
}

// It is read without being checked.
TEST_F(Documents, theBuiltInNetworkFitsTheSchema) {
    const auto document = nlohmann::json::parse(simcore::document::builtInNetwork());
    EXPECT_EQ(simcore::document::checkAgainstSchema(document), "");
}

TEST_F(Documents, hugeOnesWithMistakesAreRefusedWithinBounds) {
    std::string boxes = R"({"boxes": [7)";
    for (int i = 0; i < 200'000; ++i) boxes += ",7";
    const std::string digits(1'000'000, '0');
    const std::string source = R"({"buses": {"a": {"kind": "can"}}, "sources": [{"bus": "a", )";
    const std::pair<std::string, const char*> documents[] = {
        {boxes + "]}", "document: has a mistake and is too large to say where"},
        {R"({"boxes": [{"mac": ")" + digits + R"("}]})",
         "boxes[0].mac: expected six hexadecimal pairs such as 02:00:00:00:00:01"},
        {source + R"("periodic": {"period_ms": 1, "id": ")" + digits + R"("}}]})",
         "sources[0].periodic.id: expected hexadecimal digits"},
        {source + R"("periodic": {"period_ms": 1, "id": 1, "data": ")" + digits + R"("}}]})",
         "sources[0].periodic.data: has more than 8 bytes"}};
    for (const auto& [text, complaint] : documents) {
        std::string reason;
        EXPECT_FALSE(simcore::loadNetwork(text, reason));
        EXPECT_EQ(reason, std::string("network document: ") + complaint);
    }
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
