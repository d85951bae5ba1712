#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "core/hardware/crc/Crc.h"
#include "core/hardware/crc/CrcVariant.h"
#include "core/hardware/crc/FrameUpdate.h"
#include "unit/crc/BitwiseCrc.h"
#include "unit/signal/LiteralCodec.h"

namespace {

using literal::Bytes;
using RV::Crc::FrameUpdateSettings;

FrameUpdateSettings counterAt(int32_t start, int32_t length, bool bigEndian, int32_t dataLength) {
    FrameUpdateSettings settings;
    settings.dataLength = dataLength;
    settings.counterEnabled = true;
    settings.counterStartBit = start;
    settings.counterLength = length;
    settings.counterBigEndian = bigEndian;
    return settings;
}

FrameUpdateSettings crcAt(uint8_t type, int32_t start, int32_t length, bool bigEndian,
                          int32_t dataLength) {
    FrameUpdateSettings settings;
    settings.dataLength = dataLength;
    settings.crcType = type;
    settings.crcStartBit = start;
    settings.crcLength = length;
    settings.crcBigEndian = bigEndian;
    return settings;
}

TEST(Counter, startsAtOneAndWraps) {
    for (const bool bigEndian : {false, true}) {
        FrameUpdateSettings settings = counterAt(0, 4, bigEndian, 2);
        for (unsigned i = 1; i <= 40; ++i) {
            Bytes data{0x00, 0xFF};
            ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
            EXPECT_EQ(data, (Bytes{static_cast<uint8_t>(i % 16), 0xFF}));
        }
    }
}

TEST(Counter, keepsBigEndianNeighboursInTheSameData) {
    FrameUpdateSettings settings = counterAt(8, 12, true, 2);
    settings.counter = 0xFFE;
    Bytes data{0xA5, 0x5A};
    ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
    EXPECT_EQ(data, (Bytes{0xAF, 0xFF}));
    ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
    EXPECT_EQ(data, (Bytes{0xA0, 0x00}));
}

TEST(Counter, resetCarriesZeroOnce) {
    FrameUpdateSettings settings = counterAt(0, 8, false, 1);
    settings.counter = 41;
    std::vector<unsigned> seen;
    for (int i = 0; i < 4; ++i) {
        settings.resetPending = settings.resetPending || i == 1;
        Bytes data{0};
        ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
        EXPECT_FALSE(settings.resetPending);
        seen.push_back(data[0]);
    }
    EXPECT_EQ(seen, (std::vector<unsigned>{42, 0, 1, 2}));
}

TEST(Counter, of64BitsWrapsAtItsLimitOnly) {
    for (const int32_t length : {64, 65}) {
        FrameUpdateSettings settings = counterAt(0, length, false, 16);
        settings.counter = ~uint64_t{0} - 1;
        Bytes data(16, 0);
        ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
        EXPECT_EQ(settings.counter, ~uint64_t{0});
        ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
        EXPECT_EQ(settings.counter, 0U);
    }
}

TEST(Counter, standsStillWhenDisabled) {
    FrameUpdateSettings settings = counterAt(0, 8, false, 1);
    settings.counterEnabled = false;
    settings.resetPending = true;
    settings.counter = 7;
    Bytes data{0x33};
    EXPECT_TRUE(RV::Crc::updateFrame(data, settings));
    EXPECT_EQ(data, Bytes{0x33});
    EXPECT_EQ(settings.counter, 7U);
    EXPECT_TRUE(settings.resetPending);
}

TEST(FrameCrc, coversCounterAndZeroedField) {
    FrameUpdateSettings settings = crcAt(16, 0, 16, false, 8);
    settings.counterEnabled = true;
    settings.counterStartBit = 16;
    settings.counterLength = 8;
    Bytes data{0xDE, 0xAD, 0xFF, 4, 5, 6, 7, 8};
    ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
    const Bytes covered{0, 0, 1, 4, 5, 6, 7, 8};
    const uint64_t crc = bitwise::crc(*RV::Crc::findAlgorithm(16), covered);
    EXPECT_EQ(data,
              (Bytes{static_cast<uint8_t>(crc), static_cast<uint8_t>(crc >> 8), 1, 4, 5, 6, 7, 8}));
}

TEST(FrameCrc, shortFieldTakesTheLowBits) {
    FrameUpdateSettings settings = crcAt(31, 12, 8, true, 9);
    Bytes data(9, 0xFF);
    ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
    Bytes covered(9, 0xFF);
    literal::writeBits(covered, 0, true, 12, 8);
    Bytes expected = covered;
    literal::writeBits(expected, bitwise::crc(*RV::Crc::findAlgorithm(31), covered), true, 12, 8);
    EXPECT_EQ(data, expected);
}

// A receiver with a list of data identifiers: CRC in byte 0, counter in byte 1, then the payload;
// the CRC covers bytes 1 on and the identifier of the counter.
TEST(Variant, coversTheDataWithoutCrcAndTheKey) {
    const Bytes keys{0x10, 0x21, 0x32, 0x43, 0x54};
    FrameUpdateSettings settings = crcAt(RV::Crc::kCrc8Variant, 0, 8, false, 8);
    settings.keyBytes = keys;
    settings.counterEnabled = true;
    settings.counterStartBit = 8;
    settings.counterLength = 4;
    settings.counterBigEndian = true;
    for (unsigned i = 1; i < 20; ++i) {
        Bytes data{0xEE, 0x70, 3, 4, 5, 6, 7, 8};
        ASSERT_TRUE(RV::Crc::updateFrame(data, settings));
        Bytes covered(data.begin() + 1, data.end());
        EXPECT_EQ(covered[0], 0x70 + i % 16);
        covered.push_back(keys[i % 16 % keys.size()]);
        EXPECT_EQ(data[0], bitwise::crc(*RV::Crc::findAlgorithm(6), covered));
    }
}

TEST(Variant, givesZeroForFieldsOutside) {
    struct Row {
        int32_t start;
        int32_t length;
        bool bigEndian;
        bool inside;
    };
    const Bytes data{1, 2, 3, 4};
    for (const Row& row :
         {Row{-1, 8, false, false}, Row{-1, 8, true, false}, Row{0, 0, false, false},
          Row{8, -3, false, false}, Row{25, 8, false, false}, Row{24, 8, false, true},
          Row{0x7FFFFFFF, 0x7FFFFFFF, false, false}, Row{0, 8, true, false}, Row{7, 8, true, false},
          Row{8, 8, true, true}, Row{32, 8, true, true}, Row{33, 8, true, false}}) {
        const auto crc =
            RV::Crc::computeCrc8Variant(data, {row.start, row.length, row.bigEndian, {}, 0});
        EXPECT_EQ(crc != 0, row.inside) << row.start << ':' << row.length;
    }
    EXPECT_EQ(RV::Crc::computeCrc8Variant({}, {0, 1, false, {}, 0}), 0);
    EXPECT_EQ(RV::Crc::computeCrc8Variant(Bytes(65), {0, 8, false, {}, 0}), 0);
    // A single byte without a key leaves nothing to sum: the complement of the initial value.
    EXPECT_EQ(RV::Crc::computeCrc8Variant(Bytes{9}, {0, 8, false, {}, 0}), 0);
}

TEST(Variant, fieldOutsideTheDataIsWrittenAsZero) {
    FrameUpdateSettings settings = crcAt(RV::Crc::kCrc8Variant, 8, 16, false, 2);
    Bytes data{0x11, 0x22};
    EXPECT_TRUE(RV::Crc::updateFrame(data, settings));
    EXPECT_EQ(data, (Bytes{0x11, 0x00}));
}

struct RefusedCase {
    const char* name;
    FrameUpdateSettings settings;
    const char* reason;
};
class Refused : public ::testing::TestWithParam<RefusedCase> {};

TEST_P(Refused, namesTheReason) {
    const auto reason = RV::Crc::validate(GetParam().settings);
    ASSERT_TRUE(reason.has_value());
    EXPECT_EQ(*reason, GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, Refused,
    ::testing::Values(
        RefusedCase{"noData", counterAt(0, 8, false, 0), "data length 0 is not 1 to 64"},
        RefusedCase{"tooMuchData", counterAt(0, 8, false, 65), "data length 65 is not 1 to 64"},
        RefusedCase{"negativeStart", counterAt(-1, 8, false, 8),
                    "counter field of 8 bits at start bit -1 (little-endian) lies outside the 8 "
                    "data bytes"},
        RefusedCase{"noCounterBits", counterAt(0, 0, true, 8),
                    "counter field of 0 bits at start bit 0 (big-endian) lies outside the 8 data "
                    "bytes"},
        RefusedCase{"unknownCode", crcAt(41, 0, 8, false, 8), "unknown CRC code 41"},
        RefusedCase{"crcPastTheEnd", crcAt(1, 57, 8, false, 8),
                    "CRC field of 8 bits at start bit 57 (little-endian) lies outside the 8 data "
                    "bytes"},
        RefusedCase{"crcBeforeTheStart", crcAt(1, 8, 17, true, 8),
                    "CRC field of 17 bits at start bit 8 (big-endian) lies outside the 8 data "
                    "bytes"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Settings, acceptFieldsUpToTheEdges) {
    EXPECT_EQ(RV::Crc::validate(counterAt(504, 8, false, 64)), std::nullopt);
    EXPECT_EQ(RV::Crc::validate(counterAt(0, 8, true, 1)), std::nullopt);
    EXPECT_EQ(RV::Crc::validate(crcAt(40, 504, 64, true, 64)), std::nullopt);
    EXPECT_EQ(RV::Crc::validate(crcAt(0, -1, -1, false, 8)), std::nullopt);
}

TEST(Update, doesNothingForHostileSettings) {
    FrameUpdateSettings badCrc = counterAt(0, 8, false, 8);
    badCrc.crcType = 41;
    badCrc.crcLength = 8;
    FrameUpdateSettings farCrc = badCrc;
    farCrc.crcType = 2;
    farCrc.crcStartBit = 4096;
    for (FrameUpdateSettings settings :
         {counterAt(0, 8, false, 0), counterAt(0, 8, false, 65), counterAt(0, 8, false, -1),
          counterAt(0, 8, false, 9), counterAt(-8, 8, false, 8), counterAt(-8, 8, true, 8),
          counterAt(512, 8, false, 8), counterAt(0, -1, false, 8), badCrc, farCrc}) {
        Bytes data(8, 0x5A);
        settings.resetPending = true;
        EXPECT_FALSE(RV::Crc::updateFrame(data, settings));
        EXPECT_EQ(data, Bytes(8, 0x5A));
        EXPECT_TRUE(settings.resetPending);
    }
}

// The whole step again from its parts: literal signal writer, bitwise sums, cut bit lists.
class SlowStep {
public:
    explicit SlowStep(Bytes& data) : m_data(data) {}

    void run(FrameUpdateSettings& s) {
        if (s.counterEnabled) {
            const uint64_t next = s.resetPending ? 0 : s.counter + 1;
            s.resetPending = false;
            s.counter = s.counterLength < 64 ? next % (uint64_t{1} << s.counterLength) : next;
            write(s.counter, s.counterBigEndian, s.counterStartBit, s.counterLength);
        }
        if (s.crcType == 0) return;
        write(0, s.crcBigEndian, s.crcStartBit, s.crcLength);
        uint64_t crc =
            s.crcType == 3 ? variant(s) : bitwise::crc(*RV::Crc::findAlgorithm(s.crcType), m_data);
        if (s.crcLength < 64) crc %= uint64_t{1} << s.crcLength;
        write(crc, s.crcBigEndian, s.crcStartBit, s.crcLength);
    }

private:
    void write(uint64_t value, bool bigEndian, int32_t start, int32_t length) {
        literal::write(m_data, value, bigEndian, static_cast<uint32_t>(start),
                       static_cast<uint32_t>(length));
    }

    uint64_t variant(const FrameUpdateSettings& s) {
        const int64_t from = s.crcBigEndian ? s.crcStartBit - s.crcLength : s.crcStartBit;
        const int64_t to = s.crcBigEndian ? s.crcStartBit : s.crcStartBit + s.crcLength;
        if (from < 0 || to > 8 * s.dataLength || s.crcLength < 1) return 0;
        Bytes copy = bitwise::withoutBits(m_data, static_cast<size_t>(from),
                                          static_cast<size_t>(s.crcLength));
        if (s.keyBytes.empty()) {
            copy.pop_back();
        } else {
            copy.back() = s.keyBytes[s.counter % s.keyBytes.size()];
        }
        return bitwise::crc(*RV::Crc::findAlgorithm(6), copy);
    }

    Bytes& m_data;
};

TEST(Update, agreesWithTheSlowStep) {
    constexpr unsigned kSeed = 7141;
    std::printf("seed %u\n", kSeed);
    std::mt19937_64 random(kSeed);
    const auto below = [&random](uint64_t limit) { return static_cast<int32_t>(random() % limit); };
    for (int i = 0; i < 30'000; ++i) {
        const int32_t length = 1 + below(64);
        FrameUpdateSettings settings =
            counterAt(below(8 * length), 1 + below(66), below(2), length);
        settings.counterEnabled = below(4) != 0;
        settings.resetPending = below(8) == 0;
        settings.counter = random() >> below(64);
        settings.crcType = static_cast<uint8_t>(below(3) == 0 ? 3 : below(41));
        settings.crcStartBit = below(8 * length + 4);
        settings.crcLength = below(4) == 0 ? below(8 * length) : below(66);
        settings.crcBigEndian = below(2) == 0;
        settings.keyBytes.resize(static_cast<size_t>(below(18)), 0x3C);
        for (auto& key : settings.keyBytes) key = static_cast<uint8_t>(random());
        Bytes data(static_cast<size_t>(length));
        for (auto& byte : data) byte = static_cast<uint8_t>(random());
        Bytes expected = data;
        FrameUpdateSettings expectedSettings = settings;
        bool reachable = true;
        try {
            SlowStep(expected).run(expectedSettings);
        } catch (const std::out_of_range&) {
            reachable = false;
        }
        const Bytes before = data;
        ASSERT_EQ(RV::Crc::updateFrame(data, settings), reachable);
        ASSERT_EQ(data, reachable ? expected : before)
            << "CRC " << int{settings.crcType} << " at " << settings.crcStartBit << ':'
            << settings.crcLength << (settings.crcBigEndian ? " big" : " little") << " of "
            << length;
        if (!reachable) continue;
        ASSERT_EQ(settings.counter, expectedSettings.counter);
        ASSERT_EQ(settings.resetPending, expectedSettings.resetPending);
    }
}

}  // namespace
