#include "core/playback/recorder/FrameRecorder.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "core/playback/recorder/RecordingFormat.h"
#include "unit/recorder/FrameMaker.h"
#include "unit/recorder/LogCapture.h"
#include "unit/rvconverter/BlfWalker.h"
#include "unit/rvconverter/ScratchFolder.h"

namespace quill::testing {

namespace {

using playback::FrameRecorder;
using playback::RecorderConfig;
using playback::RecordingStatus;

constexpr uint32_t kFarFuture = 4'000'000'000U;

template <class Condition>
void waitUntil(Condition condition) {
    while (!condition()) std::this_thread::yield();
}

TEST(RecordingFormat, hasItsTextInMessages) {
    const char* texts[] = {"BLF",       "ASC",      "MF4_SIGNAL",    "PCAP",
                           "UART_TEXT", "UART_HEX", "AnalogIN_TEXT", "DigitalIN_TEXT"};
    for (uint32_t type = 0; type < 8; ++type) {
        EXPECT_STREQ(playback::recordingFormatText(type), texts[type]);
    }
    EXPECT_STREQ(playback::recordingFormatText(8), "Unknow");
    EXPECT_STREQ(playback::recordingFormatText(UINT32_MAX), "Unknow");
}

struct DueCase {
    uint64_t first, now;
    bool due;
};

TEST(ThreeSecondRule, comparesWholeSeconds) {
    for (const DueCase& c :
         {DueCase{100, 100, false}, DueCase{100, 103, false}, DueCase{100, 104, true},
          DueCase{105, 100, false}, DueCase{UINT32_MAX, UINT32_MAX, false},
          DueCase{UINT32_MAX, uint64_t{UINT32_MAX} + 4, true}}) {
        EXPECT_EQ(FrameRecorder::isDue(c.first, c.now), c.due) << c.first << " " << c.now;
    }
}

struct RefusedCase {
    const char* file;
    uint32_t type;
    const char* text;
};

TEST(FrameRecorder, throwsWithItsTextWhenThereIsNoContext) {
    const ScratchFolder folder("refused");
    for (const RefusedCase& c :
         {RefusedCase{"t", 8, "Unknow"}, RefusedCase{"t", 3, "PCAP"},
          RefusedCase{"missing/t.blf", 0, "BLF"}, RefusedCase{"missing/t.asc", 1, "ASC"},
          RefusedCase{"bad\xFFutf", 7, "DigitalIN_TEXT"}}) {
        const std::string path = folder.file(c.file);
        try {
            const FrameRecorder recorder({path, c.type});
            ADD_FAILURE() << "no exception for type " << c.type;
        } catch (const std::invalid_argument& error) {
            EXPECT_EQ(std::string(error.what()),
                      "create convert context fail, path " + path + ", type " + c.text);
        }
    }
    EXPECT_TRUE(folder.empty());
}

class RecorderLife : public ::testing::TestWithParam<uint32_t> {};

TEST_P(RecorderLife, withoutFramesGivesAnEmptyFile) {
    const LogCapture log;
    const ScratchFolder folder("noframes");
    const std::string path = folder.file("t");
    FrameRecorder recorder({path, GetParam()});
    recorder.startRecord();
    recorder.stopRecord();
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(log.count("info [Recorder] start to convertFrames at memory"), 1);
    EXPECT_EQ(log.count("info [Recorder] convertFrames finish at memory"), 1);
    EXPECT_EQ(log.count("info [Recorder] start to persistence frames"), 1);
    EXPECT_EQ(log.count("info [Recorder] record finish, export frames 0, queryTotalNums 0"), 1);
    EXPECT_EQ(lines.back(), "info [Recorder] FrameRecorder stop. record frame num 0");
    EXPECT_FALSE(recorder.status().recording);
    EXPECT_FALSE(readWholeFile(path).empty());
    if (GetParam() == 0) {
        const auto walked = walkBlf(path);
        ASSERT_TRUE(walked);
        EXPECT_EQ(walked->containers, 0U);
    }
}

TEST_P(RecorderLife, survivesEveryOrderOfStartAndStop) {
    const ScratchFolder folder("lives");
    { const FrameRecorder never({folder.file("never"), GetParam()}); }
    FrameRecorder recorder({folder.file("t"), GetParam()});
    recorder.recordFrame(*makeCanFrame(1, 1));
    EXPECT_EQ(recorder.status().offered, 0U) << "offered while not recording";
    recorder.stopRecord();
    recorder.stopRecord();
    recorder.startRecord();
    recorder.recordFrame(*makeCanFrame(1, 1));
    recorder.stopRecord();
    EXPECT_EQ(recorder.status().written, 0U) << "one recorder, one recording";
}

INSTANTIATE_TEST_SUITE_P(Formats, RecorderLife, ::testing::Values(0U, 1U),
                         [](const auto& row) { return row.param == 0 ? "Blf" : "Asc"; });

TEST(FrameRecorder, keepsTheRunningRecordingAtASecondStart) {
    const LogCapture log;
    const ScratchFolder folder("twice");
    FrameRecorder recorder({folder.file("t.blf"), 0});
    recorder.startRecord();
    recorder.recordFrame(makeCanFrame(kFarFuture, 1));
    recorder.startRecord();
    EXPECT_EQ(recorder.status().offered, 1U);
    recorder.recordFrame(makeCanFrame(kFarFuture, 2));
    recorder.stopRecord();
    EXPECT_EQ(log.count("error [Recorder] repeatedly start recording"), 1);
    EXPECT_EQ(log.count("info [Recorder] start to convertFrames at memory"), 1);
    EXPECT_EQ(log.count("info [Recorder] record finish, export frames 2, queryTotalNums 2"), 1);
    EXPECT_EQ(log.count("info [Recorder] FrameRecorder stop. record frame num 2"), 1);
}

TEST(Staging, handsOverWhenFrame10001Comes) {
    const ScratchFolder folder("limit");
    FrameRecorder recorder({folder.file("t.blf"), 0});
    recorder.startRecord();
    // Stamps of the future keep the automatic save away.
    for (uint32_t i = 0; i < 10'000; ++i) recorder.recordFrame(*makeCanFrame(kFarFuture, i));
    EXPECT_EQ(recorder.status().staged, 10'000U);
    EXPECT_EQ(recorder.status().converted, 0U);
    recorder.recordFrame(*makeCanFrame(kFarFuture, 10'000));
    EXPECT_EQ(recorder.status().staged, 1U);
    waitUntil([&] { return recorder.status().written == 10'000U; });
    recorder.stopRecord();
    const RecordingStatus status = recorder.status();
    EXPECT_EQ(status.offered, 10'001U);
    EXPECT_EQ(status.written, 10'001U);
    const auto walked = walkBlf(folder.file("t.blf"));
    ASSERT_TRUE(walked);
    ASSERT_EQ(walked->objects.size(), 10'001U);
    for (uint32_t i = 0; i <= 10'000; ++i) {
        ASSERT_EQ(walked->objects[i].number(4, 4) & 0x1FFFFFFFU, i);
    }
    EXPECT_EQ(status.bytes, walked->actualSize);
}

TEST(Staging, savesOldFramesBesideTheRecording) {
    const LogCapture log;
    const ScratchFolder folder("autosave");
    FrameRecorder recorder({folder.file("t.blf"), 0});
    recorder.startRecord();
    recorder.recordFrame(nullptr);
    for (uint32_t i = 0; i < 5; ++i) recorder.recordFrame(*makeCanFrame(nowSeconds() - 60, i));
    // Without a stop, the frames reach the file.
    waitUntil([&] { return recorder.status().written == 5U; });
    const auto walked = walkBlf(folder.file("t.blf"));
    ASSERT_TRUE(walked);
    EXPECT_EQ(walked->objects.size(), 5U);
    EXPECT_EQ(walked->headerFileSize, walked->actualSize);
    recorder.stopRecord();
    long announced = 0;
    for (const std::string& line : log.lines()) {
        const std::string text =
            "info [Recorder] save automatically more than 3 seconds, frame nums ";
        if (line.starts_with(text)) announced += std::stol(line.substr(text.size()));
    }
    EXPECT_EQ(announced, 5);
}

TEST(Staging, leavesFramesOfTheFutureUntilTheStop) {
    const ScratchFolder folder("future");
    FrameRecorder recorder({folder.file("t.blf"), 0});
    recorder.startRecord();
    recorder.recordFrame(*makeCanFrame(kFarFuture, 1));
    recorder.recordFrame(*makeCanFrame(1, 2));  // old, but not the first
    // Long enough for the poll to see them; a save would be wrong at any time.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(recorder.status().staged, 2U);
    recorder.stopRecord();
    EXPECT_EQ(recorder.status().written, 2U);
}

TEST(Staging, countsFramesThatNoRecordHolds) {
    const ScratchFolder folder("kinds");
    FrameRecorder recorder({folder.file("t.blf"), 0});
    recorder.startRecord();
    for (const auto type : {rv::FrameType::None, static_cast<rv::FrameType>(4),
                            static_cast<rv::FrameType>(6), static_cast<rv::FrameType>(255)}) {
        recorder.recordFrame(*makeFrame(type, 1, 0, 1, {1}));
    }
    EXPECT_EQ(recorder.status().staged, 4U);
    recorder.recordFrame(*makeCanFrame(1, 1));
    recorder.stopRecord();
    const RecordingStatus status = recorder.status();
    EXPECT_EQ(status.offered, 5U);
    EXPECT_EQ(status.skipped, 4U);
    EXPECT_EQ(status.written, 1U);
}

TEST(Concurrency, aStopInTheFlowLosesNoCountedFrame) {
    const ScratchFolder folder("flow");
    for (int round = 0; round < 20; ++round) {
        const std::string path = folder.file("t.blf");
        FrameRecorder recorder({path, 0});
        recorder.startRecord();
        std::atomic<bool> end{false};
        std::thread producer([&] {
            const auto old = makeCanFrame(nowSeconds() - 10, 1);
            while (!end) recorder.recordFrame(*old);
        });
        waitUntil([&] { return recorder.status().offered > 500U; });
        recorder.stopRecord();
        end = true;
        producer.join();
        const RecordingStatus status = recorder.status();
        EXPECT_EQ(status.staged, 0U);
        EXPECT_EQ(status.written + status.dropped, status.offered);
        const auto walked = walkBlf(path);
        ASSERT_TRUE(walked);
        ASSERT_EQ(walked->fault, "");
        EXPECT_GE(walked->objects.size(), status.written);
    }
}

TEST(Concurrency, destructionEndsARunningRecording) {
    const ScratchFolder folder("destroy");
    const std::string path = folder.file("t.blf");
    {
        FrameRecorder recorder({path, 0});
        recorder.startRecord();
        recorder.recordFrame(*makeCanFrame(kFarFuture, 1));
    }
    const auto walked = walkBlf(path);
    ASSERT_TRUE(walked);
    EXPECT_EQ(walked->objects.size(), 1U);
}

}  // namespace

}  // namespace quill::testing
