#pragma once

#include <optional>
#include <string>

namespace bench {

// Frames per second of python-can's writer on the same kind of traffic, measured inside its own
// process without start-up and without making the messages. Empty without python-can.
[[nodiscard]] std::optional<double> pythonRate(const std::string& path, size_t frames, bool fd,
                                               int level);

}  // namespace bench
