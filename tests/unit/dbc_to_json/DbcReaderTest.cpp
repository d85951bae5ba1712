// The DBC reader on what public files do and what damaged ones look like.
#include <gtest/gtest.h>

#include "Corpus.h"
#include "dbc/DbcNumbers.h"

namespace {

using corpus::Json;
using quill::dbjson::dbc::motorolaLeastSignificantBit;

constexpr const char* kFrame = "BO_ 5 Alpha: 8 Ecu\n SG_ one : 0|8@1+ (1,0) [0|255] \"\" Ecu\n";

struct MotorolaCase {
    uint64_t start, length, lowest;
};
TEST(Motorola, leastSignificantBit) {
    for (const auto& c : {MotorolaCase{7, 8, 0},
                          {7, 16, 8},
                          {0, 12, 21},
                          {3, 11, 9},
                          {39, 16, 40},
                          {0, 1, 0},
                          {7, 64, 56}}) {
        EXPECT_EQ(motorolaLeastSignificantBit(c.start, c.length), c.lowest) << c.start;
    }
}

TEST(DbcNumbers, takeWhatToolsWrite) {
    using quill::dbjson::dbc::toDouble;
    EXPECT_EQ(toDouble("1E-006"), 1e-6);
    EXPECT_EQ(toDouble("+.5"), 0.5);
    EXPECT_EQ(toDouble("-3."), -3.0);
    EXPECT_EQ(toDouble("0.1000000000000000055511151231257827021181583404541015625"), 0.1);
    EXPECT_EQ(toDouble("1e-400"), 0.0);
    EXPECT_EQ(toDouble("-1e400"), -HUGE_VAL);
    EXPECT_EQ(toDouble("-1.#INF"), -HUGE_VAL);
    EXPECT_EQ(toDouble("1.#QNAN"), 0.0);
    EXPECT_EQ(toDouble("1.2.3"), std::nullopt);
}

// A text that loads: how many messages and warnings, and one value in the JSON by its pointer.
struct GoodCase {
    const char* name;
    std::string text;
    size_t messages;
    size_t warnings;
    const char* pointer;
    Json value;
};
class DbcGood : public ::testing::TestWithParam<GoodCase> {};

TEST_P(DbcGood, loads) {
    const auto& c = GetParam();
    const auto result = corpus::convertDbc(c.text);
    ASSERT_FALSE(result.diagnostics.failed()) << result.diagnostics.error()->text;
    EXPECT_EQ(result.diagnostics.warningCount(), c.warnings);
    EXPECT_EQ(result.json["messages"].size(), c.messages);
    ASSERT_TRUE(result.json.contains(Json::json_pointer(c.pointer))) << result.json;
    EXPECT_EQ(result.json[Json::json_pointer(c.pointer)], c.value);
}

const std::string kOne = kFrame;
const std::string kFormats =
    "BA_DEF_ BO_ \"VFrameFormat\" ENUM \"StandardCAN\",\"J1939PG\",\"StandardCAN_FD\";\n";

INSTANTIATE_TEST_SUITE_P(
    Dialects, DbcGood,
    ::testing::Values(
        GoodCase{"commentBeforeItsFrame", "CM_ BO_ 5 \"hi\";\n" + kOne, 1, 0, "/messages/0/comment",
                 "hi"},
        GoodCase{"commentWithoutSemicolon", "CM_ BO_ 5 \"hi\"\n" + kOne, 1, 1,
                 "/messages/0/comment", "hi"},
        GoodCase{"commentWithoutObjectKeyword", kOne + "CM_ 5 \"hi\";", 1, 0, "/messages/0/comment",
                 "hi"},
        GoodCase{"lastCommentWithoutSemicolon", kOne + "CM_ BO_ 5 \"hi\"", 1, 1,
                 "/messages/0/comment", "hi"},
        GoodCase{"quoteInText", kOne + "CM_ SG_ 5 one \"a \\\"b\\\" c\";", 1, 0,
                 "/messages/0/signals/0/comment", "a \"b\" c"},
        GoodCase{"nameWithDigitFirst", "BO_ 1275 2017_5: 8 GTW", 1, 0, "/messages/0/name",
                 "2017_5"},
        GoodCase{"cppComments", "// a\n/* BO_ 1 x: */" + kOne + "// end", 1, 0, "/messages/0/id",
                 5},
        GoodCase{"symbolsInOneLine", "NS_ : CM_ BA_ VAL_\nBS_: 1 : 2, 2\n" + kOne, 1, 0,
                 "/messages/0/id", 5},
        GoodCase{"symbolsWithoutSections", "NS_ :\n CM_\n BO_\n" + kOne, 1, 0, "/messages/0/id", 5},
        GoodCase{"unknownStatement", "FOO_ 1 \"x\";\n" + kOne, 1, 1, "/messages/0/id", 5},
        GoodCase{"unknownStatementWithoutEnd", "FOO_ 1\n" + kOne, 1, 1, "/messages/0/id", 5},
        GoodCase{"rareStatement", kOne + "SIG_TYPE_REF_ 5 one : \"a;b\";\nBU_: A", 1, 0, "/nodes/0",
                 "A"},
        GoodCase{"damagedSignal",
                 kOne + " SG_ bad : 0|8@7+ (1,0)\n SG_ two : 8|8@1+ (1,0) [0|0] "
                        "\"\" X\n",
                 1, 1, "/messages/0/signals/1/name", "two"},
        GoodCase{"damagedFrameTakesItsSignals",
                 kOne + "BO_ x Bad: 8 E\n SG_ lost : 0|8@1+ (1,0) "
                        "[0|0] \"\" X\nBO_ 6 Beta: 8 E\n",
                 2, 1, "/messages/1/name", "Beta"},
        GoodCase{"damagedWithoutItsNumber",
                 "BO_ 7 Bad:\n SG_ lost : 0|8@1+ (1,0) [0|0] \"\" X\n" + kOne, 1, 1,
                 "/messages/0/id", 5},
        GoodCase{"numberOutOfRange", kOne + " SG_ bad : 99999999999|8@1+ (1,0) [0|0] \"\" X\n", 1,
                 1, "/messages/0/id", 5},
        GoodCase{"signalBeforeFrame", " SG_ bad : 0|8@1+ (1,0) [0|0] \"\" X\n" + kOne, 1, 1,
                 "/messages/0/id", 5},
        GoodCase{"openLimits", "BO_ 5 A: 8 E\n SG_ s : 0|8@1+ (1,0) [|] \"\" X", 1, 0,
                 "/messages/0/signals/0/value_max", 0},
        GoodCase{"receiversOverLines", "BO_ 5 A: 8 E\n SG_ s : 0|8@1+ (1,0) [0|0] \"\" X , Y,\n  Z",
                 1, 0, "/messages/0/signals/0/receivers", Json({"X", "Y", "Z"})},
        GoodCase{"nobody", "BO_ 5 A: 8 Vector__XXX\n SG_ s : 0|8@1+ (1,0) [0|0] \"\" VECTOR__XXX,Y",
                 1, 0, "/messages/0/signals/0/receivers", Json({"Y"})},
        GoodCase{"sendersOnce", kOne + "BO_TX_BU_ 5 : Ecu,Two;", 1, 0, "/messages/0/transmitters",
                 Json({"Ecu", "Two"})},
        GoodCase{"pseudoFrame",
                 kOne + "BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n"
                        " SG_ s : 0|8@1+ (1,0) [0|0] \"\" X",
                 1, 0, "/messages/0/id", 5},
        GoodCase{"extendedIdentifier",
                 "BO_ 2147483653 A: 8 E",
                 1,
                 0,
                 "/messages/0",
                 {{"id", 5},
                  {"is_extended_frame", true},
                  {"dlc", 8},
                  {"name", "A"},
                  {"comment", ""},
                  {"is_fd", false},
                  {"transmitters", {"E"}},
                  {"attributes", Json::array()},
                  {"signals", Json::array()}}},
        GoodCase{"enumByIndex", kOne + kFormats + "BA_ \"VFrameFormat\" BO_ 5 2;", 1, 0,
                 "/messages/0/is_fd", true},
        GoodCase{"enumByText", kOne + kFormats + "BA_ \"VFrameFormat\" BO_ 5 \"StandardCAN_FD\";",
                 1, 0, "/messages/0/attributes/0/value", "StandardCAN_FD"},
        GoodCase{"enumDefault", kOne + kFormats + "BA_DEF_DEF_ \"VFrameFormat\" \"J1939PG\";", 1, 0,
                 "/messages/0/attributes/0/value", "J1939PG"},
        GoodCase{"frameFormatAsNumber",
                 kOne + "BA_DEF_ BO_ \"VFrameFormat\" INT 0 15;\n"
                        "BA_ \"VFrameFormat\" BO_ 5 14;",
                 1, 0, "/messages/0/attributes/0/value", "StandardCAN_FD"},
        GoodCase{"longTransportIsNotFd",
                 "BO_ 5 A: 100 E\n" + kFormats + "BA_ \"VFrameFormat\" BO_ 5 1;", 1, 0,
                 "/messages/0/is_fd", false},
        GoodCase{"integerWrittenAsReal",
                 kOne + "BA_DEF_ \"Baudrate\" INT 0 1;\nBA_ \"Baudrate\" "
                        "500000.0;",
                 1, 0, "/attributes/0/value", 500000},
        GoodCase{
            "longNames",
            kOne +
                "BA_DEF_ SG_ \"SystemSignalLongSymbol\" STRING ;\nBA_ "
                "\"SystemSignalLongSymbol\" SG_ 5 one \"one_and_only\";\nSIG_GROUP_ 5 G 1 : one;",
            1, 0, "/signal_groups/0/signals/0", "one_and_only"},
        GoodCase{"namedTable", "VAL_TABLE_ T 1 \"on\" ;\n" + kOne + "VAL_ 5 one T ;", 1, 0,
                 "/messages/0/signals/0/value_table/0/name", "on"},
        GoodCase{"sameIdentifierTwice", kOne + "BO_ 5 Beta: 8 E\nCM_ BO_ 5 \"both\";", 2, 0,
                 "/messages/1/comment", "both"},
        GoodCase{"valuesOfUnknownSignal", kOne + "VAL_ 9 gone 1 \"x\" ;", 1, 0, "/messages/0/id",
                 5},
        GoodCase{"relation",
                 kOne + "BA_DEF_REL_ BU_SG_REL_ \"T\" INT 0 9;\n"
                        "BA_REL_ \"T\" BU_SG_REL_ Ecu SG_ 5 one 7;",
                 1,
                 0,
                 "/relations/0",
                 {{"kind", "BU_SG_REL_"},
                  {"name", "T"},
                  {"objects", {"Ecu", "SG_", "5", "one"}},
                  {"value", 7}}}),
    [](const auto& test) { return std::string(test.param.name); });

// A text that fails as a whole, with the place where.
struct BadCase {
    const char* name;
    std::string text;
    size_t offset;
    const char* message;
};
class DbcBad : public ::testing::TestWithParam<BadCase> {};

TEST_P(DbcBad, fails) {
    const auto& c = GetParam();
    const auto result = corpus::convertDbc(c.text);
    ASSERT_TRUE(result.diagnostics.failed());
    EXPECT_EQ(result.diagnostics.error()->offset, c.offset);
    EXPECT_NE(result.diagnostics.error()->text.find(c.message), std::string::npos)
        << result.diagnostics.error()->text;
}

INSTANTIATE_TEST_SUITE_P(
    Broken, DbcBad,
    ::testing::Values(
        BadCase{"otherKind", "<?xml version=\"1.0\"?><a/>", 0, "no DBC statement"},
        BadCase{"onlyBlank", " \n\t ", 0, "no DBC statement"},
        BadCase{"openText", "BU_: A\nCM_ \"never closed", 11, "text without closing quote"},
        BadCase{"cutSignal", "BO_ 1 A: 8 E\n SG_ s : 0|8@1+ (1,0) [0|", 38, "expected ']'"},
        BadCase{"cutAttribute", "BU_: A\nBA_ \"x\" 12", 17, "expected ';'"},
        BadCase{"cutValueTable", "BU_: A\nVAL_TABLE_ T 1 \"a\" 2", 27, "a text in quotes"},
        BadCase{"cutInIgnored", "BU_: A\nCAT_DEF_ 1 2", 19, "expected ';'"}),
    [](const auto& test) { return std::string(test.param.name); });

// Every prefix of a file ends in a verdict, and so does every file with one byte damaged.
TEST(DbcFaults, cutAndDamagedFilesNeverHarm) {
    const std::string text = kOne + kFormats +
                             "BA_ \"VFrameFormat\" BO_ 5 2;\nCM_ SG_ 5 one \"a\";\n"
                             "VAL_ 5 one 1 \"on\" 0 \"off\";\nSG_MUL_VAL_ 5 one one 1-2, 4-5;\n"
                             "EV_ e: 0 [0|1] \"u\" 0 1 DUMMY_NODE_VECTOR0 A,B;\nSIG_VALTYPE_ 5 one "
                             ": 1;\n";
    for (size_t i = 0; i < text.size(); ++i) {
        static_cast<void>(corpus::convertDbc(text.substr(0, i)));
        for (const char damage : {'"', ';', '\n', '9', '\xff', '/'}) {
            std::string damaged = text;
            damaged[i] = damage;
            static_cast<void>(corpus::convertDbc(damaged));
        }
    }
    EXPECT_FALSE(corpus::convertDbc(text).diagnostics.failed());
}

// Texts that would cost quadratic time if a piece were read again and again.
TEST(DbcFaults, hostileTextsStayLinear) {
    const auto repeated = [](const std::string& piece, size_t bytes) {
        std::string text = "BU_: A\n";
        while (text.size() < bytes) text += piece;
        return text;
    };
    constexpr size_t kBytes = 4U << 20;
    for (const char* piece : {"x", "BO_ ", "BO_ x\n", "/* ", "VAL_ 1 a 1 \"\nVAL_ 1 a 1 \"\n",
                              "BO_ 1 A: 8 E\nCM_ BO_ 1 \"c\";\n", "NS_ :\n", "SG_ ;"}) {
        static_cast<void>(corpus::convertDbc(repeated(piece, kBytes)));
    }
}

}  // namespace
