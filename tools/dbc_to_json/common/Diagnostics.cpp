#include "common/Diagnostics.h"

#include <algorithm>
#include <cstdio>

namespace quill::dbjson {

namespace {
// A damaged file may have a warning in every line, and the reader of the log needs only the first.
constexpr size_t kKeptWarnings = 20;

void printMessage(const std::string& path, const SourcePosition& at, const char* kind,
                  const std::string& text) {
    std::fprintf(stderr, "%s:%zu:%zu: %s%s\n", path.c_str(), at.line, at.column, kind,
                 text.c_str());
}
}  // namespace

SourcePosition positionAt(std::string_view text, size_t offset) {
    const std::string_view before = text.substr(0, std::min(offset, text.size()));
    SourcePosition at;
    at.line += static_cast<size_t>(std::count(before.begin(), before.end(), '\n'));
    const size_t lineBegin = before.rfind('\n') + 1;  // npos + 1 is 0
    const std::string_view line = before.substr(lineBegin);
    at.column += static_cast<size_t>(std::count_if(line.begin(), line.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
    return at;
}

void Diagnostics::warn(size_t offset, std::string text) {
    ++m_warningCount;
    if (m_warnings.size() < kKeptWarnings) m_warnings.push_back({offset, std::move(text)});
}

void Diagnostics::fail(size_t offset, std::string text) {
    if (!m_error) m_error = SourceMessage{offset, std::move(text)};
}

void Diagnostics::print(const std::string& path, std::string_view text) const {
    for (const SourceMessage& warning : m_warnings) {
        printMessage(path, positionAt(text, warning.offset), "warning: ", warning.text);
    }
    if (m_warningCount > m_warnings.size()) {
        printMessage(path, {}, "warning: ",
                     std::to_string(m_warningCount - m_warnings.size()) + " more warnings");
    }
    if (m_error) printMessage(path, positionAt(text, m_error->offset), "", m_error->text);
}

void printFileError(const std::string& path, const std::string& message) {
    printMessage(path, {}, "", message);
}

}  // namespace quill::dbjson
