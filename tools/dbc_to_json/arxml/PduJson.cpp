#include "arxml/PduJson.h"

#include <cmath>

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

}  // namespace

void writeEcus(dbjson::JsonWriter& json, const char* key, const Database& database,
               const EcuSet& ecus) {
    json.key(key).beginArray();
    for (const uint32_t ecu : ecus) json.value(database.ecus[ecu].name);
    json.endArray();
}

void PduJson::writeMapped(const PduMapping& mapping, const Channel& channel,
                          const EcuSet& receivers) {
    writePdu(mapping.pdu, {mapping.startBit, mapping.startBit, nullptr, &receivers}, channel);
}

void PduJson::writeAlone(uint32_t pdu, const Channel& channel) {
    writePdu(pdu, {0, 0, nullptr, nullptr}, channel);
}

void PduJson::writePdu(uint32_t index, const Place& place, const Channel& channel) {
    if (m_json.size() > m_maxBytes) m_isTooLarge = true;
    if (m_isTooLarge) return;
    const Pdu& pdu = m_database.pdus[index];
    static const Parties kNobody;
    const auto known = channel.pduParties.find(index);
    const Parties& parties = known == channel.pduParties.end() ? kNobody : known->second;
    const EcuSet& receivers =
        parties.receivers.empty() && place.receivers ? *place.receivers : parties.receivers;
    m_json.beginObject();
    writeProperties(pdu, place);
    writeEcus(m_json, "receivers", m_database, parties.receivers);
    writeEcus(m_json, "senders", m_database, parties.senders);
    m_json.key("isignals").beginArray();
    for (const auto& mapped : pdu.signals) {
        writeSignal(mapped, place.signalBase, channel, receivers);
    }
    m_json.endArray();
    writeParts(pdu, place, channel, receivers);
    m_json.endObject();
}

void PduJson::writeProperties(const Pdu& pdu, const Place& place) {
    m_json.member("type", pdu.type);
    m_json.member("name", pdu.name);
    if (!pdu.comment.empty()) m_json.member("comment", pdu.comment);
    m_json.member("start_position", place.startBit);
    m_json.member("length", pdu.lengthBytes);
    m_json.member("unused_bit_pattern", pdu.unusedBitPattern);
    writeTiming(pdu.timing);
    m_json.member("trigger", pdu.trigger);
    m_json.member("header", pdu.headerType);
    m_json.member("rx_accept", pdu.rxAccept);
    writeContained(pdu);
    if (place.part) {
        m_json.member("part", std::string_view(nameOf(place.part->role)));
        if (place.part->selectorCode) m_json.member("selector_code", *place.part->selectorCode);
        if (place.part->role == PartRole::kDynamic) {
            m_json.member("initial", place.part->isInitial);
        }
    }
    if (pdu.selector) writeSelector(*pdu.selector, place.signalBase);
    if (pdu.secure) writeSecure(*pdu.secure);
}

void PduJson::writeTiming(const Timing& timing) {
    m_json.key("timing").beginObject();
    const auto write = [&](const char* key, const auto& value) {
        if (value) m_json.member(key, *value);
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
    m_json.key("contained_ipdu_pros").beginObject();
    if (pdu.contained) {
        const ContainedProps& props = *pdu.contained;
        if (props.shortHeaderId) m_json.member("header_id_short_header", *props.shortHeaderId);
        if (props.longHeaderId) m_json.member("header_id_long_header", *props.longHeaderId);
        if (props.offsetBytes) m_json.member("offset", *props.offsetBytes);
        if (props.timeoutMs) m_json.member("timeout", *props.timeoutMs);
        m_json.member("collection_semantics", props.collection);
        m_json.member("trigger", props.trigger);
    }
    m_json.endObject();
    if (!pdu.contained) return;
    const auto& props = *pdu.contained;
    if (const auto id = props.shortHeaderId ? props.shortHeaderId : props.longHeaderId) {
        m_json.member("header_id", *id);
    }
}

void PduJson::writeSelector(const Selector& selector, int64_t base) {
    m_json.key("selector").beginObject();
    m_json.member("start_position", selector.lsb + base);
    m_json.member("length", selector.lengthBits);
    m_json.member("byte_order", std::string_view(nameOf(selector.order)));
    m_json.endObject();
}

void PduJson::writeSecure(const SecureProps& secure) {
    m_json.key("secoc").beginObject();
    m_json.member("payload_length", secure.payloadBytes);
    if (secure.dataId) m_json.member("data_id", *secure.dataId);
    m_json.member("freshness_bit_length", secure.freshnessBits);
    m_json.member("freshness_tx_bit_length", secure.freshnessTxBits);
    m_json.member("auth_tx_bit_length", secure.authTxBits);
    m_json.endObject();
}

void PduJson::writeParts(const Pdu& pdu, const Place& place, const Channel& channel,
                         const EcuSet& receivers) {
    if (pdu.parts.empty()) return;
    // Behind a header a contained PDU may stand anywhere; without headers its offset is fixed.
    const bool isContainer = pdu.parts.front().role == PartRole::kContained;
    const bool hasHeaders = pdu.headerType != "NO-HEADER";
    m_json.key(pdu.secure ? "ipdu" : "ipdus").beginArray();
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
    if (m_json.size() > m_maxBytes) m_isTooLarge = true;
    if (m_isTooLarge) return;
    const Signal& signal = m_database.signals[mapped.signal];
    m_json.beginObject();
    m_json.member("name", signal.name);
    if (!signal.comment.empty()) m_json.member("comment", signal.comment);
    m_json.member("length", signal.lengthBits);
    m_json.member("byte_order", std::string_view(nameOf(mapped.order)));
    m_json.member("start_position", mapped.lsb + base);
    m_json.member("transport", mapped.transport);
    m_json.member("init_value", signal.initValue);
    m_json.member("dyn_length", signal.dynamicLength);
    if (mapped.updateBit) m_json.member("update_bit", *mapped.updateBit + base);
    m_json.member("is_signed", signal.isSigned);
    m_json.member("is_float", signal.isFloat);
    writeLimits(signal.limits);
    writeCompu(signal);
    m_json.key("sw_base_type").beginObject();
    if (signal.baseType) {
        m_json.member("name", signal.baseType->name);
        m_json.member("size", signal.baseType->sizeBits);
        m_json.member("encoding", signal.baseType->encoding);
    }
    m_json.endObject();
    m_json.member("secured_signal", signal.isSecured);
    const auto told = channel.signalReceivers.find(mapped.signal);
    writeEcus(m_json, "receivers", m_database,
              told == channel.signalReceivers.end() ? receivers : told->second);
    m_json.endObject();
}

void PduJson::writeLimit(const char* key, const std::optional<double>& limit) {
    if (!limit || std::isnan(*limit)) return;
    if (std::isfinite(*limit)) {
        m_json.member(key, *limit);
    } else {
        m_json.member(key, std::string_view(*limit < 0 ? "-INF" : "INF"));
    }
}

void PduJson::writeLimits(const Limits& limits) {
    m_json.key("dataconstr").beginObject();
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
    m_json.key("compu_method").beginObject();
    m_json.member("name", compu.name);
    m_json.member("category", compu.category);
    m_json.member("compu_offset", compu.offset);
    m_json.member("compu_scale", compu.scale);
    m_json.member("compu_denominator", compu.denominator);
    m_json.key("value_table").beginArray();
    for (const ValueText& entry : compu.valueTable) {
        m_json.beginObject();
        m_json.member("name", entry.text);
        m_json.member("value", entry.value);
        m_json.endObject();
    }
    m_json.endArray();
    m_json.member("unit", signal.unit);
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
    m_json.key("scales").beginArray();
    for (const CompuScale& scale : compu.scales) {
        m_json.beginObject();
        writeLimit("lower_limit", scale.lower);
        writeLimit("upper_limit", scale.upper);
        if (scale.mask) m_json.member("mask", *scale.mask);
        if (scale.hasText) m_json.member("name", scale.text);
        const auto writeNumbers = [&](const char* key, const std::vector<double>& numbers) {
            if (numbers.empty()) return;
            m_json.key(key).beginArray();
            for (const double number : numbers) m_json.value(number);
            m_json.endArray();
        };
        writeNumbers("numerator", scale.numerators);
        writeNumbers("denominator", scale.denominators);
        m_json.endObject();
    }
    m_json.endArray();
}

}  // namespace quill::arxml
