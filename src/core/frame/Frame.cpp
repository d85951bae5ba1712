#include "core/frame/Frame.h"

#include <cstring>
#include <new>

namespace rv {

void FrameDeleter::operator()(Frame* frame) const noexcept {
    ::operator delete(static_cast<void*>(frame));
}

FrameHolder makeFrame(uint32_t length) {
    auto* frame = ::new (::operator new(sizeof(Frame) + length)) Frame;
    frame->length = length;
    return FrameHolder(frame);
}

FrameHolder copyFrame(const Frame& frame) {
    FrameHolder copy = makeFrame(frame.length);
    std::memcpy(static_cast<void*>(copy.get()), &frame, sizeof(Frame) + frame.length);
    return copy;
}

}  // namespace rv
