#pragma once

#include <chrono>

namespace quill::os {

// Name of the calling thread as debuggers show it; at most 15 characters are kept.
void setCurrentThreadName(const char* name);

// Sleeps until an absolute steady-clock time with the system's finest timer.
void sleepUntil(std::chrono::steady_clock::time_point deadline);

// Asks for a timer slack (Linux) or timer period (Windows) fit for millisecond schedules.
void requestPreciseTimers();

}  // namespace quill::os
