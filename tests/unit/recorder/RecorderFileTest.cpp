#include <gtest/gtest.h>

#include "core/playback/recorder/FrameRecorder.h"
#include "unit/recorder/FrameMaker.h"
#include "unit/rvconverter/BlfWalker.h"
#include "unit/rvconverter/PythonCan.h"
#include "unit/rvconverter/ScratchFolder.h"

namespace quill::testing {

namespace {

constexpr uint32_t kSecond = 1'700'000'000U;

// One frame of each kind that a box delivers, 100 ms apart.
std::vector<rv::FrameHolder> oneOfEach() {
    std::vector<rv::FrameHolder> frames;
    const auto add = [&](rv::FrameType type, uint32_t id, const std::vector<uint8_t>& payload) {
        const auto at = static_cast<uint32_t>(frames.size()) * 100'000'000U + 7;
        frames.push_back(makeFrame(type, kSecond, at, id, payload));
        return frames.back().get();
    };
    rv::Frame* classic = add(rv::FrameType::Can, 0x123, {1, 2, 3});
    classic->can.extend.setDLC(3);
    classic->channel = 1;
    rv::Frame* fd = add(rv::FrameType::Can, 0x18FF00FF, std::vector<uint8_t>(64, 0x5A));
    fd->can.extend.setEDL(true);
    fd->can.extend.setBRS(true);
    fd->can.extend.setDLC(15);
    fd->direction = rv::Direction::Transmitted;
    rv::Frame* remote = add(rv::FrameType::Can, 5, {});
    remote->can.extend.setRTR(true);
    remote->can.extend.setIDE(true);
    remote->can.extend.setDLC(6);
    rv::Frame* error = add(rv::FrameType::Can, 0, {});
    error->can.extend.setErrorFlag(0x8001);
    rv::Frame* noCode = add(rv::FrameType::Can, 7, {9, 9, 9, 9});  // DLC left at 0
    noCode->channel = 255;
    rv::Frame* lin = add(rv::FrameType::Lin, 0x2D, {0xAA, 0xBB});
    lin->lin.checkMode = 1;
    lin->lin.checksum = 0x3C;
    add(rv::FrameType::Ethernet, 0, std::vector<uint8_t>(1514, 0xE7))->channel = 2;
    rv::Frame* flexray = add(rv::FrameType::FlexRay, 60, std::vector<uint8_t>(254, 0xF1));
    flexray->flexray.channelMask = 2;
    flexray->flexray.cycle = 63;
    flexray->flexray.headerCrc = 0x123;
    flexray->flexray.flags = 2;
    return frames;
}

void record(const std::string& path, uint32_t type) {
    playback::FrameRecorder recorder({path, type});
    recorder.startRecord();
    for (const rv::FrameHolder& frame : oneOfEach()) recorder.recordFrame(frame);
    recorder.stopRecord();
    EXPECT_EQ(recorder.status().written, 8U);
}

struct ObjectCase {
    uint32_t type;
    size_t channelBytes, channelAt;
    uint64_t channel;
};

TEST(RecordedBlf, holdsEachKindInItsObject) {
    const ScratchFolder folder("kinds_blf");
    const std::string path = folder.file("t.blf");
    record(path, 0);
    const auto walked = walkBlf(path);
    ASSERT_TRUE(walked);
    ASSERT_EQ(walked->fault, "");
    const ObjectCase expected[] = {{86, 2, 0, 2},   {101, 1, 0, 1}, {86, 2, 0, 1},  {73, 2, 0, 1},
                                   {86, 2, 0, 256}, {57, 2, 12, 1}, {120, 2, 4, 3}, {66, 2, 0, 1}};
    ASSERT_EQ(walked->objects.size(), std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        const WalkedObject& object = walked->objects[i];
        EXPECT_EQ(object.type, expected[i].type);
        EXPECT_EQ(object.number(expected[i].channelAt, expected[i].channelBytes),
                  expected[i].channel);
        EXPECT_EQ(object.timeNs, i * 100'000'000U + 7);
    }
    const auto& objects = walked->objects;
    EXPECT_EQ(objects[1].number(4, 4), 0x98FF00FFU);
    EXPECT_EQ(objects[1].number(12, 4), 0x3000U);
    EXPECT_EQ(objects[1].number(34, 1), 1U);
    EXPECT_EQ(objects[1].bytes(40, 64), std::vector<uint8_t>(64, 0x5A));
    EXPECT_EQ(objects[2].number(2, 1), 0x80U);
    EXPECT_EQ(objects[2].number(3, 1), 6U);
    EXPECT_EQ(objects[3].number(20, 2), 0x8001U);
    EXPECT_EQ(objects[4].number(3, 1), 4U);
    EXPECT_EQ(objects[5].number(37, 1), 0x2DU);
    EXPECT_EQ(objects[5].number(39, 1), 1U);
    EXPECT_EQ(objects[5].number(120, 2), 0x3CU);
    EXPECT_EQ(objects[6].number(22, 2), 1514U);
    EXPECT_EQ(objects[6].bytes(32, 1514), std::vector<uint8_t>(1514, 0xE7));
    EXPECT_EQ(objects[7].number(4, 2), 2U);
    EXPECT_EQ(objects[7].number(16, 2), 60U);
    EXPECT_EQ(objects[7].number(20, 2), 0x123U);
    EXPECT_EQ(objects[7].number(24, 2), 254U);
    EXPECT_EQ(objects[7].number(26, 2), 63U);
}

TEST(RecordedAsc, isReadByPythonCanBesideTheOtherBuses) {
    const ScratchFolder folder("kinds_asc");
    const std::string path = folder.file("t.asc");
    record(path, 1);
    const auto bytes = readWholeFile(path);
    const std::string text(bytes.begin(), bytes.end());
    for (const char* part : {"\n   0.500000007 Li 2D ", "\n   0.600000007 ETH 3 Rx   5EA:E7E7",
                             "\n   0.700000007 Fr 1 RMSG 2 3C 63 Rx   2 123 254 F1 F1"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    const auto reading = readWithPythonCan(path);
    if (!reading) GTEST_SKIP() << "python3-can is not installed";
    ASSERT_EQ(reading->messages.size(), 5U);
    EXPECT_EQ(reading->messages[0].data, "010203");
    EXPECT_EQ(reading->messages[1].id, 0x18FF00FFU);
    EXPECT_FALSE(reading->messages[1].received);
    EXPECT_TRUE(reading->messages[2].remote);
    EXPECT_EQ(reading->messages[2].dlc, 6U);
    EXPECT_TRUE(reading->messages[3].error);
    EXPECT_EQ(reading->messages[4].channel, 255);
    EXPECT_EQ(reading->messages[4].data, "09090909");
}

}  // namespace

}  // namespace quill::testing
