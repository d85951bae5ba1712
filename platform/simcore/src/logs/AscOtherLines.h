#pragma once

#include <string_view>

#include "logs/LogReader.h"
#include "logs/Words.h"

namespace simcore::logs {

// Lines of other buses than CAN, behind time and channel word. They do not depend on the number
// base of the file.
[[nodiscard]] LineResult parseAscLin(std::string_view channelWord, Words words, LogFrame& frame);
[[nodiscard]] LineResult parseAscEthernet(Words words, LogFrame& frame);

}  // namespace simcore::logs
