#include "engine/FrameRules.h"
#include "support.h"

using simtest::canFrame;
using simtest::kMs;
using simtest::kStartNs;
using simtest::SimTest;
using simtest::stampOf;

namespace {

constexpr uint8_t kExtendedFlag = 0x04;

class Buses : public SimTest {};

TEST_F(Buses, theLowerIdentifierWins) {
    load(R"({"buses": {"b": {"kind": "can", "bitrate": 500000}},
             "boxes": [{"name": "B", "channels": {"can": ["b", "b", "b", "b"]}}]})");
    const int32_t handle = openFirst();
    // The first takes the idle bus at once; the others meet when it is free again.
    RvCanFrame extended = canFrame(0x100U << 18U, {1, 2}, 3);
    extended.extend[1] = kExtendedFlag;
    const RvCanFrame sent[] = {canFrame(0x700, {}, 0), canFrame(0x101, {}, 0),
                               canFrame(0x200, {}, 1), canFrame(0x100, {}, 2), extended};
    for (const RvCanFrame& frame : sent) ASSERT_EQ(send_can_frame_once(handle, &frame), 0);
    simcore::advance(10 * kMs);
    std::vector<uint32_t> order;
    uint64_t last = kStartNs;
    for (const RvCanFrame& frame : readCan(handle)) {
        if (frame.direction != kRvDirTransmitted) continue;
        order.push_back(frame.id);
        EXPECT_GT(stampOf(frame), last);  // each takes its time
        last = stampOf(frame);
    }
    // The extended identifier loses against the standard one of the same first eleven bits.
    EXPECT_EQ(order, (std::vector<uint32_t>{0x700, 0x100, 0x100U << 18U, 0x101, 0x200}));
}

TEST_F(Buses, aFullTransmitQueueRefuses) {
    load(R"({"buses": {"b": {"kind": "can", "bitrate": 10000}},
             "boxes": [{"name": "B", "channels": {"can": ["b"]}}]})");
    const int32_t handle = openFirst();
    const RvCanFrame frame = canFrame(1, {1, 2, 3, 4, 5, 6, 7, 8});
    int accepted = 0;
    while (send_can_frame_once(handle, &frame) == 0) ASSERT_LT(++accepted, 2000);
    EXPECT_EQ(send_can_frame_once(handle, &frame), kRvErrorQueueFull);
    simcore::advance(3000 * kMs);
    EXPECT_DOUBLE_EQ(simcore::busLoad("b"), 1.0);
    simcore::advance(60'000 * kMs);
    EXPECT_EQ(readCan(handle).size(), static_cast<size_t>(accepted));
    EXPECT_DOUBLE_EQ(simcore::busLoad("b"), 0.0);
}

TEST_F(Buses, loadOfAPeriodicFrame) {
    load(R"({"buses": {"b": {"kind": "can", "bitrate": 500000}},
             "boxes": [{"name": "B", "channels": {"can": ["b"]}}],
             "sources": [{"bus": "b", "periodic": {"id": "1A0", "data": "0011223344556677",
                                                   "period_ms": 2}}]})");
    simcore::advance(2000 * kMs);
    // 47 + 64 + 3 bits in 2 ms of 1000 bit times.
    EXPECT_NEAR(simcore::busLoad("b"), 0.114, 0.001);
}

struct WireCase {
    const char* name;
    bool fd, brs, extended;
    int length;
    int64_t ns;  // at 500 kbit/s and 2 Mbit/s
};
class WireTime : public ::testing::TestWithParam<WireCase> {};

TEST_P(WireTime, ofACanFrame) {
    const WireCase& c = GetParam();
    RvCanFrame frame;
    frame.extend[0] = static_cast<uint8_t>((c.fd ? 1 : 0) | (c.brs ? 2 : 0));
    frame.extend[1] = c.extended ? kExtendedFlag : 0;
    frame.length = static_cast<uint8_t>(c.length);
    EXPECT_EQ(simcore::engine::wireTime(frame, {500'000, 2'000'000}), c.ns);
}
INSTANTIATE_TEST_SUITE_P(
    Table, WireTime,
    ::testing::Values(
        // 47 bits and one stuff bit of 34 that can be stuffed, 2 us each.
        WireCase{"empty", false, false, false, 0, 96'000},
        WireCase{"eight", false, false, false, 8, 228'000},
        WireCase{"extended", false, false, true, 8, 268'000},
        // 29 arbitration bits; 1 + 4 + 512 + 17 stuff + 32 CRC field + 1 bits in the data phase.
        WireCase{"fd", true, true, false, 64, 58'000 + 283'500},
        WireCase{"fdSlow", true, false, false, 64, 58'000 + 1'134'000}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(LinRules, protectedIdentifiersAndChecksums) {
    using simcore::engine::linChecksum;
    using simcore::engine::linProtectedId;
    EXPECT_EQ(linProtectedId(0x00), 0x80);
    EXPECT_EQ(linProtectedId(0x3C), 0x3C);
    EXPECT_EQ(linProtectedId(0x3D), 0x7D);
    EXPECT_EQ(linProtectedId(0x2A), 0x6A);
    RvLinFrame frame;
    frame.id = 0x0A;  // 0xCA with its parity bits
    frame.length = 4;
    frame.data[0] = 0x4A;
    frame.data[1] = 0x55;
    frame.data[2] = 0x93;
    frame.data[3] = 0xE5;
    EXPECT_EQ(linChecksum(frame), 0xE6);  // 0x19 inverted
    frame.checkMode = 1;
    EXPECT_EQ(linChecksum(frame), 0x1C);  // 0x19 + 0xCA inverted
    frame.id = 0x3C;
    EXPECT_EQ(linChecksum(frame), 0xE6);  // diagnostic frames stay classic
}

TEST_F(Buses, aScheduleTableRunsSlotBySlot) {
    load(R"({"boxes": [{"name": "M", "channels": {"lin": ["l", "other"]}},
                       {"name": "S", "channels": {"lin": ["l"]}}],
             "responders": [{"bus": "l", "id": 48, "data": "AB"}]})");
    const auto handles = scan();
    for (const int32_t handle : handles) {
        ASSERT_EQ(open_device(handle), 0);
        ASSERT_EQ(start_trace(handle), 0);
    }
    RvLinChannelConfig config;
    ASSERT_EQ(get_lin_config(handles[1], 0, &config), 0);
    config.master = 0;
    ASSERT_EQ(set_lin_config(handles[1], 0, &config), 0);
    ASSERT_EQ(Dev_Sync(handles[1]), 0);
    RvLinFrame answer;
    answer.id = 0x11;
    answer.length = 1;
    answer.data[0] = 7;
    ASSERT_EQ(send_lin_frame_once(handles[1], &answer), 0);
    EXPECT_TRUE(readLin(handles[1]).empty());  // a slave waits to be asked

    const RvLinSlot slots[] = {{0x10, 4, 10, 1, 2, {1, 2}},
                               {0x11, 3, 20, 1, 1, {}},
                               {0x30, 3, 5, 1, 1, {}},
                               {0x12, 3, 5, 1, 1, {}}};  // nobody answers this one
    EXPECT_EQ(start_lin_schedule(handles[1], 0, slots, 4), kRvErrorRefused);
    ASSERT_EQ(start_lin_schedule(handles[0], 0, slots, 4), 0);
    simcore::advance(79 * kMs);
    const auto master = readLin(handles[0]);
    const auto slave = readLin(handles[1]);
    ASSERT_EQ(master.size(), 6U);
    ASSERT_EQ(slave.size(), 6U);
    const uint64_t times[] = {0, 10, 30, 40, 50, 70};
    const int ids[] = {0x10, 0x11, 0x30, 0x10, 0x11, 0x30};
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(master[i].id, ids[i]);
        EXPECT_EQ(stampOf(master[i]), kStartNs + times[i] * kMs);
        EXPECT_EQ(master[i].checksum, simcore::engine::linChecksum(master[i]));
    }
    EXPECT_EQ(master[0].direction, kRvDirTransmitted);
    EXPECT_EQ(slave[1].direction, kRvDirTransmitted);
    EXPECT_EQ(master[1].direction, kRvDirReceived);
    ASSERT_EQ(stop_lin_schedule(handles[0], 0), 0);
    EXPECT_EQ(stop_lin_schedule(handles[0], 0), kRvErrorUnknownJob);
    const RvLinSlot still = {0x10, 4, 0, 1, 2, {}};
    EXPECT_EQ(start_lin_schedule(handles[0], 0, &still, 1), kRvErrorParam);
    EXPECT_EQ(start_lin_schedule(handles[0], 9, slots, 4), kRvErrorChannel);
}

TEST_F(Buses, clocksOfBoxesDiffer) {
    load(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}},
                       {"name": "B", "channels": {"can": ["b"]}}]})");
    const auto handles = scan();
    for (const int32_t handle : handles) {
        ASSERT_EQ(open_device(handle), 0);
        ASSERT_EQ(start_trace(handle), 0);
    }
    ASSERT_TRUE(simcore::setClock("B", -2'000'000, 100.0));
    simcore::advance(1000 * kMs);
    const RvCanFrame frame = canFrame(1, {});
    ASSERT_EQ(send_can_frame_once(handles[0], &frame), 0);
    const uint64_t own = stampOf(readCan(handles[0]).at(0));
    const uint64_t other = stampOf(readCan(handles[1]).at(0));
    EXPECT_EQ(own, kStartNs + 1000 * kMs);
    EXPECT_NEAR(static_cast<double>(other) - static_cast<double>(own), -1'900'000.0, 1000.0);
}

// A frame may carry an earlier stamp than the moment at which the clock of its box was changed,
// when the machine was busy or its own clock was set back. It must not land days away.
TEST_F(Buses, aClockThatDriftsTakesEarlierFrames) {
    load(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}},
                       {"name": "B", "channels": {"can": ["b"]}}]})");
    const auto handles = scan();
    for (const int32_t handle : handles) {
        ASSERT_EQ(open_device(handle), 0);
        ASSERT_EQ(start_trace(handle), 0);
    }
    ASSERT_TRUE(simcore::setClock("B", 0, 100.0));
    simcore::useManualClock(kStartNs - 1000 * kMs);
    const RvCanFrame frame = canFrame(1, {});
    ASSERT_EQ(send_can_frame_once(handles[0], &frame), 0);
    const uint64_t own = stampOf(readCan(handles[0]).at(0));
    const uint64_t other = stampOf(readCan(handles[1]).at(0));
    EXPECT_EQ(own, kStartNs - 1000 * kMs);
    EXPECT_NEAR(static_cast<double>(other) - static_cast<double>(own), -100'000.0, 1000.0);
}

TEST_F(Buses, theFaultTimetableIsPlayed) {
    load(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}}], "seed": 3,
             "faults": [{"at_ms": 10, "do": "busOff", "box": "A"},
                        {"at_ms": 20, "do": "busStatus", "status": "active", "box": "A"},
                        {"at_ms": 30, "do": "refuse", "box": "A", "times": 2},
                        {"at_ms": 40, "do": "fail", "function": "Dev_Sync", "code": 55},
                        {"at_ms": 50, "do": "unplug", "box": "A"},
                        {"at_ms": 60, "do": "plug", "box": "A"}]})");
    const int32_t handle = openFirst();
    const RvCanFrame frame = canFrame(1, {});
    const auto sendAt = [&](uint64_t ms) {
        simcore::advance(ms * kMs);
        return send_can_frame_once(handle, &frame);
    };
    EXPECT_EQ(sendAt(9), 0);
    EXPECT_EQ(sendAt(1), kRvErrorBusOff);
    EXPECT_EQ(sendAt(10), 0);
    EXPECT_EQ(sendAt(10), kRvErrorRefused);
    EXPECT_EQ(sendAt(0), kRvErrorRefused);
    EXPECT_EQ(sendAt(10), 0);
    EXPECT_EQ(Dev_Sync(handle), 55);
    EXPECT_EQ(Dev_Sync(handle), 0);
    EXPECT_EQ(sendAt(10), kRvErrorGone);
    EXPECT_TRUE(scan().empty());
    simcore::advance(10 * kMs);
    EXPECT_EQ(scan().size(), 1U);
}

TEST_F(Buses, chanceIsRepeatedByItsSeed) {
    const auto run = [&] {
        load(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}}], "seed": 42,
                 "faults": [{"every_ms": 10, "chance": 0.5, "jitter_ms": 5, "do": "refuse",
                             "box": "A", "times": 1}]})");
        const int32_t handle = openFirst();
        const RvCanFrame frame = canFrame(1, {});
        std::string result;
        for (int i = 0; i < 200; ++i) {
            simcore::advance(5 * kMs);
            result += send_can_frame_once(handle, &frame) == 0 ? '.' : 'x';
        }
        return result;
    };
    const std::string first = run();
    EXPECT_EQ(run(), first);
    EXPECT_NE(first.find('x'), std::string::npos);
    EXPECT_NE(first.find('.'), std::string::npos);
}

TEST_F(Buses, settingsTakeEffectWithSync) {
    load(R"({"boxes": [{"name": "A", "channels": {"can": ["b"]}}]})");
    const int32_t handle = openFirst();
    RvCanChannelConfig config;
    ASSERT_EQ(get_can_config(handle, 0, &config), 0);
    config.enabled = 0;
    config.bitrate = 250'000;
    ASSERT_EQ(set_can_config(handle, 0, &config), 0);
    const RvCanFrame frame = canFrame(1, {});
    EXPECT_EQ(send_can_frame_once(handle, &frame), 0);
    ASSERT_EQ(Dev_Sync(handle), 0);
    EXPECT_EQ(send_can_frame_once(handle, &frame), kRvErrorChannel);
    RvCanChannelConfig readBack;
    ASSERT_EQ(get_can_config(handle, 0, &readBack), 0);
    EXPECT_EQ(readBack.bitrate, 250'000);
    config.samplePoint = 400;
    EXPECT_EQ(set_can_config(handle, 0, &config), kRvErrorParam);
    EXPECT_EQ(set_can_config(handle, 1, &config), kRvErrorChannel);
}

}  // namespace
