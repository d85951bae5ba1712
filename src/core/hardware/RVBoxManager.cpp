#include "core/hardware/RVBoxManager.h"

#include <algorithm>
#include <filesystem>

#include "core/hardware/RVBoxManagerImpl.h"
#include "core/hardware/boxdev/DeviceManager.h"
#include "core/log/Log.h"
#include "core/log/ScopeTimer.h"
#include "quill_os/environment.h"
#include "quill_os/paths.h"

namespace rv {

using quill::log::kHardware;
using RV::BoxDev::DeviceEvent;
using RV::BoxDev::DeviceEventKind;

namespace {

// Long enough for the first look around of a network that answers at once, so that a script finds
// its boxes at the first question; a slower network is waited for where scripts ask for boxes.
constexpr int kFirstLookMs = 300;

// Absolute path of the application's data directory, beside its log.
std::string dataDirectory() {
    const std::string base = quill::os::getEnvironment("LocalAPPDATA").value_or(".");
    std::error_code error;
    const auto path =
        std::filesystem::absolute(quill::os::pathFromUtf8(base) / "RV" / "Quill", error);
    return quill::os::pathToUtf8(path);
}

ChannelTable channelsOf(const RV::BoxDev::DeviceInterface& device) {
    ChannelTable table;
    const std::pair<ChannelType, int> counts[] = {{ChannelType::Can, device.canCount()},
                                                  {ChannelType::Lin, device.linCount()},
                                                  {ChannelType::Ethernet, device.ethCount()},
                                                  {ChannelType::FlexRay, device.flexrayCount()}};
    for (const auto& [type, count] : counts) {
        auto& channels = table[type];
        for (int index = 0; index < count; ++index) channels.emplace_back(index, 1);
    }
    return table;
}

}  // namespace

RVBoxManager::RVBoxManager(void* context, QObject* parent)
    : QObject(parent), m_impl(std::make_unique<Impl>()) {
    m_impl->context = context;
    DeviceHub& hub = DeviceHub::instance();
    hub.setDataDirectory(dataDirectory());
    for (const DeviceHub::Device& device : hub.devices()) m_impl->addDevice(device);
    m_impl->eventSubscription = hub.subscribe(
        DeviceHub::kDeviceEventTopic, [this](const std::shared_ptr<DeviceEvent>& event,
                                             const std::string&) { m_impl->onDeviceEvent(event); });
    if (m_impl->eventSubscription != 0) {
        QUILL_INFO(kHardware, "HardwareDeviceEvent {}", m_impl->eventSubscription);
    }
    m_impl->dispatcher = std::make_unique<FrameDispatcher>(*m_impl->resortBuffer);
    m_impl->dispatcher->start();
}

RVBoxManager::~RVBoxManager() {
    m_impl->dispatcher->stop();
    DeviceHub::instance().unsubscribe(DeviceHub::kDeviceEventTopic, m_impl->eventSubscription);
    for (const std::string& id : [this] {
             std::vector<std::string> ids;
             const std::lock_guard lock(m_impl->mutex);
             for (const ListedDevice& entry : m_impl->devices) ids.push_back(entry.id);
             return ids;
         }()) {
        m_impl->removeDevice(id);
    }
}

bool RVBoxManager::init(DeviceNoticeFn notice) {
    QUILL_SCOPE_TIMER(kHardware, "RVBoxManager::init");
    {
        const std::lock_guard lock(m_impl->mutex);
        m_impl->notice = std::move(notice);
    }
    std::string reason;
    RV::BoxDev::DeviceManager& manager = RV::BoxDev::DeviceManager::instance();
    if (!manager.start(reason)) {
        QUILL_ERROR(kHardware, "device library cannot be started: {}", reason);
        return false;
    }
    (void)manager.waitFirstLook(kFirstLookMs);
    return true;
}

void RVBoxManager::refreshDeviceList() {
    QUILL_SCOPE_TIMER(kHardware, "RVBoxManager::refreshDeviceList");
    const std::vector<DeviceHub::Device> present = DeviceHub::instance().devices();
    std::vector<std::string> gone;
    {
        const std::lock_guard lock(m_impl->mutex);
        for (const ListedDevice& entry : m_impl->devices) {
            const bool there = std::any_of(present.begin(), present.end(), [&](const auto& device) {
                return device == entry.device;
            });
            if (!there) gone.push_back(entry.id);
        }
    }
    for (const std::string& id : gone) m_impl->removeDevice(id);
    for (const DeviceHub::Device& device : present) m_impl->addDevice(device);
}

void RVBoxManager::setDeviceExpanded(const QString& deviceId, bool expanded) {
    QUILL_SCOPE_TIMER(kHardware, "RVBoxManager::setDeviceExpanded");
    const std::string id = deviceId.toStdString();
    if (m_impl->lookUp(id) == nullptr) return;
    const std::lock_guard lock(m_impl->mutex);
    for (ListedDevice& entry : m_impl->devices) {
        if (entry.id == id) entry.expanded = expanded;
    }
}

void RVBoxManager::deleteDevice(const QString& deviceId) {
    QUILL_SCOPE_TIMER(kHardware, "RVBoxManager::deleteDevice");
    const std::string id = deviceId.toStdString();
    if (m_impl->lookUp(id) != nullptr) m_impl->removeDevice(id);
}

std::vector<std::string> RVBoxManager::deviceMacs() const {
    std::vector<std::string> macs;
    const std::lock_guard lock(m_impl->mutex);
    for (const ListedDevice& entry : m_impl->devices) {
        if (entry.hasMac) macs.push_back(entry.id);
    }
    return macs;
}

std::optional<ChannelTable> RVBoxManager::channelTable(const QString& deviceId) const {
    const std::string id = deviceId.toStdString();
    const std::lock_guard lock(m_impl->mutex);
    for (const ListedDevice& entry : m_impl->devices) {
        if (entry.id == id) return entry.channels;
    }
    return std::nullopt;
}

std::optional<BoxIdentity> RVBoxManager::fetchIdentity(const QString& deviceId) {
    const DeviceHub::Device device = m_impl->lookUp(deviceId.toStdString());
    if (device == nullptr) return std::nullopt;
    std::string reason;
    auto identity = m_impl->configManager->identity(device, reason);
    if (!identity) QUILL_WARN(kHardware, "GetDevInfo of {}: {}", device->id(), reason);
    return identity;
}

std::optional<BoxConfig> RVBoxManager::config(const QString& deviceId) const {
    return m_impl->configManager->config(deviceId.toStdString());
}

std::optional<BoxConfig> RVBoxManager::fetchConfig(const QString& deviceId) {
    const DeviceHub::Device device = m_impl->lookUp(deviceId.toStdString());
    if (device == nullptr) return std::nullopt;
    std::string reason;
    auto config = m_impl->configManager->fetch(device, reason);
    if (!config) QUILL_WARN(kHardware, "GetChannelsConfig of {}: {}", device->id(), reason);
    return config;
}

bool RVBoxManager::writeConfig(const QString& deviceId, const BoxConfig& config,
                               std::string& reason) {
    const std::string id = deviceId.toStdString();
    const DeviceHub::Device device = m_impl->lookUp(id);
    if (device == nullptr) {
        reason = "no such device: " + id;
        return false;
    }
    if (m_impl->configManager->write(device, config, reason)) return true;
    QUILL_WARN(kHardware, "SetChannelsConfig of {}: {}", id, reason);
    return false;
}

std::string RVBoxManager::statusText(const QString& deviceId) const {
    const DeviceHub::Device device = DeviceHub::instance().find(deviceId.toStdString());
    if (device == nullptr) return "unknown";
    return device->state() == RV::BoxDev::DeviceState::Connected ? "connected" : "disconnected";
}

bool RVBoxManager::stopDelivery(int waitMs) { return m_impl->dispatcher->close(waitMs); }

// Device events.

void RVBoxManager::Impl::addDevice(const DeviceHub::Device& device) {
    const std::string id = device->id();
    {
        const std::lock_guard lock(mutex);
        const bool listed = std::any_of(devices.begin(), devices.end(),
                                        [&](const ListedDevice& entry) { return entry.id == id; });
        if (listed) return;
        ListedDevice entry;
        entry.id = id;
        entry.name = device->name();
        entry.model = device->model();
        entry.hasMac = device->hasMac();
        entry.channels = channelsOf(*device);
        entry.device = device;
        devices.push_back(std::move(entry));
    }
    device->setTraceSink(
        [this, id](FrameType, std::span<FrameHolder> batch) { return onBatch(id, batch); });
    std::string reason;
    if (!configManager->fetch(device, reason)) {
        QUILL_WARN(kHardware, "GetChannelsConfig of {}: {}", id, reason);
    }
}

DeviceHub::Device RVBoxManager::Impl::removeDevice(const std::string& deviceId) {
    DeviceHub::Device device;
    {
        const std::lock_guard lock(mutex);
        const auto found =
            std::find_if(devices.begin(), devices.end(),
                         [&](const ListedDevice& entry) { return entry.id == deviceId; });
        if (found == devices.end()) return nullptr;
        device = std::move(found->device);
        devices.erase(found);
        leaving.push_back(device);
    }
    device->setTraceSink({});
    configManager->forget(deviceId);
    const HandOver library = device->libraryCounters();
    const HandOver readers = device->readerCounters();
    const std::lock_guard lock(mutex);
    std::erase(leaving, device);
    goneLibrary += library;
    goneReaders += readers;
    // What the box still held is lost with it.
    goneLibrary.dropped += goneLibrary.held;
    goneLibrary.held = 0;
    return device;
}

void RVBoxManager::Impl::onDeviceEvent(const std::shared_ptr<DeviceEvent>& event) {
    switch (event->kind) {
        case DeviceEventKind::New: {
            const DeviceHub::Device device = DeviceHub::instance().find(event->deviceId);
            if (device == nullptr) return;
            addDevice(device);
            QUILL_INFO(kHardware,
                       "new device name: {}, id: {}, CAN count: {}, LIN count: {}, ETH count: {}, "
                       "FLEXRAY count: {}",
                       device->name(), device->id(), device->canCount(), device->linCount(),
                       device->ethCount(), device->flexrayCount());
            break;
        }
        case DeviceEventKind::Lost: {
            const DeviceHub::Device device = removeDevice(event->deviceId);
            if (device == nullptr) {
                QUILL_WARN(kHardware, "lost device not in list");
                return;
            }
            QUILL_INFO(kHardware, "device lost name: {}, id: {}", device->name(), device->id());
            break;
        }
        case DeviceEventKind::DipChanged:
            configManager->noteDip(event->deviceId, event->dip);
            QUILL_INFO(kHardware, "device {} dip status change !", event->name);
            break;
        case DeviceEventKind::BusNotice:
            QUILL_WARN(kHardware, "{} {}", event->deviceId, event->message);
            return;
    }
    DeviceNoticeFn tell;
    {
        const std::lock_guard lock(mutex);
        tell = notice;
    }
    if (!tell) return;
    auto note = std::make_shared<DeviceNotice>();
    note->type = static_cast<uint32_t>(event->kind);
    note->name = event->name;
    note->deviceId = event->deviceId;
    note->message = event->message;
    tell(std::move(note));
}

DeviceHub::Device RVBoxManager::Impl::lookUp(const std::string& deviceId) const {
    {
        const std::lock_guard lock(mutex);
        for (const ListedDevice& entry : devices) {
            if (entry.id == deviceId) return entry.device;
        }
    }
    QUILL_WARN(quill::log::kSimCore, "no such device: {}", deviceId);
    return nullptr;
}

}  // namespace rv
