#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace simcore::document {

// The keys that a reader asked for, by the place of the object, "boxes[0]" or "" for the root.
using KeysRead = std::map<std::string, std::set<std::string>>;

// The first thing that is wrong with a document; later ones are not kept.
class Complaint {
public:
    Complaint() = default;
    // Notes into `keys` which keys are asked for.
    explicit Complaint(KeysRead& keys) : m_keys(&keys) {}

    void note(const std::string& path, const std::string& message) {
        if (m_text.empty()) m_text = (path.empty() ? "document" : path) + ": " + message;
    }
    void noteRead(const std::string& path, const char* key) {
        if (m_keys != nullptr) (*m_keys)[path].insert(key);
    }
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    std::string m_text;
    KeysRead* m_keys = nullptr;
};

// A value of a document that fits the schema, and where it stands. What the schema cannot say is
// complained of here and in the readers; a value of the wrong kind gives the fallback.
class Node {
public:
    Node(const nlohmann::json& value, std::string path, Complaint& complaint)
        : m_value(&value), m_path(std::move(path)), m_complaint(&complaint) {}

    [[nodiscard]] bool has(const char* key) const;
    [[nodiscard]] bool isText() const;
    [[nodiscard]] bool isInteger() const;

    [[nodiscard]] std::optional<Node> child(const char* key) const;
    [[nodiscard]] std::vector<Node> items() const;  // of a list
    [[nodiscard]] std::vector<Node> items(const char* key) const;
    [[nodiscard]] std::vector<std::pair<std::string, Node>> members(const char* key) const;

    // Texts are bounded in bytes, which the schema counts as characters.
    [[nodiscard]] std::string text(const char* key, const std::string& fallback,
                                   size_t longest = 63) const;
    [[nodiscard]] int64_t integer(const char* key, int64_t fallback) const;
    [[nodiscard]] double number(const char* key, double fallback) const;
    [[nodiscard]] bool flag(const char* key, bool fallback) const;
    // One of the texts; its position, or the fallback.
    [[nodiscard]] size_t choice(const char* key, std::initializer_list<const char*> texts,
                                size_t fallback = 0) const;
    // Bytes: a text of hexadecimal digit pairs, blanks allowed between them, or a list of 0 to 255.
    [[nodiscard]] std::vector<uint8_t> bytes(const char* key, size_t most) const;

    // The value itself.
    [[nodiscard]] std::string asText(size_t longest = 63) const;
    [[nodiscard]] int64_t asInteger(int64_t fallback) const;

    void complain(const std::string& message) const { m_complaint->note(m_path, message); }
    void complain(const char* key, const std::string& message) const;

private:
    [[nodiscard]] Node at(const char* key) const;

    const nlohmann::json* m_value;
    std::string m_path;
    Complaint* m_complaint;
};

}  // namespace simcore::document
