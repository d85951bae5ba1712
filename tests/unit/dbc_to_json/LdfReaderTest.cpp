// The LDF reader on rules that the corpus does not reach, and on broken files.
#include <gtest/gtest.h>

#include <cmath>

#include "Corpus.h"

namespace {

using corpus::Json;
namespace ldf = quill::dbjson::ldf;

const std::string kHead =
    "LIN_description_file;\nLIN_protocol_version = \"2.1\";\nLIN_speed = 19.2 kbps;\n"
    "Nodes { Master: M, 5 ms, 0.1 ms; Slaves: S; }\n";

TEST(LdfTimes, wholeMillisecondsSurviveSeconds) {
    for (uint32_t ms = 0; ms <= 70000; ++ms) {
        ASSERT_EQ(std::trunc(ldf::secondsFromMs(ms) * 1000.0), ms);
    }
    EXPECT_EQ(std::trunc(ldf::secondsFromMs(10.5) * 1000.0), 10.0);
    EXPECT_EQ(ldf::secondsFromMs(10.5), 0.0105);
}

TEST(LdfLayout, lowestBitWithMostSignificantByteFirst) {
    EXPECT_EQ(ldf::leastSignificantBit(0, 16, true), 8U);
    EXPECT_EQ(ldf::leastSignificantBit(8, 8, true), 8U);
    EXPECT_EQ(ldf::leastSignificantBit(4, 12, true), 12U);
    EXPECT_EQ(ldf::leastSignificantBit(8, 40, true), 40U);
    EXPECT_EQ(ldf::leastSignificantBit(4, 12, false), 4U);
}

struct LdfCase {
    const char* name;
    std::string text;
    const char* pointer;
    Json value;
};
class LdfGood : public ::testing::TestWithParam<LdfCase> {};

TEST_P(LdfGood, loads) {
    const auto& c = GetParam();
    const auto result = corpus::convertLdf(kHead + c.text);
    ASSERT_FALSE(result.diagnostics.failed()) << result.diagnostics.error()->text;
    ASSERT_TRUE(result.json.contains(Json::json_pointer(c.pointer))) << result.json;
    EXPECT_EQ(result.json[Json::json_pointer(c.pointer)], c.value);
}

const std::string kFrames =
    "Signals { a: 8, 1, S, M; b: 64, {1,2,3,4,5,6,7,0x88}, M, S; }\n"
    "Frames { F: 1, S { a, 0; } G: 40, M { b, 0; } H: 50, M, 3 { } }\n";

INSTANTIATE_TEST_SUITE_P(
    Rules, LdfGood,
    ::testing::Values(
        LdfCase{"lengthOfLowId", kFrames, "/frames/0/length", 2},
        LdfCase{"lengthOfMiddleId", kFrames, "/frames/1/length", 4},
        LdfCase{"lengthStated", kFrames, "/frames/2/length", 3},
        LdfCase{"arrayAsNumber", kFrames, "/frames/1/signals/0/init_value",
                static_cast<int64_t>(0x8807060504030201U)},
        LdfCase{"enhancedByFile", kFrames, "/frames/1/attributes/checksum", "enhanced"},
        LdfCase{"classicByNode", kFrames + "Node_attributes { S { LIN_protocol = 1.3; } }",
                "/frames/0/attributes/checksum", "classic"},
        LdfCase{"enhancedByNode",
                "LIN_protocol_version = \"1.3\";" + kFrames +
                    "Node_attributes { S { LIN_protocol = \"2.0\"; } }",
                "/frames/0/attributes/checksum", "enhanced"},
        LdfCase{"diagnosticFrame",
                "Diagnostic_signals { r: 8, 0; }"
                "Diagnostic_frames { MasterReq: 0x3C { r, 0; } }",
                "/frames/0/attributes",
                {{"publisher", {"M"}}, {"checksum", "classic"}, {"type", "diagnostic"}}},
        LdfCase{"eventWithoutTable", kFrames + "Event_triggered_frames { E: 9, F, G; }",
                "/frames/3/attributes/publisher", Json({"S", "M"})},
        LdfCase{"commandIsMasterRequest",
                "Schedule_tables { T { AssignNAD { S } delay 5 ms; } }",
                "/schedule_tables/0/schedule/0/command",
                {{"type", "assign_nad"}, {"frame", "MasterReq"}, {"arguments", {"S"}}}},
        LdfCase{"fractionOfMs", "Schedule_tables { T { F delay 10.5ms ; } }",
                "/schedule_tables/0/schedule/0/delay", 0.0105},
        LdfCase{"initialNadByConfigured", "Node_attributes { S { configured_NAD = 0x20; } }",
                "/node_attributes/0/initial_nad", 32},
        LdfCase{"physicalOnlyWhereStated", kFrames, "/frames/0/signals/0/value_table",
                Json::array()},
        LdfCase{"unknownSection",
                "composite { c { a { x } } }\nNovelty { { \"}\" } } New = 3;" + kFrames,
                "/frames/0/id", 1},
        LdfCase{"emptySections", "Signals { } Frames { } Schedule_tables { }" + kFrames,
                "/frames/0/id", 1},
        LdfCase{"sectionsInAnyOrder",
                "Signal_representation { E: a; }"
                "Signal_encoding_types { E { physical_value, 0, 9, 0.5, -4, \"V\"; } }" +
                    kFrames,
                "/frames/0/signals/0/factor", 0.5}),
    [](const auto& test) { return std::string(test.param.name); });

struct LdfBadCase {
    const char* name;
    std::string text;
    const char* message;
};
class LdfBad : public ::testing::TestWithParam<LdfBadCase> {};

TEST_P(LdfBad, fails) {
    const auto result = corpus::convertLdf(GetParam().text);
    ASSERT_TRUE(result.diagnostics.failed());
    EXPECT_NE(result.diagnostics.error()->text.find(GetParam().message), std::string::npos)
        << result.diagnostics.error()->text;
}

INSTANTIATE_TEST_SUITE_P(
    Broken, LdfBad,
    ::testing::Values(
        LdfBadCase{"otherKind", "VERSION \"\"", "not a LIN description file"},
        LdfBadCase{"cutInSection", kHead + "Signals { a: 8,", "unexpected end of file"},
        LdfBadCase{"openText", kHead + "Channel_name = \"x", "text without closing quote"},
        LdfBadCase{"openBraces", kHead + "Novelty { {", "expected '}'"},
        LdfBadCase{"wordForNumber", kHead + "Signals { a: x, 0; }", "expected a number"},
        LdfBadCase{"identifierTooLarge", kHead + "Frames { F: 64, M { } }", "0 to 63"},
        LdfBadCase{"frameTooLong", kHead + "Frames { F: 6, M, 9 { } }", "at most 8 bytes"},
        LdfBadCase{"numberTooLarge", kHead + "Signals { a: 99999999999999999999, 0; }",
                   "out of range"},
        LdfBadCase{"garbageAtEnd", kHead + "}", "expected a section"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(LdfFaults, cutFilesNeverLoadHalf) {
    const std::string text = kHead + kFrames + "Schedule_tables { T { F delay 5 ms; } }";
    for (size_t i = 0; i < text.size(); ++i) {
        const std::string cut = text.substr(0, i);
        const size_t last = cut.find_last_not_of(" \n");
        const bool isBetween =
            std::count(cut.begin(), cut.end(), '{') == std::count(cut.begin(), cut.end(), '}') &&
            last != std::string::npos && (cut[last] == ';' || cut[last] == '}');
        EXPECT_EQ(corpus::convertLdf(cut).diagnostics.failed(), !isBetween) << cut;
        std::string damaged = text;
        damaged[i] = '{';
        static_cast<void>(corpus::convertLdf(damaged));
    }
}

}  // namespace
