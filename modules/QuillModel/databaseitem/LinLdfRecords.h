#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "databaseitem/RecordList.h"

namespace Model {
class LinScheduleTable;
}

namespace Model::database {

// One signal of a LIN frame.
struct LinSignal {
    std::string name;
    int32_t bitLength = 0;
    bool isBigEndian = false;
    bool isSigned = false;
    int32_t startBit = 0;   // 8 x byte + bit of the least significant bit
    int64_t initValue = 0;  // raw value
    int64_t valMin = 0;
    int64_t valMax = 0;
    double factor = 1.0;
    double offset = 0.0;
    bool hasFactor = false;  // the file gives a physical range; else limits and offset are 0
    std::string unit;
    std::vector<std::string> subscribers;
    std::map<double, std::string> mapValueTable;  // raw value to text

    std::string comment;
};

// One frame of a LIN cluster.
struct LDFFrame {
    uint16_t id = 0;  // 0 to 63, without parity bits
    std::string name;
    uint16_t length = 0;  // bytes
    RecordList<LinSignal> signals;

    std::vector<std::string> publishers;
    std::string checksum;  // "Classic" or "Enhanced"
    std::string type;
};

struct LdfHeader {
    std::string protocolVersion;
    std::string languageVersion;
    int32_t speed = 0;  // as the converter writes it; ours: bit/s
};

struct LdfMaster {
    std::string name;
    double timebase = 0.0;  // s
    double jitter = 0.0;    // s
};

struct LdfProductId {
    int32_t supplierId = 0;
    int32_t functionId = 0;
    int32_t variant = 0;
};

// Facts of one slave.
struct LdfNodeAttributes {
    std::string name;
    std::string linProtocol;
    int32_t configuredNad = 0;
    int32_t initialNad = 0;
    LdfProductId productId;
    std::string responseError;
    double nAsTimeout = 0.0;  // s
    double nCrTimeout = 0.0;  // s
    std::vector<std::string> configurableFrames;
};

// One line of a schedule as the file has it.
struct LdfScheduleEntry {
    std::string type;    // of the command
    std::string frame;   // empty for commands that name none
    double delay = 0.0;  // s
};

struct LdfSchedule {
    std::string name;
    std::vector<LdfScheduleEntry> entries;
};

// Content of an LDF file.
struct LinLdfDatabase {
    RecordList<Model::LinScheduleTable> schedule_tables;  // ready for a box, channel 0
    RecordList<LDFFrame> frame;                           // in the order of the file

    LdfHeader header;
    LdfMaster master;
    std::vector<std::string> slaves;
    std::vector<LdfNodeAttributes> nodeAttributes;
    std::vector<LdfSchedule> schedules;
};

}  // namespace Model::database
