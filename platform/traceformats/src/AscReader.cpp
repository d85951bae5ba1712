#include "quill_traceformats/AscReader.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "AscText.h"

namespace quill::traceformats {
namespace {
constexpr size_t kUsualLine = 512;

std::string_view textOf(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
}  // namespace

AscReader::LineSpan AscReader::nextLine() {
    for (size_t wanted = kUsualLine;; wanted = std::min(wanted * 4, kLongestLine)) {
        const auto bytes = m_input.ahead(wanted);
        const size_t seen = std::min(bytes.size(), kLongestLine);
        const void* feed = seen == 0 ? nullptr : std::memchr(bytes.data(), '\n', seen);
        if (feed != nullptr) {
            return {static_cast<size_t>(static_cast<const uint8_t*>(feed) - bytes.data()), 1};
        }
        if (bytes.size() < wanted || seen == kLongestLine) return {seen, 0};
    }
}

void AscReader::skipLongLine() {
    uint64_t lost = 0;
    while (true) {
        const auto bytes = m_input.ahead(1);
        if (bytes.empty()) break;
        const void* feed = std::memchr(bytes.data(), '\n', bytes.size());
        const size_t count =
            feed == nullptr ? bytes.size()
                            : static_cast<size_t>(static_cast<const uint8_t*>(feed) - bytes.data());
        lost += m_input.skip(count);
        if (feed == nullptr) continue;
        (void)m_input.skip(1);
        break;
    }
    m_damage.add(m_lines, "line of " + std::to_string(lost) + " bytes is not read");
}

bool AscReader::readHeader(TraceHeader& header) {
    bool known = false;
    while (true) {
        const LineSpan span = nextLine();
        if (span.text + span.end == 0 || span.text == kLongestLine) return known;
        const std::string_view line = textOf(m_input.ahead(span.text).first(span.text));
        switch (asc::readHeaderLine(line, header)) {
            case asc::LineKind::Header:
                known = true;
                break;
            case asc::LineKind::Blank:
                break;
            case asc::LineKind::Event:
                return true;  // stays in front: it is the first unit
            case asc::LineKind::Other:
                return known;
        }
        header.headerLines = ++m_lines;
        (void)m_input.skip(span.text + span.end);
    }
}

void AscReader::nextUnits(UnitBatch& batch, size_t maximum) {
    for (size_t count = 0; count < maximum; ++count) {
        const LineSpan span = nextLine();
        if (span.text + span.end == 0) return;
        ++m_lines;
        if (span.text == kLongestLine) {
            skipLongLine();
            return;
        }
        m_input.cut(span.text, batch);
        (void)m_input.skip(span.end);
    }
}

}  // namespace quill::traceformats
