#pragma once

#include <map>

#include "logs/LogReader.h"

namespace simcore::logs {

// Text of candump's log file form: "(1436509052.249713) vcan0 044#2A366C2B", with "##" and a flag
// digit for CAN FD, "#R" for remote frames and an optional direction at the end of the line.
class CandumpReader final : public LogReader {
protected:
    LineResult parse(std::string_view line, LogFrame& frame) override;

private:
    [[nodiscard]] uint32_t numberOf(std::string_view interfaceName);

    std::map<std::string, uint32_t, std::less<>> m_numbers;  // interfaces in order of appearance
};

}  // namespace simcore::logs
