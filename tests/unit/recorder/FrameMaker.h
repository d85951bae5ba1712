#pragma once

#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/frame/Frame.h"

namespace quill::testing {

inline uint32_t nowSeconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

inline rv::FrameHolder makeFrame(rv::FrameType type, uint32_t seconds, uint32_t nanoseconds,
                                 uint32_t id, const std::vector<uint8_t>& payload) {
    rv::FrameHolder frame = rv::makeFrame(static_cast<uint32_t>(payload.size()));
    frame->type = type;
    frame->seconds = seconds;
    frame->nanoseconds = nanoseconds;
    frame->id = id;
    if (!payload.empty()) std::memcpy(frame->payload().data(), payload.data(), payload.size());
    if (type == rv::FrameType::Lin) frame->lin = {};
    if (type == rv::FrameType::FlexRay) frame->flexray = {};
    return frame;
}

inline rv::FrameHolder makeCanFrame(uint32_t seconds, uint32_t id) {
    rv::FrameHolder frame = makeFrame(rv::FrameType::Can, seconds, 0, id, {1, 2, 3, 4, 5, 6, 7, 8});
    frame->can.extend.setDLC(8);
    return frame;
}

}  // namespace quill::testing
