#pragma once

#include <array>
#include <cstdint>

namespace scripts {

// CRC codes of the frame update, 0 for none. They follow the names of the configuration model,
// which has no entry for the variant and therefore counts one less from there on.
enum class CrcType : uint8_t {};

struct CrcTypeName {
    const char* name;
    uint8_t code;
};

inline constexpr std::array<CrcTypeName, 41> kCrcTypes = {{
    {"CRC_NONE", 0},
    {"CRC4_ITU", 1},
    {"CRC8", 2},
    {"CRC8_VARIANT", 3},
    {"CRC8_SAE_J1850", 4},
    {"CRC8_SAE_J1850_ZERO", 5},
    {"CRC8_H2F", 6},
    {"CRC8_ITU", 7},
    {"CRC8_ROHC", 8},
    {"CRC8_EBU", 9},
    {"CRC8_HDLC", 10},
    {"CRC8_MAXIM", 11},
    {"CRC8_WCDMA", 12},
    {"CRC8_LTE", 13},
    {"CRC16_ARC", 14},
    {"CRC16_BUYPASS", 15},
    {"CRC16_CCITTFALSE", 16},
    {"CRC16_MCRF4XX", 17},
    {"CRC16_CDMA2000", 18},
    {"CRC16_CMS", 19},
    {"CRC16_DECTR", 20},
    {"CRC16_DECTX", 21},
    {"CRC16_DNP", 22},
    {"CRC16_GENIBUS", 23},
    {"CRC16_KERMIT", 24},
    {"CRC16_MAXIM", 25},
    {"CRC16_MODBUS", 26},
    {"CRC16_T10DIF", 27},
    {"CRC16_USB", 28},
    {"CRC16_X25", 29},
    {"CRC16_XMODEM", 30},
    {"CRC32", 31},
    {"CRC32_P4", 32},
    {"CRC32_BZIP2", 33},
    {"CRC32_C", 34},
    {"CRC32_MPEG2", 35},
    {"CRC32_POSIX", 36},
    {"CRC32_Q", 37},
    {"CRC64", 38},
    {"CRC64_ECMA", 39},
    {"CRC64_ISO", 40},
}};

}  // namespace scripts
