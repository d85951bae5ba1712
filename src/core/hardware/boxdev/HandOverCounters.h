#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rv {

// What one hand-over on a frame's road has seen since the program started. At any quiet moment
// in = out + held + dropped.
struct HandOver {
    uint64_t in = 0;
    uint64_t out = 0;
    uint64_t held = 0;
    uint64_t dropped = 0;

    [[nodiscard]] bool balanced() const { return in == out + held + dropped; }
};

// One record for the whole road: device library, reader threads, resort buffer, dispatch thread.
struct RoadCounters {
    HandOver library;   // queued by the boxes; dropped when a box's queue was full or discarded
    HandOver readers;   // read from the library; dropped when no subscriber was there
    HandOver resort;    // held back until their hold time is over
    HandOver dispatch;  // handed to a callback; dropped when the record carried none
    uint64_t backlogAgeUs = 0;  // age of the oldest frame held beyond its hold time, 0 when none
};

}  // namespace rv
