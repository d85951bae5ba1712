#include "quill_traceformats/SlicedInput.h"

#include <algorithm>
#include <cstring>

namespace quill::traceformats {

size_t MemorySource::read(uint8_t* target, size_t room) {
    const size_t count = std::min(room, m_rest.size());
    if (count > 0) std::memcpy(target, m_rest.data(), count);
    m_rest = m_rest.subspan(count);
    return count;
}

SlicedInput::SlicedInput(ByteSource& source, size_t bufferBytes)
    : m_source(source), m_bufferBytes(bufferBytes), m_buffer(UnitBuffer::make(bufferBytes, 0)) {}

SlicedInput::~SlicedInput() { m_buffer->release(1); }

void SlicedInput::refill(size_t wanted) {
    const size_t kept = m_end - m_begin;
    if (m_buffer->capacity() - m_begin < wanted || m_end == m_buffer->capacity()) {
        UnitBuffer* next =
            UnitBuffer::make(std::max(m_bufferBytes, wanted + wanted / 2), position());
        std::memcpy(next->bytes(), m_buffer->bytes() + m_begin, kept);
        m_buffer->release(1);
        m_buffer = next;
        m_begin = 0;
        m_end = kept;
    }
    while (m_end - m_begin < wanted) {
        const size_t got = m_source.read(m_buffer->bytes() + m_end, m_buffer->capacity() - m_end);
        if (got == 0) return;
        m_end += got;
    }
}

uint64_t SlicedInput::skip(uint64_t length) {
    uint64_t skipped = 0;
    while (skipped < length) {
        const size_t atHand = ahead(1).size();
        if (atHand == 0) break;
        const size_t step = static_cast<size_t>(std::min<uint64_t>(length - skipped, atHand));
        m_begin += step;
        skipped += step;
    }
    return skipped;
}

}  // namespace quill::traceformats
