#include "arxml/PduJson.h"

#include <cmath>

#include "arxml/JsonPut.h"

namespace quill::arxml {
namespace {

const char* nameOf(ByteOrder order) {
    switch (order) {
        case ByteOrder::kMotorola:
            return "MOST-SIGNIFICANT-BYTE-FIRST";
        case ByteOrder::kOpaque:
            return "OPAQUE";
        case ByteOrder::kIntel:
            break;
    }
    return "MOST-SIGNIFICANT-BYTE-LAST";
}

const char* nameOf(PartRole role) {
    switch (role) {
        case PartRole::kPayload:
            return "PAYLOAD";
        case PartRole::kStatic:
            return "STATIC";
        case PartRole::kDynamic:
            return "DYNAMIC";
        case PartRole::kContained:
            break;
    }
    return "CONTAINED";
}

// What the fixed keys of a PDU and of a signal take in the text.
constexpr size_t kPduBytes = 350;
constexpr size_t kSignalBytes = 550;
constexpr size_t kValueTextBytes = 24;
constexpr size_t kEcuBytes = 12;

size_t sizeOf(const Signal& signal, const Database& database) {
    size_t bytes = kSignalBytes + signal.name.size() + signal.comment.size();
    if (!signal.compuMethod) return bytes;
    for (const auto& entry : database.compuMethods[*signal.compuMethod].valueTable) {
        bytes += kValueTextBytes + entry.text.size();
    }
    return bytes;
}

}  // namespace

void writeEcus(dbjson::JsonWriter& json, const char* key, const Database& database,
               const EcuSet& ecus) {
    json.beginArray(key);
    for (const uint32_t ecu : ecus) json.text(database.ecus[ecu].name);
    json.endArray();
}

bool PduJson::spend(size_t bytes) {
    m_spentBytes += bytes;
    return m_spentBytes <= m_maxBytes;
}

void PduJson::writeMapped(const PduMapping& mapping, const Channel& channel,
                          const EcuSet& receivers) {
    writePdu(mapping.pdu, {mapping.startBit, mapping.startBit, nullptr, &receivers}, channel);
}

void PduJson::writeAlone(uint32_t pdu, const Channel& channel) {
    writePdu(pdu, {0, 0, nullptr, nullptr}, channel);
}

void PduJson::writePdu(uint32_t index, const Place& place, const Channel& channel) {
    const Pdu& pdu = m_database.pdus[index];
    if (!spend(kPduBytes + pdu.name.size() + pdu.comment.size())) return;
    static const Parties kNobody;
    const auto known = channel.pduParties.find(index);
    const Parties& parties = known == channel.pduParties.end() ? kNobody : known->second;
    const EcuSet& receivers =
        parties.receivers.empty() && place.receivers ? *place.receivers : parties.receivers;
    m_json.beginObject();
    writeProperties(pdu, place);
    writeEcus(m_json, "receivers", m_database, parties.receivers);
    writeEcus(m_json, "senders", m_database, parties.senders);
    m_json.beginArray("isignals");
    for (const auto& mapped : pdu.signals) {
        writeSignal(mapped, place.signalBase, channel, receivers);
    }
    m_json.endArray();
    writeParts(pdu, place, channel, receivers);
    m_json.endObject();
}

void PduJson::writeProperties(const Pdu& pdu, const Place& place) {
    put(m_json, "type", pdu.type);
    put(m_json, "name", pdu.name);
    if (!pdu.comment.empty()) put(m_json, "comment", pdu.comment);
    put(m_json, "start_position", place.startBit);
    put(m_json, "length", pdu.lengthBytes);
    put(m_json, "unused_bit_pattern", pdu.unusedBitPattern);
    writeTiming(pdu.timing);
    put(m_json, "trigger", pdu.trigger);
    put(m_json, "header", pdu.headerType);
    put(m_json, "rx_accept", pdu.rxAccept);
    writeContained(pdu);
    if (place.part) {
        put(m_json, "part", nameOf(place.part->role));
        if (place.part->selectorCode) put(m_json, "selector_code", *place.part->selectorCode);
        if (place.part->role == PartRole::kDynamic) {
            put(m_json, "initial", place.part->isInitial);
        }
    }
    if (pdu.selector) writeSelector(*pdu.selector, place.signalBase);
    if (pdu.secure) writeSecure(*pdu.secure);
}

void PduJson::writeTiming(const Timing& timing) {
    m_json.beginObject("timing");
    const auto write = [&](const char* key, const auto& value) {
        if (value) put(m_json, key, *value);
    };
    write("cycle_time", timing.cycleMs);
    write("cycle_offset", timing.offsetMs);
    write("false_cycle_time", timing.falseCycleMs);
    write("minimum_delay", timing.minimumDelayMs);
    write("repetitions", timing.repetitions);
    write("repetition_period", timing.repetitionMs);
    m_json.endObject();
}

void PduJson::writeContained(const Pdu& pdu) {
    m_json.beginObject("contained_ipdu_pros");
    if (pdu.contained) {
        const ContainedProps& props = *pdu.contained;
        if (props.shortHeaderId) put(m_json, "header_id_short_header", *props.shortHeaderId);
        if (props.longHeaderId) put(m_json, "header_id_long_header", *props.longHeaderId);
        if (props.offsetBytes) put(m_json, "offset", *props.offsetBytes);
        if (props.timeoutMs) put(m_json, "timeout", *props.timeoutMs);
        put(m_json, "collection_semantics", props.collection);
        put(m_json, "trigger", props.trigger);
    }
    m_json.endObject();
    if (!pdu.contained) return;
    const auto& props = *pdu.contained;
    if (const auto id = props.shortHeaderId ? props.shortHeaderId : props.longHeaderId) {
        put(m_json, "header_id", *id);
    }
}

void PduJson::writeSelector(const Selector& selector, int64_t base) {
    m_json.beginObject("selector");
    put(m_json, "start_position", selector.lsb + base);
    put(m_json, "length", selector.lengthBits);
    put(m_json, "byte_order", nameOf(selector.order));
    m_json.endObject();
}

void PduJson::writeSecure(const SecureProps& secure) {
    m_json.beginObject("secoc");
    put(m_json, "payload_length", secure.payloadBytes);
    if (secure.dataId) put(m_json, "data_id", *secure.dataId);
    put(m_json, "freshness_bit_length", secure.freshnessBits);
    put(m_json, "freshness_tx_bit_length", secure.freshnessTxBits);
    put(m_json, "auth_tx_bit_length", secure.authTxBits);
    m_json.endObject();
}

void PduJson::writeParts(const Pdu& pdu, const Place& place, const Channel& channel,
                         const EcuSet& receivers) {
    if (pdu.parts.empty()) return;
    // Behind a header a contained PDU may stand anywhere; without headers its offset is fixed.
    const bool isContainer = pdu.parts.front().role == PartRole::kContained;
    const bool hasHeaders = pdu.headerType != "NO-HEADER";
    m_json.beginArray(pdu.secure ? "ipdu" : "ipdus");
    for (const PduPart& part : pdu.parts) {
        Place inner{place.startBit, place.signalBase, &part, &receivers};
        const auto& contained = m_database.pdus[part.pdu].contained;
        if (isContainer) {
            const bool isFixed = !hasHeaders && contained && contained->offsetBytes;
            const int64_t offset = isFixed ? 8 * int64_t{*contained->offsetBytes} : 0;
            inner.startBit = isFixed ? place.startBit + offset : 0;
            inner.signalBase = isFixed ? place.signalBase + offset : 0;
        }
        writePdu(part.pdu, inner, channel);
    }
    m_json.endArray();
}

void PduJson::writeSignal(const MappedSignal& mapped, int64_t base, const Channel& channel,
                          const EcuSet& receivers) {
    const Signal& signal = m_database.signals[mapped.signal];
    const auto told = channel.signalReceivers.find(mapped.signal);
    const EcuSet& ecus = told == channel.signalReceivers.end() ? receivers : told->second;
    if (!spend(sizeOf(signal, m_database) + ecus.size() * kEcuBytes)) return;
    m_json.beginObject();
    put(m_json, "name", signal.name);
    if (!signal.comment.empty()) put(m_json, "comment", signal.comment);
    put(m_json, "length", signal.lengthBits);
    put(m_json, "byte_order", nameOf(mapped.order));
    put(m_json, "start_position", mapped.lsb + base);
    put(m_json, "transport", mapped.transport);
    put(m_json, "init_value", signal.initValue);
    put(m_json, "dyn_length", signal.dynamicLength);
    if (mapped.updateBit) put(m_json, "update_bit", *mapped.updateBit + base);
    put(m_json, "is_signed", signal.isSigned);
    put(m_json, "is_float", signal.isFloat);
    writeLimits(signal.limits);
    writeCompu(signal);
    m_json.beginObject("sw_base_type");
    if (signal.baseType) {
        put(m_json, "name", signal.baseType->name);
        put(m_json, "size", signal.baseType->sizeBits);
        put(m_json, "encoding", signal.baseType->encoding);
    }
    m_json.endObject();
    put(m_json, "secured_signal", signal.isSecured);
    writeEcus(m_json, "receivers", m_database, ecus);
    m_json.endObject();
}

void PduJson::writeLimit(const char* key, const std::optional<double>& limit) {
    if (!limit || std::isnan(*limit)) return;
    if (std::isfinite(*limit)) {
        put(m_json, key, *limit);
    } else {
        put(m_json, key, *limit < 0 ? "-INF" : "INF");
    }
}

void PduJson::writeLimits(const Limits& limits) {
    m_json.beginObject("dataconstr");
    writeLimit("phy_lower_limit", limits.physicalLower);
    writeLimit("phy_upper_limit", limits.physicalUpper);
    writeLimit("inter_lower_limit", limits.internalLower);
    writeLimit("inter_upper_limit", limits.internalUpper);
    m_json.endObject();
}

void PduJson::writeCompu(const Signal& signal) {
    static const CompuMethod kIdentity;
    const CompuMethod& compu =
        signal.compuMethod ? m_database.compuMethods[*signal.compuMethod] : kIdentity;
    m_json.beginObject("compu_method");
    put(m_json, "name", compu.name);
    put(m_json, "category", compu.category);
    put(m_json, "compu_offset", compu.offset);
    put(m_json, "compu_scale", compu.scale);
    put(m_json, "compu_denominator", compu.denominator);
    m_json.beginArray("value_table");
    for (const ValueText& entry : compu.valueTable) {
        m_json.beginObject();
        put(m_json, "name", entry.text);
        put(m_json, "value", entry.value);
        m_json.endObject();
    }
    m_json.endArray();
    put(m_json, "unit", signal.unit);
    writeScales(compu);
    m_json.endObject();
}

// One line and a table of texts say all about most methods; the scales of the others are kept for
// readers that can use them.
void PduJson::writeScales(const CompuMethod& compu) {
    size_t rational = 0;
    bool hasMask = false;
    for (const CompuScale& scale : compu.scales) {
        rational += scale.hasText ? 0 : 1;
        hasMask = hasMask || scale.mask;
    }
    if (rational < 2 && !hasMask) return;
    m_json.beginArray("scales");
    for (const CompuScale& scale : compu.scales) {
        m_json.beginObject();
        writeLimit("lower_limit", scale.lower);
        writeLimit("upper_limit", scale.upper);
        if (scale.mask) put(m_json, "mask", *scale.mask);
        if (scale.hasText) put(m_json, "name", scale.text);
        const auto writeNumbers = [&](const char* key, const std::vector<double>& numbers) {
            if (numbers.empty()) return;
            m_json.beginArray(key);
            for (const double number : numbers) m_json.number(number);
            m_json.endArray();
        };
        writeNumbers("numerator", scale.numerators);
        writeNumbers("denominator", scale.denominators);
        m_json.endObject();
    }
    m_json.endArray();
}

}  // namespace quill::arxml
