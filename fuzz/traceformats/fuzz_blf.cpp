// Any bytes as a BLF file.
#include "quill_traceformats/BlfFrameDecoder.h"
#include "quill_traceformats/BlfReader.h"
#include "traceformats/trace_target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace quill::traceformats;
    return quill::fuzz::runTraceTarget<BlfReader>(data, size, [](const TraceHeader& /*header*/) {
        return [decoder = BlfFrameDecoder()](std::span<const uint8_t> unit,
                                             TraceFrame& frame) mutable {
            return decoder.decode(unit, frame);
        };
    });
}
