#include "quill_traceformats/BlfContainerPacker.h"

#include <libdeflate.h>

#include <cstring>
#include <new>

#include "quill_traceformats/blf_layout.h"

namespace quill::traceformats {

BlfContainerPacker::BlfContainerPacker(int level) {
    if (level == 0) return;
    m_compressor.reset(libdeflate_alloc_compressor(level));
    if (m_compressor == nullptr) throw std::bad_alloc();
}

void BlfContainerPacker::Free::operator()(libdeflate_compressor* compressor) const {
    libdeflate_free_compressor(compressor);
}

size_t BlfContainerPacker::pack(std::span<const uint8_t> content, std::vector<uint8_t>& out) {
    constexpr size_t kPadding = 3;
    const size_t needed = kBlfContainerHeaderSize + content.size() + kPadding;
    if (out.size() < needed) out.resize(needed);
    const std::span<uint8_t> room(out.data() + kBlfContainerHeaderSize, content.size());
    // 0 when the result would not fit.
    size_t stored = m_compressor == nullptr
                        ? 0
                        : libdeflate_zlib_compress(m_compressor.get(), content.data(),
                                                   content.size(), room.data(), room.size());
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
