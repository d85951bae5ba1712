#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct libdeflate_compressor;

namespace quill::traceformats {

// Turns content into LOG_CONTAINER objects ready for the file, which hold a zlib stream (RFC 1950).
// libdeflate writes it, about twice as fast as zlib at the same level: a container is in memory as
// a whole, so nothing needs to stream. Keeps its compressor from one container to the next; one
// packer per thread.
class BlfContainerPacker {
public:
    // Level 0 stores, 1 is fastest, 9 smallest. Throws std::bad_alloc when there is no memory.
    explicit BlfContainerPacker(int level);

    // Writes header, content and padding to the front of `out`, which grows when it must and never
    // shrinks, and returns their number. Content that does not get smaller is stored as it is.
    size_t pack(std::span<const uint8_t> content, std::vector<uint8_t>& out);

private:
    struct Free {
        void operator()(libdeflate_compressor* compressor) const;
    };
    std::unique_ptr<libdeflate_compressor, Free> m_compressor;  // null at level 0
};

}  // namespace quill::traceformats
