#include <cstdint>

#include "quill_traceformats/PcapngBlockDecoder.h"
#include "quill_traceformats/PcapngReader.h"

namespace {
volatile uint64_t g_sink = 0;  // every payload byte is read, or the sanitizers would not see it
}

// Reads arbitrary bytes as a whole file: cut into units, every unit turned into a frame.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace quill::traceformats;
    MemorySource source({data, size});
    PcapngReader reader(source);
    TraceHeader header;
    if (!reader.readHeader(header)) return 0;
    PcapngBlockDecoder decoder;
    UnitBatch batch;
    uint64_t sum = 0;
    while (!reader.atEnd()) {
        batch.clear();
        reader.nextUnits(batch, 64);
        for (const RawUnit& unit : batch) {
            TraceFrame frame;
            if (decoder.decode(unit.bytes(), frame).result != Decoded::Result::Frame) {
                continue;
            }
            for (const uint8_t byte : frame.data) sum += byte;
        }
    }
    g_sink = sum;
    return 0;
}
