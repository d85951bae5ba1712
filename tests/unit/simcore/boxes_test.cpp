#include <algorithm>

#include "support.h"

using simtest::canFrame;
using simtest::kMs;
using simtest::kStartNs;
using simtest::Mailbox;
using simtest::SimTest;
using simtest::stampOf;

namespace {

constexpr const char* kOneBox = R"({"boxes": [{"name": "B"}]})";

class Boxes : public SimTest {};

TEST_F(Boxes, aBoxWithoutDescriptionHasTheStandardChannels) {
    load(kOneBox);
    const auto handles = scan();
    ASSERT_EQ(handles.size(), 1U);
    RvHub4eDeviceInfo info{};
    ASSERT_EQ(get_device_info(handles[0], &info), 0);
    EXPECT_STREQ(info.name, "B");
    EXPECT_STREQ(info.model, "RV-Hub4e");
    EXPECT_NE(info.serial[0], '\0');
    EXPECT_NE(info.version[0], '\0');
    EXPECT_EQ(info.canCount, 4);
    EXPECT_EQ(info.linCount, 4);
    EXPECT_EQ(info.ethCount, 6);
    EXPECT_EQ(info.flexrayCount, 4);
    EXPECT_EQ(Lin_CheckPort(handles[0]), 0);
}

TEST_F(Boxes, aNetworkWithoutBoxesScansEmpty) {
    load(R"({"boxes": []})");
    EXPECT_TRUE(scan().empty());
}

TEST_F(Boxes, aFrameReachesItsBusAndComesBackToTheSender) {
    load(R"({"boxes": [{"name": "A", "channels": {"can": ["x", "y"]}},
                       {"name": "B", "channels": {"can": ["y", "x"]}}]})");
    const auto handles = scan();
    ASSERT_EQ(handles.size(), 2U);
    for (const int32_t handle : handles) {
        ASSERT_EQ(open_device(handle), 0);
        ASSERT_EQ(start_trace(handle), 0);
    }
    simcore::advance(5 * kMs);
    const RvCanFrame sent = canFrame(0x123, {1, 2, 3});
    ASSERT_EQ(send_can_frame_once(handles[0], &sent), 0);
    const auto own = readCan(handles[0]);
    const auto other = readCan(handles[1]);
    ASSERT_EQ(own.size(), 1U);
    ASSERT_EQ(other.size(), 1U);
    EXPECT_EQ(own[0].direction, kRvDirTransmitted);
    EXPECT_EQ(own[0].channel, 0);
    EXPECT_EQ(other[0].direction, kRvDirReceived);
    EXPECT_EQ(other[0].channel, 1);
    EXPECT_EQ(stampOf(other[0]), kStartNs + 5 * kMs);
    EXPECT_EQ(other[0].extend[1] >> 4U, 3);  // the length code follows the payload
    EXPECT_EQ(std::memcmp(other[0].data, sent.data, 64), 0);
}

TEST_F(Boxes, traceCountersBalance) {
    load(R"({"boxes": [{"name": "B", "traceCapacity": 10}]})");
    const int32_t handle = openFirst();
    const RvCanFrame frame = canFrame(1, {});
    for (int i = 0; i < 8; ++i) ASSERT_EQ(send_can_frame_once(handle, &frame), 0);
    RvTraceCounters counters;
    ASSERT_EQ(get_trace_counters(handle, &counters), 0);
    EXPECT_EQ(counters.queued, 10U);
    EXPECT_EQ(counters.dropped, 6U);
    RvCanFrame out[4];
    int32_t count = 0;
    ASSERT_EQ(read_can_frames(handle, out, 4, &count), 0);
    ASSERT_EQ(count, 4);
    ASSERT_EQ(stop_trace(handle), 0);
    ASSERT_EQ(get_trace_counters(handle, &counters), 0);
    EXPECT_EQ(counters.read, 4U);
    EXPECT_EQ(counters.discarded, 6U);
}

}  // namespace
