#include "core/hardware/boxdev/Hub4eScan.h"

#include <array>
#include <cstdio>

#include "core/hardware/boxdev/Library.h"

namespace RV::BoxDev {
namespace {

constexpr int32_t kMostBoxes = 64;
// Fixed by the model, whatever the box reports.
constexpr int kHub4eEthernetChannels = 6;
constexpr int kHub4eFlexRayChannels = 4;
constexpr RvHub4eScanParams kScanParams{5, 5000, 1.3F};

std::shared_ptr<Hub4eCfg> fitBox(int32_t handle) {
    RvHub4eDeviceInfo info{};
    if (withLibrary([&] { return get_device_info(handle, &info); }) != kRvOk) return nullptr;
    const std::string name = boundedText(info.name);
    if (name.empty()) return nullptr;
    if (withLibrary([&] { return Lin_CheckPort(handle); }) != 0) return nullptr;
    const std::string mac = macText(info);
    if (mac.empty()) return nullptr;
    const std::string serial = boundedText(info.serial);
    if (serial.empty()) return nullptr;
    const std::string version = boundedText(info.version);
    if (version.empty()) return nullptr;

    auto cfg = std::make_shared<Hub4eCfg>();
    cfg->type = 1;
    cfg->handle = handle;
    cfg->name = name;
    cfg->model = "RV-Hub4e";
    cfg->mac = mac;
    cfg->serial = serial;
    cfg->version = version;
    cfg->canCount = info.canCount;
    cfg->linCount = info.linCount;
    cfg->ethCount = kHub4eEthernetChannels;
    cfg->flexrayCount = kHub4eFlexRayChannels;
    return cfg;
}

}  // namespace

std::string macText(const RvHub4eDeviceInfo& info) {
    std::array<char, 24> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X", info.mac[0],
                      info.mac[1], info.mac[2], info.mac[3], info.mac[4], info.mac[5]);
    return length == 17 ? std::string(text.data(), 17) : std::string();
}

std::vector<std::shared_ptr<Hub4eCfg>> scanHub4eBoxes() {
    std::array<int32_t, kMostBoxes> handles{};
    int32_t count = kMostBoxes;
    const int result =
        withLibrary([&] { return scan_rvhub4e(handles.data(), &count, 0, &kScanParams); });
    if (result != kRvOk || count <= 0) return {};
    if (count > kMostBoxes) count = kMostBoxes;
    std::vector<std::shared_ptr<Hub4eCfg>> boxes;
    for (int32_t i = 0; i < count; ++i) {
        if (auto cfg = fitBox(handles[static_cast<size_t>(i)])) boxes.push_back(std::move(cfg));
    }
    return boxes;
}

}  // namespace RV::BoxDev
