#include "core/tracestorage/TraceStatistics.h"

#include <gtest/gtest.h>

namespace tracestorage {
namespace {

FrameRecord canRecord(uint32_t ident, int64_t timeNs, uint32_t flags = 0) {
    FrameRecord record;
    record.bus = Bus::Can;
    record.channel = 1;
    record.ident = ident;
    record.timeNs = timeNs;
    record.flags = flags;
    return record;
}

TEST(TraceStatistics, cycleTimesAndDeviationOfOneIdentifier) {
    TraceStatistics statistics;
    for (const int64_t ms : {0, 10, 30, 40}) {  // gaps of 10, 20 and 10 ms
        statistics.add(canRecord(0x123, ms * 1'000'000), 8);
    }
    const auto idents = statistics.identifiers();
    ASSERT_EQ(idents.size(), 1U);
    EXPECT_EQ(idents[0].frames, 4U);
    EXPECT_EQ(idents[0].bytes, 32U);
    EXPECT_NEAR(idents[0].cycleMs, 40.0 / 3, 1e-9);
    EXPECT_NEAR(idents[0].deviationMs, 4.714045, 1e-6);
    EXPECT_DOUBLE_EQ(idents[0].minimumMs, 10);
    EXPECT_DOUBLE_EQ(idents[0].maximumMs, 20);
}

TEST(TraceStatistics, standardAndExtendedIdentifiersOfOneNumberAreApart) {
    TraceStatistics statistics;
    statistics.add(canRecord(0x100, 0), 1);
    statistics.add(canRecord(0x100, 5, flag::kExtended), 2);
    EXPECT_EQ(statistics.identifiers().size(), 2U);
}

TEST(TraceStatistics, errorFramesCountForTheChannelOnly) {
    TraceStatistics statistics;
    statistics.add(canRecord(0x100, 0), 1);
    statistics.add(canRecord(0, 1'000'000'000, flag::kError), 0);
    EXPECT_EQ(statistics.identifiers().size(), 1U);
    ASSERT_EQ(statistics.channels().size(), 1U);
    EXPECT_EQ(statistics.channels()[0].errors, 1U);
    EXPECT_DOUBLE_EQ(statistics.channels()[0].seconds, 1.0);
}

TEST(TraceStatistics, loadIsTheShareOfTimeThatFramesTake) {
    BitRates rates;
    rates.can = 500'000;
    TraceStatistics statistics(rates);
    // 111 bits (47 + 64) a frame at 500 kbit/s are 222 us; 1001 frames in 1 s.
    for (int64_t i = 0; i <= 1000; ++i) statistics.add(canRecord(1, i * 1'000'000), 8);
    EXPECT_NEAR(statistics.channels()[0].load, 1001 * 222e-6, 1e-9);
}

}  // namespace
}  // namespace tracestorage
