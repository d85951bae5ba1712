#include "recorder/floor_loop.h"

#include <libdeflate.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace bench {

namespace {

constexpr size_t kContent = 131072;
constexpr size_t kHeader = 32;

template <class T>
uint8_t* put(uint8_t* out, T value) {
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
}

size_t layOut(const TrafficFrame& frame, bool fd, uint8_t* out) {
    const uint32_t size = fd ? 136 : 56;
    uint8_t* to = out;
    std::memcpy(to, "LOBJ", 4);
    to = put<uint16_t>(to + 4, 32);
    to = put<uint16_t>(to, 1);
    to = put<uint32_t>(to, size);
    to = put<uint32_t>(to, fd ? 101 : 86);
    to = put<uint32_t>(to, 2);
    to = put<uint32_t>(to, 0);
    to = put<uint64_t>(to, frame.timeNs - 1'700'000'000'000'000'000U);
    std::memset(to, 0, size - 32);
    if (fd) {
        to[0] = 1;
        to[1] = 15;
        to[2] = 64;
        put<uint32_t>(to + 4, frame.id);
        put<uint32_t>(to + 12, 0x3000);
        std::memcpy(to + 40, frame.data, 64);
    } else {
        to[0] = 1;
        to[3] = 8;
        put<uint32_t>(to + 4, frame.id);
        std::memcpy(to + 8, frame.data, 8);
    }
    return size;
}

// One thread's share: every container that it takes from the common counter.
void runShare(const std::vector<TrafficFrame>& traffic, bool fd, int level, std::FILE* file,
              std::atomic<size_t>& next, std::atomic<uint64_t>& bytes) {
    const size_t perContainer = kContent / (fd ? 136 : 56);
    std::vector<uint8_t> content(kContent);
    std::vector<uint8_t> packed(kHeader + kContent + 64);
    libdeflate_compressor* compressor = libdeflate_alloc_compressor(level);
    if (compressor == nullptr) std::abort();
    while (true) {
        const size_t begin = next.fetch_add(perContainer);
        if (begin >= traffic.size()) break;
        const size_t end = std::min(begin + perContainer, traffic.size());
        size_t used = 0;
        for (size_t i = begin; i < end; ++i) used += layOut(traffic[i], fd, &content[used]);
        const size_t size =
            kHeader + libdeflate_zlib_compress(compressor, content.data(), used,
                                               packed.data() + kHeader, packed.size() - kHeader);
        std::memcpy(packed.data(), "LOBJ", 4);
        if (std::fwrite(packed.data(), 1, size, file) != size) std::abort();
        bytes += size;
    }
    libdeflate_free_compressor(compressor);
}

}  // namespace

uint64_t writeFloor(const std::string& path, const std::vector<TrafficFrame>& traffic, bool fd,
                    int level, int threads) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) std::abort();
    std::atomic<size_t> next{0};
    std::atomic<uint64_t> bytes{0};
    std::vector<std::jthread> workers;
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&] { runShare(traffic, fd, level, file, next, bytes); });
    }
    workers.clear();
    std::fclose(file);
    return bytes;
}

}  // namespace bench
