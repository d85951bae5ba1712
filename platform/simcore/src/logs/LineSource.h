#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace simcore::logs {

// Lines of a text, LF or CRLF, read in blocks. Lines beyond 64 KiB are passed over.
class LineSource {
public:
    [[nodiscard]] bool open(const std::string& path);
    void openText(std::string text);  // a log in memory in place of a file
    void rewind();
    // False at the end of the file. The view holds until the next call.
    [[nodiscard]] bool next(std::string_view& line);

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    [[nodiscard]] bool fill();
    [[nodiscard]] size_t readBlock(char* to, size_t most);

    std::unique_ptr<std::FILE, Closer> m_file;
    std::string m_text;  // read where there is no file
    size_t m_textAt = 0;
    std::string m_buffer;
    size_t m_at = 0;
    bool m_end = false;
    bool m_skipping = false;  // inside a line that is too long
};

}  // namespace simcore::logs
