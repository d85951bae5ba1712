#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill::dbjson {

// Line and column (in characters) of a byte of a UTF-8 text, both counted from 1.
struct SourcePosition {
    size_t line = 1;
    size_t column = 1;
};
[[nodiscard]] SourcePosition positionAt(std::string_view text, size_t offset);

struct SourceMessage {
    size_t offset = 0;  // byte in the decoded text
    std::string text;
};

// What a parser has to say about its text: warnings for parts it left out, and at most one error
// (the first), with which the whole file counts as not read.
class Diagnostics {
public:
    void warn(size_t offset, std::string text);
    void fail(size_t offset, std::string text);

    [[nodiscard]] bool failed() const { return m_error.has_value(); }
    [[nodiscard]] const std::optional<SourceMessage>& error() const { return m_error; }
    // The first ones only; the rest is counted.
    [[nodiscard]] const std::vector<SourceMessage>& warnings() const { return m_warnings; }
    [[nodiscard]] size_t warningCount() const { return m_warningCount; }

    // Writes "path:line:column: message" lines to standard error.
    void print(const std::string& path, std::string_view text) const;

private:
    std::optional<SourceMessage> m_error;
    std::vector<SourceMessage> m_warnings;
    size_t m_warningCount = 0;
};

// One such line about a file as a whole (line 1, column 1).
void printFileError(const std::string& path, const std::string& message);

}  // namespace quill::dbjson
