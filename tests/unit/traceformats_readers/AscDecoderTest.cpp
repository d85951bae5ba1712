#include <gtest/gtest.h>

#include <string>

#include "FrameCollector.h"
#include "quill_traceformats/AscLineDecoder.h"
#include "quill_traceformats/asc_layout.h"

namespace quill::traceformats::test {
namespace {

std::vector<uint8_t> bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

Collected collectText(const std::string& text) { return collect(Format::Asc, bytesOf(text)); }

struct LineCase {
    const char* name;
    const char* line;
    size_t frames;
    uint64_t dropped;
};
class AscLines : public ::testing::TestWithParam<LineCase> {};

TEST_P(AscLines, areReadSkippedOrDropped) {
    const Collected got = collectText("base hex  timestamps absolute\n0.0 Start of measurement\n" +
                                      std::string(GetParam().line) + "\n");
    ASSERT_TRUE(got.header);
    EXPECT_EQ(got.frames.size(), GetParam().frames);
    EXPECT_EQ(got.dropped, GetParam().dropped);
    EXPECT_EQ(got.units, 2U);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, AscLines,
    ::testing::Values(LineCase{"classic", "0.1 1 123 Rx d 2 0A fF", 1, 0},
                      LineCase{"classicTabs", "\t0.1\t1\t123x\tTxRq\td\t1\t00\r", 1, 0},
                      LineCase{"symbolicName",
                               "0.1 1 Engine Rx d 1 00 Length = 0 BitCount = 0 ID = 100", 1, 0},
                      LineCase{"nameWithoutId", "0.1 1 Engine Rx d 1 00", 0, 1},
                      LineCase{"identifierTooLarge", "0.1 1 800 Rx d 1 00", 0, 1},
                      LineCase{"extendedTooLarge", "0.1 1 20000000x Rx d 1 00", 0, 1},
                      LineCase{"onlyTime", "0.1", 0, 1}, LineCase{"onlyChannel", "0.1 1", 0, 1},
                      LineCase{"noLength", "0.1 1 123 Rx d", 0, 1},
                      LineCase{"tooFewBytes", "0.1 1 123 Rx d 8 00 01", 0, 1},
                      LineCase{"byteTooLarge", "0.1 1 123 Rx d 1 100", 0, 1},
                      LineCase{"tooManyBytes", "0.1 1 123 Rx d 1 00 01 02 03", 1, 0},
                      LineCase{"longLength", "0.1 1 123 Rx d D 00 01 02 03 04 05 06 07", 1, 0},
                      LineCase{"remote", "0.1 1 123 Rx r", 1, 0},
                      LineCase{"neitherDataNorRemote", "0.1 1 123 Rx q 1 00", 0, 1},
                      LineCase{"fdShort", "0.1 CANFD 1 Rx 123 1 0 9 12 00 01", 0, 1},
                      LineCase{"fdTooLong", "0.1 CANFD 1 Rx 123 1 0 f 65 00", 0, 1},
                      LineCase{"fdWithoutTail", "0.1 CANFD 1 Rx 123 1 0 1 1 55", 1, 0},
                      LineCase{"fdNoFields", "0.1 CANFD 1 Rx 123", 0, 1},
                      LineCase{"linTooLong", "0.1 Li 3c Rx 9 00 00 00 00 00 00 00 00 00", 0, 1},
                      LineCase{"linIdTooLarge", "0.1 Li 40 Rx 1 00", 0, 1},
                      LineCase{"linEvent", "0.1 Li WakeupFrame", 0, 0},
                      LineCase{"ethernetOdd", "0.1 ETH 1 Rx 2:001", 0, 1},
                      LineCase{"ethernetLengthAllOnes", "0.1 ETH 1 Rx ffffffff:00", 0, 1},
                      LineCase{"ethernetNoDigits", "0.1 ETH 1 Rx 1:zz", 0, 1},
                      LineCase{"overload", "0.1 2 OverloadFrame", 0, 0},
                      LineCase{"comment", "// 0.1 1 123 Rx d 0", 0, 0},
                      LineCase{"channelTooLarge", "0.1 99999999999 123 Rx d 0", 0, 0},
                      LineCase{"timeTooLarge", "99999999999999999999.0 1 123 Rx d 0", 0, 0},
                      LineCase{"timeWithoutPoint", "5 1 123 Rx d 0", 0, 0}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(AscFile, nothingButEventsIsReadAsHexAndAbsolute) {
    const Collected got = collectText("  1.5 2  1AB Rx d 1 FF\n");
    ASSERT_EQ(got.frames.size(), 1U);
    EXPECT_EQ(got.frames[0].frame.id, 0x1ABU);
    EXPECT_EQ(got.frames[0].frame.timeNs, 1'500'000'000U);
    EXPECT_EQ(got.facts.startNs, 0);
}

TEST(AscFile, triggerBlocksStartTimeAnew) {
    const std::string text =
        "date Sat Sep 30 15:06:13.000 2017\nbase hex  timestamps relative\n"
        "Begin Triggerblock Sat Sep 30 15:06:13.000 2017\n0.5 1 1 Rx d 0\n0.5 CAN 1 Status\n"
        "0.25 1 2 Rx d 0\nEnd Triggerblock\n"
        "Begin TriggerBlock Sat Sep 30 15:06:20.000 2017\n0.5 1 3 Rx d 0\nEnd TriggerBlock\n";
    const Collected got = collectText(text);
    ASSERT_EQ(got.frames.size(), 3U);
    EXPECT_EQ(got.frames[0].frame.timeNs, 500'000'000U);
    EXPECT_EQ(got.frames[1].frame.timeNs, 1'250'000'000U) << "events without a frame count";
    EXPECT_EQ(got.frames[2].frame.timeNs, 500'000'000U);
    TraceHeader header = got.facts;
    AscLineDecoder decoder(header);
    TraceFrame frame;
    (void)decoder.decode("Begin TriggerBlock Sat Sep 30 15:06:20.000 2017", frame);
    EXPECT_EQ(decoder.startNs() - header.startNs, 7'000'000'000);
}

struct DateCase {
    const char* name;
    const char* date;
    const char* same;  // null: not readable
};
class AscDates : public ::testing::TestWithParam<DateCase> {};

TEST_P(AscDates, areReadInTheLanguagesOfRecorders) {
    const auto start = [](const char* date) {
        return collectText(std::string("date ") + date + "\n1.0 1 1 Rx d 0\n").facts.startNs;
    };
    if (GetParam().same == nullptr) {
        EXPECT_EQ(start(GetParam().date), 0);
    } else {
        EXPECT_NE(start(GetParam().date), 0);
        EXPECT_EQ(start(GetParam().date), start(GetParam().same));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Dates, AscDates,
    ::testing::Values(
        DateCase{"german", "Sam Okt 30 15:06:13.191 2017", "Sat Oct 30 15:06:13.191 2017"},
        DateCase{"march", "Mi M\xE4r 1 00:00:00 2017", "Wed Mar 01 00:00:00.000 2017"},
        DateCase{"may", "Mon Mai 1 00:00:00 2017", "Mon May 1 00:00:00.000 2017"},
        DateCase{"afternoon", "Tue May 27 04:09:35.000 pm 2014", "Tue May 27 16:09:35.000 2014"},
        DateCase{"midnight", "Tue May 27 12:00:00 am 2014", "Tue May 27 00:00:00 2014"},
        DateCase{"noMonth", "Tue 27 04:09:35 2014", nullptr},
        DateCase{"hour25", "Tue May 27 25:09:35 2014", nullptr},
        DateCase{"february30", "Tue Feb 30 05:09:35 2014", nullptr}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(AscFile, oddBytesAndLongLinesCostOnlyTheirLine) {
    std::string text = "base hex  timestamps absolute\r\n0.1 1 1 Rx d 0\r\n";
    text += "0.2 1 2 Rx d 8 " + std::string(1'000'000, 'A') + "\r\n";
    text += std::string("0.3 1\0 3 Rx d 0\r\n", 17);
    text += "\xFF\xFE\x80\n\n\r\n0.4 1 4 Rx d 0";  // no line end behind the last line
    const Collected got = collectText(text);
    ASSERT_EQ(got.frames.size(), 2U);
    EXPECT_EQ(got.frames[1].frame.id, 4U);
    ASSERT_EQ(got.damage.size(), 1U);
    EXPECT_EQ(got.damage[0].position, 3U) << "line number";
}

// What the project's own writer puts into a line comes out of it again.
TEST(AscRoundTrip, everyKindOfFrame) {
    std::vector<OwnedFrame> frames;
    const auto add = [&](FrameKind kind, uint32_t id, uint32_t flags, size_t length) {
        OwnedFrame owned;
        owned.frame.kind = kind;
        owned.frame.timeNs = 1'234'567'891U + frames.size();
        owned.frame.channel = static_cast<uint16_t>(1 + frames.size() % 3);
        owned.frame.direction = static_cast<FrameDirection>(frames.size() % 3);
        owned.frame.id = id;
        owned.frame.flags = flags;
        owned.frame.dlc =
            kind == FrameKind::Can || kind == FrameKind::Lin ? dlcFromLength(length) : 0;
        for (size_t i = 0; i < length; ++i) owned.data.push_back(static_cast<uint8_t>(i * 7 + id));
        frames.push_back(owned);
    };
    add(FrameKind::Can, 0x7FF, 0, 8);
    add(FrameKind::Can, 0x1FFFFFFF, kCanExtended, 0);
    add(FrameKind::Can, 0x12, kCanRemote, 0);
    add(FrameKind::Can, 0x300, kCanFd | kCanBitRateSwitch | kCanErrorState, 64);
    add(FrameKind::Can, 0x301, kCanFd, 5);
    add(FrameKind::Lin, 0x3C, kLinEnhancedChecksum, 8);
    add(FrameKind::Ethernet, 0, 0, 1500);
    add(FrameKind::FlexRay, 100, kFlexRaySync | kFlexRayValidData, 254);
    frames[5].frame.checksum = 0xA5;
    frames[7].frame.cycle = 63;
    frames[7].frame.channelMask = 3;
    frames[7].frame.headerCrc = 0x2AA;
    std::string text = ascHeader({2024, 2, 4, 29, 12, 34, 56, 789});
    for (OwnedFrame& owned : frames) {
        owned.frame.data = owned.data;
        std::string line(ascLineRoom(owned.frame), '\0');
        line.resize(static_cast<size_t>(writeAscLine(owned.frame, line.data()) - line.data()));
        text += line;
    }
    const Collected got = collectText(text + std::string(kAscEnd));
    EXPECT_EQ(got.dropped, 0U);
    ASSERT_EQ(got.frames.size(), frames.size());
    for (size_t i = 0; i < frames.size(); ++i) {
        const TraceFrame& want = frames[i].frame;
        const TraceFrame& read = got.frames[i].frame;
        EXPECT_EQ(read.kind, want.kind) << i;
        EXPECT_EQ(read.timeNs, want.timeNs) << i;
        EXPECT_EQ(read.channel, want.channel) << i;
        EXPECT_EQ(read.direction, want.direction) << i;
        EXPECT_EQ(read.id, want.id) << i;
        EXPECT_EQ(read.flags, want.flags) << i;
        EXPECT_EQ(read.checksum, want.checksum) << i;
        EXPECT_EQ(read.cycle, want.cycle) << i;
        EXPECT_EQ(read.channelMask, want.channelMask) << i;
        EXPECT_EQ(read.headerCrc, want.headerCrc) << i;
        EXPECT_EQ(got.frames[i].data, frames[i].data) << i;
    }
}

}  // namespace
}  // namespace quill::traceformats::test
