#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include "signal/PhysicalCodec.h"
#include "unit/signal/LiteralCodec.h"

namespace {

using literal::Bytes;
using Model::codec::EncodeStatus;
using Model::codec::PhysicalLayout;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

PhysicalLayout signedLayout(uint32_t start, uint32_t length, bool bigEndian = false) {
    return {{start, length, bigEndian}, true, false, 1, 0, 0, 0};
}

struct EncodeCase {
    const char* name;
    PhysicalLayout layout;
    double value;
    EncodeStatus status;
    Bytes expected;
};
class Encode : public ::testing::TestWithParam<EncodeCase> {};

TEST_P(Encode, writesOrRefuses) {
    const EncodeCase& c = GetParam();
    Bytes data(4, 0xA5);
    EXPECT_EQ(Model::codec::encodePhysical(data, c.layout, c.value), c.status)
        << Model::codec::toText(c.status);
    EXPECT_EQ(data, c.status == EncodeStatus::Ok ? c.expected : Bytes(4, 0xA5));
}

PhysicalLayout scaled(double factor, double offset, double minimum, double maximum) {
    return {{8, 8, false}, false, false, factor, offset, minimum, maximum};
}
PhysicalLayout floating(uint32_t length) { return {{0, length, false}, false, true, 1, 0, 0, 0}; }

// clang-format off
const EncodeCase kEncodeCases[] = {
    {"nibbleKeepsNeighbours", signedLayout(2, 4), -1, EncodeStatus::Ok, {0xBD, 0xA5, 0xA5, 0xA5}},
    {"motorolaAcrossBytes", signedLayout(12, 8, true), 0x12, EncodeStatus::Ok,
     {0xA1, 0x25, 0xA5, 0xA5}},
    {"lowestSigned", signedLayout(0, 8), -128, EncodeStatus::Ok, {0x80, 0xA5, 0xA5, 0xA5}},
    {"belowSigned", signedLayout(0, 8), -129, EncodeStatus::Overflow, {}},
    {"aboveSigned", signedLayout(0, 8), 128, EncodeStatus::Overflow, {}},
    {"roundsIntoRange", signedLayout(0, 8), 127.4, EncodeStatus::Ok, {0x7F, 0xA5, 0xA5, 0xA5}},
    {"roundsOutOfRange", signedLayout(0, 8), 127.5, EncodeStatus::Overflow, {}},
    {"factorAndOffset", scaled(0.5, -40, 0, 0), -30, EncodeStatus::Ok, {0xA5, 20, 0xA5, 0xA5}},
    {"nearestRaw", scaled(0.1, 0, 0, 0), 0.3, EncodeStatus::Ok, {0xA5, 3, 0xA5, 0xA5}},
    {"unsignedBelowZero", scaled(1, 0, 0, 0), -1, EncodeStatus::Overflow, {}},
    {"unsignedTooLarge", scaled(1, 0, 0, 0), 256, EncodeStatus::Overflow, {}},
    {"atTheLimit", scaled(1, 0, 3, 100), 100, EncodeStatus::Ok, {0xA5, 100, 0xA5, 0xA5}},
    {"aboveTheLimit", scaled(1, 0, 3, 100), 101, EncodeStatus::OutOfLimits, {}},
    {"belowTheLimit", scaled(1, 0, 3, 100), 2, EncodeStatus::OutOfLimits, {}},
    {"zeroFactorAtOffset", scaled(0, 7, 0, 0), 7, EncodeStatus::Ok, {0xA5, 0, 0xA5, 0xA5}},
    {"zeroFactorElsewhere", scaled(0, 7, 0, 0), 8, EncodeStatus::Overflow, {}},
    {"infinite", scaled(1, 0, 0, 0), kInfinity, EncodeStatus::NotFinite, {}},
    {"notANumber", floating(32), kNotANumber, EncodeStatus::NotFinite, {}},
    {"badFactor", scaled(kNotANumber, 0, 0, 0), 1, EncodeStatus::NotFinite, {}},
    {"float32", floating(32), 1.5, EncodeStatus::Ok, {0, 0, 0xC0, 0x3F}},
    {"float32TooLarge", floating(32), 1e39, EncodeStatus::Overflow, {}},
    {"float64DoesNotFit", floating(64), 1, EncodeStatus::DoesNotFit, {}},
    {"float16IsUnknown", floating(16), 1, EncodeStatus::DoesNotFit, {}},
    {"noLength", signedLayout(0, 0), 0, EncodeStatus::DoesNotFit, {}},
    {"tooLong", signedLayout(0, 65), 0, EncodeStatus::DoesNotFit, {}},
    {"pastTheEnd", signedLayout(25, 8), 0, EncodeStatus::DoesNotFit, {}},
    {"beforeTheStart", signedLayout(1, 8, true), 0, EncodeStatus::DoesNotFit, {}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Edges, Encode, ::testing::ValuesIn(kEncodeCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(DecodePhysical, readsSignsAndFloats) {
    EXPECT_EQ(Model::codec::decodePhysical(Bytes{0x08}, signedLayout(0, 4)), -8);
    EXPECT_EQ(Model::codec::decodePhysical(Bytes{0xFF, 0x80}, signedLayout(15, 9, true)), -1);
    EXPECT_EQ(Model::codec::decodePhysical(Bytes{0x80}, signedLayout(7, 1)), -1);
    PhysicalLayout layout = floating(32);
    layout.factor = 2;
    layout.offset = 1;
    EXPECT_EQ(Model::codec::decodePhysical(Bytes{0, 0, 0x20, 0xC0}, layout), -4);
    EXPECT_EQ(Model::codec::decodePhysical(Bytes{0, 0, 0x20}, layout), std::nullopt);
    EXPECT_EQ(Model::codec::decodePhysical(Bytes(2), floating(16)), std::nullopt);
    EXPECT_EQ(Model::codec::decodePhysical({}, signedLayout(0, 1)), std::nullopt);
}

TEST(DecodePhysical, keepsAll64Bits) {
    const Bytes ones(8, 0xFF);
    EXPECT_EQ(Model::codec::decodePhysical(ones, signedLayout(0, 64)), -1);
    PhysicalLayout layout = signedLayout(0, 64);
    layout.isSigned = false;
    EXPECT_EQ(Model::codec::decodePhysical(ones, layout), 18446744073709551616.0);
}

// Every payload is decoded and encoded back into other noise around the same field.
TEST(PhysicalRoundTrip, overRandomLayouts) {
    constexpr unsigned kSeed = 31071999;
    std::printf("seed %u\n", kSeed);
    std::mt19937_64 random(kSeed);
    for (int done = 0; done < 100'000;) {
        const size_t size = 1 + random() % 64;
        PhysicalLayout layout;
        layout.isFloat = random() % 8 == 0;
        const auto length =
            static_cast<uint32_t>(layout.isFloat ? 32 << (random() % 2) : 1 + random() % 64);
        layout.bits = {static_cast<uint32_t>(random() % (8 * size)), length, random() % 2 == 0};
        if (!literal::fits(size, layout.bits.isBigEndian, layout.bits.startBit, length)) continue;
        ++done;
        layout.isSigned = random() % 2 == 0;
        uint64_t raw = random() >> (64 - length);
        if (layout.isFloat) {
            const double number = static_cast<double>(random() % 4096) / 8 - 256;
            raw = length == 64 ? std::bit_cast<uint64_t>(number)
                               : std::bit_cast<uint32_t>(static_cast<float>(number));
        }
        // Binary fractions while they are exact in a double; then only what a double holds.
        if (layout.isFloat || length <= 40) {
            layout.factor = std::ldexp(1.0 + static_cast<double>(random() % 4), -4);
            layout.offset = static_cast<double>(random() % 1000) - 500;
        } else if (length > 53) {
            raw &= ~uint64_t{0} << (length - 53);
        }
        Bytes data(size);
        for (auto& byte : data) byte = static_cast<uint8_t>(random());
        Bytes expected = data;
        literal::writeBits(expected, raw, layout.bits.isBigEndian, layout.bits.startBit, length);
        const auto value = Model::codec::decodePhysical(expected, layout);
        ASSERT_TRUE(value.has_value());
        ASSERT_EQ(Model::codec::encodePhysical(data, layout, *value), EncodeStatus::Ok);
        ASSERT_EQ(data, expected) << "length " << length << " factor " << layout.factor;
    }
}

}  // namespace
