#pragma once

#include <cstdint>
#include <string>

namespace RV::BoxDev {

// Configuration record of a device as discovery finds it.
struct DeviceCfg {
    virtual ~DeviceCfg() = default;
    int32_t type = 0;  // RvDeviceType
    std::string name;
    std::string model;
    std::string serial;
    std::string version;
    int canCount = 0;
    int linCount = 0;
    int ethCount = 0;
    int flexrayCount = 0;
};

struct Hub4eCfg : DeviceCfg {
    int32_t handle = 0;  // of the device library
    std::string mac;     // "%02X:%02X:%02X:%02X:%02X:%02X"
};

struct UniversalBusCfg : DeviceCfg {
    std::string path;  // of the device library
};

}  // namespace RV::BoxDev
