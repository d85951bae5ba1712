#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace simcore::engine {

struct TraceCounters {
    uint64_t queued = 0;
    uint64_t read = 0;
    uint64_t dropped = 0;
    uint64_t discarded = 0;
};

// Frames of one kind on their way from a box to its reader. Bounded: frames that find it full are
// dropped and counted. Memory grows in blocks as frames wait and a few blocks are kept for use
// again. Writers and the reader meet only at the queue's own lock, once per batch.
template <class Frame>
class TraceQueue {
public:
    explicit TraceQueue(size_t capacity) : m_capacity(capacity) {}

    // Makes room for `count` frames and has fill(index, frame) write each in place; frames beyond
    // the capacity are dropped.
    template <class Fill>
    void append(size_t count, Fill&& fill) {
        const std::lock_guard lock(m_mutex);
        const size_t taken = std::min(count, m_capacity - m_size.load(std::memory_order_relaxed));
        for (size_t i = 0; i < taken; ++i) {
            if (m_writeAt == kBlockFrames || m_blocks.empty()) addBlock();
            fill(i, (*m_blocks.back())[m_writeAt++]);
        }
        m_counters.queued += taken;
        m_counters.dropped += count - taken;
        m_size.fetch_add(taken);
    }

    // Hands out up to `count` frames in the order in which they came.
    size_t read(Frame* out, size_t count) {
        const std::lock_guard lock(m_mutex);
        const size_t taken = std::min(count, m_size.load(std::memory_order_relaxed));
        for (size_t done = 0; done < taken;) {
            const size_t run = std::min(taken - done, kBlockFrames - m_readAt);
            std::copy_n(m_blocks.front()->begin() + static_cast<std::ptrdiff_t>(m_readAt), run,
                        out + done);
            done += run;
            m_readAt += run;
            if (m_readAt == kBlockFrames) dropFront();
        }
        m_counters.read += taken;
        m_size.fetch_sub(taken);
        return taken;
    }

    void discard() {
        const std::lock_guard lock(m_mutex);
        clear();
    }

    // Empties the queue and counts from zero.
    void reset() {
        const std::lock_guard lock(m_mutex);
        clear();
        m_counters = {};
    }

    // Frames that wait now; exact only for somebody who keeps writers and the reader out.
    [[nodiscard]] size_t size() const { return m_size.load(); }
    // Sources without a pace of their own stop when so many frames wait, and go on when the reader
    // has brought them down to half of it.
    [[nodiscard]] size_t highWater() const { return std::max<size_t>(m_capacity / 8, 1); }
    [[nodiscard]] bool roomy() const { return size() <= highWater() / 2; }

    void addTo(TraceCounters& sum) const {
        const std::lock_guard lock(m_mutex);
        sum.queued += m_counters.queued;
        sum.read += m_counters.read;
        sum.dropped += m_counters.dropped;
        sum.discarded += m_counters.discarded;
    }

private:
    static constexpr size_t kBlockBytes = 32768;
    static constexpr size_t kBlockFrames = std::max<size_t>(16, kBlockBytes / sizeof(Frame));
    static constexpr size_t kSpareBlocks = 8;
    using Block = std::array<Frame, kBlockFrames>;

    void addBlock() {
        if (m_spare.empty()) {
            m_blocks.push_back(std::make_unique<Block>());
        } else {
            m_blocks.push_back(std::move(m_spare.back()));
            m_spare.pop_back();
        }
        m_writeAt = 0;
    }
    void dropFront() {
        if (m_spare.size() < kSpareBlocks) m_spare.push_back(std::move(m_blocks.front()));
        m_blocks.pop_front();
        m_readAt = 0;
    }
    void clear() {
        m_counters.discarded += m_size.load();
        m_size = 0;
        m_blocks.clear();
        m_spare.clear();
        m_readAt = 0;
        m_writeAt = 0;
    }

    const size_t m_capacity;
    mutable std::mutex m_mutex;
    std::deque<std::unique_ptr<Block>> m_blocks;  // never holds a block that was read to its end
    std::vector<std::unique_ptr<Block>> m_spare;
    size_t m_readAt = 0;   // in the first block
    size_t m_writeAt = 0;  // in the last block
    std::atomic<size_t> m_size{0};
    TraceCounters m_counters;
};

}  // namespace simcore::engine
