#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace playback {

// Ring of batches between two threads, one that fills and one that empties. The two indices are all
// they share, so no lock is taken. One slot always stays unused: a ring of 100 holds 99 batches.
template <class Batch>
class BatchRing {
public:
    static constexpr size_t kSlots = 100;

    [[nodiscard]] bool full() const {
        return (m_write.load(std::memory_order_relaxed) + 1) % kSlots ==
               m_read.load(std::memory_order_acquire);
    }
    [[nodiscard]] bool empty() const {
        return m_read.load(std::memory_order_relaxed) == m_write.load(std::memory_order_acquire);
    }
    // Batches that wait. Exact on either thread while the other one stands still.
    [[nodiscard]] size_t size() const {
        return (m_write.load(std::memory_order_acquire) + kSlots -
                m_read.load(std::memory_order_acquire)) %
               kSlots;
    }

    // Filling side, while not full: the slot is filled in place and then handed over.
    [[nodiscard]] Batch& writeSlot() { return m_slots[m_write.load(std::memory_order_relaxed)]; }
    void push() {
        m_write.store((m_write.load(std::memory_order_relaxed) + 1) % kSlots,
                      std::memory_order_release);
    }
    // Emptying side, while not empty: the slot is used in place and then given back.
    [[nodiscard]] Batch& readSlot() { return m_slots[m_read.load(std::memory_order_relaxed)]; }
    void pop() {
        m_read.store((m_read.load(std::memory_order_relaxed) + 1) % kSlots,
                     std::memory_order_release);
    }
    // Empties every slot; neither side may be at work.
    void reset() {
        for (Batch& slot : m_slots) slot.clear();
        m_read = 0;
        m_write = 0;
    }

private:
    std::array<Batch, kSlots> m_slots;
    alignas(64) std::atomic<size_t> m_read{0};
    alignas(64) std::atomic<size_t> m_write{0};
};

}  // namespace playback
