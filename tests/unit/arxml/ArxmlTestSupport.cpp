#include "ArxmlTestSupport.h"

#include <fstream>
#include <sstream>

namespace arxmltest {

Converted convertText(std::string_view text, quill::arxml::Format format) {
    quill::dbjson::Diagnostics diagnostics;
    quill::dbjson::JsonWriter writer;
    quill::arxml::convert(format, text, diagnostics, writer);
    Converted result;
    for (const auto& warning : diagnostics.warnings()) result.warnings.push_back(warning.text);
    if (diagnostics.error()) {
        result.error = diagnostics.error()->text;
        result.errorOffset = diagnostics.error()->offset;
    } else {
        result.json = Json::parse(writer.text());
    }
    return result;
}

std::string autosar(std::string_view packages) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<AUTOSAR xmlns=\"http://autosar.org/schema/r4.0\"><AR-PACKAGES>" +
           std::string(packages) + "</AR-PACKAGES></AUTOSAR>";
}

std::string package(std::string_view name, std::string_view elements) {
    return "<AR-PACKAGE><SHORT-NAME>" + std::string(name) + "</SHORT-NAME><ELEMENTS>" +
           std::string(elements) + "</ELEMENTS></AR-PACKAGE>";
}

std::string oneFrame(std::string_view pdu, std::string_view packages) {
    const std::string cluster = package(
        "C",
        "<CAN-CLUSTER><SHORT-NAME>bus</SHORT-NAME><CAN-CLUSTER-VARIANTS><CAN-CLUSTER-CONDITIONAL>"
        "<PHYSICAL-CHANNELS><CAN-PHYSICAL-CHANNEL><SHORT-NAME>ch</SHORT-NAME><FRAME-TRIGGERINGS>"
        "<CAN-FRAME-TRIGGERING><SHORT-NAME>ft</SHORT-NAME><FRAME-REF DEST=\"CAN-FRAME\">/F/F"
        "</FRAME-REF><IDENTIFIER>5</IDENTIFIER></CAN-FRAME-TRIGGERING></FRAME-TRIGGERINGS>"
        "</CAN-PHYSICAL-CHANNEL></PHYSICAL-CHANNELS></CAN-CLUSTER-CONDITIONAL>"
        "</CAN-CLUSTER-VARIANTS></CAN-CLUSTER>");
    const std::string frame = package(
        "F",
        "<CAN-FRAME><SHORT-NAME>F</SHORT-NAME><FRAME-LENGTH>8</FRAME-LENGTH>"
        "<PDU-TO-FRAME-MAPPINGS><PDU-TO-FRAME-MAPPING><SHORT-NAME>m</SHORT-NAME>"
        "<PDU-REF DEST=\"I-SIGNAL-I-PDU\">/P/pdu</PDU-REF><START-POSITION>0</START-POSITION>"
        "</PDU-TO-FRAME-MAPPING></PDU-TO-FRAME-MAPPINGS></CAN-FRAME>");
    return autosar(cluster + frame + package("P", pdu) + std::string(packages));
}

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string dataFile(std::string_view name) {
    return std::string(QUILL_SOURCE_DIR) + "/tests/data/" + std::string(name);
}

std::string corpusFile(std::string_view name) {
    return std::string(QUILL_SOURCE_DIR) + "/../shared/corpus/" + std::string(name);
}

void collectSignals(const Json& pdu, const Json& selectorCode, std::vector<FlatSignal>& out) {
    for (const auto& signal : pdu.at("isignals")) out.push_back({signal, selectorCode});
    const bool isContainer = pdu.at("type") == "CONTAINER-I-PDU";
    for (const char* key : {"ipdu", "ipdus"}) {
        if (!pdu.contains(key) || isContainer) continue;
        for (const auto& inner : pdu.at(key)) {
            collectSignals(inner, inner.value("selector_code", selectorCode), out);
        }
    }
}

namespace {

uint64_t bitAt(const std::vector<uint8_t>& payload, int64_t position) {
    return (payload.at(static_cast<size_t>(position / 8)) >> (position % 8)) & 1U;
}

}  // namespace

uint64_t extractFromLsb(const std::vector<uint8_t>& payload, int64_t lsb, uint32_t length,
                        bool isMotorola) {
    uint64_t value = 0;
    int64_t position = lsb;
    for (uint32_t bit = 0; bit < length; ++bit) {
        value |= bitAt(payload, position) << bit;
        const bool leavesByte = position % 8 == 7;
        // Upwards within the byte, then on at bit 0 of the byte before (Motorola) or behind.
        position += leavesByte && isMotorola ? -15 : 1;
    }
    return value;
}

uint64_t extractFromFileStart(const std::vector<uint8_t>& payload, int64_t start, uint32_t length,
                              bool isMotorola) {
    if (!isMotorola) return extractFromLsb(payload, start, length, false);
    uint64_t value = 0;
    int64_t position = start;
    for (uint32_t bit = 0; bit < length; ++bit) {
        value = (value << 1) | bitAt(payload, position);
        position += position % 8 == 0 ? 15 : -1;
    }
    return value;
}

}  // namespace arxmltest
