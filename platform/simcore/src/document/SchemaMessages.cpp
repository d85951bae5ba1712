#include "document/SchemaMessages.h"

#include <array>
#include <nlohmann/json.hpp>
#include <string_view>

namespace simcore::document {

namespace {

using nlohmann::json;

// What stands behind references.
const json& resolved(const json& schema, const json* part) {
    while (part->contains("$ref")) {
        const auto reference = (*part)["$ref"].get<std::string>();
        part = &schema.at(json::json_pointer(reference.substr(1)));
    }
    return *part;
}

// The part of the schema that describes a member or an item; null when none does.
const json* stepInto(const json& part, const std::string& name, bool isItem) {
    if (isItem) return part.contains("items") ? &part["items"] : nullptr;
    const auto properties = part.find("properties");
    if (properties != part.end() && properties->contains(name)) return &(*properties)[name];
    const auto others = part.find("additionalProperties");
    return others != part.end() && others->is_object() ? &*others : nullptr;
}

struct Place {
    std::string path;  // "boxes[0].mac"
    const json* part = nullptr;
};

Place placeOf(const json& schema, const json& document, const std::vector<std::string>& context) {
    Place place{{}, &schema};
    const json* value = &document;
    for (size_t i = 1; i < context.size(); ++i) {
        const std::string name = context[i].substr(1, context[i].size() - 2);
        const bool isItem = value != nullptr && value->is_array();
        place.path += isItem ? "[" + name + "]" : (place.path.empty() ? name : "." + name);
        if (place.part != nullptr) {
            place.part = stepInto(resolved(schema, place.part), name, isItem);
        }
        if (value == nullptr) continue;
        const json* next = nullptr;
        if (isItem) {
            next = &(*value)[std::stoul(name)];
        } else if (value->contains(name)) {
            next = &(*value)[name];
        }
        value = next;
    }
    if (place.part != nullptr) place.part = &resolved(schema, place.part);
    return place;
}

std::string rangeOf(const json& part, const char* noun) {
    std::string text = noun;
    if (part.contains("minimum")) text += " from " + part["minimum"].dump();
    if (part.contains("maximum")) text += " to " + part["maximum"].dump();
    return text;
}

std::string nounOf(const json& part, const std::string& type) {
    if (type == "object") return "an object";
    if (type == "array") return "a list";
    if (type == "string") return "a text";
    if (type == "boolean") return "true or false";
    return rangeOf(part, type == "integer" ? "an integer" : "a number");
}

std::string expectedKinds(const json& part) {
    if (!part["type"].is_array()) return nounOf(part, part["type"].get<std::string>());
    std::string text;
    for (const json& type : part["type"]) {
        text += (text.empty() ? "" : " or ") + nounOf(part, type.get<std::string>());
    }
    return text;
}

std::string expectedNumber(const json& part) {
    const json& type = part["type"];
    return nounOf(part, type.is_array() ? type[0].get<std::string>() : type.get<std::string>());
}

std::string expectedValues(const json& part) {
    std::string text;
    for (const json& value : part["enum"]) text += (text.empty() ? "" : ", ") + value.dump();
    return text;
}

// The key that the checker's text ends with, behind these characters: "... 'key'."
std::string quotedName(const std::string& description, std::string_view behind) {
    const size_t at = description.find(behind);
    const size_t end = description.rfind('\'');
    if (at == std::string::npos) return {};
    const size_t begin = at + behind.size();
    return begin < end ? description.substr(begin, end - begin) : std::string();
}

enum class Mistake : uint8_t {
    missing,
    unknownKey,
    kind,
    value,
    range,
    length,
    items,
    pattern,
    choice,
    other
};

struct Wording {
    std::string_view begin;  // of the checker's text
    Mistake mistake;
};

constexpr std::array kWordings{
    Wording{"Missing required property", Mistake::missing},
    Wording{"Missing dependency", Mistake::missing},
    Wording{"Object contains a property that could not be validated", Mistake::unknownKey},
    Wording{"Value type not permitted", Mistake::kind},
    Wording{"Failed to match against any enum values", Mistake::value},
    Wording{"Expected number", Mistake::range},
    Wording{"String should be no more", Mistake::length},
    Wording{"Array should contain no more", Mistake::items},
    Wording{"Failed to match regex", Mistake::pattern},
    Wording{"Failed to validate against any child schemas allowed by oneOf", Mistake::choice},
    Wording{"Failed to validate against exactly one child schema", Mistake::choice},
};

Mistake mistakeOf(const std::string& description) {
    for (const Wording& wording : kWordings) {
        if (description.rfind(wording.begin, 0) == 0) return wording.mistake;
    }
    return Mistake::other;
}

std::string textOf(const json& part, Mistake mistake, const std::string& description) {
    const auto own = [&](const char* key) { return part.value(key, description); };
    switch (mistake) {
        case Mistake::missing:
            return "is missing";
        case Mistake::unknownKey:
            return "unknown key";
        case Mistake::kind:
            return "expected " + expectedKinds(part);
        case Mistake::value:
            return "expected one of " + expectedValues(part);
        case Mistake::range:
            return "expected " + expectedNumber(part);
        case Mistake::length:
            return "is longer than " + part["maxLength"].dump() + " bytes";
        case Mistake::items:
            return "has more than " + part["maxItems"].dump() + " entries";
        case Mistake::pattern:
            return own("patternErrorMessage");
        case Mistake::choice:
            return own("errorMessage");
        case Mistake::other:
            break;
    }
    return description;
}

}  // namespace

bool isChoiceMistake(const std::string& description) {
    return mistakeOf(description) == Mistake::choice;
}

std::string schemaMessage(const json& schema, const json& document,
                          const std::vector<std::string>& context, const std::string& description) {
    Place place = placeOf(schema, document, context);
    const Mistake mistake = mistakeOf(description);
    if (mistake == Mistake::missing || mistake == Mistake::unknownKey) {
        const char* behind = mistake == Mistake::missing ? " '" : ": '";
        place.path += (place.path.empty() ? "" : ".") + quotedName(description, behind);
    }
    if (place.path.empty()) place.path = "document";
    const std::string text =
        place.part == nullptr ? description : textOf(*place.part, mistake, description);
    return place.path + ": " + text;
}

}  // namespace simcore::document
