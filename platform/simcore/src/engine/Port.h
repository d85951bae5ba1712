#pragma once

#include <cstdint>

#include "engine/FrameRules.h"

namespace simcore::engine {

class Box;
class Bus;

// One channel of a box: where the box meets a bus. Guarded by the engine's lock.
struct Port {
    Box* box = nullptr;
    Bus* bus = nullptr;
    BusKind kind = BusKind::can;
    uint8_t index = 0;  // counted per kind

    bool enabled = true;
    bool listenOnly = false;
    bool fd = true;
    bool master = true;  // LIN
    int32_t status = RvCanBusStatusTypeBusActive;
    int refuse = 0;  // transmissions still to be refused; below 0: all

    // kRvOk when the channel would take a frame for transmission. A refusal that is counted down is
    // used up by asking.
    [[nodiscard]] int admit(bool fdFrame);
    [[nodiscard]] bool receives() const;
};

}  // namespace simcore::engine
