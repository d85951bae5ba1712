#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct z_stream_s;

namespace quill::traceformats {

// Turns content into LOG_CONTAINER objects ready for the file. Keeps its compressor, whose tables
// cost 256 KiB, from one container to the next; one packer per thread.
class BlfContainerPacker {
public:
    // Level 0 stores, 1 is fastest, 9 smallest. Throws std::bad_alloc when zlib gets no memory.
    explicit BlfContainerPacker(int level);
    ~BlfContainerPacker();
    BlfContainerPacker(const BlfContainerPacker&) = delete;
    BlfContainerPacker& operator=(const BlfContainerPacker&) = delete;

    // Writes header, content and padding to the front of `out`, which grows when it must and never
    // shrinks, and returns their number. Content that does not get smaller is stored as it is.
    size_t pack(std::span<const uint8_t> content, std::vector<uint8_t>& out);

private:
    size_t deflateTo(std::span<const uint8_t> content, std::span<uint8_t> room);

    int m_level;
    std::unique_ptr<z_stream_s> m_stream;  // null at level 0
};

}  // namespace quill::traceformats
