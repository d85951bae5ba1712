#include "arxml/PduReader.h"

#include <algorithm>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

// A PDU in a PDU in a PDU: real networks stop at four levels.
constexpr int kMaxDepth = 16;
// Stands for a PDU whose reading has begun but not ended.
constexpr uint32_t kBeingRead = 0xFFFFFFFF;

bool isTriggering(std::string_view name) {
    return name == "PDU-TRIGGERING" || name == "I-PDU-TRIGGERING" || name == "PAYLOAD";
}

pugi::xml_node firstChildEndingWith(pugi::xml_node node, std::string_view ending) {
    for (const auto child : node.children()) {
        if (nameOf(child).ends_with(ending)) return child;
    }
    return {};
}

std::optional<uint64_t> wideOf(pugi::xml_node node, const char* child) {
    const auto value = integerOf(node, child);
    if (!value || *value < 0) return std::nullopt;
    return static_cast<uint64_t>(*value);
}

// Two releases, two element names for the same list.
template <class Visit>
bool forEachIn(pugi::xml_node node, std::initializer_list<const char*> lists, Visit visit) {
    for (const char* list : lists) {
        for (const auto entry : node.child(list).children()) {
            if (!visit(entry)) return false;
        }
    }
    return true;
}

}  // namespace

bool PduReader::isPdu(std::string_view name) { return name.ends_with("-PDU") || name == "PDU"; }

std::optional<uint32_t> PduReader::readReferenced(pugi::xml_node reference) {
    auto target = m_context.require(reference);
    for (int hops = 0; target && isTriggering(target.name()) && hops < 2; ++hops) {
        const auto inner = target.child("I-PDU-REF");
        if (!inner) {
            m_context.fail(target, "a triggering without I-PDU-REF");
            return std::nullopt;
        }
        target = m_context.require(inner);
    }
    if (!target) return std::nullopt;
    if (!isPdu(target.name())) {
        m_context.fail(reference, std::string(reference.name()) + " leads to a " + target.name() +
                                      ", which is no PDU");
        return std::nullopt;
    }
    return read(target);
}

std::optional<uint32_t> PduReader::read(pugi::xml_node pdu) {
    const void* key = pdu.internal_object();
    if (const auto known = m_known.find(key); known != m_known.end()) {
        if (known->second != kBeingRead) return known->second;
        m_context.fail(pdu, "PDU " + std::string(textOf(pdu, "SHORT-NAME")) + " contains itself");
        return std::nullopt;
    }
    if (m_depth >= kMaxDepth) {
        m_context.fail(pdu, "PDUs are nested more than 16 deep");
        return std::nullopt;
    }
    m_known.emplace(key, kBeingRead);
    Pdu out;
    out.source = key;
    readProperties(pdu, out);
    ++m_depth;
    const bool isRead = readSignals(pdu, out) && readContents(pdu, out);
    --m_depth;
    if (!isRead) return std::nullopt;
    auto& pdus = m_context.database().pdus;
    const auto index = static_cast<uint32_t>(pdus.size());
    pdus.push_back(std::move(out));
    m_known[key] = index;
    return index;
}

void PduReader::readProperties(pugi::xml_node pdu, Pdu& out) {
    out.type = pdu.name();
    out.name = textOf(pdu, "SHORT-NAME");
    out.comment = descriptionOf(pdu);
    out.lengthBytes = unsignedOf(pdu, "LENGTH").value_or(0);
    out.unusedBitPattern = textOf(pdu, "UNUSED-BIT-PATTERN");
    out.headerType = textOf(pdu, "HEADER-TYPE");
    out.trigger = textOf(pdu, "CONTAINER-TRIGGER");
    if (out.trigger.empty()) out.trigger = textOf(pdu, "TRIGGER-MODE");
    out.rxAccept = textOf(pdu, "RX-ACCEPT-CONTAINED-I-PDU");
    readTiming(pdu, out.timing);
    readContainedProps(pdu, out);
}

void PduReader::readTiming(pugi::xml_node pdu, Timing& out) {
    auto timing = pdu.child("I-PDU-TIMING-SPECIFICATIONS").child("I-PDU-TIMING");
    if (!timing) timing = pdu.child("I-PDU-TIMING-SPECIFICATION");
    if (!timing) return;
    if (const auto inner = timing.child("I-PDU-TIMING")) timing = inner;
    const auto modes = timing.child("TRANSMISSION-MODE-DECLARATION");
    const auto whenTrue = modes.child("TRANSMISSION-MODE-TRUE-TIMING");
    const auto whenFalse = modes.child("TRANSMISSION-MODE-FALSE-TIMING");
    const auto level = whenTrue ? whenTrue : timing;
    const auto periodOf = [](pugi::xml_node from) {
        const auto cyclic = from.child("CYCLIC-TIMING");
        const auto period = cyclic.child("TIME-PERIOD");
        return millisecondsOf(period ? period : cyclic.child("REPEATING-TIME"));
    };
    out.cycleMs = periodOf(level);
    const auto offset = level.child("CYCLIC-TIMING").child("TIME-OFFSET");
    out.offsetMs =
        millisecondsOf(offset ? offset : level.child("CYCLIC-TIMING").child("STARTING-TIME"));
    out.falseCycleMs = periodOf(whenFalse);
    auto events = level.child("EVENT-CONTROLLED-TIMING");
    out.repetitions = unsignedOf(events, "NUMBER-OF-REPETITIONS");
    if (!out.repetitions) out.repetitions = unsignedOf(events, "NUMBER-OF-REPEATS");
    out.repetitionMs = millisecondsOf(events.child("REPETITION-PERIOD"));
    out.minimumDelayMs = millisecondsOf(timing.child("MINIMUM-DELAY"));
}

void PduReader::readContainedProps(pugi::xml_node pdu, Pdu& out) {
    const auto props = pdu.child("CONTAINED-I-PDU-PROPS");
    if (!props) return;
    ContainedProps contained;
    contained.shortHeaderId = wideOf(props, "HEADER-ID-SHORT-HEADER");
    contained.longHeaderId = wideOf(props, "HEADER-ID-LONG-HEADER");
    contained.collection = textOf(props, "COLLECTION-SEMANTICS");
    contained.trigger = textOf(props, "TRIGGER");
    contained.offsetBytes = unsignedOf(props, "OFFSET");
    contained.timeoutMs = millisecondsOf(props.child("TIMEOUT"));
    out.contained = contained;
}

bool PduReader::readSignals(pugi::xml_node pdu, Pdu& out) {
    return forEachIn(
        pdu, {"I-SIGNAL-TO-PDU-MAPPINGS", "I-SIGNAL-TO-I-PDU-MAPPINGS", "SIGNAL-TO-PDU-MAPPINGS"},
        [&](pugi::xml_node mapping) {
            return nameOf(mapping) != "I-SIGNAL-TO-I-PDU-MAPPING" || readMapping(mapping, out);
        });
}

bool PduReader::readMapping(pugi::xml_node mapping, Pdu& out) {
    auto reference = mapping.child("I-SIGNAL-REF");
    if (!reference) reference = mapping.child("SIGNAL-REF");
    // A signal group has no place of its own; its members are mapped besides.
    if (!reference) return true;
    const auto target = m_context.require(reference, {"I-SIGNAL", "I-SIGNAL-GROUP"});
    if (!target) return false;
    if (nameOf(target) == "I-SIGNAL-GROUP") return true;
    const auto start = unsignedOf(mapping, "START-POSITION");
    if (!start) {
        // AUTOSAR 3 writes groups as I-SIGNAL too; these have no position either.
        const auto system = m_context.index().follow(target.child("SYSTEM-SIGNAL-REF"));
        if (nameOf(system) == "SYSTEM-SIGNAL-GROUP") return true;
        if (mapping.child("START-POSITION")) {
            return m_context.fail(mapping, "a signal mapping without usable start position");
        }
        m_context.warn(mapping, "a signal mapping without start position is left out");
        return true;
    }
    const auto signal = m_signals.read(target);
    if (!signal) return false;
    MappedSignal mapped;
    mapped.signal = *signal;
    mapped.order = parseByteOrder(textOf(mapping, "PACKING-BYTE-ORDER"));
    mapped.transport = textOf(mapping, "TRANSFER-PROPERTY");
    mapped.updateBit = unsignedOf(mapping, "UPDATE-INDICATION-BIT-POSITION");
    mapped.lsb = lsbOf(*start, m_context.database().signals[*signal].lengthBits, mapped.order);
    out.signals.push_back(mapped);
    return true;
}

bool PduReader::readContents(pugi::xml_node pdu, Pdu& out) {
    if (out.type == "CONTAINER-I-PDU") return readContainer(pdu, out);
    if (out.type == "MULTIPLEXED-I-PDU") return readMultiplexed(pdu, out);
    if (out.type == "SECURED-I-PDU") return readSecured(pdu, out);
    return true;
}

bool PduReader::addPart(pugi::xml_node reference, PduPart part, Pdu& out) {
    if (!reference) return true;
    const auto inner = readReferenced(reference);
    if (!inner) return false;
    part.pdu = *inner;
    out.parts.push_back(part);
    return true;
}

bool PduReader::readContainer(pugi::xml_node pdu, Pdu& out) {
    const PduPart part{0, PartRole::kContained, std::nullopt, false};
    return forEachIn(pdu, {"CONTAINED-PDU-TRIGGERING-REFS", "CONTAINED-PDU-TRIGGERINGS"},
                     [&](pugi::xml_node entry) {
                         const auto inner = firstChildEndingWith(entry, "-REF");
                         return addPart(inner ? inner : entry, part, out);
                     });
}

bool PduReader::readMultiplexed(pugi::xml_node pdu, Pdu& out) {
    Selector selector;
    selector.order = parseByteOrder(textOf(pdu, "SELECTOR-FIELD-BYTE-ORDER"));
    selector.lengthBits = unsignedOf(pdu, "SELECTOR-FIELD-LENGTH").value_or(0);
    selector.lsb = lsbOf(unsignedOf(pdu, "SELECTOR-FIELD-START-POSITION").value_or(0),
                         selector.lengthBits, selector.order);
    if (selector.lengthBits > 0) out.selector = selector;
    const auto addStatic = [&](pugi::xml_node part) {
        return addPart(part.child("I-PDU-REF"), {0, PartRole::kStatic, std::nullopt, false}, out);
    };
    const bool isRead = addStatic(pdu.child("STATIC-PART")) &&
                        forEachIn(pdu, {"STATIC-PARTS"}, addStatic) &&
                        readDynamicPart(pdu.child("DYNAMIC-PART"), out) &&
                        forEachIn(pdu, {"DYNAMIC-PARTS"},
                                  [&](pugi::xml_node part) { return readDynamicPart(part, out); });
    if (isRead) addSelectorSignal(out);
    return isRead;
}

bool PduReader::readDynamicPart(pugi::xml_node part, Pdu& out) {
    return forEachIn(part, {"DYNAMIC-PART-ALTERNATIVES"}, [&](pugi::xml_node alternative) {
        PduPart read{0, PartRole::kDynamic, integerOf(alternative, "SELECTOR-FIELD-CODE"), false};
        read.isInitial = textOf(alternative, "INITIAL-DYNAMIC-PART") == "true";
        return addPart(alternative.child("I-PDU-REF"), read, out);
    });
}

// Scripts see the selector as a signal: the one that a part maps at its place, else a made one.
void PduReader::addSelectorSignal(Pdu& out) {
    if (!out.selector) return;
    Database& database = m_context.database();
    for (const auto& part : out.parts) {
        for (const auto& mapped : database.pdus[part.pdu].signals) {
            if (mapped.lsb == out.selector->lsb &&
                database.signals[mapped.signal].lengthBits == out.selector->lengthBits) {
                return;
            }
        }
    }
    Signal signal;
    signal.name = database.keep(std::string(out.name) + "_selector");
    signal.lengthBits = out.selector->lengthBits;
    MappedSignal mapped;
    mapped.signal = static_cast<uint32_t>(database.signals.size());
    mapped.lsb = out.selector->lsb;
    mapped.order = out.selector->order;
    database.signals.push_back(signal);
    out.signals.push_back(mapped);
}

bool PduReader::readSecured(pugi::xml_node pdu, Pdu& out) {
    if (!addPart(pdu.child("PAYLOAD-REF"), {0, PartRole::kPayload, std::nullopt, false}, out)) {
        return false;
    }
    SecureProps secure;
    if (!out.parts.empty()) {
        secure.payloadBytes = m_context.database().pdus[out.parts[0].pdu].lengthBytes;
    }
    const auto freshness = m_context.wish(pdu.child("FRESHNESS-PROPS-REF"));
    const auto authentication = m_context.wish(pdu.child("AUTHENTICATION-PROPS-REF"));
    auto props = pdu.child("SECURE-COMMUNICATION-PROPS");
    const auto pick = [&](pugi::xml_node preferred, const char* name) {
        const auto value = unsignedOf(preferred, name);
        return value ? *value : unsignedOf(props, name).value_or(0);
    };
    secure.freshnessBits = pick(freshness, "FRESHNESS-VALUE-LENGTH");
    secure.freshnessTxBits = pick(freshness, "FRESHNESS-VALUE-TX-LENGTH");
    secure.authTxBits = pick(authentication, "AUTH-INFO-TX-LENGTH");
    secure.dataId = wideOf(props, "DATA-ID");
    out.secure = secure;
    addSecuredSignals(out);
    return true;
}

// Behind the payload come the truncated freshness value and the truncated authenticator, most
// significant bit first and without a gap.
void PduReader::addSecuredSignals(Pdu& out) {
    Database& database = m_context.database();
    const SecureProps& secure = *out.secure;
    int64_t nextBit = 8 * int64_t{secure.payloadBytes};
    const auto add = [&](const char* suffix, const char* what, uint32_t bits) {
        if (bits == 0 || bits > 8 * 4096) return;
        Signal signal;
        signal.name = database.keep(std::string(out.name) + suffix);
        signal.comment = database.keep(std::string("Truncated ") + what + " for '" +
                                       std::string(out.name) + "'");
        signal.lengthBits = bits;
        signal.isSecured = true;
        MappedSignal mapped;
        mapped.signal = static_cast<uint32_t>(database.signals.size());
        mapped.order = ByteOrder::kMotorola;
        const int64_t last = nextBit + bits - 1;
        mapped.lsb = 8 * (last / 8) + (7 - last % 8);
        nextBit += bits;
        database.signals.push_back(signal);
        out.signals.push_back(mapped);
    };
    add("_Freshness", "freshness value", secure.freshnessTxBits);
    add("_Authenticator", "authenticator value", secure.authTxBits);
}

}  // namespace quill::arxml
