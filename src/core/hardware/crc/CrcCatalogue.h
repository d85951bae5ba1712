#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace RV::Crc {

// Config value of an algorithm that the configuration model does not know.
inline constexpr int kNoConfig = -1;

// One algorithm: its code in send commands, its name, the parameters of the usual model of CRC
// algorithms (polynomial without the leading term, values right-aligned), and its value in the
// configuration model's CrcType.
struct CrcAlgorithm {
    uint8_t code;
    std::string_view name;
    uint8_t width;
    uint64_t polynomial;
    uint64_t initial;
    bool reflectInput;
    bool reflectOutput;
    uint64_t finalXor;
    int config;
};

// In the order of codes, from 1 on without a gap.
inline constexpr std::array<CrcAlgorithm, 40> kCrcCatalogue{{
    // clang-format off
    {1, "CRC_4 ITU", 4, 0x3, 0x0, true, true, 0x0, 1},
    {2, "CRC_8", 8, 0x07, 0x00, false, false, 0x00, 2},
    // The system's own: see CrcVariant.h. Its polynomial pass is the one of "CRC_8 H2F".
    {3, "CRC_8 Variant", 8, 0x2F, 0xFF, false, false, 0xFF, kNoConfig},
    {4, "CRC_8 SAE J1850", 8, 0x1D, 0xFF, false, false, 0xFF, 3},
    {5, "CRC_8 SAE J1850 zero", 8, 0x1D, 0x00, false, false, 0x00, 4},
    {6, "CRC_8 H2F", 8, 0x2F, 0xFF, false, false, 0xFF, 5},
    {7, "CRC_8 ITU", 8, 0x07, 0x00, false, false, 0x55, 6},
    {8, "CRC_8 ROHC", 8, 0x07, 0xFF, true, true, 0x00, 7},
    {9, "CRC_8 EBU", 8, 0x1D, 0xFF, true, true, 0x00, 8},
    {10, "CRC_8 HDLC", 8, 0x07, 0xFF, true, true, 0xFF, 9},
    {11, "CRC_8 MAXIM", 8, 0x31, 0x00, true, true, 0x00, 10},
    {12, "CRC_8 WCDMA", 8, 0x9B, 0x00, true, true, 0x00, 11},
    {13, "CRC_8 LTE", 8, 0x9B, 0x00, false, false, 0x00, 12},
    {14, "CRC_16 ARC", 16, 0x8005, 0x0000, true, true, 0x0000, 13},
    {15, "CRC_16 BUYPASS", 16, 0x8005, 0x0000, false, false, 0x0000, 14},
    {16, "CRC_16 CCITT FALSE", 16, 0x1021, 0xFFFF, false, false, 0x0000, 15},
    {17, "CRC_16 MCRF4XX", 16, 0x1021, 0xFFFF, true, true, 0x0000, 16},
    {18, "CRC_16 CDMA2000", 16, 0xC867, 0xFFFF, false, false, 0x0000, 17},
    {19, "CRC_16 CMS", 16, 0x8005, 0xFFFF, false, false, 0x0000, 18},
    {20, "CRC_16 DECTR", 16, 0x0589, 0x0000, false, false, 0x0001, 19},
    {21, "CRC_16 DECTX", 16, 0x0589, 0x0000, false, false, 0x0000, 20},
    {22, "CRC_16 DNP", 16, 0x3D65, 0x0000, true, true, 0xFFFF, 21},
    {23, "CRC_16 GENIBUS", 16, 0x1021, 0xFFFF, false, false, 0xFFFF, 22},
    {24, "CRC_16 KERMIT", 16, 0x1021, 0x0000, true, true, 0x0000, 23},
    {25, "CRC_16 MAXIM", 16, 0x8005, 0x0000, true, true, 0xFFFF, 24},
    {26, "CRC_16 MODBUS", 16, 0x8005, 0xFFFF, true, true, 0x0000, 25},
    {27, "CRC_16 T10DIF", 16, 0x8BB7, 0x0000, false, false, 0x0000, 26},
    {28, "CRC_16 USB", 16, 0x8005, 0xFFFF, true, true, 0xFFFF, 27},
    {29, "CRC_16 X25", 16, 0x1021, 0xFFFF, true, true, 0xFFFF, 28},
    {30, "CRC_16 XMODEM", 16, 0x1021, 0x0000, false, false, 0x0000, 29},
    {31, "CRC_32", 32, 0x04C11DB7, 0xFFFFFFFF, true, true, 0xFFFFFFFF, 30},
    {32, "CRC_32 P4", 32, 0xF4ACFB13, 0xFFFFFFFF, true, true, 0xFFFFFFFF, 31},
    {33, "CRC_32 BZIP2", 32, 0x04C11DB7, 0xFFFFFFFF, false, false, 0xFFFFFFFF, 32},
    {34, "CRC_32 C", 32, 0x1EDC6F41, 0xFFFFFFFF, true, true, 0xFFFFFFFF, 33},
    {35, "CRC_32 MPEG2", 32, 0x04C11DB7, 0xFFFFFFFF, false, false, 0x00000000, 34},
    {36, "CRC_32 POSIX", 32, 0x04C11DB7, 0x00000000, false, false, 0xFFFFFFFF, 35},
    {37, "CRC_32 Q", 32, 0x814141AB, 0x00000000, false, false, 0x00000000, 36},
    {38, "CRC_64", 64, 0x42F0E1EBA9EA3693, 0, false, false, 0, 37},
    {39, "CRC_64 ECMA", 64, 0x42F0E1EBA9EA3693, 0xFFFFFFFFFFFFFFFF, true, true, 0xFFFFFFFFFFFFFFFF, 38},
    {40, "CRC_64 ISO", 64, 0x000000000000001B, 0xFFFFFFFFFFFFFFFF, true, true, 0xFFFFFFFFFFFFFFFF, 39},
    // clang-format on
}};

}  // namespace RV::Crc
