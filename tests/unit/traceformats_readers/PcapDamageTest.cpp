#include <gtest/gtest.h>

#include <functional>

#include "FrameCollector.h"
#include "TraceBuilder.h"

namespace quill::traceformats::test {
namespace {

constexpr size_t kRecord = 16 + 60;

std::vector<unsigned> packetNumbersOf(const Collected& got) {
    std::vector<unsigned> numbers;
    for (const auto& frame : got.frames) numbers.push_back(frame.data.at(20));
    return numbers;
}

struct PcapCase {
    const char* name;
    std::function<void(Bytes&)> harm;
    std::vector<unsigned> frames;
    bool damage;
};
class PcapDamage : public ::testing::TestWithParam<PcapCase> {};

TEST_P(PcapDamage, keepsExactlyWhatIsWhole) {
    Bytes bytes = pcapFile(5);
    GetParam().harm(bytes);
    const Collected got = collect(Format::Pcap, bytes, 2);
    ASSERT_TRUE(got.header);
    EXPECT_EQ(packetNumbersOf(got), GetParam().frames);
    EXPECT_EQ(!got.damage.empty(), GetParam().damage);
}

const auto kName = [](const auto& test) { return std::string(test.param.name); };
INSTANTIATE_TEST_SUITE_P(
    Records, PcapDamage,
    ::testing::Values(
        PcapCase{"whole", [](Bytes&) {}, {0, 1, 2, 3, 4}, false},
        PcapCase{"capturedAllOnes",
                 [](Bytes& b) { set32(b, 24 + 2 * kRecord + 8, 0xFFFFFFFF); },
                 {0, 1, 3, 4},
                 true},
        PcapCase{"cutInPacket", [](Bytes& b) { b.resize(b.size() - 1); }, {0, 1, 2, 3}, true},
        PcapCase{"cutInHeader", [](Bytes& b) { b.resize(24 + 2 * kRecord + 15); }, {0, 1}, true},
        PcapCase{
            "snapLengthBelowCaptured", [](Bytes& b) { set32(b, 16, 10); }, {0, 1, 2, 3, 4}, false},
        PcapCase{"foreignLinkType", [](Bytes& b) { set32(b, 20, 147); }, {}, false},
        PcapCase{"flagsInTheLinkType",
                 [](Bytes& b) { set32(b, 20, 0x14000001); },
                 {0, 1, 2, 3, 4},
                 false}),
    kName);

TEST(PcapFormats, byteOrdersAgree) {
    const Collected little = collect(Format::Pcap, pcapFile(3));
    const Collected big = collect(Format::Pcap, pcapFile(3, true));
    ASSERT_EQ(big.frames.size(), 3U);
    EXPECT_EQ(big.frames[2].frame.timeNs, 1'700'000'002'000'500'000U);
    EXPECT_EQ(little.frames[2].frame.timeNs, big.frames[2].frame.timeNs);
}

TEST(PcapFormats, canPacketsBelowTheirHeaderAreDropped) {
    for (const size_t size : {size_t{0}, size_t{7}, size_t{8}, size_t{15}, size_t{16}}) {
        Bytes bytes = pcapFile(0, false, 227);
        const auto length = static_cast<uint32_t>(size);
        for (const uint32_t word : {1U, 0U, length, length}) put32(bytes, word);
        Bytes packet = {0x80, 0, 1, 0x23, 8, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
        packet.resize(size);
        append(bytes, packet);
        const Collected got = collect(Format::Pcap, bytes);
        EXPECT_EQ(got.frames.size(), size == 16 ? 1U : 0U) << size;
        EXPECT_EQ(got.dropped, size == 16 ? 0U : 1U) << size;
    }
}

TEST(PcapFormats, linPacketsGiveIdentifierChecksumAndModel) {
    Bytes bytes = pcapFile(0, false, 212);
    for (const uint32_t word : {1U, 0U, 10U, 10U}) put32(bytes, word);
    append(bytes, {1, 0, 0, 0, 0x22, 0xC1, 0x5A, 0, 0xAA, 0xBB});
    const Collected got = collect(Format::Pcap, bytes);
    ASSERT_EQ(got.frames.size(), 1U);
    EXPECT_EQ(got.frames[0].frame.kind, FrameKind::Lin);
    EXPECT_EQ(got.frames[0].frame.id, 1U);
    EXPECT_EQ(got.frames[0].frame.checksum, 0x5A);
    EXPECT_EQ(got.frames[0].frame.flags, kLinEnhancedChecksum);
    EXPECT_EQ(got.frames[0].data, (Bytes{0xAA, 0xBB}));
}

// Section, interface, five packets; offsets of the packets.
struct NextFile {
    Bytes bytes = pcapngSection();
    std::vector<size_t> packets;

    NextFile() {
        append(bytes, pcapngInterface(1));
        for (uint32_t i = 0; i < 5; ++i) {
            packets.push_back(bytes.size());
            append(bytes, pcapngPacket(0, i * 1000, ethernetPacket(i)));
        }
    }
};

struct NextCase {
    const char* name;
    std::function<void(NextFile&)> harm;
    std::vector<unsigned> frames;
    bool damage;
    uint64_t dropped;
};
class PcapngDamage : public ::testing::TestWithParam<NextCase> {};

TEST_P(PcapngDamage, keepsExactlyWhatIsWhole) {
    NextFile file;
    GetParam().harm(file);
    const Collected got = collect(Format::Pcapng, file.bytes, 2);
    ASSERT_TRUE(got.header);
    EXPECT_EQ(packetNumbersOf(got), GetParam().frames);
    EXPECT_EQ(!got.damage.empty(), GetParam().damage);
    EXPECT_EQ(got.dropped, GetParam().dropped);
}

std::function<void(NextFile&)> lengthOfThird(uint32_t length) {
    return [length](NextFile& file) { set32(file.bytes, file.packets[2] + 4, length); };
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, PcapngDamage,
    ::testing::Values(NextCase{"whole", [](NextFile&) {}, {0, 1, 2, 3, 4}, false, 0},
                      NextCase{"lengthZero", lengthOfThird(0), {0, 1, 3, 4}, true, 0},
                      NextCase{"lengthEleven", lengthOfThird(11), {0, 1, 3, 4}, true, 0},
                      NextCase{
                          "lengthNotAMultipleOfFour", lengthOfThird(93), {0, 1, 3, 4}, true, 0},
                      NextCase{"lengthAllOnes", lengthOfThird(0xFFFFFFFF), {0, 1, 3, 4}, true, 0},
                      NextCase{"lengthPastTheEnd", lengthOfThird(100'000), {0, 1, 3, 4}, true, 0},
                      NextCase{"trailerDiffers",
                               [](NextFile& f) { set32(f.bytes, f.packets[3] - 4, 8); },
                               {0, 1, 2, 3, 4},
                               true,
                               0},
                      NextCase{"interfaceOutOfRange",
                               [](NextFile& f) { set32(f.bytes, f.packets[1] + 8, 1); },
                               {0, 2, 3, 4},
                               false,
                               1},
                      NextCase{"capturedPastTheBlock",
                               [](NextFile& f) { set32(f.bytes, f.packets[1] + 20, 61); },
                               {0, 2, 3, 4},
                               false,
                               1},
                      NextCase{"cutInABlock",
                               [](NextFile& f) { f.bytes.resize(f.packets[4] + 30); },
                               {0, 1, 2, 3},
                               true,
                               0},
                      NextCase{"rubbishBetweenBlocks",
                               [](NextFile& f) {
                                   f.bytes.insert(f.bytes.begin() + static_cast<long>(f.packets[2]),
                                                  37, 0xEE);
                               },
                               {0, 1, 2, 3, 4},
                               true,
                               0}),
    kName);

TEST(PcapngFormats, aPacketBeforeAnyInterfaceIsDropped) {
    Bytes bytes = pcapngSection();
    append(bytes, pcapngPacket(0, 0, ethernetPacket(1)));
    append(bytes, pcapngInterface(1));
    append(bytes, pcapngPacket(0, 0, ethernetPacket(2)));
    const Collected got = collect(Format::Pcapng, bytes);
    EXPECT_EQ(packetNumbersOf(got), std::vector<unsigned>{2});
    EXPECT_EQ(got.dropped, 1U);
}

TEST(PcapngFormats, aNewSectionChangesByteOrderAndForgetsInterfaces) {
    Bytes bytes = pcapngSection();
    append(bytes, pcapngInterface(147));
    append(bytes, pcapngSection(true));
    append(bytes, pcapngInterface(1, {}, true));
    append(bytes, pcapngPacket(0, 7, ethernetPacket(9), true));
    const Collected got = collect(Format::Pcapng, bytes);
    ASSERT_EQ(packetNumbersOf(got), std::vector<unsigned>{9});
    EXPECT_EQ(got.frames[0].frame.timeNs, 7000U);
}

struct ResolutionCase {
    const char* name;
    uint8_t resolution;
    uint64_t count;
    uint64_t ns;
    bool readable;
};
class Resolution : public ::testing::TestWithParam<ResolutionCase> {};

TEST_P(Resolution, countsBecomeNanoseconds) {
    Bytes options;
    put16(options, 9);
    put16(options, 1);
    put32(options, GetParam().resolution);
    put16(options, 14);  // offset of 2 seconds
    put16(options, 8);
    put64(options, 2);
    put32(options, 0);
    Bytes bytes = pcapngSection();
    append(bytes, pcapngInterface(1, options));
    append(bytes, pcapngPacket(0, GetParam().count, ethernetPacket(1)));
    const Collected got = collect(Format::Pcapng, bytes);
    ASSERT_EQ(got.frames.size(), GetParam().readable ? 1U : 0U);
    if (GetParam().readable) {
        EXPECT_EQ(got.frames[0].frame.timeNs, GetParam().ns + 2'000'000'000U);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Units, Resolution,
    ::testing::Values(ResolutionCase{"seconds", 0, 3, 3'000'000'000U, true},
                      ResolutionCase{"microseconds", 6, 1'500'000, 1'500'000'000U, true},
                      ResolutionCase{"nanoseconds", 9, 123, 123, true},
                      ResolutionCase{"picoseconds", 12, 5'000'999, 5000, true},
                      ResolutionCase{"absurdlyFine", 127, 77, 0, true},
                      ResolutionCase{"halves", 0x81, 3, 1'500'000'000U, true},
                      ResolutionCase{"binaryMicroseconds", 0x94, 3U << 19U, 1'500'000'000U, true},
                      ResolutionCase{"binaryAbsurdlyFine", 0xFF, 77, 0, true},
                      ResolutionCase{"overflow", 0, 0xFFFFFFFFFFFFFFFFU, 0, false}),
    kName);

}  // namespace
}  // namespace quill::traceformats::test
