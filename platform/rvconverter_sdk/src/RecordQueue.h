#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

#include "rvconverter/RecordHandle.h"

namespace rv {

// Lists of records between the threads that hand over and the one that converts. Bounded by bytes:
// beyond the bound the newest list is dropped and remembered as a loss at its place in time.
class RecordQueue {
public:
    struct Loss {
        uint64_t frames = 0;
        uint64_t firstNs = 0;  // since the epoch
        uint64_t lastNs = 0;
    };
    struct Batch {
        Loss before;  // what was dropped between the batch before and this one
        std::vector<RecordHandle> records;
        size_t bytes = 0;  // memory of the records and their list
    };

    explicit RecordQueue(size_t maxBytes) : m_maxBytes(maxBytes) {}

    // Never waits. False when the list was dropped, because of the bound or after close().
    bool push(std::vector<RecordHandle>&& records);

    // Waits for a list; empty once the queue is closed and drained. A loss behind the last list
    // comes with a batch of no records.
    [[nodiscard]] std::optional<Batch> pop();

    // No list will follow; wakes the consumer.
    void close();

    [[nodiscard]] bool empty() const;
    [[nodiscard]] uint64_t waitingRecords() const;

private:
    void drop(const std::vector<RecordHandle>& records);  // with the mutex held

    const size_t m_maxBytes;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Batch> m_batches;  // guarded by m_mutex, as all below
    size_t m_bytes = 0;
    uint64_t m_records = 0;
    Loss m_loss;  // since the last list that was taken in
    bool m_closed = false;
};

}  // namespace rv
