#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "databaseitem/CanArxmlRecords.h"
#include "databaseitem/RecordList.h"

namespace Model::database {

// One place of a frame in the communication cycle: the cycles baseCycle, baseCycle + repetition,
// ...
struct FlexRaySlot {
    int32_t slotId = 0;
    int32_t baseCycle = 0;
    int32_t repetition = 1;
};

// One frame of a FlexRay cluster.
struct FlexRayFrame {
    int32_t id = 0;
    int32_t length = 0;  // bytes
    std::string name;
    std::string comment;
    std::string channel;      // name of its physical channel
    std::string channelKind;  // "A" or "B"
    std::vector<FlexRaySlot> slots;
    std::vector<std::string> senders;
    std::vector<std::string> receivers;
    RecordList<CanFdPdu> pdus;  // PDUs do not depend on the kind of bus
};

struct FlexRayChannel {
    std::string name;
    std::string kind;  // "A" or "B"
    std::vector<std::string> frames;
};

// One FlexRay bus. What the file does not tell is 0.
struct FlexRayCluster {
    std::string name;
    std::string protocol;
    std::string protocolVersion;
    int32_t baudRate = 0;      // bit/s
    double cycleUs = 0.0;      // length of the communication cycle
    double macrotickUs = 0.0;  // length of a macrotick
    int32_t macroticksPerCycle = 0;
    int32_t staticSlots = 0;
    int32_t staticSlotMacroticks = 0;
    int32_t minislots = 0;
    int32_t minislotMacroticks = 0;
    int32_t staticPayloadLength = 0;  // bytes
    std::vector<std::string> nodes;
    std::vector<FlexRayChannel> channels;
    RecordList<FlexRayFrame> frames;
};

// Content of a FlexRay description, from ARXML or FIBEX.
struct FlexRayDatabase {
    RecordList<FlexRayCluster> clusters;
};

}  // namespace Model::database
