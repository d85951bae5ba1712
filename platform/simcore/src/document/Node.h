#pragma once

#include <cstdint>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace simcore::document {

// The first thing that is wrong with a document; later ones are not kept.
class Complaint {
public:
    void note(const std::string& path, const std::string& message) {
        if (m_text.empty()) m_text = (path.empty() ? "document" : path) + ": " + message;
    }
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

// A value of the document and where it stands. Reading a value of the wrong kind or out of its
// range complains and gives the fallback, so that readers need no checks of their own.
class Node {
public:
    Node(const nlohmann::json& value, std::string path, Complaint& complaint)
        : m_value(&value), m_path(std::move(path)), m_complaint(&complaint) {}

    // Complains unless this is an object with no other keys than these ("$schema" and "comment" may
    // stand anywhere).
    void expectObject(std::initializer_list<const char*> keys) const;

    [[nodiscard]] bool has(const char* key) const;
    [[nodiscard]] bool isObject() const;
    [[nodiscard]] bool isText() const;
    [[nodiscard]] bool isInteger() const;
    [[nodiscard]] bool isList() const;

    [[nodiscard]] std::optional<Node> child(const char* key) const;
    [[nodiscard]] std::vector<Node> items() const;  // of a list
    [[nodiscard]] std::vector<Node> items(const char* key) const;
    [[nodiscard]] std::vector<std::pair<std::string, Node>> members(const char* key) const;

    [[nodiscard]] std::string text(const char* key, const std::string& fallback,
                                   size_t longest = 63) const;
    [[nodiscard]] std::string requiredText(const char* key, size_t longest = 63) const;
    [[nodiscard]] int64_t integer(const char* key, int64_t fallback, int64_t least,
                                  int64_t most) const;
    [[nodiscard]] double number(const char* key, double fallback, double least, double most) const;
    [[nodiscard]] bool flag(const char* key, bool fallback) const;
    // One of the texts; its position, or the fallback.
    [[nodiscard]] size_t choice(const char* key, std::initializer_list<const char*> texts,
                                std::optional<size_t> fallback = std::nullopt) const;
    // Bytes: a text of hexadecimal digit pairs, blanks allowed between them, or a list of 0 to 255.
    [[nodiscard]] std::vector<uint8_t> bytes(const char* key, size_t most) const;

    // The value itself.
    [[nodiscard]] std::string asText(size_t longest = 63) const;
    [[nodiscard]] int64_t asInteger(int64_t fallback, int64_t least, int64_t most) const;

    void complain(const std::string& message) const { m_complaint->note(m_path, message); }
    void complain(const char* key, const std::string& message) const;
    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    [[nodiscard]] Node at(const char* key) const;

    const nlohmann::json* m_value;
    std::string m_path;
    Complaint* m_complaint;
};

}  // namespace simcore::document
