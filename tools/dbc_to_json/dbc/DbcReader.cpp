#include "dbc/DbcReader.h"

#include <string>

#include "dbc/DbcBuilder.h"
#include "dbc/DbcReferences.h"
#include "dbc/DbcTokens.h"

namespace quill::dbjson::dbc {

namespace {

bool isBlankInLine(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string_view wordAt(const char* at, const char* end) {
    return {at, static_cast<size_t>(skipWord(at, end) - at)};
}

// Walks from statement to statement.
class DbcReader {
public:
    DbcReader(std::string_view text, Diagnostics& diagnostics, Model& model)
        : m_begin(text.data()),
          m_end(m_begin + text.size()),
          m_diagnostics(diagnostics),
          m_builder(model, m_references) {}

    // False when the text fails as a whole.
    bool run() {
        const char* at = skipBlank(m_begin, m_end);
        while (at != m_end && !m_diagnostics.failed()) at = skipBlank(step(at), m_end);
        if (!m_diagnostics.failed() && m_statements == 0) {
            m_diagnostics.fail(0, "no DBC statement in the file");
        }
        return !m_diagnostics.failed();
    }

    References& references() { return m_references; }

private:
    const char* step(const char* at);
    const char* readKnown(Keyword keyword, std::string_view word, const char* begin);
    const char* readNewSymbols(const char* at);
    // What a damaged statement leads to: the end of the file, or the place to go on from.
    const char* leaveOut(Keyword keyword, std::string_view word);
    void checkEnd(std::string_view word, const char* at);
    [[nodiscard]] const char* recover(const char* begin, const char* at) const;
    [[nodiscard]] size_t offset(const char* at) const { return static_cast<size_t>(at - m_begin); }

    const char* m_begin;
    const char* m_end;
    Diagnostics& m_diagnostics;
    References m_references;
    DbcBuilder m_builder;
    StatementTokens m_statement;
    size_t m_statements = 0;
};

const char* DbcReader::step(const char* at) {
    const std::string_view word = wordAt(at, m_end);
    const Keyword keyword = keywordOf(word);
    const char* const after = at + word.size();
    if (keyword == Keyword::NewSymbols) return readNewSymbols(after);
    if (keyword != Keyword::Unknown) return readKnown(keyword, word, after);
    if (*at == ';') return at + 1;
    m_diagnostics.warn(offset(at), "unknown statement left out");
    return recover(at, after == at ? at + 1 : after);
}

const char* DbcReader::readKnown(Keyword keyword, std::string_view word, const char* begin) {
    const char* const after = readStatement(keyword, begin, m_end, m_statement);
    if (m_statement.failedAt != nullptr) return leaveOut(keyword, word);
    checkEnd(word, after);
    if (keyword == Keyword::Signal && !m_builder.hasMessage()) {
        m_diagnostics.warn(offset(word.data()), "SG_ before any BO_ left out");
    } else if (!m_builder.take(keyword, m_statement)) {
        m_diagnostics.warn(offset(word.data()), std::string(word) +
                                                    " statement left out: a value in it is out of "
                                                    "range or of an unknown kind");
        return after;
    }
    ++m_statements;
    return after;
}

// The keywords of the list are keywords elsewhere, so the list ends at the first one that is
// followed by what follows it in a statement: anything but the next word of the list.
const char* DbcReader::readNewSymbols(const char* at) {
    at = skipBlank(at, m_end);
    if (at == m_end || *at != ':') {
        m_diagnostics.warn(offset(at), "NS_ statement left out: expected ':'");
        return at;
    }
    ++m_statements;
    at = skipBlank(at + 1, m_end);
    while (true) {
        const char* const after = skipWord(at, m_end);
        if (after == at) return at;
        const char* lineRest = after;
        while (lineRest != m_end && isBlankInLine(*lineRest)) ++lineRest;
        const bool endsLine = lineRest == m_end || *lineRest == '\n';
        const char* const next = skipBlank(after, m_end);
        const std::string_view nextWord = wordAt(next, m_end);
        const bool listed = next == m_end || (!nextWord.empty() && endsLine) ||
                            keywordOf(nextWord) != Keyword::Unknown;
        if (!listed) return at;
        at = next;
    }
}

const char* DbcReader::leaveOut(Keyword keyword, std::string_view word) {
    const char* const at = m_statement.failedAt;
    const std::string where = " in the " + std::string(word) + " statement";
    if (at == m_end) {
        m_diagnostics.fail(offset(at),
                           "unexpected end of file" + where + ", expected " + m_statement.expected);
        return m_end;
    }
    if (*at == '"' && std::string_view(m_statement.expected) == "a text in quotes") {
        m_diagnostics.fail(offset(at), "text without closing quote" + where);
        return m_end;
    }
    m_diagnostics.warn(offset(at),
                       std::string(word) + " statement left out: expected " + m_statement.expected);
    if (keyword == Keyword::Message) m_builder.dropMessage();
    return recover(word.data() + word.size(), at);
}

// A statement without its semicolon is whole when the next one follows. At the end of the file only
// a closing quote tells it from one that was cut.
void DbcReader::checkEnd(std::string_view word, const char* at) {
    if (!m_statement.missingSemicolon) return;
    const bool whole =
        !m_statement.tokens.empty() && m_statement.tokens.back().kind == TokenKind::Text;
    if (at == m_end && !whole) {
        m_diagnostics.fail(offset(at), "unexpected end of file in the " + std::string(word) +
                                           " statement, expected ';'");
        return;
    }
    m_diagnostics.warn(offset(word.data()), std::string(word) + " statement without ';'");
}

// From at on, the end of a statement or a keyword at the begin of a line; quotes count for nothing,
// as a missing one is the likeliest damage. A keyword that at itself begins a line with counts too.
const char* DbcReader::recover(const char* begin, const char* at) const {
    const char* back = at;
    while (back != begin && isBlankInLine(back[-1])) --back;
    if (back != begin && back[-1] == '\n') at = back - 1;
    for (; at != m_end; ++at) {
        if (*at == ';') return at + 1;
        if (*at != '\n') continue;
        const char* word = at + 1;
        while (word != m_end && isBlankInLine(*word)) ++word;
        if (keywordOf(wordAt(word, m_end)) != Keyword::Unknown) return word;
    }
    return m_end;
}

}  // namespace

Model readDbc(std::string_view text, Diagnostics& diagnostics) {
    Model model;
    DbcReader reader(text, diagnostics, model);
    if (reader.run()) resolveReferences(model, reader.references());
    return model;
}

}  // namespace quill::dbjson::dbc
