// Who sends and who receives: told by ports of the control units, by PDU groups and by network
// management nodes.
#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <unordered_map>
#include <unordered_set>

#include "arxml/ReadContext.h"

namespace quill::arxml {

// Adds an index to a sorted set.
void addEcu(EcuSet& set, uint32_t ecu);
void addAll(EcuSet& set, const EcuSet& others);

class PartyReader {
public:
    explicit PartyReader(ReadContext& context) : m_context(context) {}

    // Reads the control units, their PDU groups and network management nodes; call once, first.
    // False when there are more of them than any vehicle has.
    [[nodiscard]] bool readEcus();

    // The control unit around a port, connector or controller.
    [[nodiscard]] std::optional<uint32_t> ecuAround(pugi::xml_node node) const;
    // Adds the owners of the ports that a list such as FRAME-PORT-REFS names, by direction.
    void addPorts(pugi::xml_node portReferences, Parties& out) const;
    // Port lists of a channel's PDU and signal triggerings, by element of the PDU or signal.
    using ByElement = std::unordered_map<const void*, Parties>;
    void readTriggerings(pugi::xml_node channel, ByElement& pdus, ByElement& signals) const;
    // Fills Channel::pduParties and Channel::signalReceivers for all PDUs of the database.
    void resolve(const ByElement& pdus, const ByElement& signals, Channel& channel) const;

private:
    void readGroup(pugi::xml_node group, uint32_t ecu, int depth);
    void readNmNode(pugi::xml_node node);
    void addTo(const void* pdu, uint32_t ecu, std::string_view direction);

    ReadContext& m_context;
    std::unordered_map<const void*, uint32_t> m_ecus;
    ByElement m_groups;                               // by PDU element, for all channels
    std::unordered_set<const void*> m_visitedGroups;  // of the control unit being read
    size_t m_groupMembers = 0;
};

}  // namespace quill::arxml
