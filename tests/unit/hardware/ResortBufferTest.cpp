#include "core/hardware/RVFrameResortBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

namespace rv {
namespace {

constexpr int64_t kHoldUs = 240000;

FrameHolder frameAt(uint64_t ns, uint32_t id = 0) {
    FrameHolder frame = makeFrame(0);
    frame->seconds = static_cast<uint32_t>(ns / 1'000'000'000U);
    frame->nanoseconds = static_cast<uint32_t>(ns % 1'000'000'000U);
    frame->id = id;
    return frame;
}

std::vector<uint64_t> stampsOf(const std::vector<ReceivedFrame>& frames) {
    std::vector<uint64_t> stamps;
    for (const ReceivedFrame& record : frames) stamps.push_back(record.frame->timestampNs());
    return stamps;
}

struct HoldCase {
    const char* name;
    int64_t nowMs;
    uint64_t stampNs;
    bool released;
};
class HoldTime : public ::testing::TestWithParam<HoldCase> {};

TEST_P(HoldTime, decidesByWholeMilliseconds) {
    RVFrameResortBuffer buffer([] { return GetParam().nowMs; });
    buffer.push({frameAt(GetParam().stampNs), nullptr});
    EXPECT_EQ(buffer.take(kHoldUs).size(), GetParam().released ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, HoldTime,
    ::testing::Values(HoldCase{"exactlyHeld", 1'000'240, 1'000'000'000'000, true},
                      HoldCase{"oneNanosecondYoung", 1'000'240, 1'000'000'000'001, false},
                      HoldCase{"oneMillisecondYoung", 1'000'239, 1'000'000'000'000, false},
                      HoldCase{"inTheFuture", 1'000'000, 2'000'000'000'000, false},
                      HoldCase{"longAgo", 1'700'000'000'000, 5, true},
                      HoldCase{"largestSeconds", 4'294'967'295'000 + 241, 4'294'967'295'000'000'000,
                               true}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ResortBuffer, anEmptyBufferGivesNothing) {
    RVFrameResortBuffer buffer;
    EXPECT_TRUE(buffer.take(kHoldUs).empty());
    EXPECT_TRUE(buffer.counters().balanced());
}

// Against "sort all, release from the front", over random overlapping batches.
TEST(ResortBuffer, equalsSortingTheWholeQueueEachTime) {
    constexpr unsigned kSeed = 20250630;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937_64 random(kSeed);
    int64_t nowMs = 1'000'000;
    RVFrameResortBuffer buffer([&] { return nowMs; });
    std::vector<uint64_t> reference;
    for (int round = 0; round < 400; ++round) {
        for (uint64_t batch = random() % 5; batch > 0; --batch) {
            uint64_t stamp =
                static_cast<uint64_t>(nowMs - 200 + static_cast<int64_t>(random() % 150)) *
                1'000'000U;
            if (random() % 20 == 0) stamp -= 5'000'000'000U;  // a box whose clock lags
            std::vector<FrameHolder> frames;
            for (uint64_t i = random() % 40; i > 0; --i) {
                frames.push_back(frameAt(stamp));
                reference.push_back(stamp);
                stamp += random() % 3'000'000;
            }
            buffer.push(frames, nullptr);
        }
        nowMs += static_cast<int64_t>(random() % 30);
        std::sort(reference.begin(), reference.end());
        const uint64_t limit = static_cast<uint64_t>(nowMs) * 1'000'000U - kHoldUs * 1000U;
        const auto end = std::upper_bound(reference.begin(), reference.end(), limit);
        const std::vector<uint64_t> expected(reference.begin(), end);
        reference.erase(reference.begin(), end);
        ASSERT_EQ(stampsOf(buffer.take(kHoldUs)), expected) << "round " << round;
        ASSERT_EQ(buffer.counters().held, reference.size());
    }
    EXPECT_TRUE(buffer.counters().balanced());
}

TEST(ResortBuffer, framesAlreadyHandedOutAreNeverReordered) {
    int64_t nowMs = 10'000;
    RVFrameResortBuffer buffer([&] { return nowMs; });
    buffer.push({frameAt(5'000'000'000), nullptr});
    EXPECT_EQ(buffer.take(kHoldUs).size(), 1U);
    buffer.push({frameAt(4'000'000'000), nullptr});
    buffer.push({frameAt(3'000'000'000), nullptr});
    EXPECT_EQ(stampsOf(buffer.take(kHoldUs)),
              (std::vector<uint64_t>{3'000'000'000, 4'000'000'000}));
}

TEST(ResortBuffer, losesNothingWhenFourThreadsPush) {
    RVFrameResortBuffer buffer;
    constexpr uint32_t kEach = 20000;
    std::atomic<int> running{4};
    std::vector<std::thread> threads;
    for (uint32_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (uint32_t i = 0; i < kEach; i += 50) {
                std::vector<FrameHolder> batch;
                for (uint32_t k = 0; k < 50; ++k) {
                    batch.push_back(frameAt(uint64_t{i + k} * 1000 + thread, thread));
                }
                buffer.push(batch, nullptr);
            }
            --running;
        });
    }
    size_t taken = 0;
    while (running > 0) taken += buffer.take(kHoldUs).size();
    for (std::thread& thread : threads) thread.join();
    taken += buffer.take(kHoldUs).size();
    EXPECT_EQ(taken, 4U * kEach);
    EXPECT_TRUE(buffer.counters().balanced());
    EXPECT_EQ(buffer.counters().held, 0U);
}

}  // namespace
}  // namespace rv
