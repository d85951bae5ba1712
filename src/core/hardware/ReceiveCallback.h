#pragma once

#include <memory>
#include <string>

#include "core/frame/Frame.h"

namespace rv {

// Where a frame came from: identifier of its device as boxes are addressed (MAC address text) and
// channel. Shared by all frames of one device, never copied on the frame's road.
struct FrameInfo {
    std::string deviceId;
};

// Receiver of delivered frames. Runs on the dispatch thread only. A frame's holder may be moved
// from by the receiver that wants to keep the frame; afterwards it may be empty.
class FrameReceiver {
public:
    virtual ~FrameReceiver() = default;
    virtual void deliver(FrameType type, FrameHolder& frame, const FrameInfo& info) = 0;

    // Called at the end of a pass that delivered frames to this receiver. A receiver that keeps
    // frames for later answers true and is then called at the end of the next pass too.
    [[nodiscard]] virtual bool passDone() { return false; }
};

// Copied with each frame: one reference count, no allocation, nothing of the interpreter.
using ReceiveCallback = std::shared_ptr<FrameReceiver>;

}  // namespace rv
