#include "document/Node.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

namespace simcore::document {

namespace {

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

bool Node::has(const char* key) const {
    m_complaint->noteRead(m_path, key);
    return m_value->is_object() && m_value->contains(key);
}
bool Node::isText() const { return m_value->is_string(); }
bool Node::isInteger() const { return m_value->is_number_integer(); }

std::optional<Node> Node::child(const char* key) const {
    if (!has(key)) return std::nullopt;
    return at(key);
}

std::vector<Node> Node::items() const {
    std::vector<Node> nodes;
    if (!m_value->is_array()) return nodes;
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
    if (!parent.m_value->is_object()) return nodes;
    for (const auto& [name, value] : parent.m_value->items()) {
        nodes.emplace_back(name, Node(value, parent.m_path + "." + name, *m_complaint));
    }
    return nodes;
}

std::string Node::asText(size_t longest) const {
    if (!m_value->is_string()) return {};
    auto text = m_value->get<std::string>();
    if (text.size() > longest) {
        complain("is longer than " + std::to_string(longest) + " bytes");
        return {};
    }
    return text;
}

int64_t Node::asInteger(int64_t fallback) const {
    return isInteger() ? m_value->get<int64_t>() : fallback;
}

std::string Node::text(const char* key, const std::string& fallback, size_t longest) const {
    return has(key) ? at(key).asText(longest) : fallback;
}

int64_t Node::integer(const char* key, int64_t fallback) const {
    return has(key) ? at(key).asInteger(fallback) : fallback;
}

double Node::number(const char* key, double fallback) const {
    if (!has(key)) return fallback;
    const Node node = at(key);
    return node.m_value->is_number() ? node.m_value->get<double>() : fallback;
}

bool Node::flag(const char* key, bool fallback) const {
    if (!has(key)) return fallback;
    const Node node = at(key);
    return node.m_value->is_boolean() ? node.m_value->get<bool>() : fallback;
}

size_t Node::choice(const char* key, std::initializer_list<const char*> texts,
                    size_t fallback) const {
    if (!has(key)) return fallback;
    const Node node = at(key);
    const std::string value = node.asText();
    const auto* found =
        std::find_if(texts.begin(), texts.end(), [&](const char* text) { return value == text; });
    if (found != texts.end()) return static_cast<size_t>(found - texts.begin());
    node.complain("is none of the known words");
    return fallback;
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
            bytes->push_back(static_cast<uint8_t>(item.asInteger(0)));
        }
    }
    if (bytes && bytes->size() > most) {
        node.complain("has more than " + std::to_string(most) + " bytes");
        bytes->resize(most);
    }
    return bytes.value_or(std::vector<uint8_t>());
}

}  // namespace simcore::document
