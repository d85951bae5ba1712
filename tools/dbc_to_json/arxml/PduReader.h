// PDUs of every kind that a frame may carry, with what they contain.
#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <unordered_map>

#include "arxml/ReadContext.h"
#include "arxml/SignalReader.h"

namespace quill::arxml {

class PduReader {
public:
    PduReader(ReadContext& context, SignalReader& signals)
        : m_context(context), m_signals(signals) {}

    // Index of the PDU in the database, read once; nothing after an error.
    [[nodiscard]] std::optional<uint32_t> read(pugi::xml_node pdu);
    // The PDU that a reference names, directly or by way of its triggering.
    [[nodiscard]] std::optional<uint32_t> readReferenced(pugi::xml_node reference);

    // Element names of all PDUs that may stand in a frame.
    static bool isPdu(std::string_view elementName);

private:
    void readProperties(pugi::xml_node pdu, Pdu& out);
    void readTiming(pugi::xml_node pdu, Timing& out);
    void readContainedProps(pugi::xml_node pdu, Pdu& out);
    [[nodiscard]] bool readSignals(pugi::xml_node pdu, Pdu& out);
    [[nodiscard]] bool readMapping(pugi::xml_node mapping, Pdu& out);
    [[nodiscard]] bool readContents(pugi::xml_node pdu, Pdu& out);
    [[nodiscard]] bool readContainer(pugi::xml_node pdu, Pdu& out);
    [[nodiscard]] bool readMultiplexed(pugi::xml_node pdu, Pdu& out);
    [[nodiscard]] bool readDynamicPart(pugi::xml_node part, Pdu& out);
    [[nodiscard]] bool readSecured(pugi::xml_node pdu, Pdu& out);
    void addSecuredSignals(Pdu& out);
    void addSelectorSignal(Pdu& out);
    [[nodiscard]] bool addPart(pugi::xml_node reference, PduPart part, Pdu& out);

    ReadContext& m_context;
    SignalReader& m_signals;
    std::unordered_map<const void*, uint32_t> m_known;
    int m_depth = 0;
};

}  // namespace quill::arxml
