#pragma once

#include <string>

namespace quilltrace {

// Help of one command, or of the program for an empty or unknown name.
[[nodiscard]] const char* helpText(const std::string& command);

}  // namespace quilltrace
