#include "core/hardware/boxdev/DeviceManager.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <system_error>

#include "core/hardware/boxdev/Library.h"
#include "core/log/Log.h"
#include "quill_os/threads.h"

namespace RV::BoxDev {
namespace {

constexpr std::chrono::milliseconds kDiscoveryWait{500};
constexpr FounderInitParams kFounderParams{1500, 1000, 3000, 8000, 5000};

void logOfLibrary(int level, const char* text) {
    constexpr spdlog::level::level_enum kLevels[] = {spdlog::level::trace, spdlog::level::debug,
                                                     spdlog::level::info, spdlog::level::warn,
                                                     spdlog::level::err};
    QUILL_LOG(kLevels[std::clamp(level, 0, 4)], quill::log::kSimCore, "{}", text);
}

}  // namespace

DeviceManager& DeviceManager::instance() {
    // Never destroyed: devices may outlive main() when a script ends without a stop.
    static auto* manager = new DeviceManager;
    return *manager;
}

bool DeviceManager::start(std::string& reason) {
    const std::lock_guard lock(m_mutex);
    if (m_state != LayerState::Stopped) return true;
    RvKeyLogger::instance()->setLogCallback(&logOfLibrary);
    if (const int result = withLibrary([] { return rvhub4e_init(); }); result != kRvOk) {
        reason = withLibrary([] { return std::string(rvhub4e_last_error()); });
        if (reason.empty()) reason = libraryResultText(result);
        return false;
    }
    RvDeviceFounder* founder = RvDeviceFounder::instance();
    if (!founder->init(kFounderParams, nullptr) || !founder->start(false)) {
        reason = "the device library refuses to look for devices";
        return false;
    }
    if (m_factories.empty()) {
        m_factories.push_back(std::make_unique<Hub4eFactory>());
        m_factories.push_back(std::make_unique<UniversalBusDeviceFactory>());
    }
    m_state = LayerState::Running;
    m_lookedAround = false;
    m_worker = std::thread([this] { run(); });
    return true;
}

void DeviceManager::stop() {
    if (m_worker.joinable() && m_worker.get_id() == std::this_thread::get_id()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    {
        const std::lock_guard lock(m_mutex);
        m_state = LayerState::Stopped;
    }
    m_wake.notify_all();
    if (m_worker.joinable()) m_worker.join();
    {
        const std::lock_guard lock(m_listenerMutex);
        m_listeners.clear();
    }
    std::vector<Known> known;
    {
        const std::lock_guard lock(m_mutex);
        known.swap(m_known);
        m_events.clear();
    }
    for (Known& entry : known) entry.device->close();
    RvKeyLogger::instance()->setLogCallback(nullptr);
}

int DeviceManager::addListener(DeviceEventFn listener) {
    const std::lock_guard lock(m_listenerMutex);
    m_listeners.push_back({m_nextListener, std::move(listener)});
    return m_nextListener++;
}

void DeviceManager::removeListener(int id) {
    const std::lock_guard lock(m_listenerMutex);
    std::erase_if(m_listeners, [id](const Listener& entry) { return entry.id == id; });
}

bool DeviceManager::waitFirstLook(int ms) {
    std::unique_lock lock(m_mutex);
    return m_wake.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_lookedAround; });
}

std::vector<std::shared_ptr<DeviceInterface>> DeviceManager::devices() const {
    const std::lock_guard lock(m_mutex);
    std::vector<std::shared_ptr<DeviceInterface>> devices;
    for (const Known& entry : m_known) devices.push_back(entry.device);
    return devices;
}

void DeviceManager::run() {
    quill::os::setCurrentThreadName("box-discovery");
    for (;;) {
        lookAround();
        std::unique_lock lock(m_mutex);
        m_lookedAround = true;
        m_wake.notify_all();
        const auto nextLook = std::chrono::steady_clock::now() + kDiscoveryWait;
        while (m_state == LayerState::Running) {
            if (m_events.empty()) {
                if (m_wake.wait_until(lock, nextLook) == std::cv_status::timeout) break;
                continue;
            }
            const auto event = std::move(m_events.front());
            m_events.pop_front();
            lock.unlock();
            handle(event);
            lock.lock();
        }
        if (m_state != LayerState::Running) return;
    }
}

void DeviceManager::lookAround() {
    for (const auto& factory : m_factories) {
        for (const auto& cfg : factory->find()) {
            const std::string id = factory->idOf(*cfg);
            if (!isKnown(id)) addDevice(*factory, *cfg, id);
        }
    }
}

bool DeviceManager::isKnown(const std::string& id) const {
    const std::lock_guard lock(m_mutex);
    return std::any_of(m_known.begin(), m_known.end(),
                       [&](const Known& entry) { return entry.id == id; });
}

void DeviceManager::addDevice(ClassFactory& factory, const DeviceCfg& cfg, const std::string& id) {
    auto device = factory.make(cfg, [this](const std::shared_ptr<DeviceEvent>& event,
                                           const std::string&) { post(event); });
    if (!device->open()) return;  // tried again at the next look
    {
        const std::lock_guard lock(m_mutex);
        m_known.push_back({id, device});
    }
    std::cout << factory.announcement(cfg) << '\n' << std::flush;
    auto event = std::make_shared<DeviceEvent>();
    event->kind = DeviceEventKind::New;
    event->name = cfg.name;
    event->deviceId = id;
    event->message = "New Device connected~";
    tell(event);
}

void DeviceManager::post(std::shared_ptr<DeviceEvent> event) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != LayerState::Running) return;
        m_events.push_back(std::move(event));
    }
    m_wake.notify_all();
}

void DeviceManager::handle(const std::shared_ptr<DeviceEvent>& event) {
    if (event->kind != DeviceEventKind::Lost) return tell(event);
    std::shared_ptr<DeviceInterface> lost;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = std::find_if(m_known.begin(), m_known.end(), [&](const Known& entry) {
            return entry.id == event->deviceId;
        });
        if (found == m_known.end()) return;
        lost = std::move(found->device);
        m_known.erase(found);
    }
    // The box manager lets go of the device before it is closed.
    tell(event);
    lost->close();
}

void DeviceManager::tell(const std::shared_ptr<DeviceEvent>& event) {
    const std::lock_guard lock(m_listenerMutex);
    for (const Listener& listener : m_listeners) listener.call(event, event->deviceId);
}

}  // namespace RV::BoxDev
