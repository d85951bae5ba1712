#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "unit/rvconverter/BlfWalker.h"
#include "unit/rvconverter/PythonCan.h"
#include "unit/rvconverter/RecordMaker.h"
#include "unit/rvconverter/RecordWriting.h"
#include "unit/rvconverter/ScratchFolder.h"

namespace quill::testing {

namespace {

constexpr uint64_t kStart = 1'700'000'000'123'456'789U;
constexpr uint64_t kStartMs = 1'700'000'000'123'000'000U;

struct FdLength {
    uint8_t bytes, dlc;
};
constexpr FdLength kFdLengths[] = {{0, 0},   {1, 1},   {7, 7},   {8, 8},   {12, 9}, {16, 10},
                                   {20, 11}, {24, 12}, {32, 13}, {48, 14}, {64, 15}};

struct Sent {
    uint64_t timeNs = 0;
    uint32_t id = 0;
    uint8_t flags = 0, dlc = 0, channel = 0;
    bool transmitted = false, error = false;
    std::vector<uint8_t> data;
};

std::vector<Sent> randomTraffic(size_t count) {
    constexpr unsigned kSeed = 20240517;
    std::mt19937 generator(kSeed);
    const auto random = [&] { return static_cast<uint32_t>(generator()); };
    std::vector<Sent> traffic;
    uint64_t time = kStart;
    for (size_t i = 0; i < count; ++i) {
        Sent sent;
        sent.timeNs = time;
        time += 1 + random() % 900'000;
        sent.channel = static_cast<uint8_t>(random() % 16);
        sent.transmitted = random() % 4 == 0;
        const bool extended = random() % 2 == 0;
        sent.id = random() & (extended ? 0x1FFFFFFFU : 0x7FFU);
        if (extended) sent.flags |= rv::CanRecord::kExtended;
        const unsigned kind = random() % 10;
        if (kind < 4) {
            sent.flags |= rv::CanRecord::kFd;
            if (random() % 2 == 0) sent.flags |= rv::CanRecord::kBitRateSwitch;
            if (random() % 2 == 0) sent.flags |= rv::CanRecord::kErrorState;
            const FdLength& length = kFdLengths[random() % std::size(kFdLengths)];
            sent.data.resize(length.bytes);
            sent.dlc = length.dlc;
        } else if (kind == 4) {
            sent.flags |= rv::CanRecord::kRemote;
            sent.dlc = static_cast<uint8_t>(random() % 9);
        } else {
            sent.error = kind == 5;
            sent.data.resize(random() % 9);
            sent.dlc = static_cast<uint8_t>(sent.data.size());
        }
        for (uint8_t& byte : sent.data) byte = static_cast<uint8_t>(random());
        traffic.push_back(std::move(sent));
    }
    return traffic;
}

rv::RecordHandle recordOf(const Sent& sent) {
    rv::CanRecord record;
    record.id = sent.id;
    record.flags = sent.flags;
    record.dlc = sent.dlc;
    record.errorFlags = sent.error ? 0x1204 : 0;
    record.head.channel = sent.channel;
    record.head.transmitted = sent.transmitted ? 1 : 0;
    return makeRecord(record, rv::RecordKind::Can, sent.timeNs, sent.data);
}

void writeFile(const std::string& path, uint32_t type, const std::vector<Sent>& traffic) {
    std::vector<rv::RecordHandle> records;
    for (const Sent& sent : traffic) records.push_back(recordOf(sent));
    writeRecords(path, type, std::move(records));
}

std::string hexOf(const std::vector<uint8_t>& data) {
    std::string text;
    for (const uint8_t byte : data) {
        text += "0123456789abcdef"[byte / 16];
        text += "0123456789abcdef"[byte % 16];
    }
    return text;
}

// What both formats keep of a frame. An ASC error line has no id for python-can, and a CAN FD line
// without data counts there as a remote frame.
void expectSame(const Sent& sent, const PythonMessage& read, bool text) {
    EXPECT_EQ(read.error, sent.error);
    if (!sent.error || !text) {
        EXPECT_EQ(read.id, sent.id);
        EXPECT_EQ(read.extended, (sent.flags & rv::CanRecord::kExtended) != 0);
        EXPECT_EQ(read.channel, sent.channel);
    }
    if (sent.error) return;
    const bool fd = (sent.flags & rv::CanRecord::kFd) != 0;
    const bool remote = (sent.flags & rv::CanRecord::kRemote) != 0;
    EXPECT_EQ(read.received, !sent.transmitted);
    EXPECT_EQ(read.fd, fd);
    EXPECT_EQ(read.remote, remote || (text && fd && sent.data.empty()));
    EXPECT_EQ(read.switched, (sent.flags & rv::CanRecord::kBitRateSwitch) != 0);
    EXPECT_EQ(read.passive, (sent.flags & rv::CanRecord::kErrorState) != 0);
    EXPECT_EQ(read.dlc, remote ? sent.dlc : sent.data.size());
    if (!remote) {
        EXPECT_EQ(read.data, hexOf(sent.data));
    }
}

class RoundTrip : public ::testing::TestWithParam<uint32_t> {};

TEST_P(RoundTrip, pythonCanReadsEveryFrameAsItWasSent) {
    const bool text = GetParam() == 1;
    const ScratchFolder folder("roundtrip");
    const std::string path = folder.file(text ? "t.asc" : "t.blf");
    const std::vector<Sent> traffic = randomTraffic(20'000);
    writeFile(path, GetParam(), traffic);
    const auto reading = readWithPythonCan(path);
    if (!reading) GTEST_SKIP() << "python3-can is not installed";
    EXPECT_EQ(reading->stopped, "");
    ASSERT_EQ(reading->messages.size(), traffic.size());
    if (!text) {
        EXPECT_DOUBLE_EQ(reading->start, static_cast<double>(kStartMs) / 1e9);
    }
    for (size_t i = 0; i < traffic.size() && !HasFailure(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        expectSame(traffic[i], reading->messages[i], text);
        const auto expected = text ? static_cast<double>(traffic[i].timeNs - kStartMs) / 1e9
                                   : static_cast<double>(traffic[i].timeNs) / 1e9;
        // Double seconds since the epoch resolve a quarter of a microsecond.
        EXPECT_NEAR(reading->messages[i].time, expected, text ? 1e-9 : 5e-7);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, RoundTrip, ::testing::Values(0U, 1U),
                         [](const auto& row) { return row.param == 0 ? "Blf" : "Asc"; });

TEST(BlfFile, keepsNanosecondsAndRightStatistics) {
    const ScratchFolder folder("statistics");
    const std::string path = folder.file("t.blf");
    const std::vector<Sent> traffic = randomTraffic(20'000);
    writeFile(path, 0, traffic);
    const auto walked = walkBlf(path);
    ASSERT_TRUE(walked);
    EXPECT_EQ(walked->fault, "");
    EXPECT_FALSE(walked->tornEnd());
    EXPECT_GT(walked->containers, 5U);
    EXPECT_EQ(walked->headerFileSize, walked->actualSize);
    EXPECT_EQ(walked->headerUncompressedSize, walked->uncompressedSize);
    EXPECT_EQ(walked->headerObjects, walked->objects.size());
    ASSERT_EQ(walked->objects.size(), traffic.size());
    for (size_t i = 0; i < traffic.size(); ++i) {
        ASSERT_EQ(walked->objects[i].timeNs, traffic[i].timeNs - kStartMs) << "frame " << i;
    }
}

}  // namespace

}  // namespace quill::testing
