// Any bytes as a PCAPNG file.
#include "quill_traceformats/PcapngBlockDecoder.h"
#include "quill_traceformats/PcapngReader.h"
#include "traceformats/trace_target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace quill::traceformats;
    return quill::fuzz::runTraceTarget<PcapngReader>(data, size, [](const TraceHeader& /*header*/) {
        return [decoder = PcapngBlockDecoder()](std::span<const uint8_t> unit,
                                                TraceFrame& frame) mutable {
            return decoder.decode(unit, frame);
        };
    });
}
