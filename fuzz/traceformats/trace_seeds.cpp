// Small traces of the binary formats, made byte by byte.
#include <array>
#include <numeric>

#include "own_seeds.h"
#include "quill_traceformats/blf_objects.h"
#include "unit/traceformats_readers/TraceBuilder.h"

namespace quill::fuzz {

namespace {

using namespace traceformats;
using test::append;
using Bytes = Seed;

// A frame of every kind that is written.
Bytes everyBlfObject() {
    std::array<uint8_t, 64> payload{};
    std::iota(payload.begin(), payload.end(), uint8_t{1});
    Bytes out;
    for (const auto kind : {FrameKind::Can, FrameKind::CanError, FrameKind::Lin,
                            FrameKind::Ethernet, FrameKind::FlexRay, FrameKind::LossMarker}) {
        for (const uint32_t flags : {0U, kCanFd | kCanBitRateSwitch}) {
            TraceFrame frame;
            frame.timeNs = out.size() * 1'000'000;
            frame.kind = kind;
            frame.channel = 1;
            frame.id = 0x21;
            frame.flags = kind == FrameKind::Can ? flags : 0;
            const bool isLong = kind == FrameKind::Ethernet || (frame.flags & kCanFd) != 0;
            frame.data = std::span<const uint8_t>(payload).first(isLong ? 64 : 8);
            frame.dlc = isLong ? 15 : 8;
            const size_t size = blfObjectSize(frame);
            if (size == 0) continue;
            const size_t at = out.size();
            out.resize(at + size);
            encodeBlfFrame(frame, out.data() + at);
            out.resize(out.size() + size % 4);
        }
    }
    return out;
}

std::vector<Seed> blfSeeds() {
    std::vector<Seed> seeds;
    for (const Bytes& content : {test::canObjects(0, 40), everyBlfObject()}) {
        for (const uint16_t method : {uint16_t{0}, uint16_t{2}}) {
            Bytes whole = test::blfHeader();
            append(whole, test::blfContainer(content, method));
            append(whole, test::blfContainer(test::canObjects(40, 3), method));
            seeds.push_back(std::move(whole));
        }
    }
    Bytes bare = test::blfHeader();
    append(bare, everyBlfObject());
    seeds.push_back(std::move(bare));
    return seeds;
}

std::vector<Seed> pcapSeeds() {
    constexpr uint32_t kSocketCan = 227;
    return {test::pcapFile(4), test::pcapFile(4, true), test::pcapFile(3, false, kSocketCan)};
}

std::vector<Seed> pcapngSeeds() {
    std::vector<Seed> seeds;
    for (const bool bigEndian : {false, true}) {
        Bytes whole = test::pcapngSection(bigEndian);
        append(whole, test::pcapngInterface(1, {}, bigEndian));
        for (uint32_t i = 0; i < 3; ++i) {
            append(whole, test::pcapngPacket(0, i, test::ethernetPacket(i), bigEndian));
        }
        seeds.push_back(std::move(whole));
    }
    return seeds;
}

}  // namespace

std::vector<Seed> ownSeeds(std::string_view target) {
    if (target == "fuzz_blf") return blfSeeds();
    return target == "fuzz_pcap" ? pcapSeeds() : pcapngSeeds();
}

}  // namespace quill::fuzz
