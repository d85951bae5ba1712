#include "quill_traceformats/BlfContainerPacker.h"

#include <zlib.h>

#include <cstring>
#include <new>

#include "quill_traceformats/blf_layout.h"

namespace quill::traceformats {

BlfContainerPacker::BlfContainerPacker(int level) : m_level(level) {
    if (m_level == 0) return;
    m_stream = std::make_unique<z_stream>();
    if (deflateInit(m_stream.get(), m_level) != Z_OK) throw std::bad_alloc();
}

BlfContainerPacker::~BlfContainerPacker() {
    if (m_stream) deflateEnd(m_stream.get());
}

size_t BlfContainerPacker::deflateTo(std::span<const uint8_t> content, std::span<uint8_t> room) {
    if (deflateReset(m_stream.get()) != Z_OK) return 0;
    m_stream->next_in = const_cast<Bytef*>(content.data());  // zlib reads only
    m_stream->avail_in = static_cast<uInt>(content.size());
    m_stream->next_out = room.data();
    m_stream->avail_out = static_cast<uInt>(room.size());
    if (deflate(m_stream.get(), Z_FINISH) != Z_STREAM_END) return 0;
    return room.size() - m_stream->avail_out;
}

size_t BlfContainerPacker::pack(std::span<const uint8_t> content, std::vector<uint8_t>& out) {
    constexpr size_t kPadding = 3;
    const size_t needed = kBlfContainerHeaderSize + content.size() + kPadding;
    if (out.size() < needed) out.resize(needed);
    const std::span<uint8_t> room(out.data() + kBlfContainerHeaderSize, content.size());
    size_t stored = m_stream ? deflateTo(content, room) : 0;
    BlfContainerHeader header;
    if (stored == 0) {
        header.method = kBlfMethodNone;
        if (!content.empty()) std::memcpy(room.data(), content.data(), content.size());
        stored = content.size();
    }
    header.objectSize = static_cast<uint32_t>(kBlfContainerHeaderSize + stored);
    header.uncompressedSize = static_cast<uint32_t>(content.size());
    encodeBlfContainerHeader(header, out.data());
    const uint32_t padding = blfPadding(header.objectSize);
    std::memset(out.data() + header.objectSize, 0, padding);
    return header.objectSize + padding;
}

}  // namespace quill::traceformats
