#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

namespace quill::testing {

// A folder of this test alone, gone with it.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& name)
        : m_path(std::filesystem::temp_directory_path() /
                 ("quill_" + name + "_" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(m_path);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::string file(const std::string& name) const {
        return (m_path / name).string();
    }
    [[nodiscard]] bool empty() const { return std::filesystem::is_empty(m_path); }

private:
    std::filesystem::path m_path;
};

}  // namespace quill::testing
