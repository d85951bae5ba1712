#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

// A folder of its own with the stand-in under the converters' names, and the log caught as text.
class DatabaseTest : public ::testing::Test {
protected:
    DatabaseTest();
    ~DatabaseTest() override;

    // Writes a file into the folder and gives its path as UTF-8 text.
    std::string write(const std::string& name, const std::string& text) const;
    [[nodiscard]] std::string path(const std::string& name) const;
    [[nodiscard]] std::string logText() const;
    [[nodiscard]] bool exists(const std::string& name) const;

    std::filesystem::path m_folder;

private:
    struct LogCapture;
    std::unique_ptr<LogCapture> m_log;
};
