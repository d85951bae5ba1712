#pragma once

#include <cstddef>

#include "dbc/DbcModel.h"
#include "dbc/DbcReferences.h"
#include "dbc/DbcTokens.h"

namespace quill::dbjson::dbc {

// Turns statements, one by one, into the model's objects and into references to resolve at the
// end, since statements come in any order.
class DbcBuilder {
public:
    DbcBuilder(Model& model, References& references) : m_model(model), m_references(references) {}

    // False when a number in the statement is out of range or its kind is unknown; nothing is
    // taken from it then.
    [[nodiscard]] bool take(Keyword keyword, const StatementTokens& statement);

    // A damaged message line also takes the signals that follow it out of the database, for they
    // would land in the message before.
    void dropMessage() { m_state = MessageState::Dropped; }
    [[nodiscard]] bool hasMessage() const { return m_state != MessageState::None; }

private:
    enum class MessageState { None, Open, Dropped };
    using Tokens = std::vector<Token>;

    bool takeVersion(const Tokens& tokens);
    bool takeNodes(const Tokens& tokens);
    bool takeValueTable(const Tokens& tokens);
    bool takeMessage(const Tokens& tokens);
    bool takeSignal(const Tokens& tokens);
    bool takeMultiplexMark(std::string_view mark, Signal& signal) const;
    bool takeMessageSenders(const Tokens& tokens);
    bool takeEnvironmentVariable(const Tokens& tokens);
    bool takeEnvironmentData(const Tokens& tokens);
    bool takeComment(const Tokens& tokens);
    bool takeDefinition(const Tokens& tokens);
    bool takeDefault(const Tokens& tokens, bool ofRelation);
    bool takeAttribute(const Tokens& tokens);
    bool takeValues(const Tokens& tokens);
    bool takeSignalType(const Tokens& tokens);
    bool takeSignalGroup(const Tokens& tokens);
    bool takeMultiplexedValue(const Tokens& tokens);
    bool takeRelation(const Tokens& tokens);

    // Text of a token in quotes, with \" as ".
    std::string_view textOf(const Token& token);
    RawValue rawValue(const Token& token);
    // Object words from index on, which moves past them; false when a number is out of range.
    bool takeObject(const Tokens& tokens, size_t& index, ObjectName& object) const;
    bool addValues(const Tokens& tokens, size_t first, Range& values);
    Range addNames(const Tokens& tokens, size_t first);

    Model& m_model;
    References& m_references;
    MessageState m_state = MessageState::None;
};

}  // namespace quill::dbjson::dbc
