#include "arxml/EcucReader.h"

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

// Last name in a path such as /Com/ComConfig/ComIPdu.
std::string_view lastName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string_view definitionOf(pugi::xml_node node) {
    return lastName(textOf(node, "DEFINITION-REF"));
}

std::string_view parameter(pugi::xml_node container, std::string_view name) {
    for (const auto value : container.child("PARAMETER-VALUES").children()) {
        if (definitionOf(value) == name) return textOf(value, "VALUE");
    }
    return {};
}

pugi::xml_node reference(pugi::xml_node container, std::string_view name) {
    for (const auto value : container.child("REFERENCE-VALUES").children()) {
        if (definitionOf(value) == name) return value.child("VALUE-REF");
    }
    return {};
}

// Visits the containers of a definition in a module, whatever their depth up to a few levels.
template <class Visit>
bool forEachContainer(pugi::xml_node list, std::string_view definition, int depth, Visit visit) {
    if (depth > 6) return true;
    for (const auto container : list.children("ECUC-CONTAINER-VALUE")) {
        if (definitionOf(container) == definition) {
            if (!visit(container)) return false;
            continue;
        }
        if (!forEachContainer(container.child("SUB-CONTAINERS"), definition, depth + 1, visit)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool EcucReader::read() {
    const auto& modules = m_context.index().roots().ecucModules;
    for (const auto module : modules) readAddresses(module);
    if (m_addresses.empty()) return true;
    Cluster out;
    out.channels.emplace_back();
    for (const auto module : modules) {
        if (!readPdus(module, out)) return false;
    }
    if (out.frames.empty()) return true;
    bool hasFd = false;
    for (const Frame& frame : out.frames) hasFd = hasFd || frame.isCanFd;
    out.protocol = hasFd ? "CAN FD" : "CAN";
    m_context.database().canClusters.push_back(std::move(out));
    return true;
}

void EcucReader::readAddresses(pugi::xml_node module) {
    const struct {
        const char *container, *id, *type, *length, *pdu;
    } directions[] = {
        {"CanIfTxPduCfg", "CanIfTxPduCanId", "CanIfTxPduCanIdType", "CanIfTxPduDlc",
         "CanIfTxPduRef"},
        {"CanIfRxPduCfg", "CanIfRxPduCanId", "CanIfRxPduCanIdType", "CanIfRxPduDlc",
         "CanIfRxPduRef"},
    };
    for (const auto& direction : directions) {
        (void)forEachContainer(
            module.child("CONTAINERS"), direction.container, 0, [&](pugi::xml_node container) {
                const auto id = parseUnsigned(parameter(container, direction.id));
                const auto pdu = textOf(reference(container, direction.pdu));
                if (!id || *id > 0x1FFFFFFF || pdu.empty()) return true;
                const auto type = parameter(container, direction.type);
                Address address;
                address.id = *id;
                address.length = parseUnsigned(parameter(container, direction.length)).value_or(0);
                address.isExtended = type.starts_with("EXTENDED");
                address.isCanFd = type.find("_FD_") != std::string_view::npos;
                address.isSet = true;
                m_addresses.emplace(pdu, address);
                return true;
            });
    }
}

bool EcucReader::readPdus(pugi::xml_node module, Cluster& out) {
    return forEachContainer(module.child("CONTAINERS"), "ComIPdu", 0,
                            [&](pugi::xml_node container) { return readPdu(container, out); });
}

bool EcucReader::readPdu(pugi::xml_node container, Cluster& out) {
    const auto known = m_addresses.find(textOf(reference(container, "ComPduIdRef")));
    if (known == m_addresses.end()) return true;
    const Address& address = known->second;
    Database& database = m_context.database();
    Pdu pdu;
    pdu.type = "I-SIGNAL-I-PDU";
    pdu.name = textOf(container, "SHORT-NAME");
    pdu.lengthBytes = address.length;
    pdu.source = container.internal_object();
    for (const auto value : container.child("REFERENCE-VALUES").children()) {
        if (definitionOf(value) != "ComIPduSignalRef") continue;
        const auto signal = m_context.require(value.child("VALUE-REF"));
        if (!signal) return false;
        readSignal(signal, pdu);
    }
    Frame frame;
    frame.name = pdu.name;
    frame.triggering = pdu.name;
    frame.id = address.id;
    frame.isExtended = address.isExtended;
    frame.isCanFd = address.isCanFd;
    frame.lengthBytes = address.length;
    PduMapping mapping;
    mapping.pdu = static_cast<uint32_t>(database.pdus.size());
    frame.pdus.push_back(mapping);
    database.pdus.push_back(std::move(pdu));
    out.frames.push_back(std::move(frame));
    return true;
}

void EcucReader::readSignal(pugi::xml_node container, Pdu& out) {
    Database& database = m_context.database();
    const auto position = parseUnsigned(parameter(container, "ComBitPosition"));
    if (!position) return;
    const auto known = m_signals.find(container.internal_object());
    if (known == m_signals.end()) {
        Signal signal;
        signal.name = textOf(container, "SHORT-NAME");
        signal.lengthBits = parseUnsigned(parameter(container, "ComBitSize")).value_or(0);
        const auto type = parameter(container, "ComSignalType");
        signal.isSigned = type.starts_with("SINT");
        signal.isFloat = type.starts_with("FLOAT");
        const auto init = parseInteger(parameter(container, "ComSignalInitValue"));
        if (init) signal.initValue = database.keep(std::to_string(*init));
        signal.baseType = BaseType{type, {}, 0};
        signal.source = container.internal_object();
        m_signals.emplace(signal.source, static_cast<uint32_t>(database.signals.size()));
        database.signals.push_back(signal);
    }
    MappedSignal mapped;
    mapped.signal = m_signals.at(container.internal_object());
    const auto endianness = parameter(container, "ComSignalEndianness");
    mapped.order = endianness == "BIG_ENDIAN" ? ByteOrder::kMotorola
                   : endianness == "OPAQUE"   ? ByteOrder::kOpaque
                                              : ByteOrder::kIntel;
    mapped.transport = parameter(container, "ComTransferProperty");
    mapped.lsb = lsbOf(*position, database.signals[mapped.signal].lengthBits, mapped.order);
    out.signals.push_back(mapped);
}

}  // namespace quill::arxml
