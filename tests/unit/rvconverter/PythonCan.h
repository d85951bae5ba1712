#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quill::testing {

// One message as python-can reads it from a file.
struct PythonMessage {
    double time = 0;  // seconds: since the epoch for BLF, since the start for ASC
    int channel = 0;  // from 0
    uint32_t id = 0;
    bool extended = false, received = false, fd = false, remote = false, error = false;
    bool switched = false, passive = false;
    uint32_t dlc = 0;  // length in bytes
    std::string data;  // hexadecimal
};

struct PythonReading {
    std::vector<PythonMessage> messages;
    double start = 0;     // BLF: start of measurement
    std::string stopped;  // text of the exception that ended the reading, empty without one
};

// Reads a file with python-can in a child process; empty when this machine has no python-can.
[[nodiscard]] std::optional<PythonReading> readWithPythonCan(const std::string& path);

}  // namespace quill::testing
