#pragma once

#include <gtest/gtest.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/hardware/RVBoxManager.h"
#include "core/hardware/boxdev/DeviceManager.h"
#include "simcore/virtual_network.h"

namespace rv {

inline const QString kBox = "02:00:00:00:00:0A";

// Keeps what is delivered and lets a test wait for it.
class Collector final : public FrameReceiver {
public:
    struct Seen {
        FrameType type;
        uint32_t id;
        uint64_t stampNs;
        Direction direction;
        uint8_t channel;
        std::vector<uint8_t> data;
    };

    void deliver(FrameType type, FrameHolder& frame, const FrameInfo& /*info*/) override {
        if (onFrame) onFrame(*frame);
        const auto payload = frame->payload();
        {
            const std::lock_guard lock(m_mutex);
            m_seen.push_back({type,
                              frame->id,
                              frame->timestampNs(),
                              frame->direction,
                              frame->channel,
                              {payload.begin(), payload.end()}});
        }
        m_wake.notify_all();
    }

    // True as soon as at least `count` frames were delivered.
    bool waitFor(size_t count) {
        std::unique_lock lock(m_mutex);
        return m_wake.wait_for(lock, std::chrono::seconds(60),
                               [&] { return m_seen.size() >= count; });
    }
    [[nodiscard]] std::vector<Seen> seen() const {
        const std::lock_guard lock(m_mutex);
        return m_seen;
    }

    std::function<void(const Frame&)> onFrame;  // set before the first frame

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::vector<Seen> m_seen;
};

inline bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// A box manager over a virtual network with one box "A" whose CAN channels 0 and 1 and LIN channels
// 0 and 1 share a bus each.
class VirtualBoxes : public ::testing::Test {
protected:
    static constexpr const char* kMac = "02:00:00:00:00:0A";

    void SetUp() override {
        spdlog::set_level(spdlog::level::off);
        load(R"({"boxes": [{"name": "A", "mac": "02:00:00:00:00:0A", "serial": "S1"}]})");
    }
    void TearDown() override {
        manager.reset();
        RV::BoxDev::DeviceManager::instance().stop();
        simcore::failCalls("", "get_device_info", 0, 0);
    }

    // Replaces the network and starts a manager on it.
    void load(const std::string& document) {
        manager.reset();
        RV::BoxDev::DeviceManager::instance().stop();
        std::string reason;
        ASSERT_TRUE(simcore::loadNetwork(document, reason)) << reason;
        manager = std::make_unique<RVBoxManager>();
        ASSERT_TRUE(manager->init([this](const std::shared_ptr<DeviceNotice>& notice) {
            const std::lock_guard lock(noticeMutex);
            notices.push_back(*notice);
        }));
    }
    bool waitForBoxes(size_t count) {
        return waitUntil([&] { return manager->deviceMacs().size() == count; });
    }
    bool waitForNotice(uint32_t type) {
        return waitUntil([&] {
            const std::lock_guard lock(noticeMutex);
            for (const DeviceNotice& notice : notices) {
                if (notice.type == type) return true;
            }
            return false;
        });
    }
    std::shared_ptr<Collector> subscribe() {
        auto collector = std::make_shared<Collector>();
        EXPECT_TRUE(manager->start(QString(kMac), {collector, 0}));
        return collector;
    }
    static CanSendFrame canFrame(uint32_t id, std::vector<uint8_t> data, uint8_t channel = 0) {
        CanSendFrame frame;
        frame.channel = channel;
        frame.id = id;
        frame.extend.setDLC(static_cast<uint8_t>(data.size()));
        frame.data = std::move(data);
        return frame;
    }

    std::unique_ptr<RVBoxManager> manager;
    std::mutex noticeMutex;
    std::vector<DeviceNotice> notices;  // guarded by noticeMutex
};

}  // namespace rv
