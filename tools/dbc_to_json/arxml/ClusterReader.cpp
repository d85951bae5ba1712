#include "arxml/ClusterReader.h"

#include <cmath>
#include <cstring>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

// Parties are worked out per channel; real clusters have one or two of them.
constexpr size_t kMaxChannels = 256;
// PDUs in frames, counted for each triggering of a frame.
constexpr size_t kMaxMappings = size_t{4} << 20;
constexpr uint32_t kMaxStandardId = 0x7FF;
constexpr uint32_t kMaxExtendedId = 0x1FFFFFFF;

pugi::xml_node firstOf(pugi::xml_node node, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (const auto found = node.child(name)) return found;
    }
    return {};
}

uint64_t rateOf(pugi::xml_node node, std::initializer_list<const char*> names) {
    const auto value = parseInteger(textOf(firstOf(node, names)));
    return value && *value > 0 ? static_cast<uint64_t>(*value) : 0;
}

// The number behind the last dash of texts such as CYCLE-REPETITION-4.
uint32_t trailingNumber(std::string_view text, uint32_t otherwise) {
    const size_t dash = text.rfind('-');
    const auto digits = dash == std::string_view::npos ? text : text.substr(dash + 1);
    return parseUnsigned(digits).value_or(otherwise);
}

double microseconds(pugi::xml_node node, const char* child) {
    const auto seconds = numberOf(node, child);
    return seconds && std::isfinite(*seconds) ? std::round(*seconds * 1e9) / 1e3 : 0;
}

}  // namespace

void ClusterReader::readBus(pugi::xml_node cluster, pugi::xml_node variant, Cluster& out) {
    out.name = textOf(cluster, "SHORT-NAME");
    out.comment = descriptionOf(cluster);
    out.protocol = textOf(variant, "PROTOCOL-NAME");
    out.protocolVersion = textOf(variant, "PROTOCOL-VERSION");
    out.baudRate = rateOf(variant, {"BAUDRATE", "SPEED"});
    out.fdBaudRate = rateOf(variant, {"CAN-FD-BAUDRATE"});
}

bool ClusterReader::readCan(pugi::xml_node cluster) {
    const auto variant = variantOf(cluster);
    Cluster out;
    readBus(cluster, variant, out);
    if (!readChannels(variant.child("PHYSICAL-CHANNELS"), out)) return false;
    if (out.protocol.empty()) {
        bool hasFd = out.fdBaudRate > 0;
        for (const Frame& frame : out.frames) hasFd = hasFd || frame.isCanFd;
        out.protocol = hasFd ? "CAN FD" : "CAN";
    }
    m_context.database().canClusters.push_back(std::move(out));
    return true;
}

bool ClusterReader::readFlexRay(pugi::xml_node cluster) {
    const auto variant = variantOf(cluster);
    Cluster out;
    readBus(cluster, variant, out);
    if (out.protocol.empty()) out.protocol = "FlexRay";
    out.cycleUs = microseconds(variant, "CYCLE");
    out.macrotickUs = microseconds(variant, "MACROTICK-DURATION");
    out.macroticksPerCycle =
        parseUnsigned(textOf(firstOf(variant, {"MACRO-PER-CYCLE", "MACROTICKS-PER-CYCLE"})))
            .value_or(0);
    out.staticSlots = unsignedOf(variant, "NUMBER-OF-STATIC-SLOTS").value_or(0);
    out.staticSlotMacroticks = unsignedOf(variant, "STATIC-SLOT-DURATION").value_or(0);
    out.minislots = unsignedOf(variant, "NUMBER-OF-MINISLOTS").value_or(0);
    out.minislotMacroticks = unsignedOf(variant, "MINISLOT-DURATION").value_or(0);
    // The file counts in words of two bytes.
    const uint32_t words = unsignedOf(variant, "PAYLOAD-LENGTH-STATIC").value_or(0);
    out.staticPayloadBytes = words <= 127 ? words * 2 : 0;
    if (!readChannels(variant.child("PHYSICAL-CHANNELS"), out)) return false;
    m_context.database().flexRayClusters.push_back(std::move(out));
    return true;
}

bool ClusterReader::readChannels(pugi::xml_node channels, Cluster& out) {
    for (const auto channel : channels.children()) {
        if (nameOf(channel).ends_with("PHYSICAL-CHANNEL") && !readChannel(channel, out)) {
            return false;
        }
    }
    out.nodes = nodesOf(channels, out.frames);
    fitLengths(out);
    return true;
}

bool ClusterReader::readChannel(pugi::xml_node channel, Cluster& out) {
    if (++m_channels > kMaxChannels) {
        return m_context.fail(channel, "the file has more than 256 channels");
    }
    Channel read;
    read.name = textOf(channel, "SHORT-NAME");
    read.kind = textOf(channel, "CHANNEL-NAME");
    if (read.kind.starts_with("CHANNEL-")) read.kind.remove_prefix(std::strlen("CHANNEL-"));
    out.channels.push_back(std::move(read));
    for (const char* list : {"FRAME-TRIGGERINGS", "FRAME-TRIGGERINGSS"}) {
        for (const auto triggering : channel.child(list).children()) {
            if (!readTriggering(triggering, out)) return false;
        }
    }
    PartyReader::ByElement pdus;
    PartyReader::ByElement signals;
    m_parties.readTriggerings(channel, pdus, signals);
    m_parties.resolve(pdus, signals, out.channels.back());
    return true;
}

bool ClusterReader::readTriggering(pugi::xml_node triggering, Cluster& out) {
    Frame frame;
    frame.triggering = textOf(triggering, "SHORT-NAME");
    frame.channel = static_cast<uint32_t>(out.channels.size() - 1);
    const auto reference = triggering.child("FRAME-REF");
    if (!reference) return m_context.fail(triggering, "a frame triggering without FRAME-REF");
    const auto target = m_context.require(reference);
    if (!target || !readCanAddress(triggering, frame)) return false;
    readSlots(triggering, frame);
    if (!readFrame(target, frame)) return false;
    m_parties.addPorts(triggering.child("FRAME-PORT-REFS"), frame.ports);
    out.frames.push_back(std::move(frame));
    return true;
}

bool ClusterReader::readCanAddress(pugi::xml_node triggering, Frame& out) {
    if (nameOf(triggering) != "CAN-FRAME-TRIGGERING") return true;
    const auto identifier = triggering.child("IDENTIFIER");
    const auto id = parseUnsigned(textOf(identifier));
    if (!id || *id > kMaxExtendedId) {
        return m_context.fail(identifier ? identifier : triggering,
                              "frame triggering " + std::string(out.triggering) +
                                  " has no identifier of 29 bits or less");
    }
    out.id = *id;
    out.isExtended =
        *id > kMaxStandardId || textOf(triggering, "CAN-ADDRESSING-MODE") == "EXTENDED";
    out.rxBehavior = textOf(triggering, "CAN-FRAME-RX-BEHAVIOR");
    out.txBehavior = textOf(triggering, "CAN-FRAME-TX-BEHAVIOR");
    out.isCanFd = out.rxBehavior == "CAN-FD" || out.txBehavior == "CAN-FD";
    return true;
}

void ClusterReader::readSlots(pugi::xml_node triggering, Frame& out) {
    const auto timings = firstOf(triggering, {"ABSOLUTELY-SCHEDULED-TIMINGS"});
    for (const auto timing : timings.children()) {
        FlexRaySlot slot;
        slot.slotId = unsignedOf(timing, "SLOT-ID").value_or(0);
        const auto cycle = timing.child("COMMUNICATION-CYCLE");
        if (const auto repeated = cycle.child("CYCLE-REPETITION")) {
            slot.baseCycle = unsignedOf(repeated, "BASE-CYCLE").value_or(0);
            slot.repetition = trailingNumber(textOf(repeated, "CYCLE-REPETITION"), 1);
        } else if (const auto counter = firstOf(cycle, {"CYCLE-COUNTER"})) {
            // Sent in one cycle of the 64 only.
            slot.baseCycle = unsignedOf(counter, "CYCLE-COUNTER").value_or(0);
            slot.repetition = 64;
        }
        out.slots.push_back(slot);
    }
    if (!out.slots.empty()) out.id = out.slots.front().slotId;
}

bool ClusterReader::readFrame(pugi::xml_node frame, Frame& out) {
    out.name = textOf(frame, "SHORT-NAME");
    out.comment = descriptionOf(frame);
    out.lengthBytes = unsignedOf(frame, "FRAME-LENGTH").value_or(0);
    for (const auto mapping :
         frame.child("PDU-TO-FRAME-MAPPINGS").children("PDU-TO-FRAME-MAPPING")) {
        const auto reference = mapping.child("PDU-REF");
        if (!reference) continue;
        if (++m_mappings > kMaxMappings) {
            return m_context.fail(frame, "the frames of the file hold too many PDUs");
        }
        const auto pdu = m_pdus.readReferenced(reference);
        if (!pdu) return false;
        PduMapping read;
        read.pdu = *pdu;
        read.startBit = unsignedOf(mapping, "START-POSITION").value_or(0);
        // PDUs stand at whole bytes; with the most significant byte first the position names the
        // top bit of that byte.
        if (textOf(mapping, "PACKING-BYTE-ORDER") == "MOST-SIGNIFICANT-BYTE-FIRST") {
            read.startBit &= ~7U;
        }
        read.updateBit = unsignedOf(mapping, "UPDATE-INDICATION-BIT-POSITION");
        out.pdus.push_back(read);
    }
    return true;
}

// AUTOSAR 3 files give PDU lengths in bytes or in bits, as their tool sees fit. A PDU that is
// alone in its frame ends where the frame ends.
void ClusterReader::fitLengths(Cluster& out) {
    if (m_context.database().version.starts_with("r4")) return;
    for (const Frame& frame : out.frames) {
        if (frame.pdus.size() != 1 || frame.lengthBytes == 0) continue;
        const uint32_t startByte = frame.pdus[0].startBit / 8;
        if (startByte >= frame.lengthBytes) continue;
        m_context.database().pdus[frame.pdus[0].pdu].lengthBytes = frame.lengthBytes - startByte;
    }
}

EcuSet ClusterReader::nodesOf(pugi::xml_node channels, const std::vector<Frame>& frames) const {
    EcuSet nodes;
    for (const auto channel : channels.children()) {
        for (const auto entry : channel.child("COMM-CONNECTORS").children()) {
            const auto reference = entry.child("COMMUNICATION-CONNECTOR-REF");
            const auto connector = m_context.index().follow(reference ? reference : entry);
            if (const auto ecu = m_parties.ecuAround(connector)) addEcu(nodes, *ecu);
        }
    }
    if (!nodes.empty()) {
        for (const Frame& frame : frames) {
            addAll(nodes, frame.ports.senders);
            addAll(nodes, frame.ports.receivers);
        }
        return nodes;
    }
    for (uint32_t ecu = 0; ecu < m_context.database().ecus.size(); ++ecu) nodes.push_back(ecu);
    return nodes;
}

}  // namespace quill::arxml
