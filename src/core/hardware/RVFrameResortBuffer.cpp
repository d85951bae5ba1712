#include "core/hardware/RVFrameResortBuffer.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace rv {
namespace {

int64_t wallClockMs() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

// Negative while the frame is younger than the hold time.
int64_t ageBeyondHold(int64_t nowMs, const Frame& frame, int64_t holdUs) {
    return nowMs * 1'000'000 - (int64_t{frame.seconds} * 1'000'000 + holdUs) * 1000 -
           int64_t{frame.nanoseconds};
}

}  // namespace

RVFrameResortBuffer::RVFrameResortBuffer(WallClock clock)
    : m_clock(clock ? std::move(clock) : WallClock(wallClockMs)) {}

void RVFrameResortBuffer::push(ReceivedFrame record) {
    const uint64_t key = record.frame->timestampNs();
    const std::lock_guard lock(m_mutex);
    m_incoming.push_back({key, std::move(record)});
    ++m_pushed;
}

void RVFrameResortBuffer::push(std::span<FrameHolder> frames,
                               const std::shared_ptr<const Subscription>& share) {
    const std::lock_guard lock(m_mutex);
    for (FrameHolder& frame : frames) {
        const uint64_t key = frame->timestampNs();
        m_incoming.push_back({key, {std::move(frame), share}});
    }
    m_pushed += frames.size();
}

std::vector<ReceivedFrame> RVFrameResortBuffer::take(int64_t holdUs) {
    const std::lock_guard lock(m_mutex);
    sortIncoming();
    mergeIncoming();
    const int64_t nowMs = m_clock();
    // The queue is in order, so the first frame that is too young ends the released part.
    const auto begin = m_sorted.begin() + static_cast<std::ptrdiff_t>(m_first);
    const auto end = std::partition_point(begin, m_sorted.end(), [&](const Entry& entry) {
        return ageBeyondHold(nowMs, *entry.record.frame, holdUs) >= 0;
    });
    const auto count = static_cast<size_t>(end - begin);
    std::vector<ReceivedFrame> released;
    released.reserve(count);
    for (auto entry = begin; entry != end; ++entry) released.push_back(std::move(entry->record));
    m_first += count;
    m_released += count;
    dropReleased();
    return released;
}

// What came since the last take is a handful of runs, each in order, one or more for each reader.
// They are merged pairwise; a single run costs one look.
void RVFrameResortBuffer::sortIncoming() {
    const auto earlier = [](const Entry& a, const Entry& b) { return a.key < b.key; };
    std::vector<size_t> ends;
    for (auto run = m_incoming.begin(); run != m_incoming.end();) {
        run = std::is_sorted_until(run, m_incoming.end(), earlier);
        ends.push_back(static_cast<size_t>(run - m_incoming.begin()));
    }
    while (ends.size() > 1) {
        m_scratch.clear();
        m_scratch.reserve(m_incoming.size());
        std::vector<size_t> merged;
        size_t begin = 0;
        for (size_t i = 0; i < ends.size(); i += 2) {
            const size_t middle = ends[i];
            const size_t end = i + 1 < ends.size() ? ends[i + 1] : middle;
            const auto at = [this](size_t index) {
                return std::make_move_iterator(m_incoming.begin() +
                                               static_cast<std::ptrdiff_t>(index));
            };
            std::merge(at(begin), at(middle), at(middle), at(end), std::back_inserter(m_scratch),
                       earlier);
            merged.push_back(end);
            begin = end;
        }
        m_incoming.swap(m_scratch);
        ends.swap(merged);
    }
    m_scratch.clear();
}

// Appends what came to the queue; only the part that overlaps it is merged.
void RVFrameResortBuffer::mergeIncoming() {
    if (m_incoming.empty()) return;
    const auto earlier = [](const Entry& a, const Entry& b) { return a.key < b.key; };
    const auto middle = static_cast<std::ptrdiff_t>(m_sorted.size());
    const uint64_t firstKey = m_incoming.front().key;
    std::move(m_incoming.begin(), m_incoming.end(), std::back_inserter(m_sorted));
    m_incoming.clear();
    const auto queue = m_sorted.begin() + static_cast<std::ptrdiff_t>(m_first);
    const auto overlap =
        std::upper_bound(queue, m_sorted.begin() + middle, firstKey,
                         [](uint64_t key, const Entry& entry) { return key < entry.key; });
    std::inplace_merge(overlap, m_sorted.begin() + middle, m_sorted.end(), earlier);
}

// Closes the gap that the released frames left, once it is the larger part; gives memory back that
// a burst took.
void RVFrameResortBuffer::dropReleased() {
    if (m_first * 2 < m_sorted.size()) return;
    m_sorted.erase(m_sorted.begin(), m_sorted.begin() + static_cast<std::ptrdiff_t>(m_first));
    m_first = 0;
    constexpr size_t kKeep = 4096;
    if (m_sorted.capacity() > kKeep && m_sorted.capacity() > 8 * m_sorted.size()) {
        std::vector<Entry> smaller;
        smaller.reserve(2 * m_sorted.size());
        std::move(m_sorted.begin(), m_sorted.end(), std::back_inserter(smaller));
        m_sorted.swap(smaller);
        m_incoming.shrink_to_fit();
        m_scratch.shrink_to_fit();
    }
}

uint64_t RVFrameResortBuffer::overdueUs(int64_t holdUs) const {
    const std::lock_guard lock(m_mutex);
    int64_t oldest = 0;
    const int64_t nowMs = m_clock();
    if (m_first < m_sorted.size()) {
        oldest = ageBeyondHold(nowMs, *m_sorted[m_first].record.frame, holdUs);
    }
    if (!m_incoming.empty()) {
        oldest = std::max(oldest, ageBeyondHold(nowMs, *m_incoming.front().record.frame, holdUs));
    }
    return static_cast<uint64_t>(std::max<int64_t>(oldest, 0)) / 1000;
}

HandOver RVFrameResortBuffer::counters() const {
    const std::lock_guard lock(m_mutex);
    return {m_pushed, m_released, m_sorted.size() - m_first + m_incoming.size(), 0};
}

}  // namespace rv
