#include "FrameCollector.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <memory>

#include "quill_traceformats/AscLineDecoder.h"
#include "quill_traceformats/AscReader.h"
#include "quill_traceformats/BlfFrameDecoder.h"
#include "quill_traceformats/BlfReader.h"
#include "quill_traceformats/PcapPacketDecoder.h"
#include "quill_traceformats/PcapReader.h"
#include "quill_traceformats/PcapngBlockDecoder.h"
#include "quill_traceformats/PcapngReader.h"

namespace quill::traceformats::test {
namespace {
using Decode = std::function<Decoded(std::span<const uint8_t>, TraceFrame&)>;

std::unique_ptr<UnitReader> readerFor(Format format, ByteSource& source) {
    switch (format) {
        case Format::Blf:
            return std::make_unique<BlfReader>(source);
        case Format::Asc:
            return std::make_unique<AscReader>(source);
        case Format::Pcap:
            return std::make_unique<PcapReader>(source);
        default:
            return std::make_unique<PcapngReader>(source);
    }
}

Decode decoderFor(Format format, const TraceHeader& header) {
    switch (format) {
        case Format::Blf:
            return [decoder = std::make_shared<BlfFrameDecoder>()](auto unit, TraceFrame& frame) {
                return decoder->decode(unit, frame);
            };
        case Format::Asc:
            return
                [decoder = std::make_shared<AscLineDecoder>(header)](auto unit, TraceFrame& frame) {
                    return decoder->decode(
                        {reinterpret_cast<const char*>(unit.data()), unit.size()}, frame);
                };
        case Format::Pcap:
            return [decoder = PcapPacketDecoder(header)](auto unit, TraceFrame& frame) {
                return decoder.decode(unit, frame);
            };
        default:
            return [decoder = std::make_shared<PcapngBlockDecoder>()](
                       auto unit, TraceFrame& frame) { return decoder->decode(unit, frame); };
    }
}
}  // namespace

Collected collect(Format format, std::span<const uint8_t> bytes, size_t unitsPerBatch) {
    Collected result;
    MemorySource source(bytes);
    const auto reader = readerFor(format, source);
    result.header = reader->readHeader(result.facts);
    if (!result.header) return result;
    const Decode decode = decoderFor(format, result.facts);
    UnitBatch batch;
    while (!reader->atEnd()) {
        batch.clear();
        reader->nextUnits(batch, unitsPerBatch);
        for (const RawUnit& unit : batch) {
            ++result.units;
            TraceFrame frame;
            const Decoded decoded = decode(unit.bytes(), frame);
            if (decoded.result == Decoded::Result::NoFrame) ++result.skipped;
            if (decoded.result == Decoded::Result::Bad) ++result.dropped;
            if (decoded.result != Decoded::Result::Frame) continue;
            result.frames.push_back({frame, {frame.data.begin(), frame.data.end()}});
            result.frames.back().frame.data = {};
        }
    }
    result.damage = reader->damage().entries();
    return result;
}

std::optional<std::vector<uint8_t>> wholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {});
}

std::optional<std::vector<uint8_t>> corpusFile(const std::string& name) {
    return wholeFile(std::string(QUILL_SOURCE_DIR "/../shared/corpus/") + name);
}

}  // namespace quill::traceformats::test
