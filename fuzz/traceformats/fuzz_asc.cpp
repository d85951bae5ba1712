// Any bytes as a ASC file.
#include "quill_traceformats/AscLineDecoder.h"
#include "quill_traceformats/AscReader.h"
#include "traceformats/trace_target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace quill::traceformats;
    return quill::fuzz::runTraceTarget<AscReader>(data, size, [](const TraceHeader& header) {
        return [decoder = AscLineDecoder(header)](std::span<const uint8_t> unit,
                                                  TraceFrame& frame) mutable {
            return decoder.decode({reinterpret_cast<const char*>(unit.data()), unit.size()}, frame);
        };
    });
}
