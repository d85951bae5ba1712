#pragma once

#include <span>
#include <vector>

#include "quill_traceformats/Decoded.h"
#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/blf_layout.h"

namespace quill::traceformats {

// Turns BLF objects of every kind that carries a frame into frames, times from the start of
// measurement. The payload of a yielded frame points into the object or into the decoder.
class BlfFrameDecoder {
public:
    // `object` is one whole object with its header.
    [[nodiscard]] Decoded decode(std::span<const uint8_t> object, TraceFrame& frame);

private:
    [[nodiscard]] bool ethernetFrame(std::span<const uint8_t> body, TraceFrame& frame);
    void completeFd(std::span<const uint8_t> body, TraceFrame& frame);

    std::vector<uint8_t> m_joined;  // frames that objects hold in parts
};

// Name of an object type as the format's users know it; null for one that is not in the list.
[[nodiscard]] const char* blfTypeName(uint32_t type);

}  // namespace quill::traceformats
