#include "dbc/DbcNumbers.h"

#include <charconv>
#include <limits>

namespace quill::dbjson::dbc {

namespace {

// Texts of C libraries: inf, 1.#INF, nan, 1.#QNAN, 1.#IND.
std::optional<double> notFinite(std::string_view text, bool negative) {
    const bool isInfinity = text.find_first_of("fF") != std::string_view::npos;
    if (!isInfinity) return 0.0;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    return negative ? -kInfinity : kInfinity;
}

}  // namespace

std::optional<uint32_t> toUnsigned(std::string_view text) {
    uint32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return value;
}

std::optional<double> toDouble(std::string_view text) {
    if (text.empty()) return 0.0;
    const bool negative = text.front() == '-';
    if (text.front() == '+') text.remove_prefix(1);
    if (text.find_first_of("#nN") != std::string_view::npos) return notFinite(text, negative);
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ptr != end || result.ec == std::errc::invalid_argument) return std::nullopt;
    if (result.ec == std::errc::result_out_of_range) {
        const bool tiny = text.find("e-") != std::string_view::npos ||
                          text.find("E-") != std::string_view::npos ||
                          text.find_first_of("eE") == std::string_view::npos;
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        return tiny ? 0.0 : negative ? -kInfinity : kInfinity;
    }
    return value;
}

}  // namespace quill::dbjson::dbc
