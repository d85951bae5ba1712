// PDUs and signals as JSON, at their place in a frame.
#pragma once

#include <cstdint>

#include "arxml/Model.h"
#include "common/JsonWriter.h"

namespace quill::arxml {

// Names of control units as an array under `key`.
void writeEcus(dbjson::JsonWriter& json, const char* key, const Database& database,
               const EcuSet& ecus);

class PduJson {
public:
    // Stops writing PDUs when the text would pass `maxBytes`: a small file can describe the same
    // PDU in so many places that the written-out text has no end.
    PduJson(dbjson::JsonWriter& json, const Database& database, size_t maxBytes)
        : m_json(json), m_database(database), m_maxBytes(maxBytes) {}

    // A PDU in a frame. Signals of PDUs with a fixed place are positioned from the frame's first
    // bit, those of PDUs behind a header from their own PDU's first bit.
    void writeMapped(const PduMapping& mapping, const Channel& channel, const EcuSet& receivers);
    // A PDU that stands for itself, positions from its own first bit.
    void writeAlone(uint32_t pdu, const Channel& channel);

    [[nodiscard]] bool isTooLarge() const { return m_spentBytes > m_maxBytes; }

private:
    struct Place {
        int64_t startBit = 0;               // of the PDU in the frame or in its container
        int64_t signalBase = 0;             // added to every signal position
        const PduPart* part = nullptr;      // how the surrounding PDU holds this one
        const EcuSet* receivers = nullptr;  // of the surrounding PDU or frame
    };

    [[nodiscard]] bool spend(size_t bytes);
    void writePdu(uint32_t index, const Place& place, const Channel& channel);
    void writeProperties(const Pdu& pdu, const Place& place);
    void writeTiming(const Timing& timing);
    void writeContained(const Pdu& pdu);
    void writeSelector(const Selector& selector, int64_t base);
    void writeSecure(const SecureProps& secure);
    void writeParts(const Pdu& pdu, const Place& place, const Channel& channel,
                    const EcuSet& receivers);
    void writeSignal(const MappedSignal& mapped, int64_t base, const Channel& channel,
                     const EcuSet& receivers);
    void writeCompu(const Signal& signal);
    void writeScales(const CompuMethod& compu);
    void writeLimits(const Limits& limits);
    void writeLimit(const char* key, const std::optional<double>& limit);

    dbjson::JsonWriter& m_json;
    const Database& m_database;
    size_t m_maxBytes;
    size_t m_spentBytes = 0;  // about what was written
};

}  // namespace quill::arxml
