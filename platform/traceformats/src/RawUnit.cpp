#include "quill_traceformats/RawUnit.h"

#include <new>

namespace quill::traceformats {
namespace {
constexpr size_t kUsersAtOnce = 4096;
}  // namespace

UnitBuffer* UnitBuffer::make(size_t capacity, uint64_t origin) {
    void* memory = ::operator new(sizeof(UnitBuffer) + capacity);
    return new (memory) UnitBuffer(capacity, origin);
}

void UnitBuffer::destroy() {
    this->~UnitBuffer();
    ::operator delete(this);
}

UnitBatch::UnitBatch(UnitBatch&& other) noexcept
    : m_units(std::move(other.m_units)),
      m_filling(std::exchange(other.m_filling, nullptr)),
      m_spare(std::exchange(other.m_spare, 0)) {
    other.m_units.clear();
}

UnitBatch& UnitBatch::operator=(UnitBatch&& other) noexcept {
    std::swap(m_units, other.m_units);
    std::swap(m_filling, other.m_filling);
    std::swap(m_spare, other.m_spare);
    return *this;
}

void UnitBatch::lend(UnitBuffer* buffer) {
    if (m_spare > 0) m_filling->release(m_spare);
    m_filling = buffer;
    m_spare = buffer == nullptr ? 0 : kUsersAtOnce;
    if (buffer != nullptr) buffer->retain(kUsersAtOnce);
}

void UnitBatch::clear() {
    lend(nullptr);
    for (size_t i = 0; i < m_units.size();) {
        UnitBuffer* buffer = m_units[i].m_buffer;
        size_t users = 0;
        for (; i < m_units.size() && m_units[i].m_buffer == buffer; ++i, ++users) {
            m_units[i].m_buffer = nullptr;
        }
        if (buffer != nullptr) buffer->release(users);
    }
    m_units.clear();
}

}  // namespace quill::traceformats
