#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace quill::traceformats {

// Bytes of a file that many units share. Lives as long as a unit, a batch or its filler holds it.
class UnitBuffer {
public:
    // Starts with one user, its filler. `origin` is the position of the first byte in the file (or
    // in the joined content of its containers).
    [[nodiscard]] static UnitBuffer* make(size_t capacity, uint64_t origin);

    void retain(size_t users) { m_users.fetch_add(users, std::memory_order_relaxed); }
    void release(size_t users) {
        if (m_users.fetch_sub(users, std::memory_order_acq_rel) == users) destroy();
    }
    [[nodiscard]] uint8_t* bytes() { return reinterpret_cast<uint8_t*>(this + 1); }
    [[nodiscard]] size_t capacity() const { return m_capacity; }
    [[nodiscard]] uint64_t origin() const { return m_origin; }

private:
    UnitBuffer(size_t capacity, uint64_t origin) : m_capacity(capacity), m_origin(origin) {}
    ~UnitBuffer() = default;
    void destroy();

    std::atomic<size_t> m_users{1};
    size_t m_capacity;
    uint64_t m_origin;
};

// One raw piece of a file: a line, an object, a packet. An owning handle of two words.
class RawUnit {
public:
    RawUnit() = default;
    RawUnit(RawUnit&& other) noexcept
        : m_buffer(std::exchange(other.m_buffer, nullptr)),
          m_offset(other.m_offset),
          m_length(other.m_length) {}
    RawUnit& operator=(RawUnit&& other) noexcept {
        std::swap(m_buffer, other.m_buffer);
        std::swap(m_offset, other.m_offset);
        std::swap(m_length, other.m_length);
        return *this;
    }
    RawUnit(const RawUnit&) = delete;
    RawUnit& operator=(const RawUnit&) = delete;
    ~RawUnit() {
        if (m_buffer != nullptr) m_buffer->release(1);
    }

    [[nodiscard]] std::span<const uint8_t> bytes() const {
        if (m_buffer == nullptr) return {};
        return {m_buffer->bytes() + m_offset, m_length};
    }
    // Where the unit lies in the file or in the joined content of its containers.
    [[nodiscard]] uint64_t position() const {
        return m_buffer == nullptr ? 0 : m_buffer->origin() + m_offset;
    }

private:
    friend class UnitBatch;
    RawUnit(UnitBuffer* buffer, uint32_t offset, uint32_t length)
        : m_buffer(buffer), m_offset(offset), m_length(length) {}

    UnitBuffer* m_buffer = nullptr;
    uint32_t m_offset = 0;
    uint32_t m_length = 0;
};
static_assert(sizeof(RawUnit) == 2 * sizeof(uint64_t));

// A growable list of units. Users of a buffer are counted a batch at a time, not a unit at a time.
class UnitBatch {
public:
    UnitBatch() = default;
    UnitBatch(UnitBatch&& other) noexcept;
    UnitBatch& operator=(UnitBatch&& other) noexcept;
    UnitBatch(const UnitBatch&) = delete;
    UnitBatch& operator=(const UnitBatch&) = delete;
    ~UnitBatch() { clear(); }

    void reserve(size_t units) { m_units.reserve(units); }
    void append(UnitBuffer& buffer, size_t offset, size_t length) {
        if (&buffer != m_filling) lend(&buffer);
        if (m_spare == 0) lend(&buffer);
        --m_spare;
        m_units.push_back(
            RawUnit(&buffer, static_cast<uint32_t>(offset), static_cast<uint32_t>(length)));
    }
    // Takes the last unit back, for a piece whose end turned out to be wrong.
    void dropLast() { m_units.pop_back(); }
    // Gives every unit up; capacity stays.
    void clear();

    [[nodiscard]] size_t size() const { return m_units.size(); }
    [[nodiscard]] bool empty() const { return m_units.empty(); }
    [[nodiscard]] const RawUnit& operator[](size_t index) const { return m_units[index]; }
    [[nodiscard]] auto begin() const { return m_units.begin(); }
    [[nodiscard]] auto end() const { return m_units.end(); }

private:
    void lend(UnitBuffer* buffer);

    std::vector<RawUnit> m_units;
    UnitBuffer* m_filling = nullptr;  // buffer that was counted in advance
    size_t m_spare = 0;               // counted users of it that have no unit yet
};

}  // namespace quill::traceformats
