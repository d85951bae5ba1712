#include "core/playback/recorder/RecordingFormat.h"

#include <array>

namespace playback {

const char* recordingFormatText(uint32_t type) {
    static constexpr std::array kTexts{"BLF",       "ASC",      "MF4_SIGNAL",    "PCAP",
                                       "UART_TEXT", "UART_HEX", "AnalogIN_TEXT", "DigitalIN_TEXT"};
    return type < kTexts.size() ? kTexts[type] : "Unknow";
}

}  // namespace playback
