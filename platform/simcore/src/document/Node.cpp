#include "document/Node.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

namespace simcore::document {

namespace {

bool isOneOf(const std::string& key, std::initializer_list<const char*> keys) {
    return std::any_of(keys.begin(), keys.end(), [&](const char* k) { return key == k; });
}

std::string numberText(double value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value);
    return std::string(text, end.ptr);
}

std::optional<std::vector<uint8_t>> parseHex(const std::string& text) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < text.size();) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        uint8_t byte = 0;
        const char* begin = text.data() + i;
        if (i + 1 >= text.size()) return std::nullopt;
        const auto result = std::from_chars(begin, begin + 2, byte, 16);
        if (result.ec != std::errc() || result.ptr != begin + 2) return std::nullopt;
        bytes.push_back(byte);
        i += 2;
    }
    return bytes;
}

}  // namespace

Node Node::at(const char* key) const {
    return {(*m_value)[key], m_path.empty() ? key : m_path + "." + key, *m_complaint};
}

void Node::complain(const char* key, const std::string& message) const {
    m_complaint->note(m_path.empty() ? key : m_path + "." + key, message);
}

void Node::expectObject(std::initializer_list<const char*> keys) const {
    if (!m_value->is_object()) return complain("expected an object");
    for (const auto& [key, value] : m_value->items()) {
        if (!isOneOf(key, keys) && !isOneOf(key, {"$schema", "comment"})) {
            return complain(key.c_str(), "unknown key");
        }
    }
}

bool Node::has(const char* key) const { return m_value->is_object() && m_value->contains(key); }
bool Node::isObject() const { return m_value->is_object(); }
bool Node::isText() const { return m_value->is_string(); }
bool Node::isInteger() const { return m_value->is_number_integer(); }
bool Node::isList() const { return m_value->is_array(); }

std::optional<Node> Node::child(const char* key) const {
    if (!has(key)) return std::nullopt;
    return at(key);
}

std::vector<Node> Node::items() const {
    std::vector<Node> nodes;
    if (!m_value->is_array()) {
        complain("expected a list");
        return nodes;
    }
    for (size_t i = 0; i < m_value->size(); ++i) {
        nodes.emplace_back((*m_value)[i], m_path + "[" + std::to_string(i) + "]", *m_complaint);
    }
    return nodes;
}

std::vector<Node> Node::items(const char* key) const {
    return has(key) ? at(key).items() : std::vector<Node>();
}

std::vector<std::pair<std::string, Node>> Node::members(const char* key) const {
    std::vector<std::pair<std::string, Node>> nodes;
    if (!has(key)) return nodes;
    const Node parent = at(key);
    if (!parent.m_value->is_object()) {
        parent.complain("expected an object");
        return nodes;
    }
    for (const auto& [name, value] : parent.m_value->items()) {
        nodes.emplace_back(name, Node(value, parent.m_path + "." + name, *m_complaint));
    }
    return nodes;
}

std::string Node::asText(size_t longest) const {
    if (!m_value->is_string()) {
        complain("expected a text");
        return {};
    }
    std::string text = m_value->get<std::string>();
    if (text.size() > longest) {
        complain("is longer than " + std::to_string(longest) + " bytes");
        return {};
    }
    return text;
}

int64_t Node::asInteger(int64_t fallback, int64_t least, int64_t most) const {
    const bool tooLarge = m_value->is_number_unsigned() &&
                          m_value->get<uint64_t>() > static_cast<uint64_t>(INT64_MAX);
    if (m_value->is_number_integer() && !tooLarge) {
        const auto value = m_value->get<int64_t>();
        if (value >= least && value <= most) return value;
    }
    complain("expected an integer from " + std::to_string(least) + " to " + std::to_string(most));
    return fallback;
}

std::string Node::text(const char* key, const std::string& fallback, size_t longest) const {
    return has(key) ? at(key).asText(longest) : fallback;
}

std::string Node::requiredText(const char* key, size_t longest) const {
    if (has(key)) return at(key).asText(longest);
    complain(key, "is missing");
    return {};
}

int64_t Node::integer(const char* key, int64_t fallback, int64_t least, int64_t most) const {
    return has(key) ? at(key).asInteger(fallback, least, most) : fallback;
}

double Node::number(const char* key, double fallback, double least, double most) const {
    if (!has(key)) return fallback;
    const Node node = at(key);
    if (node.m_value->is_number()) {
        const auto value = node.m_value->get<double>();
        if (std::isfinite(value) && value >= least && value <= most) return value;
    }
    node.complain("expected a number from " + numberText(least) + " to " + numberText(most));
    return fallback;
}

bool Node::flag(const char* key, bool fallback) const {
    if (!has(key)) return fallback;
    const Node node = at(key);
    if (node.m_value->is_boolean()) return node.m_value->get<bool>();
    node.complain("expected true or false");
    return fallback;
}

size_t Node::choice(const char* key, std::initializer_list<const char*> texts,
                    std::optional<size_t> fallback) const {
    std::string all;
    for (const char* text : texts) all += (all.empty() ? "\"" : ", \"") + std::string(text) + "\"";
    if (!has(key)) {
        if (!fallback) complain(key, "is missing");
        return fallback.value_or(0);
    }
    const Node node = at(key);
    if (node.m_value->is_string()) {
        const auto& value = node.m_value->get_ref<const std::string&>();
        const auto* found = std::find_if(texts.begin(), texts.end(),
                                         [&](const char* text) { return value == text; });
        if (found != texts.end()) return static_cast<size_t>(found - texts.begin());
    }
    node.complain("expected one of " + all);
    return fallback.value_or(0);
}

std::vector<uint8_t> Node::bytes(const char* key, size_t most) const {
    if (!has(key)) return {};
    const Node node = at(key);
    std::optional<std::vector<uint8_t>> bytes;
    if (node.isText()) {
        bytes = parseHex(node.m_value->get_ref<const std::string&>());
        if (!bytes) node.complain("expected pairs of hexadecimal digits");
    } else {
        bytes.emplace();
        for (const Node& item : node.items()) {
            bytes->push_back(static_cast<uint8_t>(item.asInteger(0, 0, 255)));
        }
    }
    if (bytes && bytes->size() > most) {
        node.complain("has more than " + std::to_string(most) + " bytes");
        bytes->resize(most);
    }
    return bytes.value_or(std::vector<uint8_t>());
}

}  // namespace simcore::document
