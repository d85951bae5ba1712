#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <random>

#include "FrameCollector.h"
#include "TraceBuilder.h"

namespace quill::traceformats::test {
namespace {

// Long enough for some thousand files, short enough for every run of the suite.
constexpr auto kTime = std::chrono::milliseconds(1500);

std::string ascSeed() {
    return "date Sat Sep 30 15:06:13.191 2017\nbase hex  timestamps relative\n"
           "Begin Triggerblock Sat Sep 30 15:06:13.191 2017\n0.1 1 1FFx Rx d 3 01 02 03\n"
           "0.2 CANFD 2 Tx 12 Name 1 0 9 12 0 1 2 3 4 5 6 7 8 9 a b 10 20 303000 0 0 0 0 0\n"
           "0.3 Li 3c Rx 2 aa bb checksum = 55 CSM = enhanced\n0.4 ETH 1 Rx 4:01020304\n"
           "0.5 1 ErrorFrame Flags = 0xe CodeExt = 0x20a2 Code = 0x82 ID = 0 Position = 5\n"
           "0.6 Fr 1 RMSG 3 2A 5 Rx 2 2aa 2 de ad\nEnd Triggerblock\n";
}

Bytes seedFor(Format format, uint16_t method) {
    if (format == Format::Asc) {
        const std::string text = ascSeed();
        return {text.begin(), text.end()};
    }
    if (format == Format::Pcap) return pcapFile(6, method == 2, method == 2 ? 1 : 227);
    if (format == Format::Pcapng) {
        Bytes bytes = pcapngSection();
        for (const uint16_t link : {uint16_t{1}, uint16_t{227}, uint16_t{212}})
            append(bytes, pcapngInterface(link));
        for (uint32_t i = 0; i < 6; ++i) append(bytes, pcapngPacket(i % 3, i, ethernetPacket(i)));
        append(bytes, pcapngSection(true));
        append(bytes, pcapngInterface(1, {}, true));
        append(bytes, pcapngPacket(0, 9, ethernetPacket(9), true));
        return bytes;
    }
    Bytes content = canObjects(0, 5);
    for (const uint32_t type : {2U, 11U, 29U, 41U, 50U, 57U, 66U, 71U, 73U, 86U, 100U, 101U, 104U,
                                120U, 125U, 126U, 200U}) {
        append(content, blfObject(type, Bytes(160, 1)));
    }
    Bytes bytes = blfHeader();
    append(bytes, blfContainer(std::span(content).first(1000), method));
    append(bytes, blfContainer(std::span(content).subspan(1000), method));
    append(bytes, canObjects(90, 3));
    return bytes;
}

void mutate(Bytes& bytes, std::mt19937& random) {
    for (auto change = random() % 6 + 1; change > 0 && !bytes.empty(); --change) {
        const size_t at = random() % bytes.size();
        switch (random() % 6) {
            case 0:
                bytes[at] = static_cast<uint8_t>(random());
                break;
            case 1:
                bytes[at] ^= static_cast<uint8_t>(1U << random() % 8);
                break;
            case 2:
                bytes.resize(at);
                break;
            case 3:
                bytes.insert(bytes.begin() + static_cast<long>(at), random() % 40,
                             static_cast<uint8_t>(random()));
                break;
            case 4: {
                static constexpr uint32_t kEdges[] = {0, 1, 15, 31, 32, 0x7FFFFFFF, 0xFFFFFFFF};
                if (at + 4 <= bytes.size()) set32(bytes, at, kEdges[random() % 7]);
                break;
            }
            default: {
                const size_t length = std::min<size_t>(random() % 200, bytes.size() - at);
                const Bytes piece(bytes.begin() + static_cast<long>(at),
                                  bytes.begin() + static_cast<long>(at + length));
                bytes.insert(bytes.begin() + static_cast<long>(random() % bytes.size()),
                             piece.begin(), piece.end());
            }
        }
    }
}

class Mutation : public ::testing::TestWithParam<Format> {};

// Whatever the bytes, reading ends, stays within what the file can hold and does not depend on
// where batches are cut.
TEST_P(Mutation, readersSurviveAndStayConsistent) {
    const uint32_t seed = std::random_device{}();
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    const auto end = std::chrono::steady_clock::now() + kTime;
    uint64_t files = 0;
    do {
        Bytes bytes = seedFor(GetParam(), random() % 2 == 0 ? 0 : 2);
        mutate(bytes, random);
        const Collected all = collect(GetParam(), bytes, 1000);
        const Collected single = collect(GetParam(), bytes, 1);
        ASSERT_EQ(all.frames.size(), single.frames.size()) << "seed " << seed << " file " << files;
        ASSERT_EQ(all.units, single.units) << "seed " << seed << " file " << files;
        ASSERT_EQ(all.units, all.frames.size() + all.skipped + all.dropped);
        ASSERT_LE(all.units, bytes.size() * 100);
        ++files;
    } while (std::chrono::steady_clock::now() < end);
    EXPECT_GT(files, 0U);
}

std::string nameOf(const ::testing::TestParamInfo<Format>& test) {
    constexpr const char* kNames[] = {"blf", "asc", "pcap", "pcapng"};
    return kNames[static_cast<size_t>(test.param)];
}

INSTANTIATE_TEST_SUITE_P(Formats, Mutation,
                         ::testing::Values(Format::Blf, Format::Asc, Format::Pcap, Format::Pcapng),
                         nameOf);

}  // namespace
}  // namespace quill::traceformats::test
