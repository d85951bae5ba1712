#include <algorithm>
#include <array>
#include <utility>

#include "dbc/DbcNumbers.h"
#include "dbc/DbcReferences.h"
#include "dbc/NameIndex.h"

namespace quill::dbjson::dbc {

namespace {

// Frame formats by number where the file defines the attribute as a plain number.
constexpr std::array<std::string_view, 16> kFrameFormats = {
    "StandardCAN", "ExtendedCAN", "reserved",       "J1939PG",       "reserved", "reserved",
    "reserved",    "reserved",    "reserved",       "reserved",      "reserved", "reserved",
    "reserved",    "reserved",    "StandardCAN_FD", "ExtendedCAN_FD"};

class DbcResolver {
public:
    DbcResolver(Model& model, References& references)
        : m_model(model),
          m_references(references),
          m_nextSameId(model.messages.size(), kNone),
          m_messages(model.messages.size()),
          m_signals(model.signals.size()),
          m_others(model.nodes.size() + model.environmentVariables.size()),
          m_definitions(model.definitions.size()) {}

    void run() {
        indexObjects();
        resolveComments();
        resolveDefaults();
        resolveAttributes();
        resolveRelations();
        resolveValues();
        resolveSignals();
        resolveSenders();
        applyLongNames();
    }

private:
    static uint32_t kindOwner(ObjectKind kind) { return static_cast<uint32_t>(kind); }

    void indexObjects();
    void resolveComments();
    void resolveDefaults();
    void resolveAttributes();
    void resolveRelations();
    void resolveValues();
    void resolveSignals();
    void resolveSenders();
    void applyLongNames();
    template <class Object>
    bool applyLongNames(std::vector<Object>& objects, ObjectKind kind, std::string_view attribute);
    void renameNodesInLists();
    void renameSignalsInLists();

    uint32_t findMessage(uint32_t id) const { return m_messages.find(id, {}); }
    const Signal* findSignal(const ObjectName& object) const {
        const uint32_t message = findMessage(object.messageId);
        if (message == kNone) return nullptr;
        const uint32_t index = m_signals.find(message, object.name);
        return index == kNone ? nullptr : &m_model.signals[index];
    }
    uint32_t findOther(ObjectKind kind, std::string_view name) const {
        return m_others.find(kindOwner(kind), name);
    }
    // Runs use(record) on every object that the name means: public databases hold the same
    // identifier twice, and what is said about it then holds for each frame that has it.
    template <class Use>
    void forEach(const ObjectName& object, Use use);
    template <class Use>
    void forEachMessage(uint32_t id, Use use);
    template <class Use>
    void forEachSignal(const ObjectName& object, Use use);

    AttributeData typedValue(const AttributeDefinition& definition, const RawValue& raw) const;

    Model& m_model;
    References& m_references;
    std::vector<uint32_t> m_nextSameId;
    NameIndex m_messages;     // identifier as in the file
    NameIndex m_signals;      // message index and name
    NameIndex m_others;       // kind and name
    NameIndex m_definitions;  // kind and name
};

template <class Use>
void DbcResolver::forEachMessage(uint32_t id, Use use) {
    // A bound, so that a file full of one identifier stays linear.
    constexpr int kMaxSame = 16;
    uint32_t index = findMessage(id);
    for (int i = 0; index != kNone && i < kMaxSame; ++i) {
        use(index);
        index = m_nextSameId[index];
    }
}

template <class Use>
void DbcResolver::forEachSignal(const ObjectName& object, Use use) {
    forEachMessage(object.messageId, [&](uint32_t message) {
        const uint32_t index = m_signals.find(message, object.name);
        if (index != kNone) use(m_model.signals[index]);
    });
}

template <class Use>
void DbcResolver::forEach(const ObjectName& object, Use use) {
    if (object.kind == ObjectKind::Database) return use(m_model);
    if (object.kind == ObjectKind::Signal) return forEachSignal(object, use);
    if (object.kind == ObjectKind::Message) {
        return forEachMessage(object.messageId,
                              [&](uint32_t index) { use(m_model.messages[index]); });
    }
    const uint32_t index = findOther(object.kind, object.name);
    if (index == kNone) return;
    if (object.kind == ObjectKind::Node) return use(m_model.nodes[index]);
    use(m_model.environmentVariables[index]);
}

void DbcResolver::indexObjects() {
    for (uint32_t i = 0; i < m_model.messages.size(); ++i) {
        const Message& message = m_model.messages[i];
        const uint32_t first = findMessage(message.idInFile);
        if (first == kNone) {
            m_messages.add(message.idInFile, {}, i);
        } else {
            m_nextSameId[i] = std::exchange(m_nextSameId[first], i);
        }
        for (uint32_t k = 0; k < message.signals.count; ++k) {
            const uint32_t signal = message.signals.first + k;
            m_signals.add(i, m_model.signals[signal].nameInFile, signal);
        }
    }
    for (uint32_t i = 0; i < m_model.nodes.size(); ++i) {
        m_others.add(kindOwner(ObjectKind::Node), m_model.nodes[i].nameInFile, i);
    }
    for (uint32_t i = 0; i < m_model.environmentVariables.size(); ++i) {
        m_others.add(kindOwner(ObjectKind::EnvironmentVariable),
                     m_model.environmentVariables[i].nameInFile, i);
    }
    for (uint32_t i = 0; i < m_model.definitions.size(); ++i) {
        const AttributeDefinition& definition = m_model.definitions[i];
        m_definitions.add(kindOwner(definition.kind), definition.name, i);
    }
}

void DbcResolver::resolveComments() {
    for (const CommentReference& reference : m_references.comments) {
        forEach(reference.object, [&](auto& object) { object.comment = reference.text; });
    }
}

AttributeData DbcResolver::typedValue(const AttributeDefinition& definition,
                                      const RawValue& raw) const {
    AttributeData data;
    data.text = raw.text;
    const std::optional<double> number = raw.text.empty() ? std::nullopt : toDouble(raw.text);
    if (definition.type == AttributeType::String) {
        data.isText = true;
        return data;
    }
    data.isText = !number.has_value();
    data.number = number.value_or(0.0);
    const bool isIndex = raw.kind != TokenKind::Text && number && *number >= 0.0;
    if (definition.type == AttributeType::Enumeration) {
        if (raw.kind == TokenKind::Text) data.isText = true;
        if (isIndex && *number < definition.enumeration.count) {
            data.isText = true;
            data.text =
                m_model.names[definition.enumeration.first + static_cast<uint32_t>(*number)];
        }
    } else if (isIndex && definition.name == "VFrameFormat" && *number < kFrameFormats.size()) {
        data.isText = true;
        data.text = kFrameFormats[static_cast<size_t>(*number)];
    }
    return data;
}

void DbcResolver::resolveDefaults() {
    constexpr uint32_t kKinds = 6;
    for (const DefaultReference& reference : m_references.defaults) {
        for (uint32_t kind = 0; kind < kKinds; ++kind) {
            if ((kind == kindOwner(ObjectKind::Relation)) != reference.ofRelation) continue;
            const uint32_t index = m_definitions.find(kind, reference.name);
            if (index == kNone) continue;
            AttributeDefinition& definition = m_model.definitions[index];
            definition.defaultValue = typedValue(definition, reference.value);
        }
    }
}

void DbcResolver::resolveAttributes() {
    // From the last to the first, each before the others of its object: file order results.
    const auto& references = m_references.attributes;
    for (auto it = references.rbegin(); it != references.rend(); ++it) {
        const uint32_t definition = m_definitions.find(kindOwner(it->object.kind), it->name);
        if (definition == kNone) continue;
        const AttributeData data = typedValue(m_model.definitions[definition], it->value);
        forEach(it->object, [&](auto& object) {
            const auto added = static_cast<uint32_t>(m_model.attributes.size());
            const uint32_t next = std::exchange(object.firstAttribute, added);
            m_model.attributes.push_back({definition, next, data});
        });
    }
}

void DbcResolver::resolveRelations() {
    for (RelationReference& reference : m_references.relations) {
        Relation& relation = reference.relation;
        relation.definition = m_definitions.find(kindOwner(ObjectKind::Relation), reference.name);
        if (relation.definition == kNone) continue;
        relation.data = typedValue(m_model.definitions[relation.definition], reference.value);
        m_model.relations.push_back(relation);
    }
}

void DbcResolver::resolveValues() {
    NameIndex tables(m_model.valueTables.size());
    for (uint32_t i = 0; i < m_model.valueTables.size(); ++i) {
        tables.add(0, m_model.valueTables[i].name, i);
    }
    for (const ValuesReference& reference : m_references.values) {
        Range values = reference.values;
        if (!reference.tableName.empty()) {
            const uint32_t table = tables.find(0, reference.tableName);
            if (table == kNone) continue;
            values = m_model.valueTables[table].values;
        }
        if (reference.object.kind == ObjectKind::Signal) {
            forEachSignal(reference.object, [&](Signal& signal) { signal.values = values; });
            continue;
        }
        const uint32_t index = findOther(reference.object.kind, reference.object.name);
        if (index != kNone) m_model.environmentVariables[index].values = values;
    }
}

void DbcResolver::resolveSignals() {
    constexpr uint32_t kFloat = 1;
    constexpr uint32_t kDouble = 2;
    for (const SignalTypeReference& reference : m_references.signalTypes) {
        const bool isFloat = reference.type == kFloat || reference.type == kDouble;
        forEachSignal(reference.object, [&](Signal& signal) { signal.isFloat = isFloat; });
    }
    for (const MultiplexingReference& reference : m_references.multiplexings) {
        forEachSignal(reference.object, [&](Signal& signal) {
            signal.isMultiplexed = true;
            signal.multiplexing = static_cast<uint32_t>(m_model.multiplexings.size());
            m_model.multiplexings.push_back(reference.multiplexing);
        });
    }
    // The plain form names no multiplexor: it is the frame's only one.
    for (const Message& message : m_model.messages) {
        Signal* const begin = m_model.signals.data() + message.signals.first;
        Signal* const end = begin + message.signals.count;
        const Signal* const multiplexor = std::find_if(begin, end, [](const Signal& signal) {
            return signal.isMultiplexor && !signal.isMultiplexed;
        });
        for (Signal* signal = begin; multiplexor != end && signal != end; ++signal) {
            if (signal->multiplexerId == kNone || signal->multiplexing != kNone) continue;
            const auto first = static_cast<uint32_t>(m_model.valueRanges.size());
            m_model.valueRanges.push_back({signal->multiplexerId, signal->multiplexerId});
            signal->multiplexing = static_cast<uint32_t>(m_model.multiplexings.size());
            m_model.multiplexings.push_back({multiplexor->nameInFile, {first, 1}});
        }
    }
}

void DbcResolver::resolveSenders() {
    for (const SendersReference& reference : m_references.senders) {
        forEachMessage(reference.messageId, [&](uint32_t index) {
            m_model.messages[index].moreSenders = reference.nodes;
        });
    }
    for (const DataReference& reference : m_references.data) {
        const uint32_t index = findOther(ObjectKind::EnvironmentVariable, reference.variable);
        if (index != kNone) m_model.environmentVariables[index].dataBytes = reference.bytes;
    }
}

template <class Object>
bool DbcResolver::applyLongNames(std::vector<Object>& objects, ObjectKind kind,
                                 std::string_view attribute) {
    const uint32_t definition = m_definitions.find(kindOwner(kind), attribute);
    if (definition == kNone) return false;
    bool found = false;
    for (Object& object : objects) {
        for (uint32_t at = object.firstAttribute; at != kNone; at = m_model.attributes[at].next) {
            const Attribute& value = m_model.attributes[at];
            if (value.definition != definition || value.data.text.empty()) continue;
            object.name = value.data.text;
            found = true;
        }
    }
    return found;
}

void DbcResolver::applyLongNames() {
    applyLongNames(m_model.messages, ObjectKind::Message, "SystemMessageLongSymbol");
    applyLongNames(m_model.environmentVariables, ObjectKind::EnvironmentVariable,
                   "SystemEnvVarLongSymbol");
    const bool nodesRenamed =
        applyLongNames(m_model.nodes, ObjectKind::Node, "SystemNodeLongSymbol");
    if (applyLongNames(m_model.signals, ObjectKind::Signal, "SystemSignalLongSymbol")) {
        renameSignalsInLists();
    }
    if (nodesRenamed) renameNodesInLists();
}

void DbcResolver::renameSignalsInLists() {
    for (uint32_t i = 0; i < m_model.messages.size(); ++i) {
        const Range& signals = m_model.messages[i].signals;
        for (uint32_t k = signals.first; k < signals.first + signals.count; ++k) {
            const uint32_t multiplexing = m_model.signals[k].multiplexing;
            if (multiplexing == kNone) continue;
            std::string_view& name = m_model.multiplexings[multiplexing].multiplexor;
            const uint32_t signal = m_signals.find(i, name);
            if (signal != kNone) name = m_model.signals[signal].name;
        }
    }
    for (const SignalGroup& group : m_model.signalGroups) {
        for (uint32_t k = group.signals.first; k < group.signals.first + group.signals.count; ++k) {
            const ObjectName object{ObjectKind::Signal, group.messageIdInFile, m_model.names[k]};
            if (const Signal* const signal = findSignal(object)) m_model.names[k] = signal->name;
        }
    }
}

void DbcResolver::renameNodesInLists() {
    const auto rename = [this](std::string_view& name) {
        const uint32_t node = findOther(ObjectKind::Node, name);
        if (node != kNone) name = m_model.nodes[node].name;
    };
    const auto renameAll = [&](const Range& range) {
        for (uint32_t k = range.first; k < range.first + range.count; ++k) rename(m_model.names[k]);
    };
    for (Message& message : m_model.messages) {
        rename(message.sender);
        renameAll(message.moreSenders);
    }
    for (const Signal& signal : m_model.signals) renameAll(signal.receivers);
    for (const EnvironmentVariable& variable : m_model.environmentVariables) {
        renameAll(variable.nodes);
    }
    for (const Relation& relation : m_model.relations) {
        if (relation.objects.count > 0) rename(m_model.names[relation.objects.first]);
    }
}

}  // namespace

void resolveReferences(Model& model, References& references) {
    DbcResolver(model, references).run();
}

}  // namespace quill::dbjson::dbc
