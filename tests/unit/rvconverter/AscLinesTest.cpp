#include <gtest/gtest.h>

#include "quill_traceformats/asc_layout.h"
#include "quill_traceformats/text_format.h"

namespace quill::traceformats {

namespace {

std::string lineOf(const TraceFrame& frame) {
    std::vector<char> room(ascLineRoom(frame));
    if (room.empty()) return {};
    const char* end = writeAscLine(frame, room.data());
    EXPECT_LE(static_cast<size_t>(end - room.data()), room.size());
    return std::string(static_cast<const char*>(room.data()), end);
}

TraceFrame frameOf(FrameKind kind, uint64_t timeNs, uint16_t channel, uint32_t id,
                   std::span<const uint8_t> data) {
    TraceFrame frame;
    frame.kind = kind;
    frame.timeNs = timeNs;
    frame.channel = channel;
    frame.id = id;
    frame.data = data;
    frame.dlc = dlcFromLength(data.size());
    return frame;
}

constexpr uint8_t kBytes[] = {0x00, 0x1A, 0xFF};

struct LineCase {
    const char* name;
    TraceFrame frame;
    const char* line;
};

std::vector<LineCase> lineCases() {
    std::vector<LineCase> cases;
    TraceFrame can = frameOf(FrameKind::Can, 1'000'000, 1, 0x123, kBytes);
    cases.push_back({"standard", can, "   0.001000000 1  123             Rx   d 3 00 1A FF\n"});
    can.flags = kCanExtended;
    can.id = 0x18FEF100;
    can.direction = FrameDirection::Tx;
    cases.push_back({"extended", can, "   0.001000000 1  18FEF100x       Tx   d 3 00 1A FF\n"});
    can.flags = kCanRemote;
    can.id = 0;
    can.dlc = 4;
    can.direction = FrameDirection::TxRequest;
    cases.push_back({"remote", can, "   0.001000000 1  0               TxRq r 4\n"});
    TraceFrame longDlc = frameOf(FrameKind::Can, 12'345'678'901'234, 20, 0x7FF, kBytes);
    longDlc.dlc = 13;
    cases.push_back({"dlcAboveEight", longDlc,
                     "12345.678901234 20  7FF             Rx   d D 00 1A FF 00 00 00 00 00\n"});
    TraceFrame fd = frameOf(FrameKind::Can, 0, 2, 0x300, kBytes);
    fd.flags = kCanFd | kCanBitRateSwitch;
    cases.push_back(
        {"fd", fd,
         "   0.000000000 CANFD 2 Rx   300       1 0 3 3 00 1A FF        0    0 3000 0 0 "
         "0 0 0\n"});
    fd.flags = kCanFd | kCanErrorState | kCanExtended;
    fd.data = {};
    fd.dlc = 0;
    cases.push_back(
        {"fdEmpty", fd,
         "   0.000000000 CANFD 2 Rx   300x      0 1 0 0        0    0 5000 0 0 0 0 0\n"});
    TraceFrame error = frameOf(FrameKind::CanError, 13'000'000, 1, 0, {});
    error.errorFlags = 0x20A2;
    error.errorCode = 0x82;
    cases.push_back(
        {"error", error,
         "   0.013000000 1  ErrorFrame  Flags = 0x3 CodeExt = 0x20A2 Code = 0x82 ID = 0 "
         "DLC = 0 Position = 0 Length = 0\n"});
    TraceFrame lin = frameOf(FrameKind::Lin, 20'000'000, 1, 0x2D, kBytes);
    lin.checksum = 0x55;
    lin.flags = kLinEnhancedChecksum;
    cases.push_back(
        {"lin", lin,
         "   0.020000000 Li 2D              Rx   3 00 1A FF  checksum = 55   header time =   0, "
         "full time =   0  SOF = 0.000000  BR = 0  break = 0 0   EOH = 0.000000   EOB = 0.000000 "
         "0.000000 0.000000   sim = 0  EOF = 0.020000000  RBR = 0  HBR = 0  HSO = 0  RSO = 0  "
         "CSM = enhanced\n"});
    cases.push_back({"ethernet", frameOf(FrameKind::Ethernet, 60'000'000, 1, 0, kBytes),
                     "   0.060000000 ETH 1 Rx   3:001AFF\n"});
    TraceFrame flexray = frameOf(FrameKind::FlexRay, 70'000'000, 2, 0x31, kBytes);
    flexray.channelMask = 3;
    flexray.cycle = 63;
    flexray.headerCrc = 0x2AA;
    flexray.flags = kFlexRayValidData | kFlexRaySync;
    cases.push_back(
        {"flexray", flexray, "   0.070000000 Fr 2 RMSG 3 31 63 Rx   6 2AA 3 00 1A FF\n"});
    TraceFrame loss;
    loss.kind = FrameKind::LossMarker;
    loss.timeNs = 2'000'000'000;
    loss.firstLostNs = 1'000'000'000;
    loss.lostFrames = 20000;
    cases.push_back({"loss", loss, "//    2.000000000 20000 frames lost from    1.000000000\n"});
    return cases;
}

class AscLine : public ::testing::TestWithParam<LineCase> {};

TEST_P(AscLine, hasItsForm) { EXPECT_EQ(lineOf(GetParam().frame), GetParam().line); }

INSTANTIATE_TEST_SUITE_P(Forms, AscLine, ::testing::ValuesIn(lineCases()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(AscLineRoom, holdsTheLargestFrameOfEachKind) {
    const std::vector<uint8_t> data(65536, 0xAB);
    const struct {
        FrameKind kind;
        uint32_t flags;
        size_t most;
    } kinds[] = {{FrameKind::Can, kCanExtended, 8},
                 {FrameKind::Can, kCanFd | kCanExtended, 64},
                 {FrameKind::Lin, 0, 8},
                 {FrameKind::Ethernet, 0, 65535},
                 {FrameKind::FlexRay, 0, 254}};
    for (const auto& kind : kinds) {
        TraceFrame frame = frameOf(kind.kind, UINT64_MAX, UINT16_MAX, 0x1FFFFFFF,
                                   std::span(data).first(kind.most));
        frame.flags = kind.flags;
        EXPECT_GT(lineOf(frame).size(), kind.most * 2);
        frame.data = std::span(data).first(kind.most + 1);
        EXPECT_EQ(ascLineRoom(frame), 0U);
    }
}

TEST(AscHeader, hasTheSameLengthForEveryDate) {
    CalendarTime late{2031, 12, 6, 31, 23, 59, 59, 999};
    const CalendarTime early{1999, 1, 0, 3, 0, 0, 0, 0};
    EXPECT_EQ(ascHeader(late).size(), kAscHeaderSize);
    EXPECT_EQ(ascHeader(early).size(), kAscHeaderSize);
    EXPECT_EQ(ascDate(late), "Sat Dec 31 23:59:59.999 2031");
    EXPECT_EQ(ascDate(early), "Sun Jan 03 00:00:00.000 1999");
}

TEST(NumberText, matchesTheStandardLibrary) {
    for (const uint64_t value : {0ULL, 9ULL, 10ULL, 99ULL, 100ULL, 12345ULL, 999999ULL,
                                 4294967296ULL, 18446744073709551615ULL}) {
        char text[32];
        EXPECT_EQ(std::string(text, putDecimal(text, value)), std::to_string(value));
        char expected[32];
        std::snprintf(expected, sizeof expected, "%X", static_cast<uint32_t>(value));
        EXPECT_EQ(std::string(text, putHex(text, static_cast<uint32_t>(value))), expected);
        std::snprintf(expected, sizeof expected, "%4llu.%09llu",
                      static_cast<unsigned long long>(value / 1'000'000'000U),
                      static_cast<unsigned long long>(value % 1'000'000'000U));
        EXPECT_EQ(std::string(text, putSeconds(text, value)), expected);
    }
}

}  // namespace

}  // namespace quill::traceformats
