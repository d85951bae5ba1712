#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/playback/TraceFileImporter.h"
#include "core/tracestorage/TraceReader.h"
#include "core/tracestorage/TraceStorage.h"

namespace playback::test {

// Collects the log lines of a test, as "level: text".
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    [[nodiscard]] std::vector<std::string> lines() const;
    [[nodiscard]] size_t count(const std::string& line) const;

private:
    struct Sink;
    std::shared_ptr<Sink> m_sink;
};

// What the completion callback was told, and how often.
class Outcome {
public:
    [[nodiscard]] TraceFileImporter::Callback callback();
    // Waits for the first call.
    [[nodiscard]] ImportResult wait();
    [[nodiscard]] int calls() const { return m_calls; }

private:
    std::mutex m_mutex;
    std::condition_variable m_called;
    std::atomic<int> m_calls{0};
    ImportResult m_result;
};

class ImporterTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] std::string path(const std::string& name) const;
    [[nodiscard]] std::wstring wide(const std::string& name) const;
    void writeFile(const std::string& name, const std::string& content) const;
    [[nodiscard]] std::shared_ptr<tracestorage::TraceStorage> openStorage() const;
    // Frames that the database holds, over all files.
    [[nodiscard]] uint64_t storedFrames() const;
    // Runs an import to its end.
    [[nodiscard]] ImportResult import(const std::string& name);

    LogCapture m_log;
    std::filesystem::path m_folder;
};

// An ASC file with so many CAN frames, all different.
[[nodiscard]] std::string ascTrace(size_t frames);

}  // namespace playback::test
