#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <future>
#include <thread>

#include "VirtualBoxes.h"

namespace rv {
namespace {

constexpr const char* kTwoBoxes = R"({
    "buses": {"shared": {"kind": "can"}},
    "boxes": [
        {"name": "A", "mac": "02:00:00:00:00:0A", "serial": "S1",
         "channels": {"can": [{"bus": "shared"}, {"bus": "shared"}]}},
        {"name": "B", "mac": "02:00:00:00:00:0B", "serial": "S2",
         "channels": {"can": [{"bus": "shared"}]}}]})";

TEST_F(VirtualBoxes, deliversASentFrameToTheOtherChannelAndToTheSenderAsItsOwn) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = subscribe();
    auto fd = canFrame(0x1ABCDEF0, std::vector<uint8_t>(64, 0x5A));
    fd.extend.setIDE(true);
    fd.extend.setEDL(true);
    fd.extend.setBRS(true);
    fd.extend.setDLC(15);
    ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(0x123, {1, 2, 3})), BoxResult::Done);
    ASSERT_EQ(manager->sendCanFrame(kBox, fd), BoxResult::Done);
    ASSERT_TRUE(collector->waitFor(4));
    int own = 0;
    int received = 0;
    uint64_t last = 0;
    for (const auto& frame : collector->seen()) {
        EXPECT_GE(frame.stampNs, last);
        last = frame.stampNs;
        const bool isOwn = frame.direction == Direction::Transmitted;
        EXPECT_EQ(frame.channel, isOwn ? 0 : 1);
        (isOwn ? own : received) += 1;
        EXPECT_EQ(frame.data.size(), frame.id == 0x123 ? 3U : 64U);
    }
    EXPECT_EQ(own, 2);
    EXPECT_EQ(received, 2);
}

TEST_F(VirtualBoxes, mergesTheFramesOfTwoBoxesInTimeOrder) {
    load(kTwoBoxes);
    ASSERT_TRUE(waitForBoxes(2));
    auto collector = std::make_shared<Collector>();
    ASSERT_TRUE(manager->start(kBox, {collector, 0}));
    ASSERT_TRUE(manager->start("02:00:00:00:00:0B", {collector, 0}));
    for (uint32_t i = 0; i < 200; ++i) {
        ASSERT_EQ(manager->sendCanFrame(i % 2 == 0 ? kBox : QString("02:00:00:00:00:0B"),
                                        canFrame(i, {})),
                  BoxResult::Done);
    }
    ASSERT_TRUE(collector->waitFor(600));  // three channels see each frame
    uint64_t last = 0;
    for (const auto& frame : collector->seen()) {
        ASSERT_GE(frame.stampNs, last);
        last = frame.stampNs;
    }
}

TEST_F(VirtualBoxes, aBlockedReceiverLosesNothing) {
    ASSERT_TRUE(waitForBoxes(1));
    std::promise<void> release;
    auto gate = release.get_future().share();
    auto collector = std::make_shared<Collector>();
    std::atomic<bool> blocked{false};
    collector->onFrame = [&](const Frame&) {
        if (!blocked.exchange(true)) gate.wait();
    };
    ASSERT_TRUE(manager->start(kBox, {collector, 0}));
    for (uint32_t i = 0; i < 500; ++i) {
        ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(i, {})), BoxResult::Done);
    }
    ASSERT_TRUE(waitUntil([&] { return manager->counters().backlogAgeUs > 0 || blocked; }));
    release.set_value();
    ASSERT_TRUE(collector->waitFor(1000));
}

// Received = delivered + held + dropped, hand-over by hand-over, from the box to the receiver.
TEST_F(VirtualBoxes, theCountersOfTheRoadBalanceUnderLoad) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = std::make_shared<Collector>();
    ASSERT_TRUE(manager->start(kBox, {collector, 0}));
    RvCanFrame frame;
    frame.length = 8;
    constexpr uint32_t kFrames = 50000;
    std::string bus;
    for (const char* name : {"A.can0", "can0", "CAN0", "RV-Hub4e.can0"}) {
        if (simcore::injectCan(name, frame)) {
            bus = name;
            break;
        }
    }
    if (bus.empty()) {
        for (uint32_t i = 0; i < 1000; ++i) {
            ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(i, {})), BoxResult::Done);
        }
        ASSERT_TRUE(collector->waitFor(2000));
    } else {
        for (uint32_t i = 1; i < kFrames; ++i) ASSERT_TRUE(simcore::injectCan(bus, frame));
        ASSERT_TRUE(collector->waitFor(2U * kFrames));
    }
    // The last frame is with the collector before the dispatcher has counted it.
    ASSERT_TRUE(waitUntil([&] {
        const RoadCounters now = manager->counters();
        return now.resort.held == 0 && now.dispatch.held == 0;
    }));
    const RoadCounters c = manager->counters();
    EXPECT_TRUE(c.library.balanced());
    EXPECT_TRUE(c.readers.balanced());
    EXPECT_TRUE(c.resort.balanced());
    EXPECT_TRUE(c.dispatch.balanced());
    EXPECT_EQ(c.library.out, c.readers.in);
    EXPECT_EQ(c.readers.out, c.resort.in);
    EXPECT_EQ(c.resort.out, c.dispatch.in);
    EXPECT_EQ(c.dispatch.out, collector->seen().size());
    EXPECT_EQ(c.library.dropped, 0U);
}

TEST_F(VirtualBoxes, closingTheDeliveryWaitsForARunningReceiverButNotForEver) {
    ASSERT_TRUE(waitForBoxes(1));
    std::promise<void> entered;
    std::promise<void> release;
    auto gate = release.get_future().share();
    auto collector = std::make_shared<Collector>();
    std::atomic<bool> first{true};
    collector->onFrame = [&](const Frame&) {
        if (first.exchange(false)) {
            entered.set_value();
            gate.wait();
        }
    };
    ASSERT_TRUE(manager->start(kBox, {collector, 0}));
    ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(1, {})), BoxResult::Done);
    entered.get_future().wait();
    EXPECT_FALSE(manager->stopDelivery(20));
    release.set_value();
    EXPECT_TRUE(manager->stopDelivery(60000));
    EXPECT_EQ(collector->seen().size(), 1U);  // the second frame of the pass was not delivered
}

TEST_F(VirtualBoxes, aSubscriberWithoutACallbackDropsTheReceiver) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = subscribe();
    ASSERT_TRUE(manager->start(kBox, {nullptr, 0}));
    ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(1, {})), BoxResult::Done);
    ASSERT_TRUE(waitUntil([&] { return manager->counters().readers.dropped == 2; }));
    EXPECT_TRUE(collector->seen().empty());
    EXPECT_TRUE(manager->stop(kBox));
}

TEST_F(VirtualBoxes, stoppingTheDeviceLayerWhileFramesFlowEndsEveryThread) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = subscribe();
    ASSERT_EQ(manager->addSendCanFrame(kBox, {"j", canFrame(0x10, {1}), 1, 0, {}}),
              BoxResult::Done);
    ASSERT_TRUE(collector->waitFor(10));
    RV::BoxDev::DeviceManager::instance().stop();
    EXPECT_EQ(manager->sendCanFrame(kBox, canFrame(1, {})), BoxResult::NotConnected);
    RV::BoxDev::DeviceManager::instance().stop();
}

}  // namespace
}  // namespace rv
