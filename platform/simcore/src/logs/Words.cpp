#include "logs/Words.h"

#include <algorithm>

namespace simcore::logs {

namespace {
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
}  // namespace

std::optional<int64_t> parseSeconds(std::string_view word) {
    constexpr uint64_t kMostSeconds = kLatestNs / 1'000'000'000 - 1;
    constexpr size_t kDecimals = 9;
    const size_t point = word.find('.');
    const auto seconds = parseNumber<uint64_t>(word.substr(0, point), 10);
    if (!seconds || *seconds > kMostSeconds) return std::nullopt;
    int64_t ns = static_cast<int64_t>(*seconds) * 1'000'000'000;
    if (point == std::string_view::npos) return ns;
    const std::string_view decimals = word.substr(point + 1);
    int64_t scale = 100'000'000;
    for (size_t i = 0; i < decimals.size(); ++i) {
        if (decimals[i] < '0' || decimals[i] > '9') return std::nullopt;
        if (i < kDecimals) ns += (decimals[i] - '0') * scale;
        scale /= 10;
    }
    return ns;
}

bool equalText(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace simcore::logs
