// Frames out of an ECU configuration: what its communication and CAN interface modules know.
#pragma once

#include <pugixml.hpp>
#include <unordered_map>
#include <vector>

#include "arxml/ReadContext.h"

namespace quill::arxml {

class EcucReader {
public:
    explicit EcucReader(ReadContext& context) : m_context(context) {}

    // Adds one cluster without name when the configuration has CAN frames, else nothing.
    [[nodiscard]] bool read();

private:
    struct Address {
        uint32_t id = 0, length = 0;
        bool isExtended = false, isCanFd = false, isSet = false;
    };

    void readAddresses(pugi::xml_node module);
    [[nodiscard]] bool readPdus(pugi::xml_node module, Cluster& out);
    [[nodiscard]] bool readPdu(pugi::xml_node container, Cluster& out);
    void readSignal(pugi::xml_node container, Pdu& out);

    ReadContext& m_context;
    std::unordered_map<std::string_view, Address> m_addresses;  // by path of the global PDU
    std::unordered_map<const void*, uint32_t> m_signals;
};

}  // namespace quill::arxml
