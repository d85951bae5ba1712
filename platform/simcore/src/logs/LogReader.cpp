#include "logs/LogReader.h"

#include <utility>

#include "logs/AscReader.h"
#include "logs/CandumpReader.h"
#include "logs/Words.h"

namespace simcore::logs {

namespace {

// Candump lines begin with the time in parentheses; nothing in the other format does.
bool looksLikeCandump(LineSource& lines) {
    std::string_view line;
    while (lines.next(line)) {
        const std::string_view word = Words(line).next();
        if (!word.empty()) return word.front() == '(';
    }
    return false;
}

bool endsWith(const std::string& path, std::string_view extension) {
    return path.size() >= extension.size() &&
           equalText(std::string_view(path).substr(path.size() - extension.size()), extension);
}

}  // namespace

std::unique_ptr<LogReader> LogReader::open(const std::string& path, std::string& reason) {
    LineSource lines;
    if (!lines.open(path)) {
        reason = path + ": cannot be opened";
        return nullptr;
    }
    return openLines(path, std::move(lines), reason);
}

std::unique_ptr<LogReader> LogReader::openText(const std::string& name, std::string text,
                                               std::string& reason) {
    LineSource lines;
    lines.openText(std::move(text));
    return openLines(name, std::move(lines), reason);
}

std::unique_ptr<LogReader> LogReader::openLines(const std::string& name, LineSource lines,
                                                std::string& reason) {
    std::unique_ptr<LogReader> reader;
    if (!endsWith(name, ".asc") && looksLikeCandump(lines)) {
        reader = std::make_unique<CandumpReader>();
    } else {
        reader = std::make_unique<AscReader>();
    }
    reader->m_lines = std::move(lines);
    reader->m_lines.rewind();
    LogFrame first;
    if (!reader->next(first)) {
        reason = name + ": holds no frame that can be played";
        return nullptr;
    }
    reader->rewind();
    return reader;
}

bool LogReader::next(LogFrame& frame) {
    std::string_view line;
    while (m_lines.next(line)) {
        const LineResult result = parse(line, frame);
        if (result == LineResult::frame) return true;
        if (result == LineResult::unreadable) ++m_unreadable;
    }
    return false;
}

void LogReader::rewind() {
    m_lines.rewind();
    m_unreadable = 0;
    begin();
}

}  // namespace simcore::logs
