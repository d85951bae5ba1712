#pragma once

#include <cstdint>
#include <string>

namespace rv {

// Output formats of the library. The open implementation writes the first two.
enum class ConvertType : uint32_t {
    Blf = 0,
    Asc = 1,
    Mf4Signal = 2,
    Pcap = 3,
    UartText = 4,
    UartHex = 5,
    AnalogInText = 6,
    DigitalInText = 7,
};

// What to write and where. Members left alone mean the library's own defaults.
struct ConvertInfo {
    uint32_t type = 0;
    std::wstring path;
    int32_t extraParam = 1;   // without meaning for BLF and ASC
    int32_t extraLimit = -1;  // likewise

    // BLF: 0 stores, 1 fastest, 9 smallest; -1 takes the environment variable
    // RV_BLF_COMPRESSION_LEVEL or, without it, level 1.
    int32_t compressionLevel = -1;
    // BLF: threads that compress, 1 to 8; 0 takes two, or one on a machine of one processor.
    int32_t compressionThreads = 0;
};

}  // namespace rv
