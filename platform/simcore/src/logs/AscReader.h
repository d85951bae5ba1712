#pragma once

#include <string_view>

#include "logs/LogReader.h"
#include "logs/Words.h"

namespace simcore::logs {

// ASC text: classic CAN, CAN FD, LIN and Ethernet lines. Events that are no frames on a bus
// (errors, statistics, transmit requests, transport messages, system variables) are passed over.
class AscReader final : public LogReader {
protected:
    LineResult parse(std::string_view line, LogFrame& frame) override;
    void begin() override;

private:
    void parseBase(Words words);
    LineResult parseEvent(Words words, LogFrame& frame) const;
    LineResult parseClassic(uint32_t channel, Words words, LogFrame& frame) const;
    LineResult parseFd(Words words, LogFrame& frame) const;
    [[nodiscard]] bool parseId(std::string_view word, RvCanFrame& frame) const;

    int m_base = 16;
    bool m_relative = false;
    int64_t m_timeNs = 0;
};

}  // namespace simcore::logs
