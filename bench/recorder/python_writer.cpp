#include "recorder/python_writer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace bench {

namespace {

bool dumpTraffic(const std::string& path, const std::vector<TrafficFrame>& traffic, size_t frames) {
    constexpr size_t kFrame = 77;
    std::vector<uint8_t> bytes(kFrame * std::min(frames, traffic.size()));
    for (size_t at = 0; at < bytes.size(); at += kFrame) {
        const TrafficFrame& frame = traffic[at / kFrame];
        std::memcpy(&bytes[at], &frame.timeNs, 8);
        std::memcpy(&bytes[at + 8], &frame.id, 4);
        bytes[at + 12] = frame.length;
        std::memcpy(&bytes[at + 13], frame.data, 64);
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool whole = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && whole;
}

}  // namespace

std::optional<double> pythonRate(const std::string& path, const std::vector<TrafficFrame>& traffic,
                                 size_t frames, bool fd, int level) {
    const std::string dump = path + ".traffic";
    if (!dumpTraffic(dump, traffic, frames)) return {};
    const std::string command =
        "/usr/bin/python3 '" QUILL_SOURCE_DIR "/bench/recorder/write_with_python_can.py' '" + path +
        "' '" + dump + (fd ? "' 1 " : "' 0 ") + std::to_string(level) + " 2>/dev/null";
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return {};
    double rate = 0;
    const bool got = std::fscanf(pipe, "%lf", &rate) == 1;
    pclose(pipe);
    if (!got) return {};
    return rate;
}

}  // namespace bench
