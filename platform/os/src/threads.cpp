#include "quill_os/threads.h"

#ifdef _WIN32
#include <windows.h>

#include <timeapi.h>  // needs the types of windows.h

#include <string>
#include <thread>
#else
#include <pthread.h>
#include <sys/prctl.h>
#include <time.h>
#include <cerrno>
#include <cstring>
#endif

namespace quill::os {

#ifdef _WIN32
void setCurrentThreadName(const char* name) {
    const std::string narrow(name);
    SetThreadDescription(GetCurrentThread(), std::wstring(narrow.begin(), narrow.end()).c_str());
}

void sleepUntil(std::chrono::steady_clock::time_point deadline) {
    std::this_thread::sleep_until(deadline);
}

void requestPreciseTimers() { timeBeginPeriod(1); }
#else
void setCurrentThreadName(const char* name) {
    char text[16] = {};
    std::strncpy(text, name, sizeof text - 1);
    pthread_setname_np(pthread_self(), text);
}

void sleepUntil(std::chrono::steady_clock::time_point deadline) {
    // The steady clock of libstdc++ is CLOCK_MONOTONIC, so its values serve as they are.
    const auto ns =
        std::chrono::duration_cast<std::chrono::nanoseconds>(deadline.time_since_epoch()).count();
    timespec at{};
    at.tv_sec = static_cast<time_t>(ns / 1'000'000'000);
    at.tv_nsec = static_cast<long>(ns % 1'000'000'000);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) == EINTR) {
    }
}

void requestPreciseTimers() { prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL); }
#endif

}  // namespace quill::os
