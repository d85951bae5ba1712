#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "quill_traceformats/ByteSource.h"
#include "quill_traceformats/Decoded.h"
#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/UnitReader.h"

// What the targets of all trace formats do: read arbitrary bytes as a whole file, cut into units,
// every unit turned into a frame, every payload byte touched.
namespace quill::fuzz {

struct TraceDigest {
    uint64_t units = 0;
    uint64_t frames = 0;
    uint64_t sum = 0;  // over all that the frames hold, in their order
    uint64_t damage = 0;
    bool operator==(const TraceDigest&) const = default;
};

inline void addFrame(TraceDigest& digest, const traceformats::TraceFrame& frame) {
    const auto mix = [&](uint64_t value) { digest.sum = digest.sum * 0x100000001B3U + value; };
    ++digest.frames;
    mix(frame.timeNs);
    mix(frame.id);
    mix(frame.flags);
    mix(frame.channel);
    mix(static_cast<uint64_t>(frame.kind) * 256U + static_cast<uint64_t>(frame.direction));
    for (const uint8_t byte : frame.data) mix(byte);
}

// `makeDecoder(header)` gives a callable (unit bytes, frame) -> Decoded.
template <class Reader, class MakeDecoder>
TraceDigest readTrace(std::span<const uint8_t> bytes, size_t unitsPerBatch,
                      MakeDecoder makeDecoder) {
    using namespace traceformats;
    TraceDigest digest;
    MemorySource source(bytes);
    Reader reader(source);
    TraceHeader header;
    if (!reader.readHeader(header)) return digest;
    auto decode = makeDecoder(header);
    UnitBatch batch;
    while (!reader.atEnd()) {
        batch.clear();
        reader.nextUnits(batch, unitsPerBatch);
        for (const RawUnit& unit : batch) {
            TraceFrame frame;
            ++digest.units;
            if (decode(unit.bytes(), frame).result == Decoded::Result::Frame) {
                addFrame(digest, frame);
            }
        }
    }
    digest.damage = reader.damage().total();
    return digest;
}

// Reads the bytes in large and in small batches, which must yield the same.
template <class Reader, class MakeDecoder>
int runTraceTarget(const uint8_t* data, size_t size, MakeDecoder makeDecoder) {
    constexpr size_t kLarge = 256;
    constexpr size_t kSmall = 3;
    const std::span<const uint8_t> bytes(data, size);
    const TraceDigest large = readTrace<Reader>(bytes, kLarge, makeDecoder);
    const TraceDigest small = readTrace<Reader>(bytes, kSmall, makeDecoder);
    if (large == small) return 0;
    std::fprintf(stderr, "what is read depends on the size of batches\n");
    std::abort();
}

}  // namespace quill::fuzz
