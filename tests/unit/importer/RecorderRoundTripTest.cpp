#include <cstring>

#include "ImporterFixture.h"
#include "core/frame/Frame.h"
#include "core/playback/recorder/FrameRecorder.h"

namespace playback::test {
namespace {

constexpr uint32_t kStart = 1'700'000'000;
constexpr size_t kRecordedFrames = 25'000;

// Frame i of a recording with every bus kind in it.
rv::FrameHolder madeFrame(size_t i) {
    constexpr rv::FrameType kTypes[] = {rv::FrameType::Can, rv::FrameType::Can, rv::FrameType::Lin,
                                        rv::FrameType::Ethernet, rv::FrameType::FlexRay};
    constexpr uint32_t kLengths[] = {8, 64, 5, 60, 20};
    const size_t kind = i % 5;
    auto frame = rv::makeFrame(kLengths[kind]);
    frame->type = kTypes[kind];
    frame->seconds = static_cast<uint32_t>(kStart + i / 1000);
    frame->nanoseconds = static_cast<uint32_t>(i % 1000 * 1'000'000 + i);
    frame->channel = static_cast<uint8_t>(i % 3);
    frame->direction = i % 7 == 0 ? rv::Direction::Transmitted : rv::Direction::Received;
    frame->id = static_cast<uint32_t>(kind == 2 ? i % 60 : kind == 3 ? 0 : 1 + i % 1000);
    if (kind <= 1) {
        frame->can.extend = {};
        frame->can.extend.setIDE(i % 2 == 0);
        frame->can.extend.setEDL(kind == 1);
        frame->can.extend.setBRS(kind == 1);
        frame->can.extend.setDLC(kind == 1 ? 15 : 8);
    } else if (kind == 2) {
        frame->lin = {1, static_cast<uint16_t>(i & 0xFF)};
    } else if (kind == 4) {
        frame->flexray = {3, static_cast<uint8_t>(i % 64), 0x155, 2};
    }
    for (size_t b = 0; b < frame->payload().size(); ++b) {
        frame->payload()[b] = static_cast<uint8_t>(i + b);
    }
    return frame;
}

class RecorderRoundTrip : public ImporterTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(RecorderRoundTrip, everyRecordedFrameComesBack) {
    const std::string name = GetParam();
    {
        FrameRecorder recorder({path(name), name == "r.asc" ? 1U : 0U});
        recorder.startRecord();
        for (size_t i = 0; i < kRecordedFrames; ++i) recorder.recordFrame(madeFrame(i));
        recorder.stopRecord();
        ASSERT_EQ(recorder.status().written, kRecordedFrames);
    }
    ASSERT_TRUE(import(name).success);
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(path("t.qtrace"), reason);
    const auto files = reader->files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].dropped, 0U);
    size_t at = 0;
    ASSERT_TRUE(reader->forEachFrame(files[0].id, [&](const auto& got, auto payload) {
        const auto want = madeFrame(at++);
        EXPECT_EQ(got.timeNs, static_cast<int64_t>(want->timestampNs())) << at;
        EXPECT_EQ(static_cast<int>(got.bus), static_cast<int>(want->type)) << at;
        EXPECT_EQ(got.ident, want->id) << at;
        EXPECT_EQ(got.channel, want->channel + 1) << at;
        EXPECT_EQ(got.flags & 1U, static_cast<uint32_t>(want->direction)) << at;
        EXPECT_TRUE(std::equal(payload.begin(), payload.end(), want->payload().begin(),
                               want->payload().end()))
            << at;
        if (want->type == rv::FrameType::Can) {
            EXPECT_EQ((got.flags & tracestorage::flag::kExtended) != 0,
                      want->can.extend.IDE() == 1);
            EXPECT_EQ((got.flags & tracestorage::flag::kFd) != 0, want->can.extend.EDL() == 1);
        }
        return !::testing::Test::HasFailure();
    }));
    EXPECT_EQ(at, kRecordedFrames);
}

INSTANTIATE_TEST_SUITE_P(Formats, RecorderRoundTrip, ::testing::Values("r.blf", "r.asc"));

}  // namespace
}  // namespace playback::test
