// CAN and FlexRay clusters: channels, frame triggerings and frames.
#pragma once

#include <pugixml.hpp>

#include "arxml/PartyReader.h"
#include "arxml/PduReader.h"
#include "arxml/ReadContext.h"

namespace quill::arxml {

class ClusterReader {
public:
    ClusterReader(ReadContext& context, PduReader& pdus, PartyReader& parties)
        : m_context(context), m_pdus(pdus), m_parties(parties) {}

    [[nodiscard]] bool readCan(pugi::xml_node cluster);
    [[nodiscard]] bool readFlexRay(pugi::xml_node cluster);
    // Control units that take part in the channels; all of the file when no channel tells.
    [[nodiscard]] EcuSet nodesOf(pugi::xml_node channels, const std::vector<Frame>& frames) const;

private:
    void readBus(pugi::xml_node cluster, pugi::xml_node variant, Cluster& out);
    [[nodiscard]] bool readChannels(pugi::xml_node channels, Cluster& out);
    [[nodiscard]] bool readChannel(pugi::xml_node channel, Cluster& out);
    [[nodiscard]] bool readTriggering(pugi::xml_node triggering, Cluster& out);
    [[nodiscard]] bool readCanAddress(pugi::xml_node triggering, Frame& out);
    void readSlots(pugi::xml_node triggering, Frame& out);
    [[nodiscard]] bool readFrame(pugi::xml_node frame, Frame& out);
    void fitLengths(Cluster& out);

    ReadContext& m_context;
    PduReader& m_pdus;
    PartyReader& m_parties;
    size_t m_channels = 0;
    size_t m_mappings = 0;
};

}  // namespace quill::arxml
