#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "core/hardware/boxdev/CommandMessages.h"

namespace RV::BoxDev {

// One command of a device's vocabulary. The device's table fixes the order of comparison.
template <class Device>
struct CommandEntry {
    const char* name;
    void (Device::*handler)(const nlohmann::json& document, RespondCmdMsg& answer);
};

// Runs a handler's answer to a failure.
inline void refuse(RespondCmdMsg& answer, CommandCode code, std::string message) {
    answer.code = code;
    answer.message = std::move(message);
}

// Parses a document and runs the first entry whose name equals its "cmd". False when there is none.
template <class Device>
bool dispatchCommand(Device& device, std::span<const CommandEntry<Device>> table,
                     const std::string& text, RespondCmdMsg& answer) {
    const auto document = nlohmann::json::parse(text, nullptr, false);
    if (!document.is_object() || !document.contains("cmd") || !document["cmd"].is_string()) {
        refuse(answer, CommandCode::BadDocument, "the document has no \"cmd\"");
        return true;
    }
    answer.cmd = document["cmd"].template get<std::string>();
    for (const auto& entry : table) {
        if (answer.cmd == entry.name) {
            (device.*entry.handler)(document, answer);
            return true;
        }
    }
    refuse(answer, CommandCode::UnknownCommand, "unknown command " + answer.cmd);
    return false;
}

}  // namespace RV::BoxDev
