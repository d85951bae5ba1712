#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace quill::bench {

// Traces of the same frames in every format, made once in a folder of their own.
struct TraceFiles {
    std::filesystem::path folder;
    uint64_t canFrames = 0;  // classic, 8 bytes
    uint64_t fdFrames = 0;   // CAN FD, 64 bytes

    [[nodiscard]] std::string path(const char* name) const { return (folder / name).string(); }
};

// can.blf, fd.blf, can.asc, fd.asc, can.pcap, can.pcapng.
[[nodiscard]] TraceFiles makeTraceFiles(const std::filesystem::path& folder, uint64_t canFrames,
                                        uint64_t fdFrames);
// A BLF file of classic frames, stored without compression to reach its size soon.
void makeLargeBlf(const std::string& path, uint64_t frames);

}  // namespace quill::bench
