#include "arxml/SignalReader.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

constexpr int kMaxTypeDepth = 8;
constexpr int kMaxValueDepth = 8;

bool isSignedEncoding(std::string_view encoding) {
    return encoding == "2C" || encoding == "1C" || encoding == "SM";
}

pugi::xml_node childAmong(std::initializer_list<pugi::xml_node> holders, const char* name) {
    for (const auto holder : holders) {
        if (const auto found = holder.child(name)) return found;
    }
    return {};
}

// Limits of the raw value carried over the line, where the file tells no physical ones.
void derivePhysicalLimits(const CompuMethod& compu, Limits& limits) {
    if (!compu.hasRational || limits.physicalLower || limits.physicalUpper) return;
    const double factor = compu.scale / compu.denominator;
    if (factor == 0) return;
    const auto carry = [&](const std::optional<double>& raw) -> std::optional<double> {
        if (!raw) return std::nullopt;
        return compu.offset + *raw * factor;
    };
    limits.physicalLower = carry(factor > 0 ? limits.internalLower : limits.internalUpper);
    limits.physicalUpper = carry(factor > 0 ? limits.internalUpper : limits.internalLower);
}

// The VALUE below value specifications, literals and the wrappers that the releases put around.
pugi::xml_node valueBelow(pugi::xml_node node, int depth) {
    if (depth > kMaxValueDepth) return {};
    for (const auto child : node.children()) {
        const auto name = nameOf(child);
        const bool holdsText = !textOf(child).empty();
        if (name == "VALUE" && holdsText) return child;
        if (name == "CONSTANT-REFERENCE" || name == "CONSTANT-VALUE") return child;
        if (name.ends_with("-VALUE-SPECIFICATION") || name.ends_with("-LITERAL") ||
            name == "VALUE-SPEC" || name == "VALUE" || name == "INIT-VALUE") {
            if (const auto found = valueBelow(child, depth + 1)) return found;
        }
    }
    return {};
}

}  // namespace

std::optional<uint32_t> SignalReader::read(pugi::xml_node iSignal) {
    const void* key = iSignal.internal_object();
    if (const auto known = m_known.find(key); known != m_known.end()) return known->second;
    const Sources from = sourcesOf(iSignal);
    Signal out;
    out.source = key;
    out.name = textOf(iSignal, "SHORT-NAME");
    out.comment = descriptionOf(from.system);
    if (out.comment.empty()) out.comment = descriptionOf(iSignal);
    const auto length = childAmong({iSignal, from.system}, "LENGTH");
    const auto bits = parseUnsigned(textOf(length));
    if (length && !bits) {
        m_context.fail(length, "signal " + std::string(out.name) + " has no usable length");
        return std::nullopt;
    }
    out.lengthBits = bits.value_or(0);
    out.dynamicLength = textOf(from.system, "DYNAMIC-LENGTH");
    if (out.dynamicLength.empty() && textOf(iSignal, "I-SIGNAL-TYPE") == "ARRAY") {
        out.dynamicLength = "false";
    }
    readType(from, out);
    if (!readCompu(from, out)) return std::nullopt;
    readLimits(from, out);
    readInitValue(iSignal, from, out);
    auto& signals = m_context.database().signals;
    const auto index = static_cast<uint32_t>(signals.size());
    signals.push_back(out);
    m_known.emplace(key, index);
    return index;
}

SignalReader::Sources SignalReader::sourcesOf(pugi::xml_node iSignal) {
    Sources from;
    from.system = m_context.wish(iSignal.child("SYSTEM-SIGNAL-REF"),
                                 {"SYSTEM-SIGNAL", "SYSTEM-SIGNAL-GROUP"});
    from.systemProps = dataPropsOf(from.system);
    from.networkProps = dataPropsOf(iSignal);
    auto reference = from.system.child("DATA-TYPE-REF");
    if (!reference) {
        reference =
            childAmong({from.networkProps, from.systemProps}, "IMPLEMENTATION-DATA-TYPE-REF");
    }
    // Implementation types may stand for one another; the one with properties counts.
    for (int depth = 0; reference && depth < kMaxTypeDepth; ++depth) {
        from.type = m_context.wish(reference);
        from.typeProps = dataPropsOf(from.type);
        reference = from.typeProps.child("IMPLEMENTATION-DATA-TYPE-REF");
    }
    return from;
}

bool SignalReader::readCompu(const Sources& from, Signal& out) {
    const auto reference =
        childAmong({from.systemProps, from.networkProps, from.typeProps}, "COMPU-METHOD-REF");
    if (const auto method = m_context.wish(reference, {"COMPU-METHOD"})) {
        out.compuMethod = m_compu.read(method);
        if (!out.compuMethod) return false;
    }
    const auto unit = childAmong({from.systemProps, from.networkProps, from.typeProps}, "UNIT-REF");
    out.unit = m_compu.unitText(unit);
    if (out.unit.empty() && !unit && out.compuMethod) {
        out.unit = m_context.database().compuMethods[*out.compuMethod].unit;
    }
    return true;
}

void SignalReader::readType(const Sources& from, Signal& out) {
    if (from.type) readTypeOfRelease3(from, out);
    const auto reference =
        childAmong({from.networkProps, from.typeProps, from.systemProps}, "BASE-TYPE-REF");
    const auto type = m_context.wish(reference, {"SW-BASE-TYPE"});
    if (!type) return;
    BaseType base;
    base.name = textOf(type, "SHORT-NAME");
    base.encoding = textOf(type, "BASE-TYPE-ENCODING");
    base.sizeBits = unsignedOf(type, "BASE-TYPE-SIZE").value_or(0);
    out.isSigned = isSignedEncoding(base.encoding);
    out.isFloat = base.encoding == "IEEE754";
    out.baseType = base;
}

// Data types of AUTOSAR 3 tell the sign by their lower limit and floats by their element name.
void SignalReader::readTypeOfRelease3(const Sources& from, Signal& out) {
    const std::string_view kind = from.type.name();
    if (!kind.ends_with("-TYPE")) return;
    if (kind == "IMPLEMENTATION-DATA-TYPE") return;
    out.baseType = BaseType{textOf(from.type, "SHORT-NAME"), {}, 0};
    out.isSigned = kind == "INTEGER-TYPE" && numberOf(from.type, "LOWER-LIMIT").value_or(0) < 0;
    const bool isFloatWidth = out.lengthBits == 32 || out.lengthBits == 64;
    out.isFloat = kind == "REAL-TYPE" && isFloatWidth;
}

void SignalReader::readLimits(const Sources& from, Signal& out) {
    Limits& limits = out.limits;
    const auto reference =
        childAmong({from.systemProps, from.networkProps, from.typeProps}, "DATA-CONSTR-REF");
    const auto constraint = m_context.wish(reference, {"DATA-CONSTR"});
    for (const auto rule : constraint.child("DATA-CONSTR-RULES").children("DATA-CONSTR-RULE")) {
        if (const auto physical = rule.child("PHYS-CONSTRS")) {
            limits.physicalLower = numberOf(physical, "LOWER-LIMIT");
            limits.physicalUpper = numberOf(physical, "UPPER-LIMIT");
        }
        if (const auto internal = rule.child("INTERNAL-CONSTRS")) {
            limits.internalLower = numberOf(internal, "LOWER-LIMIT");
            limits.internalUpper = numberOf(internal, "UPPER-LIMIT");
        }
        break;  // further rules are for other levels of enforcement
    }
    if (out.compuMethod) {
        const auto& compu = m_context.database().compuMethods[*out.compuMethod];
        if (!limits.internalLower) limits.internalLower = compu.linearLower;
        if (!limits.internalUpper) limits.internalUpper = compu.linearUpper;
    }
    if (!limits.internalLower) limits.internalLower = numberOf(from.type, "LOWER-LIMIT");
    if (!limits.internalUpper) limits.internalUpper = numberOf(from.type, "UPPER-LIMIT");
    if (out.compuMethod) {
        derivePhysicalLimits(m_context.database().compuMethods[*out.compuMethod], limits);
    }
}

void SignalReader::readInitValue(pugi::xml_node iSignal, const Sources& from, Signal& out) {
    auto value = valueBelow(iSignal.child("INIT-VALUE"), 0);
    if (!value) {
        // AUTOSAR 3: a reference straight to the literal, or to the constant around it.
        const auto target = m_context.wish(from.system.child("INIT-VALUE-REF"));
        value = target.child("VALUE");
        if (value && textOf(value).empty()) value = valueBelow(target, 0);
    }
    for (int depth = 0; depth < kMaxValueDepth && nameOf(value).starts_with("CONSTANT-"); ++depth) {
        const auto target = m_context.wish(value.child("CONSTANT-REF"), {"CONSTANT-SPECIFICATION"});
        value = valueBelow(target, 0);
    }
    if (value) out.initValue = rawText(textOf(value), out);
}

// The raw value as a decimal number; a text of the value table becomes its number, any other text
// (byte arrays, strings) stays.
std::string_view SignalReader::rawText(std::string_view text, const Signal& signal) {
    if (const auto integer = parseInteger(text)) {
        return m_context.database().keep(std::to_string(*integer));
    }
    if (!signal.compuMethod) return text;
    for (const auto& entry : m_context.database().compuMethods[*signal.compuMethod].valueTable) {
        if (entry.text == text && std::abs(entry.value) < 9e15) {
            return m_context.database().keep(std::to_string(std::llround(entry.value)));
        }
    }
    return text;
}

}  // namespace quill::arxml
