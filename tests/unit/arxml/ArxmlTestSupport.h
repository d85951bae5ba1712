// What the tests of the ARXML converter share.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "arxml/Convert.h"

namespace arxmltest {

using Json = nlohmann::json;

struct Converted {
    Json json;  // discarded after an error
    std::string error;
    size_t errorOffset = 0;
    std::vector<std::string> warnings;
};

Converted convertText(std::string_view text,
                      quill::arxml::Format format = quill::arxml::Format::kArxml);

// An AUTOSAR 4 text around packages.
std::string autosar(std::string_view packages);
// A package with elements.
std::string package(std::string_view name, std::string_view elements);
// A whole AUTOSAR 4 text with one CAN frame F (identifier 5, 8 bytes) that holds PDU /P/pdu, and
// more packages.
std::string oneFrame(std::string_view pdu, std::string_view packages = {});

std::string readText(const std::string& path);
std::string dataFile(std::string_view name);    // in tests/data
std::string corpusFile(std::string_view name);  // beside the project, may be absent

// Every signal below a PDU, with the selector codes on the way to it.
struct FlatSignal {
    Json signal;
    Json selectorCode;  // null outside dynamic parts
};
// Leaves out what stands behind the headers of containers.
void collectSignals(const Json& pdu, const Json& selectorCode, std::vector<FlatSignal>& out);

// Raw bits of a signal, one by one, upwards from its least significant bit.
uint64_t extractFromLsb(const std::vector<uint8_t>& payload, int64_t lsb, uint32_t length,
                        bool isMotorola);
// The same downwards from the position that files write, most significant bit first for Motorola.
uint64_t extractFromFileStart(const std::vector<uint8_t>& payload, int64_t start, uint32_t length,
                              bool isMotorola);

}  // namespace arxmltest
