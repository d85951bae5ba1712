#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "signal/SignalCodec.h"
#include "signal/SignalValue.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Model::codec::kInvalidRawValue;

constexpr bool kIntel = false;
constexpr bool kMotorola = true;
const Bytes kCounting{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

struct ParseCase {
    const char* name;
    Bytes data;
    bool bigEndian;
    uint32_t start;
    uint32_t length;
    uint64_t expected;
};
class Parse : public ::testing::TestWithParam<ParseCase> {};

TEST_P(Parse, givesTheRawValue) {
    const ParseCase& c = GetParam();
    EXPECT_EQ(Model::codec::parseSignalValue(c.data, c.bigEndian, c.start, c.length), c.expected);
}

// clang-format off
const ParseCase kParseCases[] = {
    {"intelTwoBytes", {0x34, 0x12}, kIntel, 0, 16, 0x1234},
    {"motorolaTwoBytes", {0x12, 0x34}, kMotorola, 8, 16, 0x1234},
    {"upperNibble", {0xAB}, kIntel, 4, 4, 0xA},
    {"intelBeyondTheEnd", {0xAB}, kIntel, 4, 8, kInvalidRawValue},
    {"motorolaBeforeTheStart", {0x12, 0x34}, kMotorola, 0, 16, kInvalidRawValue},
    {"noPayload", {}, kIntel, 0, 8, kInvalidRawValue},
    {"noPayloadMotorola", {}, kMotorola, 0, 8, kInvalidRawValue},
    {"startAtTheEnd", {0x12, 0x34}, kIntel, 16, 1, kInvalidRawValue},
    {"startAtTheEndMotorola", {0x12, 0x34}, kMotorola, 16, 1, kInvalidRawValue},
    {"startFarBeyond", {0x12}, kMotorola, 0xFFFFFFFF, 1, kInvalidRawValue},
    {"intelWholeEightBytes", kCounting, kIntel, 0, 64, 0xEFCDAB8967452301},
    {"motorolaWholeEightBytes", kCounting, kMotorola, 56, 64, 0x0123456789ABCDEF},
    {"intelOverNineBytes", {0x08, 0, 0, 0, 0, 0, 0, 0, 0x05}, kIntel, 3, 64, 0xA000000000000001},
    {"motorolaOverNineBytes",
     {0x05, 0, 0, 0, 0, 0, 0, 0, 0x08}, kMotorola, 67, 64, 0xA000000000000001},
    {"emptyIntelAtZero", {0xFF}, kIntel, 0, 0, kInvalidRawValue},
    {"emptyIntel", {0xFF}, kIntel, 1, 0, 0},
    {"emptyIntelAtAByte", {0xFF, 0xFF}, kIntel, 8, 0, 0},
    {"emptyMotorolaAtZero", {0xFF}, kMotorola, 0, 0, kInvalidRawValue},
    {"emptyMotorolaAtAByte", {0xFF, 0xFF}, kMotorola, 8, 0, kInvalidRawValue},
    {"emptyMotorola", {0xFF, 0xFF}, kMotorola, 9, 0, 0},
    {"lengthWraps", {0xFF, 0xFF}, kIntel, 1, 65, kInvalidRawValue},
    // Bit 64 of the signal lands on bit 0, and the mask keeps one bit.
    {"bit64FoldsBack", {0, 0, 0, 0, 0, 0, 0, 0, 1}, kIntel, 0, 65, 1},
    {"wrappedEnd", {0xFF, 0x81}, kIntel, 15, 0xFFFFFFFF, 1},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Edges, Parse, ::testing::ValuesIn(kParseCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Parse, toleratesAnAbsentPayload) {
    EXPECT_EQ(Model::codec::parseSignalValue(nullptr, 8, kIntel, 0, 8), kInvalidRawValue);
    EXPECT_EQ(Model::codec::parseSignalValue(kCounting.data(), 0, kIntel, 0, 8), kInvalidRawValue);
}

struct WriteCase {
    const char* name;
    Bytes data;
    uint64_t raw;
    bool bigEndian;
    uint32_t start;
    uint32_t length;
    bool placed;
    Bytes expected;
};
class Write : public ::testing::TestWithParam<WriteCase> {};

TEST_P(Write, clearsThenOrs) {
    const WriteCase& c = GetParam();
    Bytes data = c.data;
    EXPECT_EQ(Model::codec::rawValueToByte(data, c.raw, c.bigEndian, c.start, c.length), c.placed);
    EXPECT_EQ(data, c.expected);
}

const Bytes kOnes(8, 0xFF);

// clang-format off
const WriteCase kWriteCases[] = {
    {"motorolaNibble", {0xFF}, 0x5, kMotorola, 0, 4, true, {0xF5}},
    {"intelNibbleIsMirrored", {0xFF}, 0x5, kIntel, 0, 4, true, {0x0F}},
    {"intelClearsTheNeighbours", {0xFF, 0xFF}, 0x00, kIntel, 4, 8, true, {0xF0, 0x0F}},
    {"intelAcrossBytes", {0x00, 0x00}, 0xAB, kIntel, 4, 8, true, {0xB0, 0x0A}},
    {"ninthBitIsDropped", {0x00}, 0x1FF, kIntel, 0, 8, true, {0xFF}},
    {"fifthBitLandsInTheByte", {0x00}, 0x1F, kIntel, 0, 4, true, {0x1F}},
    {"highBitsInMotorolaLowByte", {0x00, 0x00}, 0xFFFF, kMotorola, 8, 12, true, {0xFF, 0xFF}},
    {"startBeyondIntel", kOnes, 0, kIntel, 64, 16, false, kOnes},
    {"startBeyondMotorolaClearsFirst", kOnes, 0x1234, kMotorola, 64, 16, false,
     {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}},
    {"motorolaBeforeTheStart", {0xFF, 0xFF, 0xFF}, 0, kMotorola, 0, 16, true, {0x00, 0x00, 0xFF}},
    {"intelPastTheEnd", {0xFF, 0xFF}, 0x1234, kIntel, 8, 16, true, {0xFF, 0x34}},
    {"emptyPayload", {}, 1, kIntel, 0, 8, false, {}},
    {"emptySignal", {0xF0}, 0x3, kIntel, 1, 0, true, {0xF6}},
    {"wholeMotorola", kOnes, 0x0123456789ABCDEF, kMotorola, 56, 64, true, kCounting},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Edges, Write, ::testing::ValuesIn(kWriteCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Write, raisesOutsideThePositions) {
    struct Row {
        bool bigEndian;
        uint32_t start;
        uint32_t length;
    };
    for (const Row row :
         {Row{kIntel, 505, 8}, Row{kIntel, 512, 1}, Row{kIntel, 0, 513}, Row{kMotorola, 512, 8},
          Row{kMotorola, 0xFFFFFFF8, 8}, Row{kMotorola, 7, 0xFFFFFFFF}}) {
        Bytes data(9, 0xFF);
        EXPECT_FALSE(Model::codec::isClearable(row.bigEndian, row.start, row.length));
        try {
            Model::codec::rawValueToByte(data, 0, row.bigEndian, row.start, row.length);
            ADD_FAILURE() << "no error for start " << row.start << " length " << row.length;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "invalid bitset position");
        }
        EXPECT_EQ(data, Bytes(9, 0xFF));
    }
    EXPECT_TRUE(Model::codec::isClearable(kIntel, 504, 8));
    EXPECT_TRUE(Model::codec::isClearable(kMotorola, 504, 64));
}

TEST(Decode, describesExactKeysOnly) {
    const Model::codec::ValueTable table{{0, "Off"}, {1, "On"}, {2.5, "between"}};
    const Bytes on{1};
    const Bytes two{2};
    const auto first = Model::codec::decodeSignal(on, kIntel, 0, 8, 0.5, -40, table);
    EXPECT_EQ(first.description, "On");
    EXPECT_EQ(first.physicalValue, -39.5);
    EXPECT_EQ(first.rawValue, 1U);
    EXPECT_EQ(Model::codec::decodeSignal(two, kIntel, 0, 8, 1, 0, table).description, "");
    const auto unscaled = Model::codec::decodeSignalUnscaled(two, kIntel, 0, 8, table);
    EXPECT_EQ(unscaled.physicalValue, 2);
}

TEST(Decode, takesTheErrorValueForAnyOther) {
    const double key = 18446744073709551616.0;  // all ones, rounded to the nearest double
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto value = Model::codec::decodeSignal({}, kIntel, 0, 8, 2, 1, {{key, "error"}});
    EXPECT_EQ(value.description, "error");
    EXPECT_EQ(value.rawValue, kInvalidRawValue);
    EXPECT_EQ(value.physicalValue, key * 2 + 1);
    EXPECT_EQ(Model::codec::decodeSignalUnscaled({}, kIntel, 0, 8, {{nan, "none"}}).description,
              "");
}

}  // namespace
