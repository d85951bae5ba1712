#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <future>
#include <random>

#include "rvconverter/ConvertToolkit.h"
#include "unit/rvconverter/BlfWalker.h"
#include "unit/rvconverter/PythonCan.h"
#include "unit/rvconverter/RecordMaker.h"
#include "unit/rvconverter/ScratchFolder.h"

namespace quill::testing {

namespace {

// A disk that is full at this many bytes, for the scope.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

constexpr uint64_t kFaultTime = 1'700'000'000'000'000'000U;

class Recording {
public:
    Recording(const std::string& path, uint32_t type) {
        rv::ConvertInfo info;
        info.type = type;
        info.path = std::wstring(path.begin(), path.end());
        m_context = rv::ConvertToolkit::createConvertContextPtr(info);
        m_convert = std::async(std::launch::async, [this] { m_context->convertFrames(); });
        m_persist = std::async(std::launch::async, [this] { m_context->persistFrames(); });
    }
    // Frames of random bytes, which do not compress.
    void send(size_t frames) {
        std::vector<rv::RecordHandle> list;
        std::vector<uint8_t> data(64);
        for (size_t i = 0; i < frames; ++i) {
            for (uint8_t& byte : data) byte = static_cast<uint8_t>(m_random());
            ++m_sent;
            list.push_back(
                makeCan(kFaultTime + m_sent, m_sent & 0x7FFU, rv::CanRecord::kFd, data, 15));
        }
        m_context->acceptRecords(std::move(list));
    }
    void waitUntilSettled() const {
        rv::ConvertStatistics s = m_context->statistics();
        while (s.written + s.dropped < m_sent) {
            std::this_thread::yield();
            s = m_context->statistics();
        }
    }
    rv::ConvertStatistics finish() {
        m_context->endOfInput();
        m_convert.wait();
        m_persist.wait();
        m_context->close();
        return m_context->statistics();
    }
    [[nodiscard]] std::string error() const { return m_context->errorText(); }
    [[nodiscard]] uint64_t sent() const { return m_sent; }

private:
    std::mt19937 m_random{42};
    uint32_t m_sent = 0;
    std::shared_ptr<rv::ConvertContext> m_context;
    std::future<void> m_convert, m_persist;
};

TEST(FullDisk, leavesAReadableFileAndEndsInTime) {
    const ScratchFolder folder("full");
    const std::string path = folder.file("t.blf");
    rv::ConvertStatistics statistics;
    uint64_t sent = 0;
    {
        const FullDisk full(500'000);
        Recording recording(path, 0);
        for (int i = 0; i < 5; ++i) recording.send(10'000);
        statistics = recording.finish();
        sent = recording.sent();
        EXPECT_NE(recording.error(), "");
    }
    EXPECT_EQ(statistics.written + statistics.dropped, sent);
    EXPECT_GT(statistics.written, 0U);
    EXPECT_GT(statistics.dropped, 0U);
    const auto walked = walkBlf(path);
    ASSERT_TRUE(walked);
    EXPECT_EQ(walked->fault, "");
    EXPECT_FALSE(walked->tornEnd());
    EXPECT_EQ(walked->headerFileSize, walked->actualSize);
    EXPECT_EQ(walked->headerObjects, walked->objects.size());
    const auto reading = readWithPythonCan(path);
    if (!reading) GTEST_SKIP() << "python3-can is not installed";
    EXPECT_EQ(reading->stopped, "");
    EXPECT_EQ(reading->messages.size(), statistics.written);
}

TEST(FullDisk, isMarkedInTheFileOnceThereIsRoomAgain) {
    const ScratchFolder folder("room");
    const std::string path = folder.file("t.blf");
    std::unique_ptr<Recording> recording;
    {
        const FullDisk full(300'000);
        recording = std::make_unique<Recording>(path, 0);
        recording->send(10'000);
        recording->waitUntilSettled();
    }
    recording->send(1'000);
    const rv::ConvertStatistics statistics = recording->finish();
    const auto walked = walkBlf(path);
    ASSERT_TRUE(walked);
    EXPECT_EQ(walked->fault, "");
    uint64_t frames = 0;
    uint64_t lost = 0;
    for (const WalkedObject& object : walked->objects) {
        frames += object.type == 101 ? 1 : 0;
        if (object.type == 126) lost += object.number(12, 4);
    }
    EXPECT_EQ(frames, statistics.written);
    EXPECT_GT(lost, 0U);
    EXPECT_EQ(lost, statistics.dropped);
    EXPECT_EQ(frames + lost, recording->sent());
}

TEST(FullDisk, cutsTextAtALineEnd) {
    const ScratchFolder folder("fulltext");
    const std::string path = folder.file("t.asc");
    rv::ConvertStatistics statistics;
    {
        const FullDisk full(700'000);
        Recording recording(path, 1);
        recording.send(10'000);
        statistics = recording.finish();
    }
    const auto bytes = readWholeFile(path);
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_LE(text.size(), 700'000U);
    EXPECT_TRUE(text.ends_with("End TriggerBlock\n"));
    size_t lines = 0;
    for (size_t at = text.find(" CANFD "); at != std::string::npos;
         at = text.find(" CANFD ", at + 1)) {
        ++lines;
    }
    EXPECT_EQ(lines, statistics.written);
    EXPECT_EQ(statistics.written + statistics.dropped, 10'000U);
}

TEST(VanishedPath, costsNothingWhileTheFileIsOpen) {
    const ScratchFolder folder("vanish");
    std::filesystem::create_directory(folder.file("sub"));
    Recording recording(folder.file("sub/t.blf"), 0);
    recording.send(1000);
    std::filesystem::remove_all(folder.file("sub"));
    recording.send(1000);
    EXPECT_EQ(recording.finish().written, 2000U);
    EXPECT_TRUE(folder.empty());
}

}  // namespace

}  // namespace quill::testing
