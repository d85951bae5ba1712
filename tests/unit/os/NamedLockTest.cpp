#include "quill_os/namedlock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace quill::os {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(NamedLock, keepsOthersAwayUntilItEnds) {
    {
        const NamedLock first("test-one-holder", milliseconds(0));
        ASSERT_TRUE(first.held());
        std::thread([] {
            const NamedLock second("test-one-holder", milliseconds(5));
            EXPECT_FALSE(second.held());
            EXPECT_TRUE(second.usable());
            const NamedLock other("test-another", milliseconds(0));
            EXPECT_TRUE(other.held());
        }).join();
    }
    const NamedLock third("test-one-holder", milliseconds(0));
    EXPECT_TRUE(third.held());
}

// Holders that remove and make the lock's file in turn must still never meet.
TEST(NamedLock, admitsOneAtATimeWhileItsFileComesAndGoes) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 300;
    int inside = 0;  // guarded by nothing but the lock
    int meetings = 0;
    int passed = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                const NamedLock lock("test-many", seconds(60));
                ASSERT_TRUE(lock.held());
                if (++inside != 1) ++meetings;
                ++passed;
                --inside;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(meetings, 0);
    EXPECT_EQ(passed, kThreads * kRounds);
}

#ifndef _WIN32
TEST(NamedLock, leavesNoFileBehind) {
    const fs::path folder = fs::temp_directory_path() / "quill-named-lock-test";
    fs::create_directories(folder);
    ASSERT_EQ(::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1), 0);
    const auto files = [&] {
        int count = 0;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            count += entry.is_regular_file() ? 1 : 0;
        }
        return count;
    };
    {
        const NamedLock lock("test-gone", milliseconds(0));
        ASSERT_TRUE(lock.held());
        EXPECT_EQ(files(), 1);
    }
    EXPECT_EQ(files(), 0);
    ::unsetenv("XDG_RUNTIME_DIR");
    fs::remove_all(folder);
}
#endif

}  // namespace
}  // namespace quill::os
