#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <random>
#include <thread>

#include "unit/rvconverter/BlfWalker.h"
#include "unit/rvconverter/PythonCan.h"
#include "unit/rvconverter/ScratchFolder.h"

namespace quill::testing {

namespace {

using std::chrono::milliseconds;

double wallClock() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

struct Victim {
    pid_t pid = 0;
    std::string file, progress;
    bool paced = false;
    milliseconds life{};
    double killedAt = 0;
};

Victim startVictim(const ScratchFolder& folder, size_t number, bool paced, milliseconds life) {
    Victim victim;
    victim.file = folder.file(std::to_string(number) + ".blf");
    victim.progress = folder.file(std::to_string(number) + ".txt");
    victim.paced = paced;
    victim.life = life;
    victim.pid = fork();
    if (victim.pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // a failing test leaves no victim behind
        execl(RECORDER_VICTIM, RECORDER_VICTIM, victim.file.c_str(), victim.progress.c_str(),
              paced ? "500" : "150000", nullptr);
        _exit(127);
    }
    return victim;
}

void killNow(Victim& victim) {
    kill(victim.pid, SIGKILL);
    victim.killedAt = wallClock();
    int status = 0;
    ASSERT_EQ(waitpid(victim.pid, &status, 0), victim.pid);
    ASSERT_TRUE(WIFSIGNALED(status)) << "it ended by itself";
}

// The file holds frames 0 to n-1 without a gap, all that was reported as written among them.
void expectWholeUpToItsEnd(const Victim& victim) {
    const auto walked = walkBlf(victim.file);
    ASSERT_TRUE(walked) << "no header";
    EXPECT_EQ(walked->fault, "");
    for (size_t i = 0; i < walked->objects.size(); ++i) {
        ASSERT_EQ(walked->objects[i].number(4, 4), 0x80000000U + i);
    }
    uint64_t reported = 0;
    std::ifstream(victim.progress) >> reported;
    EXPECT_GE(walked->objects.size(), reported);
    const auto reading = readWithPythonCan(victim.file);
    if (!reading) return;
    EXPECT_EQ(reading->messages.size(), walked->objects.size());
    if (!walked->tornEnd()) {
        EXPECT_EQ(reading->stopped, "");
    }
    if (!victim.paced) return;
    // Whole seconds: a frame waits at most 4 s for the save, which is tested every 100 ms. The rest
    // is for a loaded machine.
    constexpr double kRule = 4.1;
    constexpr double kStall = 2.5;
    ASSERT_FALSE(reading->messages.empty());
    EXPECT_LT(victim.killedAt - reading->messages.back().time, kRule + kStall);
}

TEST(KilledRecording, staysReadableUpToItsLastContainer) {
    const unsigned seed = std::random_device{}();
    std::cout << "seed " << seed << std::endl;
    std::mt19937 random(seed);
    const ScratchFolder folder("kill");
    // The slow ones, where the three-second rule decides, live beside the fast ones.
    std::vector<Victim> slow;
    for (size_t i = 0; i < 5; ++i) {
        slow.push_back(startVictim(folder, i, true, milliseconds(7000 + random() % 3000)));
    }
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 5; i < 10; ++i) {
        Victim fast = startVictim(folder, i, false, milliseconds(50 + random() % 650));
        std::this_thread::sleep_for(fast.life);
        killNow(fast);
        SCOPED_TRACE("fast, lived " + std::to_string(fast.life.count()) + " ms");
        expectWholeUpToItsEnd(fast);
    }
    std::sort(slow.begin(), slow.end(),
              [](const Victim& a, const Victim& b) { return a.life < b.life; });
    for (Victim& victim : slow) {
        std::this_thread::sleep_until(start + victim.life);
        killNow(victim);
    }
    for (const Victim& victim : slow) {
        SCOPED_TRACE("slow, lived " + std::to_string(victim.life.count()) + " ms");
        expectWholeUpToItsEnd(victim);
    }
    if (!readWithPythonCan(slow.front().file)) GTEST_SKIP() << "python3-can is not installed";
}

}  // namespace

}  // namespace quill::testing
