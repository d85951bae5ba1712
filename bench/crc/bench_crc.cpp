// CRCs over 64 bytes against hand-written slice-by-8, byte-table and bitwise loops, and the whole
// update step. `--quick` runs one short round.
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "TableRow.h"
#include "core/hardware/crc/Crc.h"
#include "core/hardware/crc/FrameUpdate.h"
#include "crc/Rounds.h"

namespace {

using Bytes = std::span<const uint8_t>;

constexpr uint32_t kPolynomial = 0xEDB88320;  // CRC-32, reflected

std::array<std::array<uint32_t, 256>, 8> makeFloorTables() {
    std::array<std::array<uint32_t, 256>, 8> rows{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t state = i;
        for (int bit = 0; bit < 8; ++bit) state = (state >> 1) ^ (state & 1U ? kPolynomial : 0);
        rows[0][i] = state;
    }
    for (size_t row = 1; row < 8; ++row) {
        for (size_t i = 0; i < 256; ++i) {
            rows[row][i] = rows[0][rows[row - 1][i] & 0xFFU] ^ (rows[row - 1][i] >> 8);
        }
    }
    return rows;
}

const std::array<std::array<uint32_t, 256>, 8> kFloor = makeFloorTables();

// The textbook loop: two 32-bit words a step.
uint32_t sliceBy8(Bytes data) {
    uint32_t state = 0xFFFFFFFF;
    const uint8_t* p = data.data();
    for (size_t left = data.size(); left >= 8; left -= 8, p += 8) {
        uint32_t one = 0;
        uint32_t two = 0;
        std::memcpy(&one, p, 4);
        std::memcpy(&two, p + 4, 4);
        one ^= state;
        state = kFloor[7][one & 0xFFU] ^ kFloor[6][(one >> 8) & 0xFFU] ^
                kFloor[5][(one >> 16) & 0xFFU] ^ kFloor[4][one >> 24] ^ kFloor[3][two & 0xFFU] ^
                kFloor[2][(two >> 8) & 0xFFU] ^ kFloor[1][(two >> 16) & 0xFFU] ^
                kFloor[0][two >> 24];
    }
    return ~state;
}

// The same with 64 bits, reflected.
std::array<std::array<uint64_t, 256>, 8> makeWideTables() {
    std::array<std::array<uint64_t, 256>, 8> rows{};
    for (uint64_t i = 0; i < 256; ++i) {
        uint64_t state = i;
        for (int bit = 0; bit < 8; ++bit) {
            state = (state >> 1) ^ (state & 1U ? 0xC96C5795D7870F42U : 0);
        }
        rows[0][i] = state;
    }
    for (size_t row = 1; row < 8; ++row) {
        for (size_t i = 0; i < 256; ++i) {
            rows[row][i] = rows[0][rows[row - 1][i] & 0xFFU] ^ (rows[row - 1][i] >> 8);
        }
    }
    return rows;
}

const std::array<std::array<uint64_t, 256>, 8> kWide = makeWideTables();

uint64_t wideSliceBy8(Bytes data) {
    uint64_t state = ~uint64_t{0};
    const uint8_t* p = data.data();
    for (size_t left = data.size(); left >= 8; left -= 8, p += 8) {
        uint64_t word = 0;
        std::memcpy(&word, p, 8);
        word ^= state;
        state = kWide[7][word & 0xFFU] ^ kWide[6][(word >> 8) & 0xFFU] ^
                kWide[5][(word >> 16) & 0xFFU] ^ kWide[4][(word >> 24) & 0xFFU] ^
                kWide[3][(word >> 32) & 0xFFU] ^ kWide[2][(word >> 40) & 0xFFU] ^
                kWide[1][(word >> 48) & 0xFFU] ^ kWide[0][word >> 56];
    }
    return ~state;
}

uint32_t byteTable(Bytes data) {
    uint32_t state = 0xFFFFFFFF;
    for (const uint8_t byte : data) state = kFloor[0][(state ^ byte) & 0xFFU] ^ (state >> 8);
    return ~state;
}

uint32_t bitwise(Bytes data) {
    uint32_t state = 0xFFFFFFFF;
    for (const uint8_t byte : data) {
        state ^= byte;
        for (int bit = 0; bit < 8; ++bit) state = (state >> 1) ^ (state & 1U ? kPolynomial : 0);
    }
    return ~state;
}

std::vector<uint8_t> makeData() {
    std::vector<uint8_t> data(64);
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(37 * i + 11);
    return data;
}

template <class Sum>
auto repeated(std::vector<uint8_t>& data, Sum sum) {
    return [&data, sum](size_t calls) {
        for (size_t i = 0; i < calls; ++i) {
            bench::keep(data.data());
            const uint64_t crc = sum(Bytes(data));
            bench::keep(crc);
        }
    };
}

void benchSums(bool quick) {
    std::vector<uint8_t> data = makeData();
    bench::Rounds rounds(quick ? 1'000 : 20'000, quick ? 1 : 151);
    rounds.add("slice-by-8 loop, 32 bits", repeated(data, sliceBy8));
    for (const uint8_t code : std::array<uint8_t, 9>{1, 2, 8, 16, 26, 31, 33, 38, 39}) {
        const auto* algorithm = RV::Crc::findAlgorithm(code);
        rounds.add("ours, " + std::string(algorithm->name), repeated(data, [code](Bytes bytes) {
                       return *RV::Crc::computeCrc(code, bytes);
                   }));
    }
    rounds.add("slice-by-8 loop, 64 bits", repeated(data, wideSliceBy8));
    rounds.add("byte table, 32 bits", repeated(data, byteTable));
    rounds.add("bitwise, 32 bits", repeated(data, bitwise));
    rounds.run("CRC over 64 bytes");
    bench::printRow({.what = "CRC over 64 bytes, the slowest of nine",
                     .unit = "ns",
                     .ours = rounds.slowest("ours"),
                     .floor = rounds.slowest("slice-by-8 loop, 32 bits"),
                     .wanted = "1.5 x floor at most"});
}

RV::Crc::FrameUpdateSettings makeSettings(uint8_t type, int32_t crcLength, bool bigEndian) {
    RV::Crc::FrameUpdateSettings settings;
    settings.dataLength = 64;
    settings.counterEnabled = true;
    settings.counterStartBit = 8;
    settings.counterLength = 4;
    settings.counterBigEndian = bigEndian;
    settings.crcType = type;
    settings.crcStartBit = bigEndian ? 504 : 448;
    settings.crcLength = crcLength;
    settings.crcBigEndian = bigEndian;
    return settings;
}

void benchUpdate(bool quick) {
    std::vector<uint8_t> data = makeData();
    bench::Rounds rounds(quick ? 1'000 : 20'000, quick ? 1 : 151);
    rounds.add("slice-by-8 loop, 32 bits", repeated(data, sliceBy8));
    const auto add = [&](const char* name, RV::Crc::FrameUpdateSettings settings) {
        rounds.add(name, [&data, settings](size_t calls) mutable {
            for (size_t i = 0; i < calls; ++i) {
                bench::keep(data.data());
                const bool done = RV::Crc::updateFrame(data, settings);
                bench::keep(done);
            }
        });
    };
    add("step, CRC_8, little-endian", makeSettings(2, 8, false));
    add("step, CRC_16 X25, big-endian", makeSettings(29, 16, true));
    add("step, CRC_32, little-endian", makeSettings(31, 32, false));
    add("step, CRC_64 ISO, big-endian", makeSettings(40, 64, true));
    auto variant = makeSettings(3, 8, false);
    add("step, CRC_8 Variant", variant);
    variant.keyBytes.assign(16, 0x5A);
    add("step, CRC_8 Variant, 16 keys", variant);
    variant.crcStartBit = 0;
    add("step, CRC_8 Variant, field first", variant);
    variant.crcStartBit = 3;
    add("step, CRC_8 Variant, odd start", variant);
    rounds.run("Update step over 64 bytes, counter of 4 bits");
    bench::printRow({.what = "counter and CRC of a frame of 64 bytes, the slowest step",
                     .unit = "ns",
                     .ours = rounds.slowest("step"),
                     .wanted = "60 ns at most"});
}

}  // namespace

int main(int argc, char** argv) {
    const bool quick = bench::isQuick(argc, argv);
    benchSums(quick);
    benchUpdate(quick);
    return 0;
}
