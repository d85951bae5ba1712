#include "dbc/DbcBuilder.h"

#include <limits>

#include "dbc/DbcNumbers.h"

namespace quill::dbjson::dbc {

namespace {

constexpr uint32_t kIndependentSignals = 0xC0000000U;
constexpr std::string_view kIndependentName = "VECTOR__INDEPENDENT_SIG_MSG";
constexpr uint32_t kMaxBit = std::numeric_limits<int32_t>::max();

struct ObjectKey {
    std::string_view word;
    ObjectKind kind;
};
constexpr ObjectKey kObjectKeys[] = {{"SG_", ObjectKind::Signal},
                                     {"BO_", ObjectKind::Message},
                                     {"BU_", ObjectKind::Node},
                                     {"EV_", ObjectKind::EnvironmentVariable}};

std::optional<ObjectKind> objectKindOf(std::string_view word) {
    for (const ObjectKey& key : kObjectKeys) {
        if (key.word == word) return key.kind;
    }
    return std::nullopt;
}

struct TypeKey {
    std::string_view word;
    AttributeType type;
};
constexpr TypeKey kTypeKeys[] = {
    {"INT", AttributeType::Integer},      {"HEX", AttributeType::Hex},
    {"FLOAT", AttributeType::Float},      {"STRING", AttributeType::String},
    {"ENUM", AttributeType::Enumeration}, {"BOOL", AttributeType::Integer}};

}  // namespace

bool isNoNode(std::string_view name) {
    constexpr std::string_view kNobody = "vector__xxx";
    if (name.size() != kNobody.size()) return false;
    for (size_t i = 0; i < name.size(); ++i) {
        const char lower =
            name[i] >= 'A' && name[i] <= 'Z' ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
        if (lower != kNobody[i]) return false;
    }
    return true;
}

bool DbcBuilder::take(Keyword keyword, const StatementTokens& statement) {
    const Tokens& tokens = statement.tokens;
    switch (keyword) {
        case Keyword::Version:
            return takeVersion(tokens);
        case Keyword::Nodes:
            return takeNodes(tokens);
        case Keyword::ValueTable:
            return takeValueTable(tokens);
        case Keyword::Message:
            return takeMessage(tokens);
        case Keyword::Signal:
            return takeSignal(tokens);
        case Keyword::MessageSenders:
            return takeMessageSenders(tokens);
        case Keyword::EnvironmentVariable:
            return takeEnvironmentVariable(tokens);
        case Keyword::EnvironmentData:
            return takeEnvironmentData(tokens);
        case Keyword::Comment:
            return takeComment(tokens);
        case Keyword::AttributeDefinition:
        case Keyword::RelationDefinition:
            return takeDefinition(tokens);
        case Keyword::AttributeDefault:
            return takeDefault(tokens, false);
        case Keyword::RelationDefault:
            return takeDefault(tokens, true);
        case Keyword::AttributeValue:
            return takeAttribute(tokens);
        case Keyword::Values:
            return takeValues(tokens);
        case Keyword::SignalType:
            return takeSignalType(tokens);
        case Keyword::SignalGroup:
            return takeSignalGroup(tokens);
        case Keyword::MultiplexedValue:
            return takeMultiplexedValue(tokens);
        case Keyword::RelationValue:
            return takeRelation(tokens);
        case Keyword::Unknown:
        case Keyword::NewSymbols:
        case Keyword::BitTiming:
        case Keyword::Ignored:
            break;
    }
    return true;
}

std::string_view DbcBuilder::textOf(const Token& token) {
    const std::string_view text = token.view();
    if (text.find("\\\"") == std::string_view::npos) return text;
    std::string clean;
    clean.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i, 2) != "\\\"") clean += text[i];
    }
    return m_model.ownedTexts.emplace_back(std::move(clean));
}

RawValue DbcBuilder::rawValue(const Token& token) {
    return {token.kind, token.kind == TokenKind::Text ? textOf(token) : token.view()};
}

bool DbcBuilder::takeObject(const Tokens& tokens, size_t& index, ObjectName& object) const {
    if (index >= tokens.size() || tokens[index].kind != TokenKind::Word) return true;
    const auto kind = objectKindOf(tokens[index].view());
    if (!kind) return true;
    object.kind = *kind;
    ++index;
    if (*kind == ObjectKind::Message || *kind == ObjectKind::Signal) {
        const auto id = toUnsigned(tokens[index++].view());
        if (!id) return false;
        object.messageId = *id;
    }
    if (*kind != ObjectKind::Message) object.name = tokens[index++].view();
    return true;
}

bool DbcBuilder::addValues(const Tokens& tokens, size_t first, Range& values) {
    values.first = static_cast<uint32_t>(m_model.values.size());
    for (size_t i = first; i + 1 < tokens.size(); i += 2) {
        const auto value = toDouble(tokens[i].view());
        if (!value) {
            m_model.values.resize(values.first);
            return false;
        }
        m_model.values.push_back({*value, textOf(tokens[i + 1])});
    }
    values.count = static_cast<uint32_t>(m_model.values.size()) - values.first;
    return true;
}

Range DbcBuilder::addNames(const Tokens& tokens, size_t first) {
    Range names{static_cast<uint32_t>(m_model.names.size()), 0};
    for (size_t i = first; i < tokens.size(); ++i) m_model.names.push_back(tokens[i].view());
    names.count = static_cast<uint32_t>(m_model.names.size()) - names.first;
    return names;
}

bool DbcBuilder::takeVersion(const Tokens& tokens) {
    m_model.version = textOf(tokens[0]);
    return true;
}

bool DbcBuilder::takeNodes(const Tokens& tokens) {
    for (const Token& token : tokens) {
        Node& node = m_model.nodes.emplace_back();
        node.name = node.nameInFile = token.view();
    }
    return true;
}

bool DbcBuilder::takeValueTable(const Tokens& tokens) {
    ValueTable table;
    table.name = tokens[0].view();
    if (!addValues(tokens, 1, table.values)) return false;
    m_model.valueTables.push_back(table);
    return true;
}

bool DbcBuilder::takeMessage(const Tokens& tokens) {
    m_state = MessageState::Dropped;
    const auto id = toUnsigned(tokens[0].view());
    const auto length = toUnsigned(tokens[2].view());
    if (!id || !length || *length > kMaxBit) return false;
    // The pseudo frame collects the signals that belong to no frame.
    if (*id == kIndependentSignals || tokens[1].view() == kIndependentName) return true;
    Message& message = m_model.messages.emplace_back();
    message.idInFile = *id;
    message.name = message.nameInFile = tokens[1].view();
    message.length = *length;
    if (tokens.size() > 3) message.sender = tokens[3].view();
    message.signals.first = static_cast<uint32_t>(m_model.signals.size());
    m_state = MessageState::Open;
    return true;
}

bool DbcBuilder::takeMultiplexMark(std::string_view mark, Signal& signal) const {
    if (mark == "M") {
        signal.isMultiplexor = true;
        return true;
    }
    if (mark.front() != 'm') return false;
    mark.remove_prefix(1);
    signal.isMultiplexed = true;
    if (mark.ends_with('M')) {
        signal.isMultiplexor = true;
        mark.remove_suffix(1);
    }
    if (mark.empty()) return true;  // a bare "m" occurs; the values follow in SG_MUL_VAL_ or never
    const auto id = toUnsigned(mark);
    if (!id) return false;
    signal.multiplexerId = *id;
    return true;
}

bool DbcBuilder::takeSignal(const Tokens& tokens) {
    if (m_state == MessageState::Dropped) return true;
    Signal signal;
    signal.name = signal.nameInFile = tokens[0].view();
    size_t at = 1;
    if (tokens[at].kind == TokenKind::Word && !takeMultiplexMark(tokens[at++].view(), signal)) {
        return false;
    }
    const auto start = toUnsigned(tokens[at].view());
    const auto length = toUnsigned(tokens[at + 1].view());
    if (!start || !length || *start > kMaxBit || *length > kMaxBit) return false;
    signal.startBit = signal.startBitInFile = *start;
    signal.bitLength = *length;
    signal.isBigEndian = tokens[at + 2].view() == "0";
    signal.isSigned = tokens[at + 3].view() == "-";
    if (signal.isBigEndian && *length > 0) {
        const uint64_t lowest = motorolaLeastSignificantBit(*start, *length);
        if (lowest > kMaxBit) return false;
        signal.startBit = static_cast<uint32_t>(lowest);
    }
    const auto factor = toDouble(tokens[at + 4].view());
    const auto offset = toDouble(tokens[at + 5].view());
    const auto minimum = toDouble(tokens[at + 6].view());
    const auto maximum = toDouble(tokens[at + 7].view());
    if (!factor || !offset || !minimum || !maximum) return false;
    signal.factor = *factor;
    signal.offset = *offset;
    signal.minimum = *minimum;
    signal.maximum = *maximum;
    signal.unit = textOf(tokens[at + 8]);
    signal.receivers = addNames(tokens, at + 9);
    m_model.signals.push_back(signal);
    ++m_model.messages.back().signals.count;
    return true;
}

bool DbcBuilder::takeMessageSenders(const Tokens& tokens) {
    const auto id = toUnsigned(tokens[0].view());
    if (!id) return false;
    m_references.senders.push_back({*id, addNames(tokens, 1)});
    return true;
}

bool DbcBuilder::takeEnvironmentVariable(const Tokens& tokens) {
    EnvironmentVariable variable;
    variable.name = variable.nameInFile = tokens[0].view();
    const auto type = toDouble(tokens[1].view());
    const auto minimum = toDouble(tokens[2].view());
    const auto maximum = toDouble(tokens[3].view());
    const auto initial = toDouble(tokens[5].view());
    const auto number = toDouble(tokens[6].view());
    if (!type || !minimum || !maximum || !initial || !number) return false;
    if (*type < 0 || *type > kMaxBit || *number < 0 || *number > kMaxBit) return false;
    variable.type = static_cast<uint32_t>(*type);
    variable.minimum = *minimum;
    variable.maximum = *maximum;
    variable.unit = textOf(tokens[4]);
    variable.initial = *initial;
    variable.number = static_cast<uint32_t>(*number);
    variable.access = tokens[7].view();
    variable.nodes = addNames(tokens, 8);
    m_model.environmentVariables.push_back(variable);
    return true;
}

bool DbcBuilder::takeEnvironmentData(const Tokens& tokens) {
    const auto bytes = toUnsigned(tokens[1].view());
    if (!bytes) return false;
    m_references.data.push_back({tokens[0].view(), *bytes});
    return true;
}

bool DbcBuilder::takeComment(const Tokens& tokens) {
    CommentReference comment;
    size_t at = 0;
    if (tokens[0].kind == TokenKind::Number) {
        const auto id = toUnsigned(tokens[0].view());
        if (!id) return false;
        comment.object.kind = ObjectKind::Message;
        comment.object.messageId = *id;
        at = 1;
    } else if (!takeObject(tokens, at, comment.object)) {
        return false;
    }
    comment.text = textOf(tokens[at]);
    m_references.comments.push_back(comment);
    return true;
}

bool DbcBuilder::takeDefinition(const Tokens& tokens) {
    AttributeDefinition definition;
    size_t at = 0;
    if (tokens[0].kind == TokenKind::Word) {
        const std::string_view word = tokens[at++].view();
        definition.kind = objectKindOf(word).value_or(ObjectKind::Relation);
        if (definition.kind == ObjectKind::Relation) definition.relation = word;
    }
    definition.name = textOf(tokens[at]);
    const std::string_view typeWord = tokens[at + 1].view();
    bool known = false;
    for (const TypeKey& key : kTypeKeys) {
        if (key.word != typeWord) continue;
        definition.type = key.type;
        known = true;
    }
    if (!known) return false;
    at += 2;
    if (definition.type == AttributeType::Enumeration) {
        definition.enumeration.first = static_cast<uint32_t>(m_model.names.size());
        for (; at < tokens.size(); ++at) m_model.names.push_back(textOf(tokens[at]));
        definition.enumeration.count =
            static_cast<uint32_t>(m_model.names.size()) - definition.enumeration.first;
    } else if (at + 1 < tokens.size()) {
        definition.minimum = toDouble(tokens[at].view()).value_or(0.0);
        definition.maximum = toDouble(tokens[at + 1].view()).value_or(0.0);
    }
    m_model.definitions.push_back(definition);
    return true;
}

bool DbcBuilder::takeDefault(const Tokens& tokens, bool ofRelation) {
    m_references.defaults.push_back({textOf(tokens[0]), ofRelation, rawValue(tokens[1])});
    return true;
}

bool DbcBuilder::takeAttribute(const Tokens& tokens) {
    AttributeReference attribute;
    attribute.name = textOf(tokens[0]);
    size_t at = 1;
    // A lone word is the value, also where it is spelt like the key of an object.
    if (tokens.size() > 2 && !takeObject(tokens, at, attribute.object)) return false;
    attribute.value = rawValue(tokens[at]);
    m_references.attributes.push_back(attribute);
    return true;
}

bool DbcBuilder::takeValues(const Tokens& tokens) {
    ValuesReference values;
    size_t at = 0;
    if (tokens[0].kind == TokenKind::Number) {
        const auto id = toUnsigned(tokens[at++].view());
        if (!id) return false;
        values.object.kind = ObjectKind::Signal;
        values.object.messageId = *id;
    } else {
        values.object.kind = ObjectKind::EnvironmentVariable;
    }
    values.object.name = tokens[at++].view();
    if (at < tokens.size() && tokens[at].kind == TokenKind::Word) {
        values.tableName = tokens[at++].view();
    }
    if (!addValues(tokens, at, values.values)) return false;
    m_references.values.push_back(values);
    return true;
}

bool DbcBuilder::takeSignalType(const Tokens& tokens) {
    const auto id = toUnsigned(tokens[0].view());
    const auto type = toUnsigned(tokens[2].view());
    if (!id || !type) return false;
    m_references.signalTypes.push_back({{ObjectKind::Signal, *id, tokens[1].view()}, *type});
    return true;
}

bool DbcBuilder::takeSignalGroup(const Tokens& tokens) {
    const auto id = toUnsigned(tokens[0].view());
    const auto repetitions = toUnsigned(tokens[2].view());
    if (!id || !repetitions) return false;
    m_model.signalGroups.push_back({tokens[1].view(), *id, *repetitions, addNames(tokens, 3)});
    return true;
}

bool DbcBuilder::takeMultiplexedValue(const Tokens& tokens) {
    const auto id = toUnsigned(tokens[0].view());
    if (!id) return false;
    MultiplexingReference reference;
    reference.object = {ObjectKind::Signal, *id, tokens[1].view()};
    reference.multiplexing.multiplexor = tokens[2].view();
    Range& ranges = reference.multiplexing.ranges;
    ranges.first = static_cast<uint32_t>(m_model.valueRanges.size());
    for (size_t i = 3; i + 1 < tokens.size(); i += 2) {
        const auto first = toUnsigned(tokens[i].view());
        const auto last = toUnsigned(tokens[i + 1].view());
        if (!first || !last || *last < *first) {
            m_model.valueRanges.resize(ranges.first);
            return false;
        }
        m_model.valueRanges.push_back({*first, *last});
    }
    ranges.count = static_cast<uint32_t>(m_model.valueRanges.size()) - ranges.first;
    m_references.multiplexings.push_back(reference);
    return true;
}

bool DbcBuilder::takeRelation(const Tokens& tokens) {
    if (tokens.size() < 4) return false;
    RelationReference reference;
    reference.name = textOf(tokens[0]);
    reference.relation.kind = tokens[1].view();
    reference.value = rawValue(tokens.back());
    Range& objects = reference.relation.objects;
    objects.first = static_cast<uint32_t>(m_model.names.size());
    for (size_t i = 2; i + 1 < tokens.size(); ++i) m_model.names.push_back(tokens[i].view());
    objects.count = static_cast<uint32_t>(m_model.names.size()) - objects.first;
    m_references.relations.push_back(reference);
    return true;
}

}  // namespace quill::dbjson::dbc
