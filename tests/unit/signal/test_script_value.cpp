#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "signal/ScriptValue.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Model::codec::ResultShown;

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr uint64_t kIndefinite = 0x8000000000000000;

struct NumberCase {
    const char* name;
    double value;
    uint64_t raw;
};
class ScriptNumber : public ::testing::TestWithParam<NumberCase> {};

TEST_P(ScriptNumber, isTruncated) {
    EXPECT_EQ(Model::codec::rawFromScriptValue(GetParam().value), GetParam().raw);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, ScriptNumber,
    ::testing::Values(
        NumberCase{"zero", 0.0, 0}, NumberCase{"minusZero", -0.0, 0},
        NumberCase{"fraction", 2.9, 2}, NumberCase{"minusOne", -1.0, ~uint64_t{0}},
        NumberCase{"minusTwoAndAHalf", -2.5, 0xFFFFFFFFFFFFFFFE},
        NumberCase{"belowTwoTo63", std::nextafter(kTwoTo63, 0), 0x7FFFFFFFFFFFFC00},
        NumberCase{"twoTo63", kTwoTo63, kIndefinite},
        NumberCase{"belowTwoTo64", std::nextafter(2 * kTwoTo63, 0), 0xFFFFFFFFFFFFF800},
        NumberCase{"twoTo64", 2 * kTwoTo63, kIndefinite},
        NumberCase{"minusTwoTo63", -kTwoTo63, kIndefinite},
        NumberCase{"farBelow", -1e300, kIndefinite},
        NumberCase{"infinity", std::numeric_limits<double>::infinity(), kIndefinite},
        NumberCase{"notANumber", std::numeric_limits<double>::quiet_NaN(), kIndefinite}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ScriptTexts, joinWithoutBlanks) {
    EXPECT_EQ(Model::codec::payloadText({}), "Data: []");
    EXPECT_EQ(Model::codec::payloadText(Bytes{0x00, 0x1F}), "Data: [0X0, 0X1F]");
    EXPECT_EQ(Model::codec::payloadText(Bytes{0xA0, 0x0A, 0xFF}), "Data: [0XA0, 0XA, 0XFF]");
    EXPECT_EQ(Model::codec::afterText(std::nullopt, {}), "rawValueToByte after:Data: []");
}

TEST(ScriptTexts, showNumbersAsAStreamDoes) {
    for (const double value : {0.0, -1.0, 1234567.0, 0.1 + 0.2, 1e-5, 1e100, 65535.0,
                               std::numeric_limits<double>::infinity()}) {
        std::ostringstream stream;
        stream << "rawValueToByte before:" << value << "Data: [0X7]";
        EXPECT_EQ(Model::codec::beforeText(value, Bytes{7}), stream.str());
    }
}

TEST(SetSignal, tellsBothStates) {
    Bytes data{0x00, 0xFF};
    std::ostringstream out;
    EXPECT_TRUE(
        Model::codec::setSignalFromScriptValue(data, {0, 8, false}, 18.7, ResultShown::Yes, out));
    EXPECT_FALSE(
        Model::codec::setSignalFromScriptValue(data, {16, 8, false}, 1, ResultShown::Yes, out));
    EXPECT_TRUE(
        Model::codec::setSignalFromScriptValue(data, {8, 4, true}, 3, ResultShown::No, out));
    EXPECT_EQ(out.str(),
              "rawValueToByte before:18.7Data: [0X0, 0XFF]\n"
              "rawValueToByte after:1Data: [0X12, 0XFF]\n"
              "rawValueToByte before:1Data: [0X12, 0XFF]\n"
              "rawValueToByte after:0Data: [0X12, 0XFF]\n"
              "rawValueToByte before:3Data: [0X12, 0XFF]\n"
              "rawValueToByte after:Data: [0X12, 0XF3]\n");
}

TEST(SetSignal, minusOneFillsTheLastByte) {
    Bytes data{0x00, 0x00};
    std::ostringstream out;
    EXPECT_TRUE(
        Model::codec::setSignalFromScriptValue(data, {4, 6, false}, -1, ResultShown::No, out));
    EXPECT_EQ(data, (Bytes{0xF0, 0xFF}));
}

TEST(SetSignal, raisesAfterTheFirstLine) {
    Bytes data{0x00};
    std::ostringstream out;
    EXPECT_THROW(
        Model::codec::setSignalFromScriptValue(data, {512, 8, false}, 1, ResultShown::No, out),
        std::out_of_range);
    EXPECT_EQ(out.str(), "rawValueToByte before:1Data: [0X0]\n");
}

}  // namespace
