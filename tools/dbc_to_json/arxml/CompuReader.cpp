#include "arxml/CompuReader.h"

#include <cmath>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

// A text that stands for a range of raw values is written for each of them, up to this many.
constexpr double kMaxTextsPerScale = 256;
// Below this, adding one to a double makes the next integer.
constexpr double kExactIntegers = 4503599627370496.0;
// All ranges of a file together; texts beyond that stand for the first value of their range only.
constexpr size_t kMaxRangeTexts = size_t{1} << 20;

std::vector<double> numbersOf(pugi::xml_node list) {
    std::vector<double> numbers;
    for (const auto value : list.children("V")) {
        const auto number = parseNumber(textOf(value));
        numbers.push_back(number && std::isfinite(*number) ? *number : 0);
    }
    return numbers;
}

// A constant, a polynomial and a denominator of 0 or one that depends on the raw value are no
// straight line; the value then stays raw.
bool isLinear(const CompuScale& scale) {
    const auto isZero = [](const std::vector<double>& numbers, size_t from) {
        for (size_t at = from; at < numbers.size(); ++at) {
            if (numbers[at] != 0) return false;
        }
        return true;
    };
    const double divisor = scale.denominators.empty() ? 1 : scale.denominators[0];
    return scale.numerators.size() >= 2 && isZero(scale.numerators, 2) && divisor != 0 &&
           isZero(scale.denominators, 1) && std::isfinite(scale.numerators[0] / divisor) &&
           std::isfinite(scale.numerators[1] / divisor);
}

bool isIdentity(std::string_view category) { return category == "IDENTICAL"; }

bool isBitField(std::string_view category) { return category == "BITFIELD_TEXTTABLE"; }

}  // namespace

std::optional<uint32_t> CompuReader::read(pugi::xml_node method) {
    const void* key = method.internal_object();
    if (const auto known = m_known.find(key); known != m_known.end()) return known->second;
    CompuMethod out;
    out.name = textOf(method, "SHORT-NAME");
    out.category = textOf(method, "CATEGORY");
    out.unit = unitText(method.child("UNIT-REF"));
    if (!readScales(method, out)) return std::nullopt;
    auto& methods = m_context.database().compuMethods;
    const auto index = static_cast<uint32_t>(methods.size());
    methods.push_back(std::move(out));
    m_known.emplace(key, index);
    return index;
}

bool CompuReader::readScales(pugi::xml_node method, CompuMethod& out) {
    const auto scales = method.child("COMPU-INTERNAL-TO-PHYS").child("COMPU-SCALES");
    for (const auto scale : scales.children("COMPU-SCALE")) {
        if (!readScale(scale, out)) return false;
    }
    return true;
}

bool CompuReader::readScale(pugi::xml_node scale, CompuMethod& out) {
    CompuScale read;
    read.lower = numberOf(scale, "LOWER-LIMIT");
    read.upper = numberOf(scale, "UPPER-LIMIT");
    if (const auto mask = integerOf(scale, "MASK")) read.mask = static_cast<uint64_t>(*mask);
    if (const auto constant = scale.child("COMPU-CONST")) {
        const auto text = constant.child("VT");
        read.hasText = static_cast<bool>(text);
        read.text = textOf(text);
        addTexts(read, out);
    } else if (const auto coefficients = scale.child("COMPU-RATIONAL-COEFFS")) {
        read.numerators = numbersOf(coefficients.child("COMPU-NUMERATOR"));
        read.denominators = numbersOf(coefficients.child("COMPU-DENOMINATOR"));
        if (!applyLinear(scale, read, out)) return false;
    }
    out.scales.push_back(std::move(read));
    return true;
}

void CompuReader::addTexts(const CompuScale& scale, CompuMethod& out) {
    // Texts of bit fields stand for some bits of a value, which a table from value to text
    // cannot tell.
    if (!scale.hasText || isBitField(out.category) || scale.mask) return;
    const auto first = scale.lower ? scale.lower : scale.upper;
    if (!first || !std::isfinite(*first)) return;
    out.valueTable.push_back({*first, scale.text});
    const double last = scale.upper.value_or(*first);
    const bool isShort = std::trunc(*first) == *first && std::abs(*first) < kExactIntegers &&
                         last > *first && last - *first < kMaxTextsPerScale;
    if (!isShort || m_rangeTexts > kMaxRangeTexts) return;
    const int further = static_cast<int>(last - *first);
    m_rangeTexts += static_cast<size_t>(further);
    for (int step = 1; step <= further; ++step) {
        out.valueTable.push_back({*first + step, scale.text});
    }
}

bool CompuReader::applyLinear(pugi::xml_node scale, const CompuScale& read, CompuMethod& out) {
    if (isIdentity(out.category)) return true;
    if (out.category == "LINEAR" && read.numerators.size() < 2) {
        return m_context.fail(scale,
                              "compu method " + std::string(out.name) + " is linear but has " +
                                  std::to_string(read.numerators.size()) + " of 2 numerators");
    }
    // Only the first rational scale can become factor and offset.
    if (out.hasRational) return true;
    out.hasRational = true;
    out.linearLower = read.lower;
    out.linearUpper = read.upper;
    if (!isLinear(read)) return true;
    const double divisor = read.denominators.empty() ? 1 : read.denominators[0];
    out.offset = read.numerators[0] / divisor;
    out.scale = read.numerators[1];
    out.denominator = divisor;
    return true;
}

std::string_view CompuReader::unitText(pugi::xml_node unitReference) {
    const auto unit = m_context.wish(unitReference, {"UNIT"});
    const auto text = textOf(unit, "DISPLAY-NAME");
    // The customary way to say in a unit that there is none.
    return text == "NoUnit" ? std::string_view{} : text;
}

}  // namespace quill::arxml
