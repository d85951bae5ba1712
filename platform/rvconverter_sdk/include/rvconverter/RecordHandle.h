#pragma once

#include <cstddef>
#include <utility>

namespace rv {

// One record on its way into a trace file: owned, three words, freed by the function that came with
// it. An empty handle stands for a frame that no record kind can hold.
class RecordHandle {
public:
    using Release = void (*)(void* record);

    RecordHandle() = default;
    RecordHandle(Release release, void* record, size_t size) noexcept
        : m_release(release), m_record(record), m_size(size) {}
    RecordHandle(RecordHandle&& other) noexcept
        : m_release(other.m_release),
          m_record(std::exchange(other.m_record, nullptr)),
          m_size(std::exchange(other.m_size, 0)) {}
    RecordHandle& operator=(RecordHandle&& other) noexcept {
        if (this != &other) {
            reset();
            m_release = other.m_release;
            m_record = std::exchange(other.m_record, nullptr);
            m_size = std::exchange(other.m_size, 0);
        }
        return *this;
    }
    RecordHandle(const RecordHandle&) = delete;
    RecordHandle& operator=(const RecordHandle&) = delete;
    ~RecordHandle() { reset(); }

    void reset() noexcept {
        if (m_record != nullptr) m_release(std::exchange(m_record, nullptr));
        m_size = 0;
    }

    [[nodiscard]] const void* record() const { return m_record; }
    [[nodiscard]] size_t size() const { return m_size; }  // bytes, payload included
    explicit operator bool() const { return m_record != nullptr; }

private:
    Release m_release = nullptr;
    void* m_record = nullptr;
    size_t m_size = 0;
};
static_assert(sizeof(RecordHandle) == 3 * sizeof(void*));

}  // namespace rv
