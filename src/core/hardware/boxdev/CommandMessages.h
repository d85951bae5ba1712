#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace RV::BoxDev {

// Codes of an answer. 0 is done; what the device library refused while sending is 1007.
enum class CommandCode : int32_t {
    Done = 0,
    BadDocument = 1001,     // not JSON, or a key is missing or of the wrong kind
    UnknownCommand = 1002,  // the device has no such command
    NotConnected = 1003,    // the device is not in its connected state
    BadValue = 1004,        // a value is out of range
    LibraryFailed = 1005,   // the device library refused the call
    TimedOut = 1006,        // no answer within the time allowed
    SendFailed = 1007,      // a transmission was refused
    NoSuchJob = 1008,       // no cyclic job or schedule with this identifier
    Stopped = 1009,         // the device was closed before it came to the request
};

// One request: the JSON command text and its identifier. Shared by requester and worker.
struct RequestCmdMsg {
    std::string text;
    uint32_t id = 0;
};

// The answer to one request.
struct RespondCmdMsg {
    uint32_t id = 0;
    std::string cmd;
    CommandCode code = CommandCode::Done;
    std::string message;  // reason of a failure, empty when done
    std::string body;     // JSON object with the fields of the command's answer, or empty
};

using RespondCallback = std::function<void(const RespondCmdMsg&)>;

// Options that travel with a callback registration.
struct CallbackOption {
    int timeoutMs = 5000;  // how long a waiting requester allows the device
};

}  // namespace RV::BoxDev
