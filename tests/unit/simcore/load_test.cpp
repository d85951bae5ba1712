#include <atomic>
#include <map>

#include "support.h"

using simtest::canFrame;
using simtest::SimTest;

// The real clock and threads: what has to hold under load, whatever the machine does.
namespace {

class Load : public SimTest {
protected:
    void loadLive(const std::string& document) {
        load(document);
        simcore::useSystemClock();
    }
    void TearDown() override {
        std::string reason;
        EXPECT_TRUE(simcore::loadNetwork(R"({"boxes": []})", reason));
    }
};

uint32_t counterOf(const RvCanFrame& frame) {
    uint32_t value = 0;
    std::memcpy(&value, frame.data, sizeof value);
    return value;
}

TEST_F(Load, anUnpacedBusLosesNothing) {
    constexpr uint32_t kFrames = 300'000;
    loadLive(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}},
                           {"name": "B", "channels": {"can": ["b"]}}],
                 "buses": {"b": {"kind": "can"}},
                 "sources": [{"bus": "b", "periodic": {"id": 5, "data": "0000000000000000",
                              "period_ms": 0, "counter": {}, "count": 300000}}]})");
    // The second box is not open and holds up nothing.
    const int32_t handle = openFirst();
    bool failed = false;
    std::vector<RvCanFrame> frames(512);
    uint64_t lastStamp = 0;
    for (uint32_t next = 0; next < kFrames && !failed;) {
        int32_t count = 0;
        ASSERT_EQ(read_can_frames(handle, frames.data(), 512, &count), 0);
        for (int32_t i = 0; i < count; ++i) {
            const RvCanFrame& frame = frames[static_cast<size_t>(i)];
            failed = failed || counterOf(frame) != next || simtest::stampOf(frame) < lastStamp;
            ++next;
            lastStamp = simtest::stampOf(frame);
        }
        if (count == 0) std::this_thread::yield();
    }
    EXPECT_FALSE(failed);
    RvTraceCounters counters;
    ASSERT_EQ(get_trace_counters(handle, &counters), 0);
    EXPECT_EQ(counters.queued, kFrames);
    EXPECT_EQ(counters.dropped, 0U);
}

bool countUp(uint8_t* data, int32_t /*length*/, void* settings) {
    const uint32_t value = (*static_cast<uint32_t*>(settings))++;
    std::memcpy(data, &value, sizeof value);
    return true;
}

TEST_F(Load, cyclicCountersArriveCompleteWhileJobsComeAndGo) {
    constexpr uint32_t kJobs = 50;
    constexpr uint32_t kEach = 100;
    loadLive(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}},
                           {"name": "B", "channels": {"can": ["b"]}}]})");
    const auto handles = scan();
    for (const int32_t handle : handles) {
        ASSERT_EQ(open_device(handle), 0);
        ASSERT_EQ(start_trace(handle), 0);
    }
    std::vector<uint32_t> values(kJobs, 0);
    for (uint32_t i = 0; i < kJobs; ++i) {
        RvCanCycleJob job;
        std::strcpy(job.uuid, std::to_string(i).c_str());
        job.frame = canFrame(i, {0, 0, 0, 0});
        job.periodMs = 1;
        job.limitCount = kEach;
        job.update = countUp;
        job.settings = &values[i];
        ASSERT_EQ(add_can_cycle_frame(handles[0], &job), 0);
    }
    // Beside them a job that is pushed around all the time.
    std::map<uint32_t, uint32_t> next;
    uint32_t received = 0;
    std::vector<RvCanFrame> frames(512);
    while (received < kJobs * kEach) {
        RvCanCycleJob other;
        std::strcpy(other.uuid, "other");
        other.frame = canFrame(0x700, {});
        other.periodMs = 1;
        ASSERT_EQ(add_can_cycle_frame(handles[0], &other), 0);
        ASSERT_EQ(pause_can_cycle_frame(handles[0], "other"), 0);
        ASSERT_EQ(resume_can_cycle_frame(handles[0], "other"), 0);
        int32_t count = 0;
        ASSERT_EQ(read_can_frames(handles[1], frames.data(), 512, &count), 0);
        for (int32_t i = 0; i < count; ++i) {
            const RvCanFrame& frame = frames[static_cast<size_t>(i)];
            if (frame.id == 0x700) continue;
            ASSERT_EQ(counterOf(frame), next[frame.id]++);
            ++received;
        }
        ASSERT_EQ(remove_can_cycle_frame(handles[0], "other"), 0);
    }
}

TEST_F(Load, boxesComeAndGoWhileEverythingRuns) {
    loadLive(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}}],
                 "usb": [{"name": "U", "model": "USB-CAN", "path": "u", "channels": {"can": ["b"]}}],
                 "sources": [{"bus": "b", "periodic": {"id": 5, "data": "00", "period_ms": 0}}]})");
    RvDeviceConnection* usb = RvDeviceConnection::create(RvConnectionTypeUsb);
    ASSERT_TRUE(usb->open("u", nullptr));
    ASSERT_EQ(usb->startTracing(), 0);
    std::atomic<bool> stop{false};
    std::atomic<uint64_t> events{0};
    std::thread reader([&] {
        std::vector<RvCanFrame> frames(256);
        while (!stop) {
            int32_t count = 0;
            static_cast<void>(usb->readCanFrames(frames.data(), 256, &count));
            for (const int32_t handle : scan()) {
                static_cast<void>(read_can_frames(handle, frames.data(), 256, &count));
            }
        }
    });
    for (int round = 0; round < 50; ++round) {
        const int32_t handle = scan().at(0);
        ASSERT_EQ(set_device_state_callback(
                      handle,
                      [](int32_t, int32_t, void* context) {
                          ++*static_cast<std::atomic<uint64_t>*>(context);
                      },
                      &events),
                  0);
        ASSERT_EQ(open_device(handle), 0);
        ASSERT_EQ(start_trace(handle), 0);
        RvCanCycleJob job;
        std::strcpy(job.uuid, "x");
        job.frame = canFrame(1, {1});
        job.periodMs = 1;
        ASSERT_EQ(add_can_cycle_frame(handle, &job), 0);
        ASSERT_TRUE(simcore::unplug("A"));
        EXPECT_EQ(set_device_state_callback(handle, nullptr, nullptr), kRvErrorGone);
        ASSERT_TRUE(simcore::plug("A"));
    }
    stop = true;
    reader.join();
    RvDeviceConnection::destroy(usb);
    EXPECT_LE(events, 150U);
}

TEST_F(Load, networksReplaceEachOtherUnderTraffic) {
    const char* document = R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}}],
        "sources": [{"bus": "b", "periodic": {"id": 5, "data": "00", "period_ms": 0}},
                    {"bus": "b", "periodic": {"id": 6, "data": "00", "period_ms": 0.05}}]})";
    loadLive(document);
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        std::vector<RvCanFrame> frames(256);
        std::vector<int32_t> handles(8);
        const RvHub4eScanParams params;
        while (!stop) {
            int32_t found = 8;
            if (scan_rvhub4e(handles.data(), &found, 0, &params) != 0 || found == 0) continue;
            static_cast<void>(open_device(handles[0]));
            static_cast<void>(start_trace(handles[0]));
            int32_t count = 0;
            static_cast<void>(read_can_frames(handles[0], frames.data(), 256, &count));
        }
    });
    std::string reason;
    for (int round = 0; round < 30; ++round) {
        ASSERT_TRUE(simcore::loadNetwork(document, reason)) << reason;
    }
    stop = true;
    reader.join();
}

}  // namespace
