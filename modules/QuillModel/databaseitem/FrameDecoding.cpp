#include "databaseitem/FrameDecoding.h"

#include <algorithm>

#include "databaseitem/Multiplexing.h"
#include "signal/SignalCodec.h"

namespace Model::database {
namespace {

constexpr int kMaxMultiplexLevels = 32;  // longer chains are rings
constexpr int kMaxPduDepth = 8;
constexpr int32_t kShortHeaderType = 2;
constexpr int32_t kLongHeaderType = 3;

template <class Signal>
codec::SignalLayout bitsOf(const Signal& signal) {
    return {static_cast<uint32_t>(signal.startBit), static_cast<uint32_t>(signal.bitLength),
            signal.isBigEndian};
}

template <class Signal>
codec::PhysicalLayout physicalLayout(const Signal& signal) {
    return {bitsOf(signal), signal.isSigned, signal.isFloat, signal.factor,
            signal.offset,  signal.valMin,   signal.valMax};
}

codec::PhysicalLayout physicalLayout(const LinSignal& signal) {
    return {bitsOf(signal),
            signal.isSigned,
            false,
            signal.factor,
            signal.offset,
            static_cast<double>(signal.valMin),
            static_cast<double>(signal.valMax)};
}

template <class Signal>
void appendDecoded(const Signal& signal, std::span<const uint8_t> payload,
                   std::vector<DecodedSignal>& decoded) {
    const codec::PhysicalLayout layout = physicalLayout(signal);
    if (!codec::fits(layout.bits, payload.size())) return;
    DecodedSignal result;
    result.raw = codec::parseSignalValue(payload, layout.bits.isBigEndian, layout.bits.startBit,
                                         layout.bits.bitLength);
    const auto number = codec::rawToNumber(result.raw, layout);
    if (!number) return;
    result.physical = *number * layout.factor + layout.offset;
    result.name = &signal.name;
    result.unit = &signal.unit;
    if (!signal.mapValueTable.empty()) {
        // Tables of signed signals name negative raw values.
        const auto entry = signal.mapValueTable.find(*number);
        if (entry != signal.mapValueTable.end()) result.text = &entry->second;
    }
    decoded.push_back(result);
}

bool inRanges(uint64_t raw, const MultiplexRule& rule) {
    return rule.ranges.empty() ||
           std::any_of(rule.ranges.begin(), rule.ranges.end(), [raw](const auto& range) {
               return raw >= range.first && raw <= range.second;
           });
}

// Follows the chain of multiplexors up: all of them must be present and have a fitting value.
bool isSelected(const CanDBCEntrySignal& signal, const RecordList<CanDBCEntrySignal>& signals,
                std::span<const uint8_t> payload) {
    const CanDBCEntrySignal* current = &signal;
    for (int level = 0; level < kMaxMultiplexLevels; ++level) {
        if (!current->multiplex.isMultiplexed) return true;
        const CanDBCEntrySignal* deciding = multiplexorOf(signals, current->multiplex);
        if (deciding == nullptr) return true;
        const codec::SignalLayout bits = bitsOf(*deciding);
        if (!codec::fits(bits, payload.size())) return false;
        const uint64_t raw =
            codec::parseSignalValue(payload, bits.isBigEndian, bits.startBit, bits.bitLength);
        if (!inRanges(raw, current->multiplex)) return false;
        current = deciding;
    }
    return false;
}

uint32_t headerNumber(std::span<const uint8_t> bytes, bool isLittleEndian) {
    uint32_t value = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        value = value << 8 | bytes[isLittleEndian ? bytes.size() - 1 - i : i];
    }
    return value;
}

void decodePdu(const CanFdPdu& pdu, std::span<const uint8_t> payload, int depth,
               std::vector<DecodedSignal>& decoded);

// A container's PDUs stand in free order, each behind its header; header 0 is the pad at the end.
void decodeContainer(const CanFdPdu& container, std::span<const uint8_t> payload, int depth,
                     std::vector<DecodedSignal>& decoded) {
    const size_t idBytes = container.header_type == kShortHeaderType ? 3 : 4;
    const size_t lengthBytes = container.header_type == kShortHeaderType ? 1 : 4;
    const size_t headerBytes = idBytes + lengthBytes;
    while (payload.size() >= headerBytes) {
        const bool little = container.hasLittleEndianHeaders;
        const uint32_t id = headerNumber(payload.first(idBytes), little);
        const size_t length = headerNumber(payload.subspan(idBytes, lengthBytes), little);
        if (id == 0) return;
        payload = payload.subspan(headerBytes);
        const auto content = payload.first(std::min(length, payload.size()));
        for (const auto& pdu : container.pdus) {
            if (pdu && static_cast<uint32_t>(pdu->id) == id) {
                decodePdu(*pdu, content, depth + 1, decoded);
            }
        }
        payload = payload.subspan(content.size());
    }
}

// The parts without a code, and those whose code the payload has.
void decodeParts(const CanFdPdu& pdu, std::span<const uint8_t> payload, int depth,
                 std::vector<DecodedSignal>& decoded) {
    const codec::SignalLayout bits = bitsOf(pdu.selector);
    const bool known = codec::fits(bits, payload.size());
    const uint64_t code =
        known ? codec::parseSignalValue(payload, bits.isBigEndian, bits.startBit, bits.bitLength)
              : 0;
    for (const auto& part : pdu.pdus) {
        if (!part) continue;
        const bool inForce =
            !part->selectorCode || (known && static_cast<uint64_t>(*part->selectorCode) == code);
        if (inForce) decodePdu(*part, payload, depth + 1, decoded);
    }
}

void decodePdu(const CanFdPdu& pdu, std::span<const uint8_t> payload, int depth,
               std::vector<DecodedSignal>& decoded) {
    if (depth > kMaxPduDepth) return;
    for (const auto& signal : pdu.signals) {
        if (signal) appendDecoded(*signal, payload, decoded);
    }
    if (!hasHeaders(pdu)) {
        decodeParts(pdu, payload, depth, decoded);
    } else {
        const size_t start = static_cast<size_t>(std::max(pdu.startPosition, 0)) / 8;
        decodeContainer(pdu, payload.subspan(std::min(start, payload.size())), depth, decoded);
    }
}

bool matches(bool isExtended, Extended wanted) { return !wanted || *wanted == isExtended; }

template <class Frame, class Match>
std::shared_ptr<Frame> firstOf(const RecordList<Frame>& frames, Match&& match) {
    const auto found = std::find_if(frames.begin(), frames.end(),
                                    [&](const auto& frame) { return frame && match(*frame); });
    return found != frames.end() ? *found : nullptr;
}

template <class Match>
std::shared_ptr<CanFdDBCEntry> firstInClusters(const CanArxmlDatabase& database, Match&& match) {
    for (const auto& cluster : database.clusters) {
        if (!cluster) continue;
        if (auto frame = firstOf(cluster->dbcEntrys, match)) return frame;
    }
    return nullptr;
}

}  // namespace

bool hasHeaders(const CanFdPdu& pdu) {
    return pdu.header_type == kShortHeaderType || pdu.header_type == kLongHeaderType;
}

std::optional<double> decodeSignalPhysical(const CanDBCEntrySignal& signal,
                                           std::span<const uint8_t> payload) {
    return codec::decodePhysical(payload, physicalLayout(signal));
}

std::optional<double> decodeSignalPhysical(const CanArxmlEntrySignal& signal,
                                           std::span<const uint8_t> payload) {
    return codec::decodePhysical(payload, physicalLayout(signal));
}

std::optional<double> decodeSignalPhysical(const LinSignal& signal,
                                           std::span<const uint8_t> payload) {
    return codec::decodePhysical(payload, physicalLayout(signal));
}

codec::EncodeStatus encodeSignalPhysical(const CanDBCEntrySignal& signal,
                                         std::span<uint8_t> payload, double value) {
    return codec::encodePhysical(payload, physicalLayout(signal), value);
}

codec::EncodeStatus encodeSignalPhysical(const CanArxmlEntrySignal& signal,
                                         std::span<uint8_t> payload, double value) {
    return codec::encodePhysical(payload, physicalLayout(signal), value);
}

codec::EncodeStatus encodeSignalPhysical(const LinSignal& signal, std::span<uint8_t> payload,
                                         double value) {
    return codec::encodePhysical(payload, physicalLayout(signal), value);
}

void decodeFrame(const CanDBCEntry& frame, std::span<const uint8_t> payload,
                 std::vector<DecodedSignal>& decoded) {
    decoded.clear();
    for (const auto& signal : frame.signals) {
        if (signal && isSelected(*signal, frame.signals, payload)) {
            appendDecoded(*signal, payload, decoded);
        }
    }
}

void decodeFrame(const CanFdDBCEntry& frame, std::span<const uint8_t> payload,
                 std::vector<DecodedSignal>& decoded) {
    decoded.clear();
    for (const auto& pdu : frame.pdus) {
        if (pdu) decodePdu(*pdu, payload, 0, decoded);
    }
}

void decodeFrame(const LDFFrame& frame, std::span<const uint8_t> payload,
                 std::vector<DecodedSignal>& decoded) {
    decoded.clear();
    for (const auto& signal : frame.signals) {
        if (signal) appendDecoded(*signal, payload, decoded);
    }
}

std::shared_ptr<CanDBCEntry> findFrame(const CanDbcDatabase& database, int64_t id,
                                       Extended extended) {
    return firstOf(database.dbcEntrys, [&](const CanDBCEntry& frame) {
        return frame.id == id && matches(frame.isExtended, extended);
    });
}

std::shared_ptr<CanDBCEntry> findFrame(const CanDbcDatabase& database, std::string_view name,
                                       Extended extended) {
    return firstOf(database.dbcEntrys, [&](const CanDBCEntry& frame) {
        return frame.name == name && matches(frame.isExtended, extended);
    });
}

std::shared_ptr<CanFdDBCEntry> findFrame(const CanArxmlDatabase& database, int64_t id,
                                         Extended extended) {
    return firstInClusters(database, [&](const CanFdDBCEntry& frame) {
        return frame.id == id && matches(frame.isExtended, extended);
    });
}

std::shared_ptr<CanFdDBCEntry> findFrame(const CanArxmlDatabase& database, std::string_view name,
                                         Extended extended) {
    return firstInClusters(database, [&](const CanFdDBCEntry& frame) {
        return frame.name == name && matches(frame.isExtended, extended);
    });
}

std::shared_ptr<LDFFrame> findFrame(const LinLdfDatabase& database, int64_t id) {
    return firstOf(database.frame, [&](const LDFFrame& frame) { return frame.id == id; });
}

std::shared_ptr<LDFFrame> findFrame(const LinLdfDatabase& database, std::string_view name) {
    return firstOf(database.frame, [&](const LDFFrame& frame) { return frame.name == name; });
}

}  // namespace Model::database
