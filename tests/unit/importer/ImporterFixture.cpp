#include "ImporterFixture.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "quill_os/paths.h"

namespace playback::test {

struct LogCapture::Sink : spdlog::sinks::base_sink<std::mutex> {
    std::vector<std::string> lines;

protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        const auto level = spdlog::level::to_string_view(message.level);
        lines.push_back(std::string(level.data(), level.size()) + ": " +
                        std::string(message.payload.data(), message.payload.size()));
    }
    void flush_() override {}
    friend class LogCapture;
};

LogCapture::LogCapture() : m_sink(std::make_shared<Sink>()) {
    spdlog::set_default_logger(std::make_shared<spdlog::logger>("test", m_sink));
}

LogCapture::~LogCapture() { spdlog::set_default_logger(std::make_shared<spdlog::logger>("none")); }

std::vector<std::string> LogCapture::lines() const {
    const std::lock_guard lock(m_sink->mutex_);
    return m_sink->lines;
}

size_t LogCapture::count(const std::string& line) const {
    const auto all = lines();
    return static_cast<size_t>(std::count(all.begin(), all.end(), line));
}

TraceFileImporter::Callback Outcome::callback() {
    return [this](const ImportResult& result) {
        const std::lock_guard lock(m_mutex);
        if (m_calls++ == 0) m_result = result;
        m_called.notify_all();
    };
}

ImportResult Outcome::wait() {
    std::unique_lock lock(m_mutex);
    m_called.wait(lock, [this] { return m_calls > 0; });
    return m_result;
}

void ImporterTest::SetUp() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(info->test_suite_name()) + "-" + info->name();
    std::replace(name.begin(), name.end(), '/', '_');
    m_folder = std::filesystem::path(QUILL_BINARY_DIR) / "tests" / "importer" / name;
    std::filesystem::remove_all(m_folder);
    std::filesystem::create_directories(m_folder);
}

void ImporterTest::TearDown() { std::filesystem::remove_all(m_folder); }

std::string ImporterTest::path(const std::string& name) const {
    return quill::os::pathToUtf8(m_folder / name);
}

std::wstring ImporterTest::wide(const std::string& name) const {
    return quill::os::wideFromUtf8(path(name));
}

void ImporterTest::writeFile(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
}

std::shared_ptr<tracestorage::TraceStorage> ImporterTest::openStorage() const {
    std::string reason;
    std::shared_ptr<tracestorage::TraceStorage> storage =
        tracestorage::TraceStorage::open(path("t.qtrace"), reason);
    EXPECT_NE(storage, nullptr) << reason;
    return storage;
}

uint64_t ImporterTest::storedFrames() const {
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(path("t.qtrace"), reason);
    uint64_t frames = 0;
    for (const auto& file : reader->files()) {
        EXPECT_TRUE(reader->forEachFrame(file.id, [&](const auto&, auto) {
            ++frames;
            return true;
        }));
    }
    return frames;
}

ImportResult ImporterTest::import(const std::string& name) {
    Outcome outcome;
    ImportOptions options;
    options.storage = openStorage();
    TraceFileImporter importer(wide(name), outcome.callback(), options);
    importer.beginAsyncImport();
    const ImportResult result = outcome.wait();
    importer.wait();
    EXPECT_EQ(outcome.calls(), 1);
    return result;
}

std::string ascTrace(size_t frames) {
    std::string text = "date Sat Sep 30 15:06:13.191 2017\nbase hex  timestamps absolute\n";
    char line[128];
    for (size_t i = 0; i < frames; ++i) {
        std::snprintf(line, sizeof line,
                      "   %u.%06u 1  %03X             Rx   d 4 %02X %02X %02X 01\n",
                      static_cast<unsigned>(i / 10000), static_cast<unsigned>(i % 10000 * 100),
                      static_cast<unsigned>(i % 0x7FF), static_cast<unsigned>(i & 0xFF),
                      static_cast<unsigned>(i >> 8 & 0xFF), static_cast<unsigned>(i >> 16 & 0xFF));
        text += line;
    }
    return text;
}

}  // namespace playback::test
