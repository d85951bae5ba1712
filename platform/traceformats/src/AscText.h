#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "quill_traceformats/UnitReader.h"

// The lexical side of ASC: blanks, numbers, dates and header lines.
namespace quill::traceformats::asc {

// Times beyond this many seconds (31 years) are no times of a measurement.
inline constexpr uint64_t kMostSeconds = 1'000'000'000U;

inline constexpr uint8_t kNoDigit = 0xFF;
[[nodiscard]] constexpr std::array<uint8_t, 256> makeDigits() {
    std::array<uint8_t, 256> table{};
    for (auto& entry : table) entry = kNoDigit;
    for (unsigned c = 0; c < 10; ++c) table['0' + c] = static_cast<uint8_t>(c);
    for (unsigned c = 0; c < 6; ++c) {
        table['a' + c] = static_cast<uint8_t>(10 + c);
        table['A' + c] = static_cast<uint8_t>(10 + c);
    }
    return table;
}
inline constexpr std::array<uint8_t, 256> kDigits = makeDigits();

[[nodiscard]] inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// Walks the tokens of one line.
class Cursor {
public:
    explicit Cursor(std::string_view line) : m_at(line.data()), m_end(line.data() + line.size()) {}

    void skipBlanks() {
        while (m_at != m_end && isBlank(*m_at)) ++m_at;
    }
    // The next token; empty at the end of the line.
    [[nodiscard]] std::string_view next() {
        skipBlanks();
        const char* start = m_at;
        while (m_at != m_end && !isBlank(*m_at)) ++m_at;
        return {start, static_cast<size_t>(m_at - start)};
    }
    [[nodiscard]] std::string_view peek() const {
        Cursor copy = *this;
        return copy.next();
    }
    [[nodiscard]] std::string_view rest() {
        skipBlanks();
        return {m_at, static_cast<size_t>(m_end - m_at)};
    }
    // A time in seconds with decimals, as nanoseconds; nothing consumed when there is none.
    [[nodiscard]] std::optional<int64_t> time();
    // One payload byte of one or two hexadecimal digits; false leaves the cursor where it was.
    [[nodiscard]] bool hexByte(uint8_t& value) {
        skipBlanks();
        if (m_end - m_at >= 2) {
            const uint8_t high = kDigits[static_cast<uint8_t>(m_at[0])];
            const uint8_t low = kDigits[static_cast<uint8_t>(m_at[1])];
            if (high != kNoDigit && low != kNoDigit && (m_end - m_at == 2 || isBlank(m_at[2]))) {
                value = static_cast<uint8_t>(high << 4U | low);
                m_at += 2;
                return true;
            }
        }
        return oddByte(16, value);
    }
    [[nodiscard]] bool byte(unsigned base, uint8_t& value) {
        return base == 16 ? hexByte(value) : oddByte(base, value);
    }

private:
    [[nodiscard]] bool oddByte(unsigned base, uint8_t& value);

    const char* m_at;
    const char* m_end;
};

// Whole token as a number; nothing when a character is no digit or the value exceeds 32 bits.
[[nodiscard]] std::optional<uint32_t> number(std::string_view token, unsigned base);
// Comparison without letter case; `lower` is given in lower case.
[[nodiscard]] bool equals(std::string_view token, std::string_view lower);
[[nodiscard]] bool startsWith(std::string_view token, std::string_view lower);
// "Sat Sep 30 15:06:13.191 2017" and its variants as nanoseconds since 1970; nothing when
// unreadable.
[[nodiscard]] std::optional<int64_t> date(std::string_view text);

enum class LineKind { Header, Blank, Event, Other };
// Takes what a header line says; an event line and any other line change nothing.
[[nodiscard]] LineKind readHeaderLine(std::string_view line, TraceHeader& header);

}  // namespace quill::traceformats::asc
