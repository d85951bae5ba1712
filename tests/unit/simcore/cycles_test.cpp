#include <atomic>

#include "support.h"

using simtest::canFrame;
using simtest::kMs;
using simtest::kStartNs;
using simtest::SimTest;
using simtest::stampOf;

namespace {

RvCanCycleJob job(const char* uuid, int32_t periodMs, const RvCanFrame& frame) {
    RvCanCycleJob j;
    std::strcpy(j.uuid, uuid);
    j.frame = frame;
    j.periodMs = periodMs;
    return j;
}

// A counter in the first byte, as users of the update callback step one.
struct Stepper {
    int calls = 0;
    int releases = 0;
    bool wanted = true;
};
bool step(uint8_t* data, int32_t length, void* settings) {
    auto* self = static_cast<Stepper*>(settings);
    ++self->calls;
    // Each transmission starts from the frame as it was given; the stepper keeps the count.
    if (length > 0) data[0] = static_cast<uint8_t>(data[0] + self->calls);
    return self->wanted;
}
void release(void* settings) { ++static_cast<Stepper*>(settings)->releases; }

class Cycles : public SimTest {
protected:
    void SetUp() override {
        load(R"({"boxes": [{"name": "S", "channels": {"can": ["bus", "quiet"], "eth": ["e", "e"]}},
                           {"name": "R", "channels": {"can": ["bus"], "eth": 0}}]})");
        const auto handles = scan();
        m_sender = handles.at(0);
        m_receiver = handles.at(1);
        for (const int32_t handle : handles) {
            ASSERT_EQ(open_device(handle), 0);
            ASSERT_EQ(start_trace(handle), 0);
        }
    }
    RvCycleCounters counters(const char* uuid) {
        RvCycleCounters c;
        EXPECT_EQ(get_can_cycle_counters(m_sender, uuid, &c), 0);
        return c;
    }
    int32_t m_sender = 0;
    int32_t m_receiver = 0;
    Stepper m_stepper;
};

TEST_F(Cycles, theUpdateRunsBeforeEveryTransmission) {
    RvCanCycleJob j = job("a", 10, canFrame(0x10, {0, 0}));
    j.update = step;
    j.settings = &m_stepper;
    j.release = release;
    ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    EXPECT_EQ(add_can_cycle_frame(m_sender, &j), kRvErrorDuplicateJob);
    EXPECT_EQ(m_stepper.releases, 1);  // the one that was not accepted
    simcore::advance(45 * kMs);
    const auto frames = readCan(m_receiver);
    ASSERT_EQ(frames.size(), 5U);
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].data[0], i + 1);
        EXPECT_EQ(stampOf(frames[i]), kStartNs + i * 10 * kMs);
    }
    ASSERT_EQ(remove_can_cycle_frame(m_sender, "a"), 0);
    EXPECT_EQ(m_stepper.releases, 2);
    EXPECT_EQ(remove_can_cycle_frame(m_sender, "a"), kRvErrorUnknownJob);
    simcore::advance(100 * kMs);
    EXPECT_TRUE(readCan(m_receiver).empty());
}

TEST_F(Cycles, aLimitEndsTheJob) {
    RvCanCycleJob j = job("a", 1, canFrame(1, {}));
    j.limitCount = 3;
    j.settings = &m_stepper;
    j.release = release;
    ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    simcore::advance(100 * kMs);
    EXPECT_EQ(readCan(m_receiver).size(), 3U);
    EXPECT_EQ(m_stepper.releases, 1);
    EXPECT_EQ(pause_can_cycle_frame(m_sender, "a"), kRvErrorUnknownJob);
}

TEST_F(Cycles, pauseKeepsTheGrid) {
    const RvCanCycleJob j = job("a", 10, canFrame(1, {}));
    ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    simcore::advance(12 * kMs);
    ASSERT_EQ(pause_can_cycle_frame(m_sender, "a"), 0);
    simcore::advance(53 * kMs);
    readCan(m_receiver);
    ASSERT_EQ(resume_can_cycle_frame(m_sender, "a"), 0);
    simcore::advance(10 * kMs);
    const auto frames = readCan(m_receiver);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(stampOf(frames[0]), kStartNs + 70 * kMs);
    EXPECT_EQ(counters("a").missed, 0U);
}

TEST_F(Cycles, aNewPeriodCountsFromTheLastTransmission) {
    const RvCanCycleJob j = job("a", 10, canFrame(1, {}));
    ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    simcore::advance(12 * kMs);  // sent at 0 and 10
    readCan(m_receiver);
    ASSERT_EQ(set_can_cycle_period(m_sender, "a", 25), 0);
    EXPECT_EQ(set_can_cycle_period(m_sender, "a", 0), kRvErrorParam);
    simcore::advance(60 * kMs);
    const auto frames = readCan(m_receiver);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(stampOf(frames[0]), kStartNs + 35 * kMs);
    EXPECT_EQ(stampOf(frames[1]), kStartNs + 60 * kMs);
}

TEST_F(Cycles, replacingTheFrameKeepsThePhase) {
    RvCanCycleJob j = job("a", 10, canFrame(1, {0}));
    j.update = step;
    j.settings = &m_stepper;
    ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    simcore::advance(12 * kMs);
    const RvCanFrame other = canFrame(2, {50, 60});
    ASSERT_EQ(update_can_cycle_frame(m_sender, "a", &other), 0);
    const RvCanFrame wrong = canFrame(0x800, {});
    EXPECT_EQ(update_can_cycle_frame(m_sender, "a", &wrong), kRvErrorParam);
    simcore::advance(10 * kMs);
    const auto frames = readCan(m_receiver);
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(frames[2].id, 2U);
    EXPECT_EQ(frames[2].data[0], 50 + m_stepper.calls);
    EXPECT_EQ(stampOf(frames[2]), kStartNs + 20 * kMs);
}

TEST_F(Cycles, refusalsAreCountedAndStepNothing) {
    RvCanCycleJob j = job("a", 10, canFrame(1, {0}));
    j.update = step;
    j.settings = &m_stepper;
    ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    simcore::advance(5 * kMs);
    ASSERT_TRUE(simcore::setBusStatus("S", 0, RvCanBusStatusTypeBusOff));
    simcore::advance(30 * kMs);
    EXPECT_EQ(counters("a").refused, 3U);
    EXPECT_EQ(counters("a").lastError, kRvErrorBusOff);
    EXPECT_EQ(m_stepper.calls, 1);
    const RvCanFrame single = canFrame(9, {});
    EXPECT_EQ(send_can_frame_once(m_sender, &single), kRvErrorBusOff);
    ASSERT_TRUE(simcore::setBusStatus("S", 0, RvCanBusStatusTypeBusActive));
    ASSERT_TRUE(simcore::refuseSends("S", 0, 1));
    simcore::advance(20 * kMs);
    EXPECT_EQ(counters("a").refused, 4U);
    EXPECT_EQ(counters("a").transmitted, 2U);
    EXPECT_EQ(readCan(m_receiver).back().data[0], 2);  // no gap in the counter
    m_stepper.wanted = false;
    simcore::advance(10 * kMs);
    EXPECT_EQ(counters("a").lastError, kRvErrorRefused);
}

TEST_F(Cycles, jobsOfEqualPeriodAreSpread) {
    for (int i = 0; i < 40; ++i) {
        const RvCanCycleJob j =
            job(std::to_string(i).c_str(), 10, canFrame(static_cast<uint32_t>(i), {}));
        ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    }
    simcore::advance(10 * kMs - 1);
    std::vector<uint64_t> times;
    for (const RvCanFrame& frame : readCan(m_receiver)) times.push_back(stampOf(frame) - kStartNs);
    // Ten points of the period with four jobs each.
    ASSERT_EQ(times.size(), 40U);
    for (size_t i = 0; i < times.size(); ++i) EXPECT_EQ(times[i], i / 4 * kMs);
}

TEST_F(Cycles, badJobsAreRefused) {
    struct Case {
        RvCanCycleJob job;
        int code;
    };
    const Case cases[] = {
        {job("", 10, canFrame(1, {})), kRvErrorParam},
        {job("a", 0, canFrame(1, {})), kRvErrorParam},
        {job("a", -5, canFrame(1, {})), kRvErrorParam},
        {job("a", 10, canFrame(0x800, {})), kRvErrorParam},
        {job("a", 10, canFrame(1, {1, 2, 3, 4, 5, 6, 7, 8, 9})), kRvErrorParam},
        {job("a", 10, canFrame(1, {}, 2)), kRvErrorChannel},
    };
    for (const Case& c : cases) EXPECT_EQ(add_can_cycle_frame(m_sender, &c.job), c.code);
    EXPECT_EQ(add_can_cycle_frame(m_sender, nullptr), kRvErrorParam);
    EXPECT_EQ(pause_can_cycle_frame(m_sender, nullptr), kRvErrorUnknownJob);
}

TEST_F(Cycles, jobsEndWithTheBox) {
    for (int i = 0; i < 50; ++i) {
        RvCanCycleJob j = job(std::to_string(i).c_str(), 1, canFrame(1, {0}));
        j.update = step;
        j.settings = &m_stepper;
        j.release = release;
        ASSERT_EQ(add_can_cycle_frame(m_sender, &j), 0);
    }
    simcore::advance(10 * kMs);
    ASSERT_TRUE(simcore::unplug("S"));
    EXPECT_EQ(m_stepper.releases, 50);
    EXPECT_EQ(remove_can_cycle_frame(m_sender, "7"), kRvErrorGone);
    ASSERT_TRUE(simcore::plug("S"));
    readCan(m_receiver);
    simcore::advance(10 * kMs);
    EXPECT_TRUE(readCan(m_receiver).empty());
}

TEST_F(Cycles, ethernetJobs) {
    RvEthCycleJob j;
    std::strcpy(j.uuid, "e");
    j.frame.length = 60;
    j.periodMs = 10;
    j.limitCount = 2;
    ASSERT_EQ(add_eth_cycle_frame(m_sender, &j), 0);
    ASSERT_EQ(pause_eth_cycle_frame(m_sender, "e"), 0);
    ASSERT_EQ(resume_eth_cycle_frame(m_sender, "e"), 0);
    simcore::advance(100 * kMs);
    EXPECT_EQ(remove_eth_cycle_frame(m_sender, "e"), kRvErrorUnknownJob);
    RvEthFrame out[8];
    int32_t count = 0;
    ASSERT_EQ(read_eth_frames(m_sender, out, 8, &count), 0);
    ASSERT_EQ(count, 4);  // two transmissions, each seen by both channels of the bus
    EXPECT_NE(out[0].direction, out[1].direction);
}

}  // namespace
