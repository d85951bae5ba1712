// Signals out of payloads and into them, ours against the plain byte loop. `--quick` runs one short
// round.
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "TableRow.h"
#include "crc/Rounds.h"
#include "signal/PhysicalCodec.h"
#include "signal/SignalCodec.h"

namespace {

using Model::codec::PhysicalLayout;
using Model::codec::SignalLayout;

// Layouts of ordinary frames, all within 8 bytes; a power of two so that a mask picks one.
constexpr std::array<SignalLayout, 16> kLayouts{{{0, 8, false},
                                                 {8, 16, false},
                                                 {4, 12, false},
                                                 {27, 3, false},
                                                 {32, 32, false},
                                                 {63, 1, false},
                                                 {40, 11, false},
                                                 {0, 64, false},
                                                 {0, 8, true},
                                                 {8, 16, true},
                                                 {20, 12, true},
                                                 {35, 3, true},
                                                 {56, 32, true},
                                                 {63, 1, true},
                                                 {45, 11, true},
                                                 {56, 64, true}}};

// Not inlined, as the others are not.
#if defined(__GNUC__)
__attribute__((noinline))
#endif
uint64_t
byteLoop(std::span<const uint8_t> data, const SignalLayout& layout) {
    const uint32_t b = layout.startBit >> 3;
    const uint32_t r = layout.startBit & 7U;
    const uint32_t further = (layout.bitLength - 1 + r) >> 3;
    uint64_t value = data[b] >> r;
    for (uint32_t k = 1; k <= further; ++k) {
        value |= uint64_t{data[layout.isBigEndian ? b - k : b + k]} << ((8 * k - r) & 63U);
    }
    return layout.bitLength == 64 ? value : value & ((uint64_t{1} << layout.bitLength) - 1);
}

std::array<PhysicalLayout, 16> physicalLayouts(double offset) {
    std::array<PhysicalLayout, 16> layouts;
    for (size_t i = 0; i < layouts.size(); ++i) {
        layouts[i] = {kLayouts[i], true, false, 0.5, offset, 0, 0};
    }
    return layouts;
}

const std::array<PhysicalLayout, 16> kPhysical = physicalLayouts(-40);
const std::array<PhysicalLayout, 16> kPlain = physicalLayouts(0);

template <class Layouts, class Body>
void addOver(bench::Rounds& rounds, const char* name, std::vector<uint8_t>& data,
             const Layouts& layouts, Body body) {
    rounds.add(name, [&data, &layouts, body](size_t calls) {
        for (size_t i = 0; i < calls; ++i) {
            bench::keep(data.data());
            const auto result = body(data, layouts[i % layouts.size()]);
            bench::keep(result);
        }
    });
}

void benchPayload(const char* title, size_t size, bool quick) {
    std::vector<uint8_t> data(size, 0x5A);
    bench::Rounds rounds(quick ? 1'600 : 32'000, quick ? 1 : 151);
    addOver(rounds, "byte loop", data, kLayouts,
            [](auto& bytes, const SignalLayout& l) { return byteLoop(bytes, l); });
    addOver(rounds, "parseSignalValue", data, kLayouts, [](auto& bytes, const SignalLayout& l) {
        return Model::codec::parseSignalValue(bytes, l.isBigEndian, l.startBit, l.bitLength);
    });
    addOver(rounds, "decodePhysical", data, kPhysical,
            [](auto& bytes, const PhysicalLayout& layout) {
                return *Model::codec::decodePhysical(bytes, layout);
            });
    addOver(rounds, "rawValueToByte", data, kLayouts, [](auto& bytes, const SignalLayout& l) {
        return Model::codec::rawValueToByte(bytes, 1, l.isBigEndian, l.startBit, l.bitLength);
    });
    addOver(rounds, "encodePhysical", data, kPlain, [](auto& bytes, const PhysicalLayout& layout) {
        return Model::codec::encodePhysical(bytes, layout, -0.5);
    });
    rounds.run(title);
    bench::printRow({.what = title,
                     .unit = "ns a signal",
                     .ours = rounds.slowest("parseSignalValue"),
                     .floor = rounds.slowest("byte loop"),
                     .wanted = "10 ns at most"});
}

}  // namespace

int main(int argc, char** argv) {
    const bool quick = bench::isQuick(argc, argv);
    benchPayload("raw signal values, 16 layouts over 8 bytes", 8, quick);
    benchPayload("raw signal values, 16 layouts over 64 bytes", 64, quick);
    return 0;
}
