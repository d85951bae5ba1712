// Values out of XML texts, as the schemas of the field write them.
#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <string_view>

#include "arxml/Model.h"

namespace quill::arxml {

// Text of an element without surrounding blanks; empty for a missing element.
[[nodiscard]] inline std::string_view textOf(pugi::xml_node node) { return node.child_value(); }
[[nodiscard]] inline std::string_view textOf(pugi::xml_node node, const char* child) {
    return node.child_value(child);
}
[[nodiscard]] inline std::string_view nameOf(pugi::xml_node node) { return node.name(); }

// Decimal, 0x hexadecimal, 0b binary, leading 0 octal, a decimal point or exponent without
// fraction, true and false.
[[nodiscard]] std::optional<int64_t> parseInteger(std::string_view text);
// The same forms, fractions and INF, -INF; NaN is refused.
[[nodiscard]] std::optional<double> parseNumber(std::string_view text);
// 0 to 4294967295, else nothing.
[[nodiscard]] std::optional<uint32_t> parseUnsigned(std::string_view text);

[[nodiscard]] inline std::optional<uint32_t> unsignedOf(pugi::xml_node node, const char* child) {
    return parseUnsigned(textOf(node, child));
}
[[nodiscard]] inline std::optional<int64_t> integerOf(pugi::xml_node node, const char* child) {
    return parseInteger(textOf(node, child));
}
[[nodiscard]] inline std::optional<double> numberOf(pugi::xml_node node, const char* child) {
    return parseNumber(textOf(node, child));
}
// Seconds in the file, milliseconds here, freed of the noise of the binary fraction.
[[nodiscard]] std::optional<double> millisecondsOf(pugi::xml_node node);

[[nodiscard]] ByteOrder parseByteOrder(std::string_view text);

// Position of the least significant bit of a field that starts at `start` as the formats of the
// field count: the most significant bit for Motorola order, the least significant one otherwise.
[[nodiscard]] int64_t lsbOf(uint32_t start, uint32_t lengthBits, ByteOrder order);

// Text of DESC in the language that suits all, else English, else the first one.
[[nodiscard]] std::string_view descriptionOf(pugi::xml_node element);

// Where a level exists once per variant, the first variant; else the element itself.
[[nodiscard]] pugi::xml_node variantOf(pugi::xml_node element);
// SW-DATA-DEF-PROPS of an element in any of its places, with or without variants.
[[nodiscard]] pugi::xml_node dataPropsOf(pugi::xml_node holder);

}  // namespace quill::arxml
