#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "VirtualBoxes.h"

namespace rv {
namespace {

const QString kNobody = "02:00:00:00:00:FF";

TEST_F(VirtualBoxes, listsABoxWithItsIdentityAndChannels) {
    ASSERT_TRUE(waitForBoxes(1));
    const auto identity = manager->fetchIdentity(kBox);
    ASSERT_TRUE(identity);
    EXPECT_EQ(identity->mac, kMac);
    EXPECT_EQ(identity->serial, "S1");
    const auto table = manager->channelTable(kBox);
    ASSERT_TRUE(table);
    // Ethernet and FlexRay counts are fixed by the model.
    EXPECT_EQ(table->at(ChannelType::Ethernet).size(), 6U);
    EXPECT_EQ(table->at(ChannelType::FlexRay).size(), 4U);
    EXPECT_EQ(table->at(ChannelType::Can).front(), (std::pair{0, 1}));
    EXPECT_EQ(manager->config(kBox)->can.size(), table->at(ChannelType::Can).size());
    EXPECT_EQ(manager->statusText(kBox), "connected");
    EXPECT_TRUE(waitForNotice(0));
}

TEST_F(VirtualBoxes, doesNotListABoxWhosePortCheckOrInformationFails) {
    for (const char* call : {"Lin_CheckPort", "get_device_info", "scan_rvhub4e"}) {
        manager.reset();
        RV::BoxDev::DeviceManager::instance().stop();
        simcore::failCalls("", call, kRvErrorRefused, -1);
        manager = std::make_unique<RVBoxManager>();
        ASSERT_TRUE(manager->init({}));
        ASSERT_TRUE(RV::BoxDev::DeviceManager::instance().waitFirstLook(60000));
        EXPECT_TRUE(manager->deviceMacs().empty()) << call;
        simcore::failCalls("", call, 0, 0);
        EXPECT_TRUE(waitForBoxes(1)) << call;  // found as soon as it is fit for use
    }
}

TEST_F(VirtualBoxes, answersAnUnknownIdentifierWithoutACommand) {
    ASSERT_TRUE(waitForBoxes(1));
    const uint64_t before = simcore::callCount("start_trace");
    EXPECT_FALSE(manager->start(kNobody, {std::make_shared<Collector>(), 0}));
    EXPECT_FALSE(manager->stop(kNobody));
    EXPECT_FALSE(manager->fetchIdentity(kNobody));
    EXPECT_FALSE(manager->channelTable(kNobody));
    std::string reason;
    EXPECT_FALSE(manager->writeConfig(kNobody, {}, reason));
    EXPECT_EQ(manager->sendCanFrame(kNobody, canFrame(1, {})), BoxResult::NoSuchDevice);
    EXPECT_EQ(manager->removeSendCanFrame(kNobody, "x"), BoxResult::NoSuchDevice);
    EXPECT_EQ(simcore::callCount("start_trace"), before);
}

TEST_F(VirtualBoxes, readsBackTheConfigurationThatItWrote) {
    ASSERT_TRUE(waitForBoxes(1));
    auto config = *manager->fetchConfig(kBox);
    config.can[1].bitrate = 250000;
    config.can[1].samplePoint = 87.5;
    config.can[1].listenOnly = true;
    config.lin[0].baudrate = 9600;
    config.lin[0].master = false;
    config.eth[2].speed = 1000;
    std::string reason;
    ASSERT_TRUE(manager->writeConfig(kBox, config, reason)) << reason;
    EXPECT_EQ(manager->config(kBox), config);
    EXPECT_EQ(manager->fetchConfig(kBox), config);

    auto bad = config;
    bad.can[0].bitrate = 333'337;
    EXPECT_FALSE(manager->writeConfig(kBox, bad, reason));
    EXPECT_NE(reason.find("333337"), std::string::npos) << reason;
    bad = config;
    bad.lin[0].version = 23;
    EXPECT_FALSE(manager->writeConfig(kBox, bad, reason));
    EXPECT_NE(reason.find("version"), std::string::npos) << reason;
    bad = config;
    bad.can[0].channel = 200;
    EXPECT_FALSE(manager->writeConfig(kBox, bad, reason));
    EXPECT_NE(reason.find("200"), std::string::npos) << reason;
    EXPECT_EQ(manager->fetchConfig(kBox), config);
}

TEST_F(VirtualBoxes, tellsADipSwitchChange) {
    ASSERT_TRUE(waitForBoxes(1));
    ASSERT_TRUE(simcore::setDipStatus("A", {1, 0, 1, 1}));
    ASSERT_TRUE(waitForNotice(2));
    EXPECT_EQ(manager->fetchIdentity(kBox)->dip, (DipState{1, 0, 1, 1}));
}

TEST_F(VirtualBoxes, dropsALostBoxAndFindsItAgain) {
    ASSERT_TRUE(waitForBoxes(1));
    auto first = subscribe();
    ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(1, {1})), BoxResult::Done);
    ASSERT_TRUE(first->waitFor(2));
    ASSERT_TRUE(simcore::unplug("A"));
    ASSERT_TRUE(waitForBoxes(0));
    EXPECT_TRUE(waitForNotice(1));
    EXPECT_EQ(manager->sendCanFrame(kBox, canFrame(1, {1})), BoxResult::NoSuchDevice);
    EXPECT_EQ(manager->statusText(kBox), "unknown");
    ASSERT_TRUE(simcore::plug("A"));
    ASSERT_TRUE(waitForBoxes(1));
    auto second = subscribe();
    ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(2, {2})), BoxResult::Done);
    ASSERT_TRUE(second->waitFor(2));
    EXPECT_EQ(first->seen().size(), 2U);
    // A lost box no longer tells its counters; what was read from it is known all the same.
    const RoadCounters counters = manager->counters();
    EXPECT_TRUE(counters.library.balanced());
    EXPECT_EQ(counters.library.out, 4U);
    EXPECT_EQ(counters.readers.in, 4U);
}

TEST_F(VirtualBoxes, countersDoNotFallWhileABoxLeaves) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = subscribe();
    ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(1, {1})), BoxResult::Done);
    ASSERT_TRUE(collector->waitFor(2));
    std::atomic<bool> gone{false};
    uint64_t least = 2;
    std::thread reader([&] {
        while (!gone) {
            const RoadCounters counters = manager->counters();
            least = std::min({least, counters.library.out, counters.readers.in});
        }
    });
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(simcore::unplug("A"));
        ASSERT_TRUE(waitForBoxes(0));
        ASSERT_TRUE(simcore::plug("A"));
        ASSERT_TRUE(waitForBoxes(1));
    }
    gone = true;
    reader.join();
    EXPECT_EQ(least, 2U);
}

TEST_F(VirtualBoxes, countsWhatABoxDeliveredThatDoesNotTellItsCounters) {
    ASSERT_TRUE(waitForBoxes(1));
    simcore::failCalls("A", "get_trace_counters", kRvErrorRefused, -1);
    auto collector = subscribe();
    ASSERT_EQ(manager->sendCanFrame(kBox, canFrame(1, {1})), BoxResult::Done);
    ASSERT_TRUE(collector->waitFor(2));
    const RoadCounters silent = manager->counters();
    EXPECT_TRUE(silent.library.balanced());
    EXPECT_EQ(silent.library.out, 2U);
    simcore::failCalls("A", "get_trace_counters", 0, 0);
    EXPECT_EQ(manager->counters().library.out, 2U);
}

TEST_F(VirtualBoxes, answersACommandThatWaitsWhileItsBoxIsUnplugged) {
    ASSERT_TRUE(waitForBoxes(1));
    simcore::slowCalls("A", "send_can_frame_once", 300, 1);
    const uint64_t before = simcore::callCount("send_can_frame_once");
    std::thread unplugger([&] {
        EXPECT_TRUE(waitUntil([&] { return simcore::callCount("send_can_frame_once") > before; }));
        EXPECT_TRUE(simcore::unplug("A"));
    });
    const BoxResult result = manager->sendCanFrame(kBox, canFrame(1, {1}));
    unplugger.join();
    EXPECT_TRUE(result == BoxResult::DeviceRefused || result == BoxResult::NotConnected ||
                result == BoxResult::Done)
        << static_cast<int>(result);
    EXPECT_TRUE(waitForBoxes(0));
}

struct RefusedSend {
    const char* name;
    std::function<void(CanSendFrame&)> spoil;
};

TEST_F(VirtualBoxes, refusesFramesThatNoBusCouldCarry) {
    ASSERT_TRUE(waitForBoxes(1));
    const RefusedSend rows[] = {
        {"elevenBits", [](CanSendFrame& f) { f.id = 0x800; }},
        {"twentyNineBits", [](CanSendFrame& f) { f.id = 0x20000000, f.extend.setIDE(true); }},
        {"dlcDiffers", [](CanSendFrame& f) { f.extend.setDLC(7); }},
        {"longClassic", [](CanSendFrame& f) { f.data.resize(12), f.extend.setDLC(9); }},
        {"remoteFd", [](CanSendFrame& f) { f.extend.setEDL(true), f.extend.setRTR(true); }},
        {"noSuchChannel", [](CanSendFrame& f) { f.channel = 99; }},
    };
    const uint64_t before = simcore::callCount("send_can_frame_once");
    for (const RefusedSend& row : rows) {
        CanSendFrame frame = canFrame(0x123, {1, 2, 3, 4, 5, 6, 7, 8});
        row.spoil(frame);
        EXPECT_EQ(manager->sendCanFrame(kBox, frame), BoxResult::InvalidParam) << row.name;
        EXPECT_EQ(manager->addSendCanFrame(kBox, {"g", frame, 10, 0, {}}), BoxResult::InvalidParam)
            << row.name;
    }
    EXPECT_EQ(simcore::callCount("send_can_frame_once"), before);
    simcore::failCalls("A", "send_can_frame_once", kRvErrorQueueFull, 1);
    EXPECT_EQ(manager->sendCanFrame(kBox, canFrame(1, {})), BoxResult::DeviceRefused);
    EXPECT_EQ(manager->addSendCanFrame(kBox, {"g", canFrame(1, {}), 0, 0, {}}),
              BoxResult::InvalidParam);
}

TEST_F(VirtualBoxes, keepsCounterAndCrcRightInEveryCyclicFrame) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = subscribe();
    CyclicCanFrame job;
    job.gid = "job";
    job.frame = canFrame(0x321, {0, 0xAA, 0xBB, 0, 0, 0, 0, 0});
    job.cycleMs = 2;
    job.limitCount = 40;
    job.update.counterEnabled = true;
    job.update.counterStartBit = 0;
    job.update.counterLength = 4;
    job.update.crcType = 4;  // CRC_8 SAE J1850
    job.update.crcStartBit = 56;
    job.update.crcLength = 8;
    ASSERT_EQ(manager->addSendCanFrame(kBox, job), BoxResult::Done);
    ASSERT_TRUE(collector->waitFor(80));  // each frame on channel 1 and as the sender's own
    unsigned expected = 0;
    for (const auto& frame : collector->seen()) {
        if (frame.direction != Direction::Received) continue;
        expected = (expected + 1) % 16;
        ASSERT_EQ(frame.data[0], expected);
        uint8_t crc = 0xFF;
        for (size_t i = 0; i < 7; ++i) {
            crc ^= frame.data[i];
            for (int bit = 0; bit < 8; ++bit) {
                crc = static_cast<uint8_t>((crc << 1) ^ ((crc & 0x80) != 0 ? 0x1D : 0));
            }
        }
        for (int bit = 0; bit < 8; ++bit) {  // the CRC's own byte counts as zero
            crc = static_cast<uint8_t>((crc << 1) ^ ((crc & 0x80) != 0 ? 0x1D : 0));
        }
        ASSERT_EQ(frame.data[7], crc ^ 0xFF);
    }
    EXPECT_EQ(expected, 40U % 16U);
    EXPECT_TRUE(waitUntil(
        [&] { return manager->removeSendCanFrame(kBox, "job") == BoxResult::NoSuchJob; }));
}

TEST_F(VirtualBoxes, pausesResumesUpdatesAndRemovesJobsByName) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = subscribe();
    ASSERT_EQ(manager->addSendCanFrame(kBox, {"j", canFrame(0x10, {1}), 5, 0, {}}),
              BoxResult::Done);
    ASSERT_EQ(manager->updateSendCanFrame(kBox, "j", canFrame(0x11, {2, 3}), 3), BoxResult::Done);
    ASSERT_TRUE(waitUntil([&] {
        const auto seen = collector->seen();
        return !seen.empty() && seen.back().id == 0x11;
    }));
    EXPECT_EQ(manager->pauseSendCanFrame(kBox, "j"), BoxResult::Done);
    EXPECT_EQ(manager->resumeSendCanFrame(kBox, "j"), BoxResult::Done);
    EXPECT_EQ(manager->removeSendCanFrame(kBox, "j"), BoxResult::Done);
    EXPECT_EQ(manager->removeSendCanFrame(kBox, "j"), BoxResult::NoSuchJob);
    EXPECT_EQ(manager->pauseSendCanFrame(kBox, "none"), BoxResult::NoSuchJob);
    FrameUpdate outside;
    outside.counterEnabled = true;
    outside.counterStartBit = 8;
    outside.counterLength = 8;
    EXPECT_EQ(manager->addSendCanFrame(kBox, {"k", canFrame(1, {1}), 5, 0, outside}),
              BoxResult::InvalidParam);
    EXPECT_EQ(manager->sendCanFrame(kBox, canFrame(1, {1}), &outside), BoxResult::InvalidParam);
}

TEST_F(VirtualBoxes, answersForTheJobsOfABoxThatIsGone) {
    ASSERT_TRUE(waitForBoxes(1));
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(manager->addSendCanFrame(
                      kBox, {"j" + std::to_string(i), canFrame(0x10, {1}), 10, 0, {}}),
                  BoxResult::Done);
    }
    ASSERT_TRUE(simcore::unplug("A"));
    ASSERT_TRUE(waitForBoxes(0));
    EXPECT_EQ(manager->removeSendCanFrame(kBox, "j0"), BoxResult::NoSuchDevice);
    ASSERT_TRUE(simcore::plug("A"));
    ASSERT_TRUE(waitForBoxes(1));
    EXPECT_EQ(manager->removeSendCanFrame(kBox, "j0"), BoxResult::NoSuchJob);
}

TEST_F(VirtualBoxes, runsALinScheduleTableUntilItIsStopped) {
    ASSERT_TRUE(waitForBoxes(1));
    auto collector = subscribe();
    const std::vector<LinSlot> slots = {{0x10, 5, 4, 1, {1, 2}}, {0x11, 5, 4, 0, {3}}};
    ASSERT_EQ(manager->startLinScheduleTable(kBox, 0, "table", slots), BoxResult::Done);
    ASSERT_TRUE(collector->waitFor(12));
    EXPECT_EQ(manager->stopLinScheduleTable(kBox, 0), BoxResult::Done);
    const auto seen = collector->seen();
    EXPECT_EQ(seen[0].type, FrameType::Lin);
    std::vector<uint32_t> ids;
    for (const auto& frame : seen) {
        if (frame.direction == Direction::Received) ids.push_back(frame.id);
    }
    for (size_t i = 1; i < ids.size(); ++i) EXPECT_NE(ids[i], ids[i - 1]) << "slots take turns";
    EXPECT_NE(manager->stopLinScheduleTable(kBox, 0), BoxResult::Done);  // none runs
    EXPECT_EQ(manager->stopLinScheduleTable(kBox, 99), BoxResult::InvalidParam);
    EXPECT_NE(manager->startLinScheduleTable(kBox, 99, "table", slots), BoxResult::Done);
    EXPECT_EQ(manager->startLinScheduleTable(kBox, 0, "bad", {{64, 5, 4, 0, {}}}),
              BoxResult::InvalidParam);
}

}  // namespace
}  // namespace rv
