#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/hardware/boxdev/HandOverCounters.h"

namespace rv {

struct ChannelCounters {
    std::string bus;        // "CAN", "LIN", "ETH" or "FLEXRAY"
    int32_t channel = 0;    // index, counted from 0 per bus kind
    std::string name;       // as channelNames() gives it
    uint64_t received = 0;  // frames read, the box's own transmissions included
    double busLoad = 0;     // percent of the last whole second, stuff bits left out
};

struct DeviceCounters {
    std::string id;
    std::string name;
    HandOver library;
    HandOver readers;
    int64_t clockOffsetUs = 0;              // the box's clock less the host's
    std::vector<ChannelCounters> channels;  // all of the box
};

// One record for the whole road: device library, reader threads, resort buffer, dispatch thread.
// The first two are sums over the boxes, those that are gone included.
struct RoadCounters {
    HandOver library;   // queued by the boxes; dropped when a box's queue was full or discarded
    HandOver readers;   // read from the library; dropped when no subscriber was there
    HandOver resort;    // held back until their hold time is over
    HandOver dispatch;  // handed to a callback; dropped when the record carried none
    uint64_t backlogAgeUs = 0;  // age of the oldest frame held beyond its hold time, 0 when none
    std::vector<DeviceCounters> devices;  // the known boxes
};

}  // namespace rv
