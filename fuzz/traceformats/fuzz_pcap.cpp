// Any bytes as a PCAP file.
#include "quill_traceformats/PcapPacketDecoder.h"
#include "quill_traceformats/PcapReader.h"
#include "traceformats/trace_target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace quill::traceformats;
    return quill::fuzz::runTraceTarget<PcapReader>(data, size, [](const TraceHeader& header) {
        return [decoder = PcapPacketDecoder(header)](std::span<const uint8_t> unit,
                                                     TraceFrame& frame) mutable {
            return decoder.decode(unit, frame);
        };
    });
}
