#include <gtest/gtest.h>

#include <random>

#include "quill_traceformats/blf_objects.h"
#include "quill_traceformats/bytes.h"

namespace quill::traceformats {

namespace {

std::vector<uint8_t> encoded(const TraceFrame& frame) {
    std::vector<uint8_t> bytes(blfObjectSize(frame), 0xEE);
    if (!bytes.empty()) encodeBlfFrame(frame, bytes.data());
    return bytes;
}

std::optional<TraceFrame> decoded(const std::vector<uint8_t>& bytes) {
    const auto header = decodeBlfObjectHeader(bytes);
    if (!header) return {};
    return decodeBlfFrame(*header, std::span(bytes).first(header->objectSize));
}

struct KindCase {
    const char* name;
    FrameKind kind;
    uint32_t flags;
    size_t length, most;
    BlfType type;
    uint16_t channel;
};

class BlfKind : public ::testing::TestWithParam<KindCase> {};

TEST_P(BlfKind, readsBackAsItWasWritten) {
    const KindCase& kind = GetParam();
    std::vector<uint8_t> data(kind.length);
    std::mt19937 random(7);
    for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
    TraceFrame frame;
    frame.kind = kind.kind;
    frame.flags = kind.flags;
    frame.timeNs = 0x1122334455667788U;
    frame.channel = kind.channel;
    frame.direction = FrameDirection::Tx;
    frame.id = 0x2A;
    frame.data = data;
    const bool hasCode = kind.kind == FrameKind::Can || kind.kind == FrameKind::CanError;
    if (hasCode || kind.kind == FrameKind::Lin) frame.dlc = dlcFromLength(kind.length);
    if (kind.kind == FrameKind::CanError) {
        frame.direction = FrameDirection::Rx;  // the object has none
        frame.errorFlags = 0xA5C3;
    }
    if (kind.kind == FrameKind::Lin) {
        frame.checksum = 0xBEEF;
        frame.dlc = static_cast<uint8_t>(kind.length);
    }
    if (kind.kind == FrameKind::FlexRay) {
        frame.channelMask = 2;
        frame.cycle = 63;
        frame.headerCrc = 0x7FF;
    }
    const std::vector<uint8_t> bytes = encoded(frame);
    EXPECT_EQ(loadU32(&bytes[12]), static_cast<uint32_t>(kind.type));
    EXPECT_EQ(loadU32(&bytes[8]), bytes.size());
    const auto back = decoded(bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->kind, frame.kind);
    EXPECT_EQ(back->flags, frame.flags);
    EXPECT_EQ(back->timeNs, frame.timeNs);
    EXPECT_EQ(back->channel, frame.channel);
    EXPECT_EQ(back->direction, frame.direction);
    EXPECT_EQ(back->id, kind.kind == FrameKind::Ethernet ? 0U : frame.id);
    EXPECT_EQ(back->dlc, frame.dlc);
    EXPECT_EQ(back->checksum, frame.checksum);
    EXPECT_EQ(back->cycle, frame.cycle);
    EXPECT_EQ(back->channelMask, frame.channelMask);
    EXPECT_EQ(back->headerCrc, frame.headerCrc);
    EXPECT_EQ(back->errorFlags, frame.errorFlags);
    EXPECT_TRUE(std::equal(back->data.begin(), back->data.end(), data.begin(), data.end()));
    // Any cut through the object must be refused or read short, never read beyond.
    for (size_t size = 0; size < bytes.size(); ++size) {
        const auto header = decodeBlfObjectHeader(std::span(bytes).first(size));
        if (header) static_cast<void>(decodeBlfFrame(*header, std::span(bytes).first(size)));
    }
    data.resize(kind.most + 1);
    frame.data = data;
    if (kind.kind != FrameKind::CanError) {
        EXPECT_EQ(blfObjectSize(frame), 0U);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, BlfKind,
    ::testing::Values(
        KindCase{"classic", FrameKind::Can, kCanExtended, 8, 8, BlfType::CanMessage2, 300},
        KindCase{"remote", FrameKind::Can, kCanRemote, 0, 8, BlfType::CanMessage2, 1},
        KindCase{"fd", FrameKind::Can, kCanFd | kCanBitRateSwitch, 64, 64, BlfType::CanFdMessage64,
                 255},
        KindCase{"fdOddLength", FrameKind::Can, kCanFd | kCanErrorState, 7, 64,
                 BlfType::CanFdMessage64, 1},
        KindCase{"fdBeyondByteChannel", FrameKind::Can, kCanFd | kCanErrorState, 12, 64,
                 BlfType::CanFdMessage, 256},
        KindCase{"error", FrameKind::CanError, kCanExtended, 4, 8, BlfType::CanErrorExt, 2},
        KindCase{"lin", FrameKind::Lin, kLinEnhancedChecksum, 8, 8, BlfType::LinMessage2, 3},
        KindCase{"ethernet", FrameKind::Ethernet, 0, 65535, 65535, BlfType::EthernetFrameEx, 4},
        KindCase{"flexray", FrameKind::FlexRay, kFlexRayNull | kFlexRayPreamble, 254, 254,
                 BlfType::FlexRayReceiveEx, 5}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(BlfLoss, isABeginAndAnEndThatNamesTheNumber) {
    TraceFrame loss;
    loss.kind = FrameKind::LossMarker;
    loss.timeNs = 9000;
    loss.firstLostNs = 5000;
    loss.lostFrames = 77;
    std::vector<uint8_t> bytes = encoded(loss);
    const auto begin = decoded(bytes);
    ASSERT_TRUE(begin);
    EXPECT_EQ(begin->timeNs, 5000U);
    EXPECT_EQ(begin->lostFrames, 0U);
    bytes.erase(bytes.begin(), bytes.begin() + loadU32(&bytes[8]));
    const auto end = decoded(bytes);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->timeNs, 9000U);
    EXPECT_EQ(end->firstLostNs, 5000U);
    EXPECT_EQ(end->lostFrames, 77U);
}

TEST(BlfHeaderBytes, readBackAndRefuseStrangers) {
    BlfHeader header;
    header.compressionLevel = 6;
    header.fileSize = 1ULL << 40U;
    header.uncompressedSize = 1ULL << 41U;
    header.objectCount = 12345;
    header.start = calendarFromEpoch(1'709'210'096'789'000'000U, 3600);
    std::array<uint8_t, kBlfFileHeaderSize> bytes{};
    encodeBlfHeader(header, bytes);
    const auto back = decodeBlfHeader(bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->compressionLevel, 6);
    EXPECT_EQ(back->fileSize, header.fileSize);
    EXPECT_EQ(back->uncompressedSize, header.uncompressedSize);
    EXPECT_EQ(back->objectCount, 12345U);
    EXPECT_EQ(back->start, (CalendarTime{2024, 2, 4, 29, 13, 34, 56, 789}));
    EXPECT_EQ(epochFromCalendar(back->start, 3600), 1'709'210'096'789'000'000U);
    EXPECT_FALSE(decodeBlfHeader(std::span(bytes).first(143)));
    bytes[0] = 'X';
    EXPECT_FALSE(decodeBlfHeader(bytes));
}

TEST(CalendarFields, thatAreNoDateGiveZero) {
    EXPECT_EQ(epochFromCalendar({}, 0), 0U);
    EXPECT_EQ(epochFromCalendar({2023, 2, 0, 29, 0, 0, 0, 0}, 0), 0U);
    EXPECT_EQ(epochFromCalendar({65535, 1, 0, 1, 0, 0, 0, 0}, 0), 0U);
    EXPECT_EQ(epochFromCalendar({1969, 12, 0, 31, 0, 0, 0, 0}, 0), 0U);
}

}  // namespace

}  // namespace quill::traceformats
