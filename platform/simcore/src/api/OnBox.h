#pragma once

#include <memory>
#include <string>

#include "api/Library.h"
#include "engine/Network.h"

namespace simcore::api {

// Notes the failure text of a result and hands the result on.
[[nodiscard]] inline int finish(int code) {
    if (code != kRvOk) setLastError(errorText(code));
    return code;
}

// Runs an operation on the box of a handle with the engine's lock held: counting, faults, and the
// answers for a handle that is unknown or whose box has left are the same for every function.
template <class Fn>
[[nodiscard]] int onBox(Call call, int32_t handle, Fn fn) {
    Library& library = Library::instance();
    const auto network = library.initialised() ? library.network() : nullptr;
    if (network == nullptr) {
        library.gate().count(call);
        return finish(kRvErrorNotInit);
    }
    int error = kRvOk;
    engine::Box* box = network->boxByHandle(handle, error);
    const int verdict = library.enter(call, box);
    if (verdict != kRvOk) return verdict;
    if (box == nullptr) return finish(error);
    const engine::CoreGuard guard(network->core());
    box = network->boxByHandle(handle, error);  // it may have left during a delay
    if (box == nullptr) return finish(error);
    return finish(fn(*box));
}

// Takes frames out of a box's queue, without the engine's lock.
template <class Frame>
[[nodiscard]] int readFrames(engine::Network& network, engine::Box& box, Frame* frames,
                             int32_t capacity, int32_t* count) {
    if (frames == nullptr || count == nullptr || capacity < 0) return finish(kRvErrorParam);
    if (!box.isOpen()) return finish(kRvErrorNotOpen);
    auto& queue = box.queue<Frame>();
    *count = static_cast<int32_t>(queue.read(frames, static_cast<size_t>(capacity)));
    if (*count > 0 && queue.roomy()) network.core().room.announce();
    return kRvOk;
}

template <class Frame>
[[nodiscard]] int readFrames(Call call, int32_t handle, Frame* frames, int32_t capacity,
                             int32_t* count) {
    if (count != nullptr) *count = 0;
    Library& library = Library::instance();
    const auto network = library.initialised() ? library.network() : nullptr;
    if (network == nullptr) {
        library.gate().count(call);
        return finish(kRvErrorNotInit);
    }
    int error = kRvOk;
    engine::Box* box = network->boxByHandle(handle, error);
    const int verdict = library.enter(call, box);
    if (verdict != kRvOk) return verdict;
    if (box == nullptr) return finish(error);
    return readFrames(*network, *box, frames, capacity, count);
}

// Text of a caller's uuid: null is an empty text.
[[nodiscard]] inline std::string uuidText(const char* uuid) { return uuid == nullptr ? "" : uuid; }

}  // namespace simcore::api
