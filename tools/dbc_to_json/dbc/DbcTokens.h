#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quill::dbjson::dbc {

enum class TokenKind : uint8_t { Word, Number, Text };

struct Token {
    const char* begin = nullptr;
    uint32_t size = 0;
    TokenKind kind = TokenKind::Word;
    [[nodiscard]] std::string_view view() const { return {begin, size}; }
};

// What the grammar collects of one statement, and where and why it stopped.
struct StatementTokens {
    std::vector<Token> tokens;
    const char* failedAt = nullptr;  // null while the statement is whole
    const char* expected = "";
    bool missingSemicolon = false;

    void clear() {
        tokens.clear();
        failedAt = nullptr;
        missingSemicolon = false;
    }
    void add(TokenKind kind, const char* begin, const char* end) {
        tokens.push_back({begin, static_cast<uint32_t>(end - begin), kind});
    }
    void fail(const char* at, const char* what) {
        if (failedAt != nullptr) return;
        failedAt = at;
        expected = what;
    }
};

enum class Keyword : uint8_t {
    Unknown,
    Version,
    NewSymbols,
    BitTiming,
    Nodes,
    ValueTable,
    Message,
    Signal,
    MessageSenders,
    EnvironmentVariable,
    EnvironmentData,
    Comment,
    AttributeDefinition,
    AttributeDefault,
    AttributeValue,
    Values,
    SignalType,
    SignalGroup,
    MultiplexedValue,
    RelationDefinition,
    RelationDefault,
    RelationValue,
    Ignored,  // in the grammar, but nothing that the readers could use
};

[[nodiscard]] Keyword keywordOf(std::string_view word);

// Parses what follows the keyword, from begin to at most end; the return value is where it stopped
// reading. Tokens and failure are in the statement.
const char* readStatement(Keyword keyword, const char* begin, const char* end,
                          StatementTokens& statement);

// After blank space and comments.
const char* skipBlank(const char* begin, const char* end);
// After the word at begin; begin itself when there is none.
const char* skipWord(const char* begin, const char* end);

}  // namespace quill::dbjson::dbc
