#include "core/playback/importer/BatchRing.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace playback {
namespace {

TEST(BatchRing, holdsNinetyNineBatchesAndThenWaits) {
    BatchRing<std::vector<int>> ring;
    EXPECT_TRUE(ring.empty());
    for (int i = 0; i < 99; ++i) {
        ASSERT_FALSE(ring.full()) << i;
        ring.writeSlot() = {i};
        ring.push();
    }
    EXPECT_TRUE(ring.full());
    EXPECT_EQ(ring.size(), 99U);
    EXPECT_EQ(ring.readSlot().at(0), 0);
    ring.pop();
    EXPECT_FALSE(ring.full());
    ring.writeSlot() = {99};
    ring.push();
    EXPECT_TRUE(ring.full());
    for (int i = 1; i < 100; ++i) {
        ASSERT_FALSE(ring.empty());
        EXPECT_EQ(ring.readSlot().at(0), i);
        ring.pop();
    }
    EXPECT_TRUE(ring.empty());
}

TEST(BatchRing, twoThreadsKeepTheOrder) {
    BatchRing<std::vector<uint64_t>> ring;
    constexpr uint64_t kCount = 50'000;
    std::jthread producer([&] {
        for (uint64_t i = 0; i < kCount;) {
            if (ring.full()) {
                std::this_thread::yield();
                continue;
            }
            ring.writeSlot().assign(1, i++);
            ring.push();
        }
    });
    for (uint64_t i = 0; i < kCount;) {
        if (ring.empty()) {
            std::this_thread::yield();
            continue;
        }
        ASSERT_EQ(ring.readSlot().at(0), i++);
        ring.pop();
    }
}

}  // namespace
}  // namespace playback
