#include "RecordQueue.h"

#include <algorithm>

#include "record_frame.h"

namespace rv {

namespace {

// Memory that a list holds: its handles and its records.
size_t bytesOf(const std::vector<RecordHandle>& records) {
    size_t bytes = records.capacity() * sizeof(RecordHandle);
    for (const RecordHandle& record : records) bytes += record.size();
    return bytes;
}

}  // namespace

bool RecordQueue::push(std::vector<RecordHandle>&& records) {
    // Taken over here, so that a dropped list is freed too, and freed without the mutex.
    std::vector<RecordHandle> taken = std::move(records);
    const size_t bytes = bytesOf(taken);
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed || m_bytes + bytes > m_maxBytes) {
            drop(taken);
            return false;
        }
        m_bytes += bytes;
        m_records += taken.size();
        m_batches.push_back({m_loss, std::move(taken), bytes});
        m_loss = {};
    }
    m_wake.notify_one();
    return true;
}

void RecordQueue::drop(const std::vector<RecordHandle>& records) {
    for (const RecordHandle& record : records) {
        if (!record) continue;
        const uint64_t time = recordTimeNs(record);
        m_loss.firstNs = m_loss.frames == 0 ? time : std::min(m_loss.firstNs, time);
        m_loss.lastNs = std::max(m_loss.lastNs, time);
        ++m_loss.frames;
    }
}

std::optional<RecordQueue::Batch> RecordQueue::pop() {
    std::unique_lock lock(m_mutex);
    m_wake.wait(lock, [this] { return m_closed || !m_batches.empty(); });
    if (m_batches.empty()) {
        if (m_loss.frames == 0) return {};
        Batch rest{m_loss, {}, 0};
        m_loss = {};
        return rest;
    }
    Batch batch = std::move(m_batches.front());
    m_batches.pop_front();
    m_bytes -= batch.bytes;
    m_records -= batch.records.size();
    return batch;
}

void RecordQueue::close() {
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
    }
    m_wake.notify_all();
}

bool RecordQueue::empty() const {
    const std::lock_guard lock(m_mutex);
    return m_batches.empty();
}

uint64_t RecordQueue::waitingRecords() const {
    const std::lock_guard lock(m_mutex);
    return m_records;
}

}  // namespace rv
