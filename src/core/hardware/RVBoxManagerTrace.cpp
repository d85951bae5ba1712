#include <nlohmann/json.hpp>

#include "core/hardware/RVBoxManager.h"
#include "core/hardware/RVBoxManagerImpl.h"
#include "core/log/Log.h"
#include "core/log/ScopeTimer.h"

// Tracing: commands to the box and the receive path.
namespace rv {

using quill::log::kSimCore;

namespace {

std::string tracingDocument(const std::string& deviceId, bool start) {
    nlohmann::ordered_json document;
    document["cmd"] = start ? "StartReceiveChannelsTrace" : "StopReceiveChannelsTrace";
    document["id"] = deviceId;
    document["channels_type"] = {"can", "lin", "eth", "uds", "flexray"};
    document["channels_type_size"] = document["channels_type"].size();
    return document.dump(-1, ' ', false);
}

}  // namespace

bool RVBoxManager::startStopTracing(const QString& deviceId, bool start) {
    QUILL_SCOPE_TIMER(kSimCore, "RVBoxManager::startStopTracing");
    const std::string id = deviceId.toStdString();
    const DeviceHub::Device device = m_impl->lookUp(id);
    if (device == nullptr) return false;
    const std::string text = tracingDocument(id, start);
    const auto answer = device->execute(text);
    const auto result = static_cast<int32_t>(answer.code);
    QUILL_INFO(kSimCore, "{} {} tracing({}) with {}", start ? "start" : "stop", id, result, text);
    return result == 0;
}

bool RVBoxManager::start(const QString& deviceId, const TraceSubscriber& subscriber) {
    QUILL_SCOPE_TIMER(kSimCore, "RVBoxManager::start");
    const std::string id = deviceId.toStdString();
    if (m_impl->lookUp(id) == nullptr) return false;
    std::shared_ptr<const Subscription> subscription;
    if (subscriber.callback != nullptr) {
        subscription = std::make_shared<const Subscription>(
            Subscription{subscriber.callback, FrameInfo{id}, subscriber.flag});
    }
    {
        const std::lock_guard lock(m_impl->mutex);
        for (ListedDevice& entry : m_impl->devices) {
            if (entry.id == id) entry.subscription = subscription;
        }
    }
    return subscription == nullptr || startStopTracing(deviceId, true);
}

bool RVBoxManager::stop(const QString& deviceId) { return startStopTracing(deviceId, false); }

// Runs on a reader thread of the device.
size_t RVBoxManager::Impl::onBatch(const std::string& deviceId, std::span<FrameHolder> batch) {
    std::shared_ptr<const Subscription> subscription;
    {
        const std::lock_guard lock(mutex);
        for (const ListedDevice& entry : devices) {
            if (entry.id == deviceId) subscription = entry.subscription;
        }
    }
    if (subscription == nullptr) return 0;
    resortBuffer->push(batch, subscription);
    return batch.size();
}

}  // namespace rv
