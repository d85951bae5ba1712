#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace quill::os {

struct ProcessOptions {
    std::chrono::milliseconds timeout{60'000};
    size_t maxOutputBytes = 64 * 1024;  // what is printed beyond it is read and dropped
    // Asked about every 100 ms while the child runs; true ends the child and the wait.
    std::function<bool()> interrupted;
};

enum class ProcessEnd { NotStarted, Exited, Crashed, TimedOut, Interrupted };

struct ProcessResult {
    ProcessEnd end = ProcessEnd::NotStarted;
    int code = 0;        // exit status when Exited; signal or exception number when Crashed
    std::string output;  // standard output and standard error, in the order of arrival
    std::string error;   // the system's reason when the child could not be started or waited for

    [[nodiscard]] bool succeeded() const { return end == ProcessEnd::Exited && code == 0; }
};

// Starts a program without a shell and waits for its end. Its standard input is empty. A child that
// outlives the time-out is killed together with the children that it started. The cost of a start
// does not grow with the memory of the calling process. Any thread may call it.
[[nodiscard]] ProcessResult runProcess(const std::filesystem::path& program,
                                       const std::vector<std::string>& argumentsUtf8,
                                       const ProcessOptions& options = {});

}  // namespace quill::os
