#include "logs/LogReader.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using simcore::logs::LogFrame;
using simcore::logs::LogReader;

struct LogCase {
    const char* name;
    const char* text;
    uint64_t frames;
    uint64_t unreadable;
    int64_t lastNs;  // of the last frame
    const char* lastChannel;
};

class LogTexts : public ::testing::TestWithParam<LogCase> {};

TEST_P(LogTexts, areReadTwiceTheSame) {
    std::string reason;
    const auto reader = LogReader::openText("log", GetParam().text, reason);
    ASSERT_NE(reader, nullptr) << reason;
    for (int pass = 0; pass < 2; ++pass) {
        reader->rewind();
        uint64_t frames = 0;
        LogFrame frame;
        while (reader->next(frame)) ++frames;
        EXPECT_EQ(frames, GetParam().frames);
        EXPECT_EQ(reader->unreadableLines(), GetParam().unreadable);
        EXPECT_EQ(frame.timeNs, GetParam().lastNs);
        EXPECT_EQ(frame.channel, GetParam().lastChannel);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, LogTexts,
    ::testing::Values(
        LogCase{"candump", "(1.5) can0 1#00\n\n(2.5) can1 2#R\r\n(x) can2 3#\n", 2, 1,
                2'500'000'000, "can1"},
        LogCase{"absoluteAsc", "base hex timestamps absolute\n1.0 1 7 Rx d 0\n3.5 2 7 Tx d 0", 2, 0,
                3'500'000'000, "2"},
        LogCase{"relativeAsc", "base hex timestamps relative\n1.0 1 7 Rx d 0\n3.5 1 7 Tx d 0", 2, 0,
                4'500'000'000, "1"},
        // The sum of the times would not fit.
        LogCase{"relativeTimesWithoutEnd",
                "base hex timestamps relative\n3999999999 1 7 Rx d 0\n3999999999 1 7 Rx d 0\n"
                "3999999999 1 7 Rx d 0\n",
                3, 0, 4'000'000'000'000'000'000, "1"},
        LogCase{"timeBeyondTheEnd", "9000000000.0 1 7 Rx d 0\n1.0 1 7 Rx d 0\n", 1, 0,
                1'000'000'000, "1"},
        LogCase{"dlcBeyondEight", "1.0 1 7 Rx d F 0 1 2 3 4 5 6 7\n", 1, 0, 1'000'000'000, "1"}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(LogLines, beyondTheirLengthArePassedOver) {
    const std::string text =
        "(1.0) can0 1#00\n(2.0) can0 2#00" + std::string(300'000, ' ') + "\n(3.0) can0 3#00\n";
    std::string reason;
    const auto reader = LogReader::openText("log", text, reason);
    ASSERT_NE(reader, nullptr) << reason;
    LogFrame frame;
    ASSERT_TRUE(reader->next(frame));
    ASSERT_TRUE(reader->next(frame));
    EXPECT_EQ(frame.timeNs, 3'000'000'000);
    EXPECT_FALSE(reader->next(frame));
}

}  // namespace
