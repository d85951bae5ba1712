// The position of the least significant bit, against a bit-by-bit walk.
#include <gtest/gtest.h>

#include <random>

#include "ArxmlTestSupport.h"
#include "arxml/XmlText.h"

namespace arxmltest {
namespace {

using quill::arxml::ByteOrder;
using quill::arxml::lsbOf;

TEST(LsbPosition, knownLayouts) {
    const struct {
        uint32_t start, length;
        ByteOrder order;
        int64_t lsb;
    } cases[] = {
        {7, 8, ByteOrder::kMotorola, 0},    {7, 16, ByteOrder::kMotorola, 8},
        {0, 12, ByteOrder::kMotorola, 21},  {3, 11, ByteOrder::kMotorola, 9},
        {39, 16, ByteOrder::kMotorola, 40}, {56, 2, ByteOrder::kMotorola, 71},
        {5, 1, ByteOrder::kMotorola, 5},    {12, 20, ByteOrder::kIntel, 12},
        {8, 24, ByteOrder::kOpaque, 8},     {9, 0, ByteOrder::kMotorola, 9},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(lsbOf(row.start, row.length, row.order), row.lsb) << row.start;
    }
}

TEST(LsbPosition, selectsTheSameBitsAsTheWalkFromTheStart) {
    constexpr unsigned kSeed = 4711;
    std::mt19937 random(kSeed);
    std::vector<uint8_t> payload(80);
    for (int round = 0; round < 20000; ++round) {
        for (auto& byte : payload) byte = static_cast<uint8_t>(random());
        const auto start = static_cast<uint32_t>(random() % 512);
        const auto length = static_cast<uint32_t>(1 + random() % 64);
        const bool isMotorola = random() % 2 == 0;
        const auto order = isMotorola ? ByteOrder::kMotorola : ByteOrder::kIntel;
        ASSERT_EQ(extractFromLsb(payload, lsbOf(start, length, order), length, isMotorola),
                  extractFromFileStart(payload, start, length, isMotorola))
            << "start " << start << " length " << length << " seed " << kSeed;
    }
}

}  // namespace
}  // namespace arxmltest
