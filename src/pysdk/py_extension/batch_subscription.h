#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>

#include "pysdk/py_extension/script_callback.h"

namespace scripts {

// A callable that takes lists of frames. Shared by the registry and the frames that wait for it.
struct BatchSubscription {
    ScriptCallback callback;
    size_t maxFrames = 0;                   // a list that is this long is handed over at once
    std::chrono::milliseconds maxDelay{0};  // the oldest frame of a list waits about this long
    std::atomic<bool> ended{false};         // replaced or unsubscribed: nothing is called any more
};

}  // namespace scripts
