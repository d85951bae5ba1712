#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace simcore::logs {

// Takes a line apart into words between blanks.
class Words {
public:
    explicit Words(std::string_view line) : m_rest(line) {}

    // The next word; empty at the end of the line.
    [[nodiscard]] std::string_view next() {
        size_t begin = 0;
        while (begin < m_rest.size() && isBlank(m_rest[begin])) ++begin;
        size_t end = begin;
        while (end < m_rest.size() && !isBlank(m_rest[end])) ++end;
        const std::string_view word = m_rest.substr(begin, end - begin);
        m_rest.remove_prefix(end);
        return word;
    }
    void skip(int count) {
        for (int i = 0; i < count; ++i) static_cast<void>(next());
    }

private:
    [[nodiscard]] static bool isBlank(char c) { return c == ' ' || c == '\t'; }
    std::string_view m_rest;
};

// A whole word as an unsigned number; nothing when it is anything else or too large.
template <class Number>
[[nodiscard]] std::optional<Number> parseNumber(std::string_view word, int base) {
    Number value = 0;
    const char* end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, value, base);
    if (word.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return value;
}

// The latest time of a log. Two of them can be added.
inline constexpr int64_t kLatestNs = 4'000'000'000'000'000'000;

// Seconds with up to nine decimals, as nanoseconds; nothing beyond kLatestNs.
[[nodiscard]] std::optional<int64_t> parseSeconds(std::string_view word);

// Compares without letter case (ASCII).
[[nodiscard]] bool equalText(std::string_view a, std::string_view b);

}  // namespace simcore::logs
