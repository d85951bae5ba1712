#include "arxml/FibexReader.h"

#include <cmath>
#include <cstring>
#include <string>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

constexpr int kMaxDepth = 8;
constexpr size_t kMaxChannels = 256;
constexpr size_t kMaxEcus = 4096;
constexpr size_t kMaxMappings = size_t{4} << 20;
constexpr uint32_t kBeingRead = 0xFFFFFFFF;
constexpr uint32_t kMaxStandardId = 0x7FF;
constexpr uint32_t kMaxExtendedId = 0x1FFFFFFF;

// Attributes may carry a namespace prefix of their own.
std::string_view attributeOf(pugi::xml_node node, std::string_view name) {
    for (const auto attribute : node.attributes()) {
        std::string_view local = attribute.name();
        if (const size_t colon = local.find(':'); colon != std::string_view::npos) {
            local.remove_prefix(colon + 1);
        }
        if (local == name) return attribute.value();
    }
    return {};
}

pugi::xml_node firstOf(pugi::xml_node node, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (const auto found = node.child(name)) return found;
    }
    return {};
}

ByteOrder orderOf(pugi::xml_node instance) {
    return textOf(instance, "IS-HIGH-LOW-BYTE-ORDER") == "true" ? ByteOrder::kMotorola
                                                                : ByteOrder::kIntel;
}

// Durations of XML Schema such as PT0.01S; plain seconds are taken too.
std::optional<double> durationMs(std::string_view text) {
    if (text.starts_with("PT") && text.ends_with("S")) text = text.substr(2, text.size() - 3);
    const auto seconds = parseNumber(text);
    if (!seconds || !std::isfinite(*seconds)) return std::nullopt;
    return std::round(*seconds * 1e9) / 1e6;
}

std::string_view fibexDescription(pugi::xml_node element) {
    const auto inner = descriptionOf(element);
    return inner.empty() ? textOf(element, "DESC") : inner;
}

enum class Bus { kFlexRay, kCan, kOther };

Bus busOf(pugi::xml_node cluster) {
    const auto protocol = cluster.child("PROTOCOL");
    std::string told(attributeOf(cluster, "type"));
    told += ' ';
    told += attributeOf(protocol, "type");
    told += ' ';
    told += textOf(protocol);
    for (char& c : told) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (told.find("flexray") != std::string::npos) return Bus::kFlexRay;
    return told.find("can") != std::string::npos ? Bus::kCan : Bus::kOther;
}

}  // namespace

std::optional<ReadError> readFibex(const Document& document, Database& out) {
    const auto root = document.root();
    if (nameOf(root) != "FIBEX") {
        std::string text =
            "the root element is " + std::string(nameOf(root).substr(0, 100)) + " instead of FIBEX";
        if (nameOf(root) == "AUTOSAR") text += "; the command arxml-parse reads it";
        return ReadError{root.offset_debug(), text};
    }
    if (!document.rootNamespace().starts_with("http://www.asam.net/xml/fbx")) {
        return ReadError{
            root.offset_debug(),
            "unknown namespace " + std::string(document.rootNamespace().substr(0, 200))};
    }
    out.version = root.attribute("VERSION").value();
    const PathIndex noPaths;
    ReadContext context(noPaths, out);
    FibexReader reader(context);
    if (reader.read(root)) return std::nullopt;
    return context.error() ? context.error() : ReadError{-1, "the file could not be read"};
}

bool FibexReader::read(pugi::xml_node root) {
    indexIds(root);
    const auto elements = root.child("ELEMENTS");
    if (!readEcus(elements)) return false;
    for (const auto cluster : elements.child("CLUSTERS").children("CLUSTER")) {
        if (!readCluster(cluster)) return false;
    }
    return true;
}

void FibexReader::indexIds(pugi::xml_node root) {
    auto node = root;
    while (node) {
        if (const auto id = attributeOf(node, "ID"); !id.empty()) m_ids.emplace(id, node);
        if (const auto inner = node.first_child()) {
            node = inner;
            continue;
        }
        while (node != root && !node.next_sibling()) node = node.parent();
        node = node == root ? pugi::xml_node{} : node.next_sibling();
    }
}

pugi::xml_node FibexReader::target(pugi::xml_node reference) const {
    const auto known = m_ids.find(attributeOf(reference, "ID-REF"));
    return known == m_ids.end() ? pugi::xml_node{} : known->second;
}

pugi::xml_node FibexReader::require(pugi::xml_node reference) {
    const auto found = target(reference);
    if (!found) {
        m_context.fail(reference, std::string(reference.name()) + " leads nowhere: " +
                                      std::string(attributeOf(reference, "ID-REF").substr(0, 200)));
    }
    return found;
}

bool FibexReader::readEcus(pugi::xml_node elements) {
    Database& database = m_context.database();
    for (const auto node : elements.child("ECUS").children("ECU")) {
        const auto ecu = static_cast<uint32_t>(database.ecus.size());
        if (ecu >= kMaxEcus) {
            return m_context.fail(node, "the file has more than 4096 control units");
        }
        database.ecus.push_back({textOf(node, "SHORT-NAME"), fibexDescription(node)});
        for (const auto connector : node.child("CONNECTORS").children("CONNECTOR")) {
            readPorts(connector, ecu);
        }
    }
    return true;
}

void FibexReader::readPorts(pugi::xml_node connector, uint32_t ecu) {
    const auto readList = [&](const char* list, EcuSet Parties::*side) {
        for (const auto port : connector.child(list).children()) {
            for (const char* kind : {"FRAME-TRIGGERING-REF", "PDU-TRIGGERING-REF"}) {
                const auto id = attributeOf(port.child(kind), "ID-REF");
                if (!id.empty()) addEcu(m_ports[id].*side, ecu);
            }
            for (const auto included : port.child("INCLUDED-PDUS").children()) {
                const auto id = attributeOf(included.child("PDU-TRIGGERING-REF"), "ID-REF");
                if (!id.empty()) addEcu(m_ports[id].*side, ecu);
            }
        }
    };
    readList("INPUTS", &Parties::receivers);
    readList("OUTPUTS", &Parties::senders);
}

bool FibexReader::readCluster(pugi::xml_node cluster) {
    const Bus bus = busOf(cluster);
    if (bus == Bus::kOther) {
        m_context.warn(cluster, "a cluster that is neither FlexRay nor CAN is left out");
        return true;
    }
    Cluster out;
    out.name = textOf(cluster, "SHORT-NAME");
    out.comment = fibexDescription(cluster);
    out.protocol = bus == Bus::kFlexRay ? "FlexRay" : "CAN";
    out.protocolVersion = textOf(cluster, "PROTOCOL-VERSION");
    out.baudRate = unsignedOf(cluster, "SPEED").value_or(0);
    out.cycleUs = numberOf(cluster, "CYCLE").value_or(0);
    out.macrotickUs = numberOf(cluster, "MACROTICK").value_or(0);
    out.macroticksPerCycle = unsignedOf(cluster, "MACRO-PER-CYCLE").value_or(0);
    out.staticSlots = unsignedOf(cluster, "NUMBER-OF-STATIC-SLOTS").value_or(0);
    out.staticSlotMacroticks = unsignedOf(cluster, "STATIC-SLOT").value_or(0);
    out.minislots = unsignedOf(cluster, "NUMBER-OF-MINISLOTS").value_or(0);
    out.minislotMacroticks = unsignedOf(cluster, "MINISLOT").value_or(0);
    const uint32_t words = unsignedOf(cluster, "PAYLOAD-LENGTH-STATIC").value_or(0);
    out.staticPayloadBytes = words <= 127 ? words * 2 : 0;
    for (const auto reference : cluster.child("CHANNEL-REFS").children("CHANNEL-REF")) {
        if (out.channels.size() >= kMaxChannels) {
            return m_context.fail(reference, "the cluster has more than 256 channels");
        }
        const auto channel = require(reference);
        if (channel && !m_channels.insert(channel.internal_object()).second) {
            return m_context.fail(reference, "a channel stands in two clusters");
        }
        if (!channel || !readChannel(channel, out, bus == Bus::kFlexRay)) return false;
    }
    for (uint32_t ecu = 0; ecu < m_context.database().ecus.size(); ++ecu) out.nodes.push_back(ecu);
    auto& database = m_context.database();
    (bus == Bus::kFlexRay ? database.flexRayClusters : database.canClusters)
        .push_back(std::move(out));
    return true;
}

bool FibexReader::readChannel(pugi::xml_node channel, Cluster& out, bool isFlexRay) {
    Channel read;
    read.name = textOf(channel, "SHORT-NAME");
    read.kind = textOf(channel, "FLEXRAY-CHANNEL-NAME");
    const auto index = static_cast<uint32_t>(out.channels.size());
    for (const auto triggering : channel.child("FRAME-TRIGGERINGS").children("FRAME-TRIGGERING")) {
        Frame frame;
        frame.channel = index;
        if (!readTriggering(triggering, frame, isFlexRay)) return false;
        out.frames.push_back(std::move(frame));
    }
    readCycle(channel);
    sumParties(read);
    out.channels.push_back(std::move(read));
    return true;
}

bool FibexReader::readTriggering(pugi::xml_node triggering, Frame& out, bool isFlexRay) {
    const auto reference = triggering.child("FRAME-REF");
    if (!reference) return m_context.fail(triggering, "a frame triggering without FRAME-REF");
    const auto frame = require(reference);
    if (!frame) return false;
    const auto id = attributeOf(triggering, "ID");
    out.triggering = id;
    if (const auto ports = m_ports.find(id); ports != m_ports.end()) out.ports = ports->second;
    for (const auto timing : triggering.child("TIMINGS").children("ABSOLUTELY-SCHEDULED-TIMING")) {
        FlexRaySlot slot;
        slot.slotId = unsignedOf(timing, "SLOT-ID").value_or(0);
        slot.baseCycle = unsignedOf(timing, "BASE-CYCLE").value_or(0);
        slot.repetition = unsignedOf(timing, "CYCLE-REPETITION").value_or(1);
        out.slots.push_back(slot);
    }
    if (isFlexRay) {
        if (!out.slots.empty()) out.id = out.slots.front().slotId;
    } else {
        const auto value = triggering.child("IDENTIFIER").child("IDENTIFIER-VALUE");
        const auto identifier = parseUnsigned(textOf(value));
        if (!identifier || *identifier > kMaxExtendedId) {
            return m_context.fail(value ? value : triggering,
                                  "a CAN frame triggering without identifier of 29 bits or less");
        }
        out.id = *identifier;
        out.isExtended =
            *identifier > kMaxStandardId || attributeOf(value, "EXTENDED-ADDRESSING") == "true";
    }
    return readFrame(frame, out);
}

bool FibexReader::readFrame(pugi::xml_node frame, Frame& out) {
    out.name = textOf(frame, "SHORT-NAME");
    out.comment = fibexDescription(frame);
    out.lengthBytes = unsignedOf(frame, "BYTE-LENGTH").value_or(0);
    for (const auto instance : frame.child("PDU-INSTANCES").children("PDU-INSTANCE")) {
        if (++m_mappings > kMaxMappings) {
            return m_context.fail(frame, "the frames of the file hold too many PDUs");
        }
        const auto pdu = require(instance.child("PDU-REF"));
        if (!pdu) return false;
        const auto index = readPdu(pdu, 0);
        if (!index) return false;
        PduMapping mapping;
        mapping.pdu = *index;
        mapping.startBit = unsignedOf(instance, "BIT-POSITION").value_or(0);
        if (orderOf(instance) == ByteOrder::kMotorola) mapping.startBit &= ~7U;
        mapping.updateBit = unsignedOf(instance, "PDU-UPDATE-BIT-POSITION");
        out.pdus.push_back(mapping);
    }
    // Version 2 has no PDUs: the signals stand in the frame, which then is its own PDU.
    if (frame.child("SIGNAL-INSTANCES")) {
        const auto index = readPdu(frame, 0);
        if (!index) return false;
        PduMapping whole;
        whole.pdu = *index;
        out.pdus.push_back(whole);
    }
    return true;
}

std::optional<uint32_t> FibexReader::readPdu(pugi::xml_node pdu, int depth) {
    const void* key = pdu.internal_object();
    if (const auto known = m_pdus.find(key); known != m_pdus.end()) {
        if (known->second != kBeingRead) return known->second;
        m_context.fail(pdu, "a PDU contains itself");
        return std::nullopt;
    }
    if (depth > kMaxDepth) {
        m_context.fail(pdu, "PDUs are nested more than 8 deep");
        return std::nullopt;
    }
    m_pdus.emplace(key, kBeingRead);
    Pdu out;
    out.source = key;
    out.name = textOf(pdu, "SHORT-NAME");
    out.comment = fibexDescription(pdu);
    out.lengthBytes = unsignedOf(pdu, "BYTE-LENGTH").value_or(0);
    out.type = pdu.child("MULTIPLEXER") ? std::string_view("MULTIPLEXED-I-PDU")
                                        : std::string_view("I-SIGNAL-I-PDU");
    if (!readSignalInstances(pdu, out) || !readMultiplexer(pdu, out, depth)) return std::nullopt;
    auto& pdus = m_context.database().pdus;
    const auto index = static_cast<uint32_t>(pdus.size());
    pdus.push_back(std::move(out));
    m_pdus[key] = index;
    return index;
}

bool FibexReader::readSignalInstances(pugi::xml_node holder, Pdu& out) {
    for (const auto instance : holder.child("SIGNAL-INSTANCES").children("SIGNAL-INSTANCE")) {
        const auto position = unsignedOf(instance, "BIT-POSITION");
        if (!position) return m_context.fail(instance, "a signal instance without BIT-POSITION");
        const auto reference = firstOf(instance, {"SIGNAL-REF", "SIGNAL-GROUP-REF"});
        if (reference && nameOf(reference) == "SIGNAL-GROUP-REF") continue;
        const auto signal = require(reference);
        if (!signal) return false;
        const auto index = readSignal(signal);
        if (!index) return false;
        MappedSignal mapped;
        mapped.signal = *index;
        mapped.order = orderOf(instance);
        mapped.updateBit = unsignedOf(instance, "SIGNAL-UPDATE-BIT-POSITION");
        mapped.lsb =
            lsbOf(*position, m_context.database().signals[*index].lengthBits, mapped.order);
        out.signals.push_back(mapped);
    }
    return true;
}

bool FibexReader::readMultiplexer(pugi::xml_node pdu, Pdu& out, int depth) {
    const auto multiplexer = pdu.child("MULTIPLEXER");
    if (!multiplexer) return true;
    const auto selecting = multiplexer.child("SWITCH");
    Selector selector;
    selector.order = orderOf(selecting);
    selector.lengthBits = unsignedOf(selecting, "BIT-LENGTH").value_or(0);
    selector.lsb = lsbOf(unsignedOf(selecting, "BIT-POSITION").value_or(0), selector.lengthBits,
                         selector.order);
    if (selector.lengthBits > 0) {
        out.selector = selector;
        Database& database = m_context.database();
        Signal signal;
        signal.name = textOf(selecting, "SHORT-NAME");
        signal.lengthBits = selector.lengthBits;
        MappedSignal mapped;
        mapped.signal = static_cast<uint32_t>(database.signals.size());
        mapped.lsb = selector.lsb;
        mapped.order = selector.order;
        database.signals.push_back(signal);
        out.signals.push_back(mapped);
    }
    const auto add = [&](pugi::xml_node instance, PduPart part) {
        const auto inner = require(instance.child("PDU-REF"));
        if (!inner) return false;
        const auto index = readPdu(inner, depth + 1);
        if (!index) return false;
        part.pdu = *index;
        out.parts.push_back(part);
        return true;
    };
    for (const auto instance : multiplexer.child("STATIC-PART").children("STATIC-PDU-INSTANCE")) {
        if (!add(instance, {0, PartRole::kStatic, std::nullopt, false})) return false;
    }
    const auto switched = multiplexer.child("DYNAMIC-PART").child("SWITCHED-PDU-INSTANCES");
    for (const auto instance : switched.children("SWITCHED-PDU-INSTANCE")) {
        const PduPart part{0, PartRole::kDynamic, integerOf(instance, "SWITCH-CODE"), false};
        if (!add(instance, part)) return false;
    }
    return true;
}

std::optional<uint32_t> FibexReader::readSignal(pugi::xml_node signal) {
    const void* key = signal.internal_object();
    if (const auto known = m_signals.find(key); known != m_signals.end()) return known->second;
    Signal out;
    out.source = key;
    out.name = textOf(signal, "SHORT-NAME");
    out.comment = fibexDescription(signal);
    const auto coding = require(signal.child("CODING-REF"));
    if (!coding || !readCoding(coding, out)) return std::nullopt;
    if (const auto init = parseInteger(textOf(signal, "DEFAULT-VALUE"))) {
        out.initValue = m_context.database().keep(std::to_string(*init));
    }
    auto& signals = m_context.database().signals;
    const auto index = static_cast<uint32_t>(signals.size());
    signals.push_back(out);
    m_signals.emplace(key, index);
    return index;
}

bool FibexReader::readCoding(pugi::xml_node coding, Signal& out) {
    const auto type = coding.child("CODED-TYPE");
    const auto bits = firstOf(type, {"BIT-LENGTH", "MAX-LENGTH"});
    out.lengthBits = parseUnsigned(textOf(bits)).value_or(0);
    if (nameOf(bits) == "MAX-LENGTH" && out.lengthBits <= 4096) out.lengthBits *= 8;
    BaseType base;
    base.name = attributeOf(type, "BASE-DATA-TYPE");
    base.encoding = attributeOf(type, "ENCODING");
    base.sizeBits = out.lengthBits;
    out.isSigned = base.encoding == "SIGNED" || base.name.starts_with("A_INT");
    out.isFloat = base.encoding.starts_with("IEEE-FLOATING") || base.name.starts_with("A_FLOAT");
    out.baseType = base;
    auto method = coding.child("COMPU-METHODS").child("COMPU-METHOD");
    if (!method) method = coding.child("COMPU-METHOD");
    if (!method) return true;
    out.compuMethod = m_compu.read(method);
    if (!out.compuMethod) return false;
    const auto& compu = m_context.database().compuMethods[*out.compuMethod];
    const auto unit = target(method.child("UNIT-REF"));
    out.unit = textOf(firstOf(unit, {"DISPLAY-NAME", "SHORT-NAME"}));
    const auto readConstraint = [&](const char* name, std::optional<double>& lower,
                                    std::optional<double>& upper) {
        const auto constraint = firstOf(method, {name}) ? method.child(name) : coding.child(name);
        lower = numberOf(constraint, "LOWER-LIMIT");
        upper = numberOf(constraint, "UPPER-LIMIT");
    };
    readConstraint("PHYS-CONSTRS", out.limits.physicalLower, out.limits.physicalUpper);
    readConstraint("INTERNAL-CONSTRS", out.limits.internalLower, out.limits.internalUpper);
    if (!out.limits.internalLower) out.limits.internalLower = compu.linearLower;
    if (!out.limits.internalUpper) out.limits.internalUpper = compu.linearUpper;
    return true;
}

// Cycle times and senders stand at the PDU's triggering in the channel.
void FibexReader::readCycle(pugi::xml_node channel) {
    Database& database = m_context.database();
    m_pduPorts.clear();
    for (const auto triggering : channel.child("PDU-TRIGGERINGS").children("PDU-TRIGGERING")) {
        const auto pdu = target(triggering.child("PDU-REF"));
        if (!pdu) continue;
        const auto ports = m_ports.find(attributeOf(triggering, "ID"));
        if (ports != m_ports.end()) m_pduPorts[pdu.internal_object()] = ports->second;
        const auto known = m_pdus.find(pdu.internal_object());
        if (known == m_pdus.end() || known->second == kBeingRead) continue;
        const auto cyclic = triggering.child("TIMINGS").child("CYCLIC-TIMING");
        const auto period = firstOf(cyclic, {"REPEATING-TIME-RANGE", "REPEATING-TIME"});
        const auto cycle = durationMs(textOf(period, "VALUE"));
        if (cycle && *cycle > 0) database.pdus[known->second].timing.cycleMs = cycle;
    }
}

void FibexReader::sumParties(Channel& channel) {
    for (const auto& [element, parties] : m_pduPorts) {
        const auto known = m_pdus.find(element);
        if (known != m_pdus.end() && known->second != kBeingRead) {
            channel.pduParties.emplace(known->second, parties);
        }
    }
}

}  // namespace quill::arxml
