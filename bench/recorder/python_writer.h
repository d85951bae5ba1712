#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recorder/traffic.h"

namespace bench {

// Frames per second of python-can's writer on the first `frames` of this traffic, measured inside
// its own process without start-up and without making the messages. Empty without python-can.
[[nodiscard]] std::optional<double> pythonRate(const std::string& path,
                                               const std::vector<TrafficFrame>& traffic,
                                               size_t frames, bool fd, int level);

}  // namespace bench
