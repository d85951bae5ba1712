#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "databaseitem/RecordList.h"

namespace Model::database {

// When a signal is present in its frame. A signal without multiplexor is always present.
struct MultiplexRule {
    bool isMultiplexor = false;
    bool isMultiplexed = false;
    std::string multiplexor;  // name of the signal that decides; empty: the frame's plain one
    std::vector<std::pair<uint64_t, uint64_t>> ranges;  // its raw values, both ends included
    int32_t multiplexorIndex = -1;  // where the reader found it in the frame; a hint only
};

// One signal of a DBC frame.
struct CanDBCEntrySignal {
    std::string name;
    std::string comment;
    std::string unit;
    double initValue = 0.0;  // raw value that the frame starts with
    double offset = 0.0;
    int32_t startBit = 0;  // 8 x byte + bit of the least significant bit, for both byte orders
    int32_t bitLength = 0;
    bool isBigEndian = false;
    bool isSigned = false;
    bool isFloat = false;  // the raw bits are an IEEE 754 number of 32 or 64 bits
    double valMax = 0.0;   // physical limits; both 0 when the file gives none
    double valMin = 0.0;
    double factor = 1.0;
    std::vector<std::string> transmitters;        // senders of the frame
    std::map<double, std::string> mapValueTable;  // raw value to text

    std::vector<std::string> receivers;
    bool hasInitValue = false;  // the file gives a start value
    MultiplexRule multiplex;
};

// Format of a frame on the bus.
enum class CanFrameFormat : int { Standard = 0, StandardFd = 1, Extended = 2, ExtendedFd = 3 };

// One frame of a DBC database.
struct CanDBCEntry {
    int32_t id = 0;   // 11 or 29 bits
    int32_t dlc = 0;  // length in bytes
    std::string name;
    std::string comment;
    bool isExtended = false;
    bool isFD = false;
    int32_t cycleTime = 0;  // ms; 0 when the frame is not cyclic
    std::vector<std::string> transmitters;
    RecordList<CanDBCEntrySignal> signals;

    CanFrameFormat frameFormat = CanFrameFormat::Standard;
};

// Content of a DBC file.
struct CanDbcDatabase {
    RecordList<CanDBCEntry> dbcEntrys;  // in the order of the file
    std::vector<std::string> nodes;
};

}  // namespace Model::database
