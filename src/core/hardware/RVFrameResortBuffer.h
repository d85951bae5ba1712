#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "core/hardware/ReceiveCallback.h"
#include "core/hardware/boxdev/HandOverCounters.h"

namespace rv {

// What all frames of one subscription share.
struct Subscription {
    ReceiveCallback callback;
    FrameInfo info;
    uint8_t flag = 0;
};

// One received frame on its way to the subscriber: the frame and its share of the subscription, so
// that a copy costs one reference count.
struct ReceivedFrame {
    FrameHolder frame;
    std::shared_ptr<const Subscription> subscription;
};

// Holds every received frame for a fixed time and then releases frames strictly in time-stamp
// order, so that subscribers see one merged stream. Frames come from several reader threads; one
// thread takes. Without a capacity limit: nothing that was received is lost here.
class RVFrameResortBuffer {
public:
    // Wall clock in whole milliseconds since 1970, replaceable for tests.
    using WallClock = std::function<int64_t()>;
    explicit RVFrameResortBuffer(WallClock clock = {});

    void push(ReceivedFrame record);
    // Pushes a batch that shares one subscription under one lock; the holders are moved from.
    void push(std::span<FrameHolder> frames, const std::shared_ptr<const Subscription>& share);

    // Every frame at least `holdUs` old, in time-stamp order. Frames with equal stamps leave in no
    // fixed order.
    [[nodiscard]] std::vector<ReceivedFrame> take(int64_t holdUs);

    // Microseconds by which the oldest held frame has outlived its hold time; 0 when none has.
    [[nodiscard]] uint64_t overdueUs(int64_t holdUs) const;

    [[nodiscard]] HandOver counters() const;

private:
    struct Entry {
        uint64_t key;
        ReceivedFrame record;
    };

    void sortIncoming();
    void mergeIncoming();
    void dropReleased();

    WallClock m_clock;
    mutable std::mutex m_mutex;
    // All guarded by m_mutex. The queue is m_sorted from m_first on, then m_incoming.
    std::vector<Entry> m_sorted;
    size_t m_first = 0;
    std::vector<Entry> m_incoming;
    std::vector<Entry> m_scratch;
    uint64_t m_pushed = 0;
    uint64_t m_released = 0;
};

}  // namespace rv
