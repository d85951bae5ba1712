#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <initializer_list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "simcore/libsimcore.h"
#include "simcore/virtual_network.h"

namespace simtest {

inline constexpr uint64_t kMs = 1'000'000;
inline constexpr uint64_t kStartNs = 1'700'000'000'000'000'000;

inline RvCanFrame canFrame(uint32_t id, std::initializer_list<uint8_t> data, uint8_t channel = 0) {
    RvCanFrame frame;
    frame.id = id;
    frame.channel = channel;
    frame.length = static_cast<uint8_t>(data.size());
    std::copy(data.begin(), data.end(), frame.data);
    return frame;
}

template <class Frame>
uint64_t stampOf(const Frame& frame) {
    return frame.seconds * 1'000'000'000ULL + frame.nanoseconds;
}

// Values that callbacks leave for the test, which waits for them instead of sleeping.
template <class Value>
class Mailbox {
public:
    void put(Value value) {
        {
            const std::lock_guard lock(m_mutex);
            m_values.push_back(std::move(value));
        }
        m_wake.notify_all();
    }
    // False when the condition does not come true within a time that only a hang exceeds.
    template <class Condition>
    bool waitUntil(Condition condition) {
        std::unique_lock lock(m_mutex);
        return m_wake.wait_for(lock, std::chrono::seconds(60), [&] { return condition(m_values); });
    }
    bool waitFor(const Value& value) {
        return waitUntil([&](const auto& values) {
            return std::find(values.begin(), values.end(), value) != values.end();
        });
    }
    std::vector<Value> values() {
        const std::lock_guard lock(m_mutex);
        return m_values;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::vector<Value> m_values;
};

// A fresh network on the manual clock; every test begins with one of its own.
class SimTest : public ::testing::Test {
protected:
    void load(const std::string& document) {
        simcore::useManualClock(kStartNs);
        std::string reason;
        ASSERT_TRUE(simcore::loadNetwork(document, reason)) << reason;
        ASSERT_EQ(rvhub4e_init(), 0) << rvhub4e_last_error();
    }
    std::vector<int32_t> scan() {
        std::vector<int32_t> handles(64);
        int32_t count = 64;
        const RvHub4eScanParams params;
        EXPECT_EQ(scan_rvhub4e(handles.data(), &count, 0, &params), 0);
        handles.resize(static_cast<size_t>(count));
        return handles;
    }
    // Handle of the first box, open and tracing.
    int32_t openFirst() {
        const auto handles = scan();
        EXPECT_FALSE(handles.empty());
        if (handles.empty()) return 0;
        EXPECT_EQ(open_device(handles[0]), 0);
        EXPECT_EQ(start_trace(handles[0]), 0);
        return handles[0];
    }
    static std::vector<RvCanFrame> readCan(int32_t handle) {
        std::vector<RvCanFrame> frames(4096);
        int32_t count = 0;
        EXPECT_EQ(read_can_frames(handle, frames.data(), 4096, &count), 0);
        frames.resize(static_cast<size_t>(count));
        return frames;
    }
    static std::vector<RvLinFrame> readLin(int32_t handle) {
        std::vector<RvLinFrame> frames(4096);
        int32_t count = 0;
        EXPECT_EQ(read_lin_frames(handle, frames.data(), 4096, &count), 0);
        frames.resize(static_cast<size_t>(count));
        return frames;
    }
};

}  // namespace simtest
