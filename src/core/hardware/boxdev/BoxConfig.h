#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rv {

// Settings of the channels of a box, as scripts read and change them. Channels count from 0.
struct CanChannelSettings {
    int32_t channel = 0;
    bool enabled = true;
    bool fd = true;
    int32_t bitrate = 500000;       // bit/s, 10000 to 1000000
    int32_t dataBitrate = 2000000;  // bit/s, 10000 to 10000000
    double samplePoint = 80.0;      // percent, 50 to 95
    double dataSamplePoint = 75.0;  // percent, 50 to 95
    bool termination = true;        // 120 ohm resistor
    bool listenOnly = false;
    bool operator==(const CanChannelSettings&) const = default;
};
struct LinChannelSettings {
    int32_t channel = 0;
    bool enabled = true;
    int32_t baudrate = 19200;  // bit/s, 1000 to 20000
    bool master = true;
    int32_t version = 21;  // protocol version times ten: 13, 20, 21 or 22
    bool operator==(const LinChannelSettings&) const = default;
};
struct EthChannelSettings {
    int32_t channel = 0;
    bool enabled = true;
    int32_t speed = 100;  // Mbit/s: 100 or 1000
    bool master = true;
    bool operator==(const EthChannelSettings&) const = default;
};

struct BoxConfig {
    std::vector<CanChannelSettings> can;
    std::vector<LinChannelSettings> lin;
    std::vector<EthChannelSettings> eth;
    bool operator==(const BoxConfig&) const = default;
};

struct DipState {
    uint8_t program = 0;
    uint8_t sel2 = 0;
    uint8_t sel1 = 0;
    uint8_t sel0 = 0;
    bool operator==(const DipState&) const = default;
};

// Identity of one box as its device-information answer gives it.
struct BoxIdentity {
    int32_t com = 0;
    std::string mac;
    std::string model;
    std::string networkCard;
    std::string serial;
    std::string version;
    DipState dip;
};

}  // namespace rv
