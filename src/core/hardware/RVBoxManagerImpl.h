#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/hardware/DeviceHub.h"
#include "core/hardware/FrameDispatcher.h"
#include "core/hardware/RVBoxConfigManager.h"
#include "core/hardware/RVBoxManager.h"
#include "core/hardware/RVFrameResortBuffer.h"

namespace rv {

// What the manager keeps for one device of its list.
struct ListedDevice {
    std::string id;
    std::string name;
    std::string model;
    bool hasMac = false;
    bool expanded = false;
    ChannelTable channels;
    DeviceHub::Device device;
    std::shared_ptr<const Subscription> subscription;  // null when nobody subscribed
};

// "<box name>.CAN1" and the like.
[[nodiscard]] std::string channelName(const ListedDevice& device, ChannelType type, int index);

struct RVBoxManager::Impl {
    std::unique_ptr<RVBoxConfigManager> configManager = std::make_unique<RVBoxConfigManager>();
    std::unique_ptr<RVBoxSimulationManager> simulationManager =
        std::make_unique<RVBoxSimulationManager>();
    void* context = nullptr;
    std::unique_ptr<RVFrameResortBuffer> resortBuffer = std::make_unique<RVFrameResortBuffer>();
    std::unique_ptr<FrameDispatcher> dispatcher;

    mutable std::mutex mutex;
    std::vector<ListedDevice> devices;  // guarded by mutex, in the order found
    // Devices on their way out: no longer listed, not yet in the sums. Guarded by mutex.
    std::vector<DeviceHub::Device> leaving;
    // Sums of the devices that are gone, so that the road's counters never run backwards.
    HandOver goneLibrary;   // guarded by mutex
    HandOver goneReaders;   // guarded by mutex
    DeviceNoticeFn notice;  // guarded by mutex
    int eventSubscription = 0;

    void onDeviceEvent(const std::shared_ptr<RV::BoxDev::DeviceEvent>& event);
    void addDevice(const DeviceHub::Device& device);
    // Takes a device off the list and lets go of its sink; null when it is not listed.
    DeviceHub::Device removeDevice(const std::string& deviceId);
    size_t onBatch(const std::string& deviceId, std::span<FrameHolder> batch);

    // The device, or null after the warning about an unknown identifier.
    [[nodiscard]] DeviceHub::Device lookUp(const std::string& deviceId) const;
    // Runs one command and turns its answer into a result; a failure is logged.
    BoxResult command(const std::string& deviceId, const std::string& text, const char* what);
};

}  // namespace rv
