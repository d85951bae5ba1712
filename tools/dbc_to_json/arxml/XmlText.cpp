#include "arxml/XmlText.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace quill::arxml {
namespace {

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::optional<uint64_t> parseDigits(std::string_view digits, int base) {
    uint64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, fault] = std::from_chars(digits.data(), end, value, base);
    if (digits.empty() || fault != std::errc{} || stop != end) return std::nullopt;
    return value;
}

// Magnitude of a prefixed or plain number without sign.
std::optional<uint64_t> parseMagnitude(std::string_view text) {
    if (text.size() > 2 && text[0] == '0') {
        if (text[1] == 'x' || text[1] == 'X') return parseDigits(text.substr(2), 16);
        if (text[1] == 'b' || text[1] == 'B') return parseDigits(text.substr(2), 2);
    }
    if (text.size() > 1 && text[0] == '0') {
        // A leading zero means octal; 08 and 09 can only be meant as decimals.
        if (const auto octal = parseDigits(text.substr(1), 8)) return octal;
    }
    return parseDigits(text, 10);
}

bool hasPrefix(std::string_view text) {
    return text.size() > 1 && text[0] == '0' &&
           (text[1] == 'x' || text[1] == 'X' || text[1] == 'b' || text[1] == 'B');
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) {
    text = trimmed(text);
    if (text == "true") return 1;
    if (text == "false") return 0;
    const bool isNegative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
    if (text.empty() || text[0] == '-' || text[0] == '+') return std::nullopt;
    double value = 0;
    if (text == "INF" || text == "inf") {
        value = std::numeric_limits<double>::infinity();
    } else if (hasPrefix(text)) {
        const auto magnitude = parseMagnitude(text);
        if (!magnitude) return std::nullopt;
        value = static_cast<double>(*magnitude);
    } else {
        const char* end = text.data() + text.size();
        const auto [stop, fault] = std::from_chars(text.data(), end, value);
        if (fault != std::errc{} || stop != end || !std::isfinite(value)) return std::nullopt;
    }
    return isNegative ? -value : value;
}

std::optional<int64_t> parseInteger(std::string_view text) {
    text = trimmed(text);
    const bool isNegative = !text.empty() && text[0] == '-';
    std::string_view digits = text;
    if (!digits.empty() && (digits[0] == '-' || digits[0] == '+')) digits.remove_prefix(1);
    if (const auto magnitude = parseMagnitude(digits)) {
        if (*magnitude > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) {
            return std::nullopt;
        }
        const auto value = static_cast<int64_t>(*magnitude);
        return isNegative ? -value : value;
    }
    const auto value = parseNumber(text);
    // 2^53: above it a double no longer tells neighbouring integers apart.
    if (!value || std::abs(*value) > 9007199254740992.0 || std::trunc(*value) != *value) {
        return std::nullopt;
    }
    return static_cast<int64_t>(*value);
}

std::optional<uint32_t> parseUnsigned(std::string_view text) {
    const auto value = parseInteger(text);
    if (!value || *value < 0 || *value > std::numeric_limits<uint32_t>::max()) return std::nullopt;
    return static_cast<uint32_t>(*value);
}

std::optional<double> millisecondsOf(pugi::xml_node node) {
    // AUTOSAR 4 has a VALUE level, some files of AUTOSAR 3 write the number itself.
    const auto inner = node.child("VALUE");
    const auto seconds = parseNumber(textOf(inner ? inner : node));
    if (!seconds || !std::isfinite(*seconds)) return std::nullopt;
    return std::round(*seconds * 1e9) / 1e6;
}

ByteOrder parseByteOrder(std::string_view text) {
    if (text == "MOST-SIGNIFICANT-BYTE-FIRST") return ByteOrder::kMotorola;
    if (text == "OPAQUE") return ByteOrder::kOpaque;
    return ByteOrder::kIntel;
}

int64_t lsbOf(uint32_t start, uint32_t lengthBits, ByteOrder order) {
    if (order != ByteOrder::kMotorola || lengthBits == 0) return start;
    // Count with the most significant bit of each byte first, go to the last bit, count back.
    const int64_t sequential = 8 * int64_t{start / 8} + (7 - start % 8) + lengthBits - 1;
    return 8 * (sequential / 8) + (7 - sequential % 8);
}

std::string_view descriptionOf(pugi::xml_node element) {
    pugi::xml_node best;
    int bestRank = 3;
    for (const auto text : element.child("DESC").children("L-2")) {
        const std::string_view language = text.attribute("L").value();
        const int rank = language == "FOR-ALL" ? 0 : language == "EN" ? 1 : 2;
        if (rank < bestRank) {
            best = text;
            bestRank = rank;
        }
    }
    return textOf(best);
}

pugi::xml_node variantOf(pugi::xml_node element) {
    for (const auto child : element.children()) {
        const auto name = nameOf(child);
        if (name.ends_with("-VARIANTS") && child.first_child()) {
            return child.first_child();
        }
    }
    return element;
}

pugi::xml_node dataPropsOf(pugi::xml_node holder) {
    for (const char* place :
         {"NETWORK-REPRESENTATION-PROPS", "PHYSICAL-PROPS", "SW-DATA-DEF-PROPS"}) {
        if (const auto props = holder.child(place)) return variantOf(props);
    }
    return {};
}

}  // namespace quill::arxml
