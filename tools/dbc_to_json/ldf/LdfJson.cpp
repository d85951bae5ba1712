#include "ldf/LdfJson.h"

#include <charconv>
#include <cmath>
#include <unordered_map>

namespace quill::dbjson::ldf {

namespace {

constexpr uint32_t kMasterRequest = 60;
constexpr uint32_t kSlaveResponse = 61;
constexpr uint32_t kDiagnosticBytes = 8;

// Length of a frame that states none.
uint32_t lengthFromId(uint32_t id) { return id < 32 ? 2 : id < 48 ? 4 : 8; }

// Checksum over the data alone. Everything since LIN 2.0 has the identifier in it.
bool isClassicVersion(std::string_view version) { return version.starts_with("1."); }

struct CommandWord {
    std::string_view word;
    std::string_view type;
};
constexpr CommandWord kCommandWords[] = {{"AssignNAD", "assign_nad"},
                                         {"ConditionalChangeNAD", "conditional_change_nad"},
                                         {"DataDump", "data_dump"},
                                         {"SaveConfiguration", "save_configuration"},
                                         {"AssignFrameIdRange", "assign_frame_id_range"},
                                         {"AssignFrameId", "assign_frame_id"},
                                         {"UnassignFrameId", "unassign_frame_id"},
                                         {"FreeFormat", "free_format"}};

class LdfJson {
public:
    LdfJson(const Model& model, JsonWriter& json) : m_model(model), m_json(json) {
        for (const Signal& signal : model.signals) m_signals.emplace(signal.name, &signal);
        for (const Frame& frame : model.frames) m_frames.emplace(frame.name, &frame);
        for (const NodeAttributes& node : model.nodeAttributes) {
            for (const NodeProperty& property : node.properties) {
                if (property.key == "LIN_protocol" && !property.values.empty()) {
                    m_protocols.emplace(node.name, property.values.front());
                }
            }
        }
    }

    void write();

private:
    void writeHeader();
    void writeNodes();
    void writeNodeAttributes(const NodeAttributes& node);
    void writeProperty(const NodeProperty& property);
    void writeProductId(const NodeProperty& property);
    void writeFrame(const Frame& frame, bool isDiagnostic);
    void writeEventTriggeredFrame(const EventTriggeredFrame& frame);
    void writeSignal(const Signal& signal, uint32_t offset);
    void writeEncoding(const Signal& signal);
    void writeTable(const ScheduleTable& table);
    void writeCommand(const ScheduleEntry& entry);
    void writeTheRest();
    void writeNames(std::string_view key, const Names& names);
    void writeValue(std::string_view value);

    [[nodiscard]] bool isEnhanced(uint32_t id, std::string_view publisher) const;
    [[nodiscard]] const Frame* findFrame(std::string_view name) const {
        const auto found = m_frames.find(name);
        return found == m_frames.end() ? nullptr : found->second;
    }

    const Model& m_model;
    JsonWriter& m_json;
    std::unordered_map<std::string_view, const Signal*> m_signals;
    std::unordered_map<std::string_view, const Frame*> m_frames;
    std::unordered_map<std::string_view, std::string_view> m_protocols;  // by node
};

bool LdfJson::isEnhanced(uint32_t id, std::string_view publisher) const {
    if (id == kMasterRequest || id == kSlaveResponse) return false;
    const auto found = m_protocols.find(publisher);
    return !isClassicVersion(found == m_protocols.end() ? m_model.protocolVersion : found->second);
}

void LdfJson::writeNames(std::string_view key, const Names& names) {
    m_json.beginArray(key);
    for (const std::string_view name : names) m_json.text(name);
    m_json.endArray();
}

// A number where the text is one, decimal or hexadecimal.
void LdfJson::writeValue(std::string_view value) {
    std::string_view digits = value;
    const bool isHex = digits.starts_with("0x") || digits.starts_with("0X");
    if (isHex) digits.remove_prefix(2);
    const char* const end = digits.data() + digits.size();
    int64_t integer = 0;
    if (const auto whole = std::from_chars(digits.data(), end, integer, isHex ? 16 : 10);
        whole.ec == std::errc() && whole.ptr == end) {
        return m_json.integer(integer);
    }
    double real = 0.0;
    if (const auto result = std::from_chars(digits.data(), end, real);
        !isHex && result.ec == std::errc() && result.ptr == end) {
        return m_json.number(real);
    }
    m_json.text(value);
}

void LdfJson::writeHeader() {
    m_json.beginObject("header");
    m_json.text("protocol_version", m_model.protocolVersion);
    m_json.text("language_version", m_model.languageVersion);
    m_json.integer("speed", std::llround(std::min(m_model.speedKbps, 1e9) * 1000.0));
    if (!m_model.fileRevision.empty()) m_json.text("file_revision", m_model.fileRevision);
    if (!m_model.channelName.empty()) m_json.text("channel_name", m_model.channelName);
    m_json.text("byte_order", m_model.isBigEndian ? "big_endian" : "little_endian");
    m_json.endObject();
}

void LdfJson::writeNodes() {
    const Master& master = m_model.master;
    m_json.beginObject("nodes");
    m_json.beginObject("master");
    m_json.text("name", master.name);
    m_json.number("timebase", secondsFromMs(master.timebaseMs));
    m_json.number("jitter", secondsFromMs(master.jitterMs));
    if (master.maxHeaderBits) m_json.number("max_header_length", *master.maxHeaderBits);
    if (master.responseTolerancePct) {
        m_json.number("response_tolerance", *master.responseTolerancePct / 100.0);
    }
    m_json.endObject();
    writeNames("slaves", m_model.slaves);
    m_json.endObject();
}

void LdfJson::writeProductId(const NodeProperty& property) {
    static constexpr std::string_view kKeys[] = {"supplier_id", "function_id", "variant"};
    m_json.beginObject("product_id");
    for (size_t i = 0; i < std::size(kKeys) && i < property.values.size(); ++i) {
        m_json.key(kKeys[i]);
        writeValue(property.values[i]);
    }
    m_json.endObject();
}

void LdfJson::writeProperty(const NodeProperty& property) {
    const auto value = property.values.empty() ? std::string_view() : property.values.front();
    const bool isText = property.key == "LIN_protocol" || property.key == "response_error";
    if (property.key == "product_id") return writeProductId(property);
    if (property.key == "fault_state_signals") return writeNames(property.key, property.values);
    if (isText) {
        return m_json.text(property.key == "LIN_protocol" ? "lin_protocol" : property.key, value);
    }
    if (property.key == "configured_NAD") {
        m_json.key("configured_nad");
    } else if (property.key == "initial_NAD") {
        m_json.key("initial_nad");
    } else {
        m_json.key(property.key);
    }
    double number = 0.0;
    const char* const end = value.data() + value.size();
    const auto parsed = std::from_chars(value.data(), end, number);
    const bool isReal = parsed.ec == std::errc() && parsed.ptr == end;
    if (isReal && property.unit == "ms") {
        m_json.number(secondsFromMs(number));
    } else if (isReal && property.unit == "%") {
        m_json.number(number / 100.0);
    } else {
        writeValue(value);
    }
}

void LdfJson::writeNodeAttributes(const NodeAttributes& node) {
    m_json.beginObject();
    m_json.text("name", node.name);
    std::string_view configuredNad;
    bool hasInitialNad = false;
    for (const NodeProperty& property : node.properties) {
        if (property.key == "configured_NAD" && !property.values.empty()) {
            configuredNad = property.values.front();
        }
        hasInitialNad = hasInitialNad || property.key == "initial_NAD";
        writeProperty(property);
    }
    // A node that states no initial address starts with its configured one.
    if (!hasInitialNad && !configuredNad.empty()) {
        m_json.key("initial_nad");
        writeValue(configuredNad);
    }
    writeNames("configurable_frames", node.configurableFrames);
    if (!node.configurableIds.empty()) {
        m_json.beginArray("configurable_frame_ids");
        for (const uint32_t id : node.configurableIds) m_json.integer(id);
        m_json.endArray();
    }
    m_json.endObject();
}

void LdfJson::writeEncoding(const Signal& signal) {
    static const std::vector<EncodingValue> kNone;
    const bool hasEncoding = signal.encoding < m_model.encodings.size();
    const auto& values = hasEncoding ? m_model.encodings[signal.encoding].values : kNone;
    if (hasEncoding) m_json.text("encoding", m_model.encodings[signal.encoding].name);
    // The first physical range stands for the signal; all of them are with the encoding.
    for (const EncodingValue& value : values) {
        if (value.kind != EncodingKind::Physical) continue;
        m_json.number("factor", value.scale);
        m_json.number("offset", value.offset);
        m_json.number("value_min", value.minimum);
        m_json.number("value_max", value.maximum);
        m_json.text("unit", value.text);
        break;
    }
    m_json.beginArray("value_table");
    for (const EncodingValue& value : values) {
        if (value.kind != EncodingKind::Logical) continue;
        m_json.beginObject();
        m_json.text("name", value.text);
        m_json.number("value", value.minimum);
        m_json.endObject();
    }
    m_json.endArray();
}

void LdfJson::writeSignal(const Signal& signal, uint32_t offset) {
    m_json.beginObject();
    m_json.text("name", signal.name);
    m_json.integer("start_bit", leastSignificantBit(offset, signal.bitLength, m_model.isBigEndian));
    m_json.integer("bit_length", signal.bitLength);
    m_json.boolean("is_big_endian", m_model.isBigEndian);
    m_json.boolean("is_signed", false);  // the format has no signed signals
    // As the 64 bits of a signed number, the only integers that JSON readers keep exactly.
    m_json.integer("init_value", static_cast<int64_t>(initialValue(signal, m_model.isBigEndian)));
    if (signal.isArray) {
        m_json.beginArray("init_values");
        for (const uint64_t value : signal.initial) m_json.integer(static_cast<int64_t>(value));
        m_json.endArray();
    }
    m_json.text("comment", "");
    if (!signal.publisher.empty()) m_json.text("publisher", signal.publisher);
    writeNames("subscribers", signal.subscribers);
    writeEncoding(signal);
    m_json.endObject();
}

void LdfJson::writeFrame(const Frame& frame, bool isDiagnostic) {
    std::string_view publisher = frame.publisher;
    if (isDiagnostic && frame.id == kMasterRequest) publisher = m_model.master.name;
    m_json.lineBreak();
    m_json.beginObject();
    m_json.integer("id", frame.id);
    m_json.integer("length",
                   frame.length.value_or(isDiagnostic ? kDiagnosticBytes : lengthFromId(frame.id)));
    m_json.text("name", frame.name);
    m_json.beginObject("attributes");
    writeNames("publisher", publisher.empty() ? Names{} : Names{publisher});
    m_json.text("checksum", isEnhanced(frame.id, publisher) ? "enhanced" : "classic");
    m_json.text("type", isDiagnostic ? "diagnostic" : "unconditional");
    m_json.endObject();
    m_json.beginArray("signals");
    for (const SignalPlace& place : frame.signals) {
        const auto signal = m_signals.find(place.name);
        if (signal != m_signals.end()) writeSignal(*signal->second, place.offset);
    }
    m_json.endArray();
    m_json.endObject();
}

// Its slot has an identifier of its own, under which any of its frames answers; they are all of
// one length.
void LdfJson::writeEventTriggeredFrame(const EventTriggeredFrame& frame) {
    Names publishers;
    const Frame* first = nullptr;
    for (const std::string_view name : frame.frames) {
        const Frame* const associated = findFrame(name);
        if (associated == nullptr) continue;
        if (first == nullptr) first = associated;
        publishers.push_back(associated->publisher);
    }
    m_json.lineBreak();
    m_json.beginObject();
    m_json.integer("id", frame.id);
    m_json.integer("length", first == nullptr ? lengthFromId(frame.id)
                                              : first->length.value_or(lengthFromId(first->id)));
    m_json.text("name", frame.name);
    m_json.beginObject("attributes");
    writeNames("publisher", publishers);
    const auto publisher = publishers.empty() ? std::string_view() : publishers.front();
    m_json.text("checksum", isEnhanced(frame.id, publisher) ? "enhanced" : "classic");
    m_json.text("type", "event_triggered");
    m_json.text("collision_table", frame.collisionTable);
    writeNames("frames", frame.frames);
    m_json.endObject();
    m_json.beginArray("signals");
    m_json.endArray();
    m_json.endObject();
}

void LdfJson::writeCommand(const ScheduleEntry& entry) {
    std::string_view type = "frame";
    std::string_view frame = entry.command;
    if (entry.command == "MasterReq") {
        type = "master_request";
        frame = {};
    } else if (entry.command == "SlaveResp") {
        type = "slave_response";
        frame = {};
    }
    for (const CommandWord& command : kCommandWords) {
        if (command.word != entry.command) continue;
        // Node configuration goes out in master request frames.
        type = command.type;
        frame = "MasterReq";
    }
    m_json.beginObject("command");
    m_json.text("type", type);
    m_json.text("frame", frame);
    if (!entry.arguments.empty()) {
        m_json.beginArray("arguments");
        for (const std::string_view argument : entry.arguments) writeValue(argument);
        m_json.endArray();
    }
    m_json.endObject();
}

void LdfJson::writeTable(const ScheduleTable& table) {
    m_json.lineBreak();
    m_json.beginObject();
    m_json.text("name", table.name);
    m_json.beginArray("schedule");
    for (const ScheduleEntry& entry : table.entries) {
        m_json.beginObject();
        writeCommand(entry);
        m_json.number("delay", secondsFromMs(entry.delayMs));
        m_json.endObject();
    }
    m_json.endArray();
    m_json.endObject();
}

void LdfJson::writeTheRest() {
    static constexpr std::string_view kKinds[] = {"logical", "physical", "bcd", "ascii"};
    m_json.beginArray("encoding_types");
    for (const EncodingType& encoding : m_model.encodings) {
        m_json.beginObject();
        m_json.text("name", encoding.name);
        m_json.beginArray("values");
        for (const EncodingValue& value : encoding.values) {
            m_json.beginObject();
            m_json.text("type", kKinds[static_cast<size_t>(value.kind)]);
            if (value.kind == EncodingKind::Logical) {
                m_json.number("value", value.minimum);
                m_json.text("text", value.text);
            } else if (value.kind == EncodingKind::Physical) {
                m_json.number("min", value.minimum);
                m_json.number("max", value.maximum);
                m_json.number("scale", value.scale);
                m_json.number("offset", value.offset);
                m_json.text("unit", value.text);
            }
            m_json.endObject();
        }
        m_json.endArray();
        m_json.endObject();
    }
    m_json.endArray();
    m_json.beginArray("sporadic_frames");
    for (const SporadicFrame& frame : m_model.sporadicFrames) {
        m_json.beginObject();
        m_json.text("name", frame.name);
        writeNames("frames", frame.frames);
        m_json.endObject();
    }
    m_json.endArray();
    m_json.beginArray("signal_groups");
    for (const SignalGroup& group : m_model.signalGroups) {
        m_json.beginObject();
        m_json.text("name", group.name);
        m_json.integer("bit_length", group.bitLength);
        m_json.beginArray("signals");
        for (const SignalPlace& place : group.signals) {
            m_json.beginObject();
            m_json.text("name", place.name);
            m_json.integer("offset", place.offset);
            m_json.endObject();
        }
        m_json.endArray();
        m_json.endObject();
    }
    m_json.endArray();
    m_json.beginArray("diagnostic_addresses");
    for (const DiagnosticAddress& address : m_model.diagnosticAddresses) {
        m_json.beginObject();
        m_json.text("name", address.node);
        m_json.integer("address", address.address);
        m_json.endObject();
    }
    m_json.endArray();
}

void LdfJson::write() {
    m_json.beginObject();
    writeHeader();
    writeNodes();
    m_json.beginArray("node_attributes");
    for (const NodeAttributes& node : m_model.nodeAttributes) writeNodeAttributes(node);
    m_json.endArray();
    m_json.beginArray("frames");
    for (const Frame& frame : m_model.frames) writeFrame(frame, false);
    for (const auto& frame : m_model.eventTriggeredFrames) writeEventTriggeredFrame(frame);
    for (const Frame& frame : m_model.diagnosticFrames) writeFrame(frame, true);
    m_json.endArray();
    m_json.beginArray("schedule_tables");
    for (const ScheduleTable& table : m_model.scheduleTables) writeTable(table);
    m_json.endArray();
    writeTheRest();
    m_json.endObject();
}

}  // namespace

double secondsFromMs(double ms) {
    constexpr double kPerSecond = 1000.0;
    double seconds = ms / kPerSecond;
    // Rounding may put the product just below the whole number, which cutting would turn into the
    // number before it.
    while (std::trunc(seconds * kPerSecond) < std::trunc(ms)) {
        seconds = std::nextafter(seconds, HUGE_VAL);
    }
    return seconds;
}

uint32_t leastSignificantBit(uint32_t offset, uint32_t bitLength, bool isBigEndian) {
    if (!isBigEndian || bitLength == 0) return offset;
    return offset + (offset % 8 + bitLength - 1) / 8 * 8;
}

uint64_t initialValue(const Signal& signal, bool isBigEndian) {
    constexpr size_t kBytes = sizeof(uint64_t);
    if (signal.initial.empty()) return 0;
    if (!signal.isArray) return signal.initial.front();
    const size_t count = std::min(signal.initial.size(), kBytes);
    uint64_t value = 0;
    for (size_t i = 0; i < count; ++i) {
        const size_t shift = 8 * (isBigEndian ? count - 1 - i : i);
        value |= (signal.initial[i] & 0xFFU) << shift;
    }
    return value;
}

void writeLdfJson(const Model& model, JsonWriter& json) { LdfJson(model, json).write(); }

}  // namespace quill::dbjson::ldf
