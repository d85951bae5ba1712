#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace quill::dbjson {

// A file that appears under its name whole or not at all: bytes go to a new file beside it, which
// takes the name in commit(). Without a commit nothing is left and an older file stays as it was.
class OutputFile {
public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Path in UTF-8. False when no file can be made beside it; error() says why.
    [[nodiscard]] bool open(const std::string& path);
    [[nodiscard]] bool write(std::string_view bytes);
    [[nodiscard]] bool commit();
    [[nodiscard]] const std::string& error() const { return m_error; }

private:
    bool fail(const char* what, int systemError);
    void discard();

    std::string m_path;
    std::string m_temporaryPath;
    std::string m_error;
    std::FILE* m_file = nullptr;
};

}  // namespace quill::dbjson
