#include <cstdlib>
#include <fstream>

#include "quill_os/environment.h"
#include "support.h"

// What depends on the process: the environment that names the network, and the end of the process
// while everything runs. Each case runs in a process of its own.
namespace {

int initWith(const char* name, const std::string& value) {
    if (!quill::os::setEnvironment(name, value)) return -1;
    return rvhub4e_init();
}

int boxes() {
    int32_t handles[64];
    int32_t count = 64;
    const RvHub4eScanParams params;
    return scan_rvhub4e(handles, &count, 0, &params) == 0 ? count : -1;
}

// Ends the child with 0 when the check holds and leaves the last error on standard error.
[[noreturn]] void finish(bool fine) {
    std::fprintf(stderr, "<%s>", rvhub4e_last_error());
    std::exit(fine ? 0 : 1);
}

class Process : public ::testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(Process, theBuiltInNetworkNeedsNothing) {
    EXPECT_EXIT(finish(rvhub4e_init() == 0 && boxes() == 1), ::testing::ExitedWithCode(0), "<>");
}

TEST_F(Process, nothingWorksBeforeInit) {
    EXPECT_EXIT(finish(boxes() == -1), ::testing::ExitedWithCode(0), "not initialised");
}

TEST_F(Process, theEnvironmentHoldsTheDocument) {
    EXPECT_EXIT(finish(initWith("SIMCORE_NETWORK", R"({"boxes": []})") == 0 && boxes() == 0),
                ::testing::ExitedWithCode(0), "<>");
}

TEST_F(Process, aBadDocumentIsNamed) {
    EXPECT_EXIT(finish(initWith("SIMCORE_NETWORK", R"({"boxes": 1})") != 0 && rvhub4e_init() != 0),
                ::testing::ExitedWithCode(0), "<SIMCORE_NETWORK: boxes: expected a list>");
    EXPECT_EXIT(finish(initWith("SIMCORE_NETWORK", "nowhere.json") != 0),
                ::testing::ExitedWithCode(0), "<nowhere.json: cannot be opened>");
    EXPECT_EXIT(finish(initWith("SIMCORE_NETWORK", R"({"boxes": 1})") != 0 &&
                       !RvDeviceFounder::instance()->init({}, nullptr)),
                ::testing::ExitedWithCode(0), "<SIMCORE_NETWORK: boxes: expected a list>");
}

TEST_F(Process, aLogIsPlayedOntoTheBuiltInBox) {
    const std::string path = ::testing::TempDir() + "simcore_environment.log";
    std::ofstream(path)
        << "(1.0) can0 123#01\n(1.0) can1 124#02\n(1.0) can3 125#02\n(1.0) can4 126#\n";
    const auto child = [&] {
        simcore::useManualClock(simtest::kStartNs);
        if (!quill::os::setEnvironment("SIMCORE_REPLAY_SPEED", "2")) finish(false);
        if (initWith("SIMCORE_REPLAY", path) != 0) finish(false);
        int32_t handle = 0;
        int32_t count = 1;
        const RvHub4eScanParams params;
        if (scan_rvhub4e(&handle, &count, 0, &params) != 0) finish(false);
        if (open_device(handle) != 0 || start_trace(handle) != 0) finish(false);
        simcore::advance(simtest::kMs);
        RvCanFrame frames[16];
        if (read_can_frames(handle, frames, 16, &count) != 0) finish(false);
        // The first channel of the log goes to the bus of two channels, the next ones to the buses
        // that follow, and the fourth to the first bus again.
        const int channels[] = {0, 1, 2, 3, 0, 1};
        bool right = count == 6 && frames[4].id == 0x126;
        for (int i = 0; i < count && right; ++i) right = frames[i].channel == channels[i];
        finish(right);
    };
    EXPECT_EXIT(child(), ::testing::ExitedWithCode(0), "<>");
    EXPECT_EXIT(finish(initWith("SIMCORE_REPLAY", path + ".absent") != 0),
                ::testing::ExitedWithCode(0), "<SIMCORE_REPLAY: .*absent: cannot be opened>");
    const auto badSpeed = [&] {
        if (!quill::os::setEnvironment("SIMCORE_REPLAY_SPEED", "fast")) finish(false);
        finish(initWith("SIMCORE_REPLAY", path) != 0);
    };
    EXPECT_EXIT(badSpeed(), ::testing::ExitedWithCode(0),
                "SIMCORE_REPLAY_SPEED: expected a number");
}

// The process ends without clean-up while sources, jobs, callbacks and a reader are at work.
TEST_F(Process, endsWhileEverythingRuns) {
    const auto child = [] {
        std::string reason;
        if (!simcore::loadNetwork(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}}],
                "sources": [{"bus": "b", "periodic": {"id": 5, "data": "00", "period_ms": 0}}],
                "faults": [{"every_ms": 1, "do": "busTimeout", "box": "A"}]})",
                                  reason)) {
            finish(false);
        }
        if (rvhub4e_init() != 0) finish(false);
        int32_t handle = 0;
        int32_t count = 1;
        const RvHub4eScanParams params;
        if (scan_rvhub4e(&handle, &count, 0, &params) != 0) finish(false);
        static auto& events = *new simtest::Mailbox<int>;  // outlives the exit
        const auto note = [](int32_t, const RvDeviceEvent*, void*) { events.put(1); };
        if (set_event_callback(handle, note, nullptr) != 0) finish(false);
        if (open_device(handle) != 0 || start_trace(handle) != 0) finish(false);
        RvCanCycleJob job;
        std::strcpy(job.uuid, "x");
        job.frame.id = 1;
        job.periodMs = 1;
        if (add_can_cycle_frame(handle, &job) != 0) finish(false);
        // Left running on purpose, as a script's reader is when the interpreter goes.
        static auto& frames = *new std::vector<RvCanFrame>(256);
        std::thread([handle] {
            int32_t got = 0;
            while (read_can_frames(handle, frames.data(), 256, &got) != kRvErrorNotInit) {
            }
        }).detach();
        events.waitUntil([](const auto& values) { return values.size() >= 3; });
        std::exit(17);
    };
    EXPECT_EXIT(child(), ::testing::ExitedWithCode(17), "");
}

}  // namespace
