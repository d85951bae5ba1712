#include "common/JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "common/OutputFile.h"

namespace quill::dbjson {

namespace {

constexpr size_t kDrainBytes = 1U << 20;
// Above this a double no longer holds every integer, so its shortest form is the honest one.
constexpr double kExactIntegers = 9007199254740992.0;

constexpr std::array<bool, 256> makeEscapeTable() {
    std::array<bool, 256> table{};
    for (size_t c = 0; c < 0x20; ++c) table[c] = true;
    table['"'] = true;
    table['\\'] = true;
    return table;
}
constexpr std::array<bool, 256> kNeedsEscape = makeEscapeTable();

void appendEscaped(std::string& out, char c) {
    static constexpr char kHex[] = "0123456789abcdef";
    switch (c) {
        case '"':
            out += "\\\"";
            return;
        case '\\':
            out += "\\\\";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        default:
            break;
    }
    out += "\\u00";
    out += kHex[(static_cast<unsigned char>(c) >> 4U) & 0xFU];
    out += kHex[static_cast<unsigned char>(c) & 0xFU];
}

template <class Number>
void appendNumber(std::string& out, Number value) {
    std::array<char, 40> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(digits.data(), static_cast<size_t>(end - digits.data()));
}

}  // namespace

JsonWriter::JsonWriter(OutputFile& file) : m_file(&file) {}

void JsonWriter::separate() {
    if (m_needsComma) m_text += ',';
    m_needsComma = true;
}

void JsonWriter::open(char bracket) {
    separate();
    m_text += bracket;
    m_needsComma = false;
}

void JsonWriter::close(char bracket) {
    m_text += bracket;
    m_needsComma = true;
    drainWhenLarge();
}

void JsonWriter::key(std::string_view name) {
    separate();
    appendQuoted(name);
    m_text += ':';
    m_needsComma = false;
}

void JsonWriter::text(std::string_view value) {
    separate();
    appendQuoted(value);
}

void JsonWriter::number(double value) {
    separate();
    if (std::isnan(value)) value = 0.0;
    if (std::isinf(value)) value = std::copysign(std::numeric_limits<double>::max(), value);
    const bool small = value > -kExactIntegers && value < kExactIntegers;
    const int64_t whole = small ? static_cast<int64_t>(value) : 0;
    if (small && static_cast<double>(whole) == value && (whole != 0 || !std::signbit(value))) {
        appendNumber(m_text, whole);
    } else {
        appendNumber(m_text, value);
    }
}

void JsonWriter::integer(int64_t value) {
    separate();
    appendNumber(m_text, value);
}

void JsonWriter::boolean(bool value) {
    separate();
    m_text += value ? "true" : "false";
}

void JsonWriter::lineBreak() { m_text += '\n'; }

void JsonWriter::appendQuoted(std::string_view value) {
    m_text += '"';
    size_t begin = 0;
    for (size_t i = 0; i < value.size(); ++i) {
        if (!kNeedsEscape[static_cast<unsigned char>(value[i])]) continue;
        m_text.append(value, begin, i - begin);
        appendEscaped(m_text, value[i]);
        begin = i + 1;
    }
    m_text.append(value, begin);
    m_text += '"';
}

void JsonWriter::drainWhenLarge() {
    if (m_file == nullptr || m_text.size() < kDrainBytes) return;
    m_good = m_file->write(m_text) && m_good;
    m_text.clear();
}

bool JsonWriter::flush() {
    if (m_file != nullptr) {
        m_good = m_file->write(m_text) && m_good;
        m_text.clear();
    }
    return m_good;
}

}  // namespace quill::dbjson
