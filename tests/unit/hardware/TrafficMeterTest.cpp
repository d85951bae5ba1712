#include "core/hardware/boxdev/TrafficMeter.h"

#include <gtest/gtest.h>

#include <vector>

namespace RV::BoxDev {
namespace {

constexpr int64_t kSecond = 1'000'000'000;
constexpr int64_t kStart = 1'700'000'000 * kSecond;

rv::FrameHolder canAt(int64_t ns, uint8_t channel = 0, bool fd = false, uint32_t length = 8) {
    rv::FrameHolder frame = rv::makeFrame(length);
    frame->type = rv::FrameType::Can;
    frame->seconds = static_cast<uint32_t>(ns / kSecond);
    frame->nanoseconds = static_cast<uint32_t>(ns % kSecond);
    frame->channel = channel;
    frame->can.extend.setEDL(fd);
    frame->can.extend.setBRS(fd);
    return frame;
}

void note(TrafficMeter& meter, rv::FrameHolder frame, int64_t hostNs) {
    std::vector<rv::FrameHolder> batch;
    batch.push_back(std::move(frame));
    meter.note(batch, hostNs);
}

TEST(TrafficMeter, tellsTheLastWholeSecondOfTheBoxsClock) {
    TrafficMeter meter;
    EXPECT_TRUE(meter.read(kStart).channels.empty());
    for (int i = 0; i < 10; ++i) note(meter, canAt(kStart + i * 1000), kStart + i * 1000);
    note(meter, canAt(kStart + 5, 2, true, 64), kStart + 10'000);
    EXPECT_EQ(meter.read(kStart + kSecond / 2).channels[0].nominalPerSecond, 0U);

    const DeviceTraffic traffic = meter.read(kStart + kSecond);
    ASSERT_EQ(traffic.channels.size(), 2U);  // channel 1 was silent
    EXPECT_EQ(traffic.channels[0].received, 10U);
    EXPECT_EQ(traffic.channels[0].nominalPerSecond, 10U * 111);
    EXPECT_EQ(traffic.channels[0].dataPerSecond, 0U);
    EXPECT_EQ(traffic.channels[1].channel, 2);
    EXPECT_EQ(traffic.channels[1].nominalPerSecond, 30U);
    EXPECT_EQ(traffic.channels[1].dataPerSecond, 28U + 512);

    // The next second has begun; the one before is still told, and then forgotten.
    note(meter, canAt(kStart + kSecond + 5), kStart + kSecond + 5);
    EXPECT_EQ(meter.read(kStart + kSecond + 9).channels[0].nominalPerSecond, 10U * 111);
    EXPECT_EQ(meter.read(kStart + 2 * kSecond).channels[0].nominalPerSecond, 111U);
    EXPECT_EQ(meter.read(kStart + 5 * kSecond).channels[0].nominalPerSecond, 0U);
}

TEST(TrafficMeter, takesTheSmallestDelayForTheClockOffset) {
    TrafficMeter meter;
    EXPECT_EQ(meter.read(kStart).clockOffsetNs, 0);
    constexpr int64_t kAhead = 3 * kSecond;
    for (const int64_t delay : {9'000, 2'000, 7'000}) {
        note(meter, canAt(kStart + kAhead), kStart + delay);
    }
    EXPECT_EQ(meter.read(kStart).clockOffsetNs, kAhead - 2'000);
    // A clock that was set anew is believed after two windows of ten seconds.
    for (int64_t at = kStart + kSecond; at < kStart + 25 * kSecond; at += kSecond) {
        note(meter, canAt(at - kAhead), at);
    }
    EXPECT_EQ(meter.read(kStart + 25 * kSecond).clockOffsetNs, -kAhead);
}

TEST(TrafficMeter, goesOnAfterOneStampFromTheFuture) {
    TrafficMeter meter;
    note(meter, canAt(kStart + 1000 * kSecond), kStart);
    note(meter, canAt(kStart + kSecond), kStart + kSecond);
    note(meter, canAt(kStart + kSecond), kStart + kSecond);
    // Twenty seconds later the odd stamp has left the estimate of the clock too.
    note(meter, canAt(kStart + 12 * kSecond), kStart + 12 * kSecond);
    note(meter, canAt(kStart + 23 * kSecond), kStart + 23 * kSecond);
    const DeviceTraffic traffic = meter.read(kStart + 24 * kSecond);
    EXPECT_EQ(traffic.channels[0].received, 5U);
    EXPECT_EQ(traffic.channels[0].nominalPerSecond, 111U);
}

}  // namespace
}  // namespace RV::BoxDev
