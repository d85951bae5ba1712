#include "dbc/DbcJson.h"

#include <algorithm>
#include <span>

namespace quill::dbjson::dbc {

namespace {

template <class Element>
std::span<const Element> part(const std::vector<Element>& pool, const Range& range) {
    return std::span<const Element>(pool).subspan(range.first, range.count);
}

// Definitions whose defaults the readers want with every object.
struct ReadDefaults {
    uint32_t cycleTime = kNone;
    uint32_t frameFormat = kNone;
    uint32_t startValue = kNone;
};

class DbcJson {
public:
    DbcJson(const Model& model, JsonWriter& json) : m_model(model), m_json(json) {
        m_defaults.cycleTime = findDefault(ObjectKind::Message, "GenMsgCycleTime");
        m_defaults.frameFormat = findDefault(ObjectKind::Message, "VFrameFormat");
        m_defaults.startValue = findDefault(ObjectKind::Signal, "GenSigStartValue");
    }

    void write(ExportScope scope) {
        m_json.beginObject();
        m_json.text("version", m_model.version);
        m_json.beginArray("nodes");
        for (const Node& node : m_model.nodes) m_json.text(node.name);
        m_json.endArray();
        m_json.beginArray("messages");
        for (const Message& message : m_model.messages) writeMessage(message);
        m_json.endArray();
        if (scope == ExportScope::All) writeTheRest();
        m_json.endObject();
    }

private:
    [[nodiscard]] uint32_t findDefault(ObjectKind kind, std::string_view name) const {
        for (uint32_t i = 0; i < m_model.definitions.size(); ++i) {
            const AttributeDefinition& definition = m_model.definitions[i];
            if (definition.kind == kind && definition.name == name) {
                return definition.defaultValue ? i : kNone;
            }
        }
        return kNone;
    }

    void writeMessage(const Message& message);
    void writeTransmitters(const Message& message);
    void writeSignal(const Signal& signal);
    void writeMultiplexing(const Signal& signal);
    void writeTheRest();
    void writeNodes();
    void writeEnvironmentVariables();
    void writeDefinitions();
    void writeValueTables();
    void writeSignalGroups();
    void writeRelations();

    void writeValues(std::string_view key, const Range& values);
    void writeNames(std::string_view key, const Range& names, bool withoutNobody);
    // The object's own attributes and those of the two defaults that it does not set itself.
    void writeAttributes(uint32_t first, uint32_t defaultA, uint32_t defaultB);
    void writeAttribute(uint32_t definition, const AttributeData& data);
    void writeData(std::string_view key, const AttributeData& data);
    // The attribute of an object, or its default; null when there is neither.
    [[nodiscard]] const AttributeData* attributeOf(uint32_t first, uint32_t definition) const;
    [[nodiscard]] bool isFd(const Message& message) const;

    const Model& m_model;
    JsonWriter& m_json;
    ReadDefaults m_defaults;
};

const AttributeData* DbcJson::attributeOf(uint32_t first, uint32_t definition) const {
    for (uint32_t at = first; at != kNone; at = m_model.attributes[at].next) {
        if (m_model.attributes[at].definition == definition) return &m_model.attributes[at].data;
    }
    return nullptr;
}

// The frame format decides where the file gives one. Without it a frame beyond 8 bytes can only be
// CAN FD; with it, such a frame may also be a transport of J1939.
bool DbcJson::isFd(const Message& message) const {
    constexpr uint32_t kClassicBytes = 8;
    for (uint32_t at = message.firstAttribute; at != kNone; at = m_model.attributes[at].next) {
        const Attribute& attribute = m_model.attributes[at];
        if (m_model.definitions[attribute.definition].name == "VFrameFormat") {
            return attribute.data.text.ends_with("_FD");
        }
    }
    if (m_defaults.frameFormat != kNone) {
        return m_model.definitions[m_defaults.frameFormat].defaultValue->text.ends_with("_FD");
    }
    return message.length > kClassicBytes;
}

void DbcJson::writeData(std::string_view key, const AttributeData& data) {
    if (data.isText) {
        m_json.text(key, data.text);
    } else {
        m_json.number(key, data.number);
    }
}

void DbcJson::writeAttribute(uint32_t definition, const AttributeData& data) {
    m_json.beginObject();
    m_json.text("name", m_model.definitions[definition].name);
    writeData("value", data);
    m_json.endObject();
}

void DbcJson::writeAttributes(uint32_t first, uint32_t defaultA, uint32_t defaultB) {
    m_json.beginArray("attributes");
    for (uint32_t at = first; at != kNone; at = m_model.attributes[at].next) {
        writeAttribute(m_model.attributes[at].definition, m_model.attributes[at].data);
    }
    for (const uint32_t definition : {defaultA, defaultB}) {
        if (definition == kNone || attributeOf(first, definition) != nullptr) continue;
        writeAttribute(definition, *m_model.definitions[definition].defaultValue);
    }
    m_json.endArray();
}

void DbcJson::writeNames(std::string_view key, const Range& names, bool withoutNobody) {
    m_json.beginArray(key);
    for (const std::string_view name : part(m_model.names, names)) {
        if (!withoutNobody || !isNoNode(name)) m_json.text(name);
    }
    m_json.endArray();
}

void DbcJson::writeValues(std::string_view key, const Range& values) {
    m_json.beginArray(key);
    for (const ValueText& value : part(m_model.values, values)) {
        m_json.beginObject();
        m_json.text("name", value.text);
        m_json.number("value", value.value);
        m_json.endObject();
    }
    m_json.endArray();
}

void DbcJson::writeTransmitters(const Message& message) {
    m_json.beginArray("transmitters");
    const bool hasSender = !message.sender.empty() && !isNoNode(message.sender);
    if (hasSender) m_json.text(message.sender);
    for (const std::string_view name : part(m_model.names, message.moreSenders)) {
        if (!isNoNode(name) && name != message.sender) m_json.text(name);
    }
    m_json.endArray();
}

void DbcJson::writeMessage(const Message& message) {
    m_json.lineBreak();
    m_json.beginObject();
    m_json.integer("id", identifier(message.idInFile));
    m_json.boolean("is_extended_frame", isExtendedId(message.idInFile));
    m_json.integer("dlc", message.length);
    m_json.text("name", message.name);
    if (message.name != message.nameInFile) m_json.text("name_in_file", message.nameInFile);
    m_json.text("comment", message.comment);
    m_json.boolean("is_fd", isFd(message));
    writeTransmitters(message);
    writeAttributes(message.firstAttribute, m_defaults.cycleTime, m_defaults.frameFormat);
    m_json.beginArray("signals");
    for (const Signal& signal : part(m_model.signals, message.signals)) writeSignal(signal);
    m_json.endArray();
    m_json.endObject();
}

void DbcJson::writeSignal(const Signal& signal) {
    m_json.beginObject();
    m_json.text("name", signal.name);
    if (signal.name != signal.nameInFile) m_json.text("name_in_file", signal.nameInFile);
    m_json.text("comment", signal.comment);
    m_json.text("unit", signal.unit);
    m_json.integer("start_bit", signal.startBit);
    m_json.integer("bit_length", signal.bitLength);
    m_json.boolean("is_signed", signal.isSigned);
    m_json.boolean("is_big_endian", signal.isBigEndian);
    m_json.boolean("is_float", signal.isFloat);
    m_json.number("value_max", signal.maximum);
    m_json.number("value_min", signal.minimum);
    m_json.number("offset", signal.offset);
    m_json.number("factor", signal.factor);
    writeNames("receivers", signal.receivers, true);
    writeAttributes(signal.firstAttribute, m_defaults.startValue, kNone);
    writeValues("value_table", signal.values);
    writeMultiplexing(signal);
    m_json.endObject();
}

void DbcJson::writeMultiplexing(const Signal& signal) {
    if (signal.isMultiplexor) m_json.boolean("is_multiplexor", true);
    if (signal.multiplexerId != kNone) m_json.integer("multiplexer_id", signal.multiplexerId);
    if (signal.multiplexing == kNone) return;
    const Multiplexing& multiplexing = m_model.multiplexings[signal.multiplexing];
    m_json.text("multiplexer_signal", multiplexing.multiplexor);
    m_json.beginArray("multiplexer_ranges");
    for (const ValueRange& range : part(m_model.valueRanges, multiplexing.ranges)) {
        m_json.beginArray();
        m_json.integer(range.first);
        m_json.integer(range.last);
        m_json.endArray();
    }
    m_json.endArray();
}

void DbcJson::writeTheRest() {
    m_json.lineBreak();
    m_json.text("comment", m_model.comment);
    writeAttributes(m_model.firstAttribute, kNone, kNone);
    writeNodes();
    writeEnvironmentVariables();
    writeDefinitions();
    writeValueTables();
    writeSignalGroups();
    writeRelations();
}

void DbcJson::writeNodes() {
    m_json.beginArray("node_details");
    for (const Node& node : m_model.nodes) {
        m_json.beginObject();
        m_json.text("name", node.name);
        if (node.name != node.nameInFile) m_json.text("name_in_file", node.nameInFile);
        m_json.text("comment", node.comment);
        writeAttributes(node.firstAttribute, kNone, kNone);
        m_json.endObject();
    }
    m_json.endArray();
}

void DbcJson::writeEnvironmentVariables() {
    m_json.beginArray("environment_variables");
    for (const EnvironmentVariable& variable : m_model.environmentVariables) {
        m_json.beginObject();
        m_json.text("name", variable.name);
        m_json.text("comment", variable.comment);
        m_json.text("unit", variable.unit);
        m_json.integer("type", variable.type);
        m_json.integer("number", variable.number);
        m_json.number("value_min", variable.minimum);
        m_json.number("value_max", variable.maximum);
        m_json.number("initial_value", variable.initial);
        m_json.text("access", variable.access);
        if (variable.dataBytes != 0) m_json.integer("data_bytes", variable.dataBytes);
        writeNames("nodes", variable.nodes, true);
        writeAttributes(variable.firstAttribute, kNone, kNone);
        writeValues("value_table", variable.values);
        m_json.endObject();
    }
    m_json.endArray();
}

void DbcJson::writeDefinitions() {
    static constexpr std::string_view kKinds[] = {"", "BU_", "BO_", "SG_", "EV_", "relation"};
    static constexpr std::string_view kTypes[] = {"INT", "HEX", "FLOAT", "STRING", "ENUM"};
    m_json.beginArray("attribute_definitions");
    for (const AttributeDefinition& definition : m_model.definitions) {
        m_json.beginObject();
        m_json.text("name", definition.name);
        m_json.text("object", definition.kind == ObjectKind::Relation
                                  ? definition.relation
                                  : kKinds[static_cast<size_t>(definition.kind)]);
        m_json.text("type", kTypes[static_cast<size_t>(definition.type)]);
        if (definition.type == AttributeType::Enumeration) {
            writeNames("values", definition.enumeration, false);
        } else if (definition.type != AttributeType::String) {
            m_json.number("min", definition.minimum);
            m_json.number("max", definition.maximum);
        }
        if (definition.defaultValue) writeData("default", *definition.defaultValue);
        m_json.endObject();
    }
    m_json.endArray();
}

void DbcJson::writeValueTables() {
    m_json.beginArray("value_tables");
    for (const ValueTable& table : m_model.valueTables) {
        m_json.beginObject();
        m_json.text("name", table.name);
        writeValues("values", table.values);
        m_json.endObject();
    }
    m_json.endArray();
}

void DbcJson::writeSignalGroups() {
    m_json.beginArray("signal_groups");
    for (const SignalGroup& group : m_model.signalGroups) {
        m_json.beginObject();
        m_json.integer("message_id", identifier(group.messageIdInFile));
        m_json.boolean("is_extended_frame", isExtendedId(group.messageIdInFile));
        m_json.text("name", group.name);
        m_json.integer("repetitions", group.repetitions);
        writeNames("signals", group.signals, false);
        m_json.endObject();
    }
    m_json.endArray();
}

void DbcJson::writeRelations() {
    m_json.beginArray("relations");
    for (const Relation& relation : m_model.relations) {
        m_json.beginObject();
        m_json.text("kind", relation.kind);
        m_json.text("name", m_model.definitions[relation.definition].name);
        writeNames("objects", relation.objects, false);
        writeData("value", relation.data);
        m_json.endObject();
    }
    m_json.endArray();
}

}  // namespace

void writeDbcJson(const Model& model, ExportScope scope, JsonWriter& json) {
    DbcJson(model, json).write(scope);
}

}  // namespace quill::dbjson::dbc
