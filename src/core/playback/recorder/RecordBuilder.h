#pragma once

#include "core/frame/Frame.h"
#include "core/playback/recorder/RecordArena.h"
#include "rvconverter/RecordHandle.h"

namespace playback {

// Turns received frames into records of the converter library. Used by one thread at a time; the
// records may be freed on others.
class RecordBuilder {
public:
    // The record of the frame's bus kind; an empty handle for kinds that have none.
    [[nodiscard]] rv::RecordHandle build(const rv::Frame& frame);

private:
    RecordArena m_arena;
};

}  // namespace playback
