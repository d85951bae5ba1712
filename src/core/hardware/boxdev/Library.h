#pragma once

#include <mutex>
#include <utility>

#include "simcore/libsimcore.h"

namespace RV::BoxDev {

// The one mutex that serialises every flat call into the device library.
[[nodiscard]] std::mutex& libraryMutex();

// Runs one flat call under the library mutex; the mutex is held for the call only.
template <class Call>
auto withLibrary(Call&& call) {
    const std::lock_guard lock(libraryMutex());
    return std::forward<Call>(call)();
}

// Text of a result code of the library, for log lines and answers.
[[nodiscard]] const char* libraryResultText(int code);

}  // namespace RV::BoxDev
