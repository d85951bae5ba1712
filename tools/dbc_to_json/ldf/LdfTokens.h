#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "ldf/LdfModel.h"

namespace quill::dbjson::ldf {

enum class TokenKind : uint8_t { Name, Number, Text, Braces };

struct Token {
    TokenKind kind = TokenKind::Name;
    std::string_view text;
};

// Where and why the grammar gave up. It is thrown by the grammar and ends in the reader.
struct SyntaxError {
    const char* at = nullptr;
    const char* expected = "";
};

// Takes the pieces of the file as the grammar recognises them; each operation reads the tokens
// collected since the one before. A value out of range throws SyntaxError.
class LdfBuilder {
public:
    explicit LdfBuilder(Model& model) : m_model(model) {}

    void add(TokenKind kind, const char* begin, const char* end) {
        m_tokens.push_back({kind, {begin, static_cast<size_t>(end - begin)}});
    }

    void setting();  // key and value of the head
    void bigEndian() { m_model.isBigEndian = true; }
    void master();
    void slaves();
    void signal();
    void frameHead(bool isDiagnostic);
    void framePlace(bool isDiagnostic);
    void sporadicFrame();
    void eventTriggeredFrame();
    void diagnosticAddress();
    void groupHead();
    void groupPlace();
    void nodeHead();
    void nodeProperty();
    void configurableFrame();
    void tableHead();
    void tableEntry();
    void encodingHead();
    void encodingValue(EncodingKind kind);
    void representation();
    void clear() { m_tokens.clear(); }

    // Signals get their encodings once the whole file is read, since sections may be in any order.
    void finish();

    // Words that name sections or settings nobody knows, for a warning.
    void unknown(const char* at) { m_unknown.push_back(at); }
    [[nodiscard]] const std::vector<const char*>& unknownPlaces() const { return m_unknown; }

private:
    struct Representation {
        std::string_view encoding;
        Names signals;
    };

    [[nodiscard]] std::string_view textAt(size_t index) const;
    [[nodiscard]] uint64_t integerAt(size_t index) const;
    [[nodiscard]] uint32_t smallAt(size_t index) const;
    [[nodiscard]] double realAt(size_t index) const;
    [[nodiscard]] SignalPlace placeHere() const;
    [[nodiscard]] Names namesFrom(size_t first) const;

    Model& m_model;
    std::vector<Token> m_tokens;
    std::vector<Representation> m_representations;
    std::vector<const char*> m_unknown;
};

}  // namespace quill::dbjson::ldf
