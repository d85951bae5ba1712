#include "AscText.h"

#include <algorithm>

#include "quill_traceformats/calendar_time.h"

namespace quill::traceformats::asc {
namespace {
constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Month from its name in the languages that recorders use; March is told by its ends because its
// middle letter may be in any code page.
unsigned monthOf(std::string_view name) {
    if (name.size() < 3) return 0;
    const char a = lower(name[0]);
    const char b = lower(name[1]);
    const char c = lower(name[2]);
    switch (a) {
        case 'j':
            return b == 'a' ? 1 : c == 'n' ? 6 : c == 'l' ? 7 : 0;
        case 'f':
            return 2;
        case 'm':
            return b == 'a' && (c == 'y' || c == 'i') ? 5 : 3;
        case 'a':
            return b == 'p' ? 4 : b == 'u' ? 8 : 0;
        case 's':
            return 9;
        case 'o':
            return 10;
        case 'n':
            return 11;
        case 'd':
            return 12;
        default:
            return 0;
    }
}

// "15:06:13.191"; the decimals may be missing.
bool clockOf(std::string_view text, CalendarTime& time) {
    uint16_t* const parts[] = {&time.hour, &time.minute, &time.second};
    for (size_t i = 0; i < 3; ++i) {
        const size_t stop = std::min(text.find(i == 2 ? '.' : ':'), text.size());
        const auto value = number(text.substr(0, stop), 10);
        if (!value || *value > 60) return false;
        *parts[i] = static_cast<uint16_t>(*value);
        text.remove_prefix(std::min(stop + 1, text.size()));
    }
    unsigned scale = 100;
    for (const char c : text.substr(0, 3)) {
        const uint8_t digit = kDigits[static_cast<uint8_t>(c)];
        if (digit > 9) return false;
        time.millisecond = static_cast<uint16_t>(time.millisecond + digit * scale);
        scale /= 10;
    }
    return true;
}
}  // namespace

std::optional<int64_t> Cursor::time() {
    skipBlanks();
    const char* at = m_at;
    uint64_t seconds = 0;
    for (; at != m_end; ++at) {
        const uint8_t digit = kDigits[static_cast<uint8_t>(*at)];
        if (digit > 9) break;
        seconds = seconds * 10 + digit;
        if (seconds > kMostSeconds) return std::nullopt;
    }
    if (at == m_at || at == m_end || *at != '.') return std::nullopt;
    uint64_t fraction = 0;
    uint64_t scale = 1'000'000'000;
    for (++at; at != m_end; ++at) {
        const uint8_t digit = kDigits[static_cast<uint8_t>(*at)];
        if (digit > 9) break;
        if (scale == 1) continue;  // digits beyond the nanosecond
        scale /= 10;
        fraction = fraction * 10 + digit;
    }
    if (at != m_end && !isBlank(*at)) return std::nullopt;
    m_at = at;
    return static_cast<int64_t>(seconds * 1'000'000'000 + fraction * scale);
}

bool Cursor::oddByte(unsigned base, uint8_t& value) {
    const char* start = m_at;
    const auto parsed = number(next(), base);
    if (parsed && *parsed <= 0xFF) {
        value = static_cast<uint8_t>(*parsed);
        return true;
    }
    m_at = start;
    return false;
}

std::optional<uint32_t> number(std::string_view token, unsigned base) {
    if (token.empty()) return std::nullopt;
    uint64_t value = 0;
    for (const char c : token) {
        const uint8_t digit = kDigits[static_cast<uint8_t>(c)];
        if (digit >= base) return std::nullopt;
        value = value * base + digit;
        if (value > UINT32_MAX) return std::nullopt;
    }
    return static_cast<uint32_t>(value);
}

bool startsWith(std::string_view token, std::string_view prefix) {
    return token.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), token.begin(),
                      [](char want, char got) { return want == lower(got); });
}

bool equals(std::string_view token, std::string_view text) {
    return token.size() == text.size() && startsWith(token, text);
}

std::optional<int64_t> date(std::string_view text) {
    Cursor cursor(text);
    (void)cursor.next();  // day of the week
    CalendarTime time;
    time.month = static_cast<uint16_t>(monthOf(cursor.next()));
    const auto day = number(cursor.next(), 10);
    if (time.month == 0 || !day || *day > 31 || !clockOf(cursor.next(), time)) return std::nullopt;
    time.day = static_cast<uint16_t>(*day);
    std::string_view token = cursor.next();
    const bool afternoon = equals(token, "pm");
    if (afternoon || equals(token, "am")) {
        if (time.hour < 1 || time.hour > 12) return std::nullopt;
        time.hour = static_cast<uint16_t>(time.hour % 12 + (afternoon ? 12 : 0));
        token = cursor.next();
    }
    const auto year = number(token, 10);
    if (!year || *year > 2200) return std::nullopt;
    time.year = static_cast<uint16_t>(*year);
    const uint64_t epoch = epochFromCalendar(time, localOffsetSeconds(time));
    if (epoch == 0) return std::nullopt;
    return static_cast<int64_t>(epoch);
}

LineKind readHeaderLine(std::string_view line, TraceHeader& header) {
    Cursor cursor(line);
    if (Cursor(line).time()) return LineKind::Event;
    const std::string_view first = cursor.next();
    if (first.empty()) return LineKind::Blank;
    if (equals(first, "date")) {
        header.startNs = date(cursor.rest()).value_or(0);
        return LineKind::Header;
    }
    if (equals(first, "base")) {
        header.decimal = equals(cursor.next(), "dec");
        if (equals(cursor.next(), "timestamps")) {
            header.relativeTimes = equals(cursor.next(), "relative");
        }
        return LineKind::Header;
    }
    if (equals(first, "begin") && startsWith(cursor.next(), "trigger")) {
        if (header.startNs == 0) header.startNs = date(cursor.rest()).value_or(0);
        return LineKind::Event;
    }
    if (startsWith(first, "//") || equals(first, "internal") || equals(first, "no")) {
        return LineKind::Header;
    }
    return LineKind::Other;
}

}  // namespace quill::traceformats::asc
