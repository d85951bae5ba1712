#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <stdexcept>

#include "signal/PhysicalCodec.h"
#include "signal/SignalCodec.h"
#include "unit/signal/LiteralCodec.h"

namespace {

using literal::Bytes;

constexpr unsigned kLayoutSeed = 20240917;
constexpr int kRounds = 400'000;

struct Layout {
    bool bigEndian;
    uint32_t start;
    uint32_t length;
};

class RandomLayouts {
public:
    RandomLayouts() { std::printf("seed %u\n", kLayoutSeed); }

    Bytes payload() {
        Bytes bytes(m_random() % 5 == 0 ? m_random() % 72 : m_random() % 17);
        const auto kind = m_random() % 4;
        for (auto& byte : bytes) {
            byte = static_cast<uint8_t>(kind == 0 ? 0 : kind == 1 ? 0xFF : m_random());
        }
        return bytes;
    }

    // Mostly near the payload and of valid length, sometimes anything.
    Layout layout(size_t size) {
        const auto bits = static_cast<uint32_t>(8 * size);
        const uint64_t dice = m_random() % 16;
        Layout layout{m_random() % 2 == 0, static_cast<uint32_t>(m_random() % (bits + 9)),
                      static_cast<uint32_t>(m_random() % 66)};
        if (dice == 0) layout.start = static_cast<uint32_t>(m_random());
        if (dice == 1) layout.length = static_cast<uint32_t>(m_random());
        if (dice == 2) layout.length = static_cast<uint32_t>(m_random() % 600);
        if (dice == 3) layout.length = 0U - static_cast<uint32_t>(m_random() % 20);
        if (dice == 4) layout.start = static_cast<uint32_t>(480 + m_random() % 64);
        return layout;
    }

    uint64_t value() { return m_random() >> (m_random() % 64); }

private:
    std::mt19937_64 m_random{kLayoutSeed};
};

testing::Message describe(const Bytes& data, const Layout& layout) {
    testing::Message text;
    text << (layout.bigEndian ? "Motorola " : "Intel ") << layout.start << ':' << layout.length
         << " in " << data.size() << " bytes";
    return text;
}

TEST(Differential, parseAgreesWithTheByteLoops) {
    RandomLayouts random;
    for (int i = 0; i < kRounds; ++i) {
        const Bytes data = random.payload();
        const Layout l = random.layout(data.size());
        const uint64_t raw = Model::codec::parseSignalValue(data, l.bigEndian, l.start, l.length);
        ASSERT_EQ(raw, literal::parse(data, l.bigEndian, l.start, l.length)) << describe(data, l);
        if (!literal::fits(data.size(), l.bigEndian, l.start, l.length)) continue;
        ASSERT_EQ(raw, literal::readBits(data, l.bigEndian, l.start, l.length))
            << describe(data, l);
    }
}

// The whole payload after the call, the result and the error.
TEST(Differential, writeAgreesWithThePositionMask) {
    RandomLayouts random;
    int raised = 0;
    for (int i = 0; i < kRounds; ++i) {
        Bytes expected = random.payload();
        Bytes data = expected;
        const Layout l = random.layout(data.size());
        const uint64_t raw = random.value();
        std::optional<bool> expectedResult;
        std::optional<bool> result;
        try {
            expectedResult = literal::write(expected, raw, l.bigEndian, l.start, l.length);
        } catch (const std::out_of_range&) {
            ++raised;
        }
        ASSERT_EQ(Model::codec::isClearable(l.bigEndian, l.start, l.length),
                  expectedResult.has_value());
        try {
            result = Model::codec::rawValueToByte(data, raw, l.bigEndian, l.start, l.length);
        } catch (const std::out_of_range&) {
        }
        ASSERT_EQ(result, expectedResult) << describe(data, l);
        ASSERT_EQ(data, expected) << describe(data, l);
    }
    EXPECT_GT(raised, kRounds / 100);
}

TEST(Differential, exactWriterTouchesTheFieldOnly) {
    RandomLayouts random;
    int written = 0;
    for (int i = 0; i < kRounds; ++i) {
        Bytes data = random.payload();
        Bytes expected = data;
        const Layout l = random.layout(data.size());
        const uint64_t value = random.value();
        const bool fits = literal::fits(data.size(), l.bigEndian, l.start, l.length);
        if (fits) literal::writeBits(expected, value, l.bigEndian, l.start, l.length);
        ASSERT_EQ(Model::codec::writeUnsignedField(data, {l.start, l.length, l.bigEndian}, value),
                  fits)
            << describe(data, l);
        ASSERT_EQ(data, expected) << describe(data, l);
        written += fits ? 1 : 0;
    }
    EXPECT_GT(written, kRounds / 5);
}

}  // namespace
