#pragma once

#include <optional>
#include <string>

namespace quill::os {

// Value of an environment variable as UTF-8; empty when it is not set.
[[nodiscard]] std::optional<std::string> getEnvironment(const std::string& name);

// Sets a variable for this process and the children it starts later; false when the system refuses.
[[nodiscard]] bool setEnvironment(const std::string& name, const std::string& value);

}  // namespace quill::os
