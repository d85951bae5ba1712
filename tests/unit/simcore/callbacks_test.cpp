#include <atomic>
#include <optional>
#include <tuple>

#include "support.h"

using simtest::canFrame;
using simtest::kMs;
using simtest::Mailbox;
using simtest::SimTest;

namespace {

using StateBox = Mailbox<int32_t>;
using EventBox = Mailbox<std::tuple<int, int, int>>;  // type, channel, value

void onState(int32_t /*handle*/, int32_t state, void* context) {
    static_cast<StateBox*>(context)->put(state);
}
void onEvent(int32_t /*handle*/, const RvDeviceEvent* event, void* context) {
    if (event->kind == RvEventDipStatus) {
        static_cast<EventBox*>(context)->put({100, event->dip.sel1, event->dip.program});
        return;
    }
    static_cast<EventBox*>(context)->put({event->type, event->channel, event->value});
}

class Callbacks : public SimTest {
protected:
    void SetUp() override {
        load(R"({"boxes": [{"name": "B"}, {"name": "gone", "plugged": false}]})");
    }
};

TEST_F(Callbacks, statesOfASession) {
    const int32_t handle = scan().at(0);
    StateBox states;
    ASSERT_EQ(set_device_state_callback(handle, onState, &states), 0);
    ASSERT_EQ(open_device(handle), 0);
    ASSERT_TRUE(simcore::unplug("B"));
    EXPECT_TRUE(states.waitFor(RvDeviceStateDisconnected));
    EXPECT_EQ(states.values(),
              (std::vector<int32_t>{RvDeviceStateConnecting, RvDeviceStateConnected,
                                    RvDeviceStateDisconnected}));
    // Also a box that has left lets its callback be cleared.
    EXPECT_EQ(set_device_state_callback(handle, nullptr, nullptr), kRvErrorGone);
}

TEST_F(Callbacks, busStatusTimeoutAndDipSwitch) {
    const int32_t handle = openFirst();
    EventBox events;
    ASSERT_EQ(set_event_callback(handle, onEvent, &events), 0);
    ASSERT_TRUE(simcore::setBusStatus("B", 2, RvCanBusStatusTypeBusPassive));
    EXPECT_TRUE(events.waitFor({RvConnectionEventTypeBusStatus, 2, RvCanBusStatusTypeBusPassive}));
    int32_t status = -1;
    ASSERT_EQ(get_can_bus_status(handle, 2, &status), 0);
    EXPECT_EQ(status, RvCanBusStatusTypeBusPassive);
    ASSERT_TRUE(simcore::raiseBusTimeout("B", 1));
    EXPECT_TRUE(events.waitFor({RvConnectionEventTypeBusTimeout, 1, 0}));
    RvDipStatus dip;
    dip.sel1 = 1;
    ASSERT_TRUE(simcore::setDipStatus("B", dip));
    EXPECT_TRUE(events.waitFor({100, 1, 0}));
    EXPECT_FALSE(simcore::setBusStatus("B", 99, 0));
    EXPECT_FALSE(simcore::setBusStatus("nobody", 0, 0));
    ASSERT_EQ(set_event_callback(handle, nullptr, nullptr), 0);
}

TEST_F(Callbacks, clearingWaitsForTheRunningCall) {
    const int32_t handle = scan().at(0);
    ASSERT_EQ(open_device(handle), 0);
    struct Slow {
        Mailbox<int> entered;
        Mailbox<int> release;
        std::atomic<bool> left{false};
    } slow;
    const auto block = [](int32_t, const RvDeviceEvent*, void* context) {
        auto* self = static_cast<Slow*>(context);
        self->entered.put(1);
        self->release.waitFor(1);
        self->left = true;
    };
    ASSERT_EQ(set_event_callback(handle, block, &slow), 0);
    ASSERT_TRUE(simcore::raiseBusTimeout("B", 0));
    ASSERT_TRUE(slow.entered.waitFor(1));
    std::thread clearing([&] {
        EXPECT_EQ(set_event_callback(handle, nullptr, nullptr), 0);
        EXPECT_TRUE(slow.left);  // not before the running call was over
    });
    slow.release.put(1);
    clearing.join();
    simcore::raiseBusTimeout("B", 0);
    EXPECT_EQ(slow.entered.values().size(), 1U);
}

TEST_F(Callbacks, aBoxThatComesBackHasANewHandle) {
    const int32_t before = openFirst();
    ASSERT_TRUE(simcore::unplug("B"));
    EXPECT_TRUE(scan().empty());
    RvCanFrame frame;
    int32_t count = 7;
    EXPECT_EQ(read_can_frames(before, &frame, 1, &count), kRvErrorGone);
    EXPECT_EQ(count, 0);
    ASSERT_TRUE(simcore::plug("B"));
    const auto after = scan();
    ASSERT_EQ(after.size(), 1U);
    EXPECT_NE(after[0], before);
    EXPECT_EQ(send_can_frame_once(before, &frame), kRvErrorGone);
    EXPECT_EQ(send_can_frame_once(after[0], &frame), kRvErrorNotOpen);
    EXPECT_EQ(open_device(after[0]), 0);
    EXPECT_EQ(open_device(after[0]), kRvErrorRefused);
    EXPECT_EQ(send_can_frame_once(after[0], &frame), 0);
    ASSERT_TRUE(simcore::plug("gone"));
    EXPECT_EQ(scan().size(), 2U);
}

TEST_F(Callbacks, callsFailAndAreCounted) {
    const int32_t handle = scan().at(0);
    RvHub4eDeviceInfo info{};
    const uint64_t before = simcore::callCount("get_device_info");
    simcore::failCalls("B", "get_device_info", kRvErrorRefused, 2);
    EXPECT_EQ(get_device_info(handle, &info), kRvErrorRefused);
    EXPECT_EQ(get_device_info(handle, &info), kRvErrorRefused);
    EXPECT_EQ(get_device_info(handle, &info), 0);
    simcore::failCalls("other", "get_device_info", 99, -1);
    EXPECT_EQ(get_device_info(handle, &info), 0);
    simcore::failCalls("", "get_device_info", 99, -1);
    EXPECT_EQ(get_device_info(handle, &info), 99);
    simcore::failCalls("", "get_device_info", 99, 0);
    EXPECT_EQ(get_device_info(handle, &info), 0);
    EXPECT_EQ(simcore::callCount("get_device_info"), before + 6);
}

TEST_F(Callbacks, aSlowCallTakesTimeOfTheManualClock) {
    const int32_t handle = scan().at(0);
    simcore::slowCalls("B", "get_device_info", 50, 1);
    const uint64_t before = simcore::callCount("get_device_info");
    std::atomic<bool> done{false};
    std::thread caller([&] {
        RvHub4eDeviceInfo info{};
        EXPECT_EQ(get_device_info(handle, &info), 0);
        done = true;
    });
    while (simcore::callCount("get_device_info") == before) std::this_thread::yield();
    simcore::advance(20 * kMs);
    EXPECT_FALSE(done);
    while (!done) simcore::advance(10 * kMs);
    caller.join();
}

struct Observer final : RvDeviceFounderObserver, RvDeviceConnectionObserver {
    void onDeviceFound(const RvDeviceDesc& desc) override { log.put({"found", desc.serial}); }
    void onDeviceChanged(const RvDeviceDesc& desc) override { log.put({"changed", desc.serial}); }
    void onDeviceLost(const RvDeviceDesc& desc) override { log.put({"lost", desc.serial}); }
    void onConnectionEvent(RvConnectionEventType type, int32_t channel, int32_t value) override {
        log.put({"event", std::to_string(type) + " " + std::to_string(channel) + " " +
                              std::to_string(value)});
    }
    Mailbox<std::pair<std::string, std::string>> log;
};

class Founder : public SimTest {
protected:
    void SetUp() override {
        load(R"({"boxes": [{"name": "net", "channels": {"can": ["bus"]}}],
                 "usb": [{"name": "u1", "model": "USB-CAN", "serial": "S1", "path": "p1",
                          "snr": "0102", "channels": {"can": ["bus"]}},
                         {"name": "u2", "model": "RV-CANFD2", "serial": "S2", "path": "p2"},
                         {"name": "u3", "model": "ETAS", "serial": "S3", "path": "p3"}]})");
        ASSERT_TRUE(RvDeviceFounder::instance()->init({}, nullptr));
        RvDeviceFounder::instance()->addObserver(&m_observer);
        ASSERT_TRUE(RvDeviceFounder::instance()->start(false));
    }
    void TearDown() override { RvDeviceFounder::instance()->removeObserver(&m_observer); }
    Observer m_observer;
};

TEST_F(Founder, reportsUsbDevicesAndTheirChanges) {
    ASSERT_TRUE(m_observer.log.waitFor({"found", "S3"}));
    auto infos = RvDeviceFounder::instance()->getDeviceInfos();
    ASSERT_EQ(infos.size(), 3U);
    EXPECT_EQ(infos[0].getType(), RvDeviceTypeUsbCan);
    EXPECT_STREQ(infos[0].getDeviceModel(), "USB-CAN");
    EXPECT_STREQ(infos[1].getDeviceModel(), "RV-CANFD2");
    EXPECT_EQ(infos[1].getType(), RvDeviceTypeUsbCan);
    EXPECT_EQ(infos[2].getType(), RvDeviceTypeEtas);
    EXPECT_EQ(infos[1].getCanCount(), 2);
    char names[4][64];
    int count = 4;
    ASSERT_TRUE(infos[1].getChannels(names, count));
    EXPECT_EQ(count, 2);
    EXPECT_STREQ(names[1], "CAN2");

    RvDeviceDesc desc;
    ASSERT_TRUE(simcore::describeDevice("u1", desc));
    std::strcpy(desc.serial, "S9");
    desc.status[3] = 1;
    ASSERT_TRUE(simcore::changeDevice("u1", desc));
    EXPECT_TRUE(m_observer.log.waitFor({"changed", "S9"}));
    ASSERT_TRUE(simcore::unplug("u2"));
    EXPECT_TRUE(m_observer.log.waitFor({"lost", "S2"}));
    EXPECT_EQ(RvDeviceFounder::instance()->getDeviceInfos().size(), 2U);
    ASSERT_TRUE(simcore::plug("u2"));
    EXPECT_TRUE(m_observer.log.waitFor({"found", "S2"}));
    // Network boxes are not reported on this route.
    for (const auto& [what, serial] : m_observer.log.values()) EXPECT_EQ(serial[0], 'S');
}

TEST_F(Founder, aConnectionReadsAndSends) {
    const int32_t net = openFirst();
    EXPECT_EQ(RvDeviceConnection::create(static_cast<RvConnectionType>(9)), nullptr);
    RvDeviceConnection* usb = RvDeviceConnection::create(RvConnectionTypeUsb);
    EXPECT_FALSE(usb->open("p3", &m_observer));  // not this type of connection
    ASSERT_TRUE(usb->open("p1", &m_observer));
    unsigned char serial[16] = {};
    ASSERT_TRUE(usb->flushSriNo(serial, 16));
    EXPECT_EQ(serial[1], 2);
    ASSERT_EQ(usb->startTracing(), 0);
    EXPECT_TRUE(m_observer.log.waitFor({"event", "2 0 0"}));

    RvCanChannelConfig config;
    ASSERT_EQ(usb->getCanConfig(0, &config), 0);
    config.listenOnly = 1;
    ASSERT_EQ(usb->setCanConfig(0, &config), 0);
    const RvCanFrame frame = canFrame(0x77, {9});
    EXPECT_EQ(usb->sendCanFrame(&frame), kRvErrorRefused);
    ASSERT_EQ(send_can_frame_once(net, &frame), 0);
    RvCanFrame out[4];
    int32_t count = 0;
    ASSERT_EQ(usb->readCanFrames(out, 4, &count), 0);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(out[0].id, 0x77U);

    ASSERT_TRUE(simcore::unplug("u1"));
    EXPECT_TRUE(m_observer.log.waitFor({"lost", "S1"}));
    EXPECT_EQ(usb->readCanFrames(out, 4, &count), kRvErrorGone);
    usb->close();
    EXPECT_EQ(usb->startTracing(), kRvErrorNotOpen);
    RvDeviceConnection::destroy(usb);
}

}  // namespace
