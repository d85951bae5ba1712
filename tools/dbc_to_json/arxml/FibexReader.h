// Reads FIBEX files: FlexRay and CAN clusters, frames, PDUs, signals and codings.
#pragma once

#include <optional>
#include <pugixml.hpp>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "arxml/CompuReader.h"
#include "arxml/Document.h"
#include "arxml/Model.h"
#include "arxml/PartyReader.h"
#include "arxml/ReadContext.h"

namespace quill::arxml {

// Elements refer to one another by ID, not by path. Clusters of other buses are left out with a
// warning.
[[nodiscard]] std::optional<ReadError> readFibex(const Document& document, Database& out);

class FibexReader {
public:
    explicit FibexReader(ReadContext& context) : m_context(context), m_compu(context) {}

    [[nodiscard]] bool read(pugi::xml_node root);

private:
    void indexIds(pugi::xml_node root);
    [[nodiscard]] pugi::xml_node target(pugi::xml_node reference) const;
    [[nodiscard]] pugi::xml_node require(pugi::xml_node reference);
    [[nodiscard]] bool readEcus(pugi::xml_node elements);
    void readPorts(pugi::xml_node connector, uint32_t ecu);
    [[nodiscard]] bool readCluster(pugi::xml_node cluster);
    [[nodiscard]] bool readChannel(pugi::xml_node channel, Cluster& out, bool isFlexRay);
    [[nodiscard]] bool readTriggering(pugi::xml_node triggering, Frame& out, bool isFlexRay);
    [[nodiscard]] bool readFrame(pugi::xml_node frame, Frame& out);
    [[nodiscard]] std::optional<uint32_t> readPdu(pugi::xml_node pdu, int depth);
    [[nodiscard]] bool readSignalInstances(pugi::xml_node holder, Pdu& out);
    [[nodiscard]] bool readMultiplexer(pugi::xml_node pdu, Pdu& out, int depth);
    [[nodiscard]] std::optional<uint32_t> readSignal(pugi::xml_node signal);
    [[nodiscard]] bool readCoding(pugi::xml_node coding, Signal& out);
    void readCycle(pugi::xml_node channel);
    void sumParties(Channel& channel);

    ReadContext& m_context;
    CompuReader m_compu;
    std::unordered_map<std::string_view, pugi::xml_node> m_ids;
    std::unordered_map<std::string_view, Parties> m_ports;  // by ID of the triggering
    std::unordered_map<const void*, uint32_t> m_pdus, m_signals;
    std::unordered_set<const void*> m_channels;
    size_t m_mappings = 0;
    PartyReader::ByElement m_pduPorts;  // by PDU element, of the channel being read
};

}  // namespace quill::arxml
