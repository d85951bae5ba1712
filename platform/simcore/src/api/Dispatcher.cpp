#include "api/Dispatcher.h"

#include <algorithm>
#include <cstdio>

#include "api/DeviceText.h"
#include "api/Library.h"
#include "quill_os/threads.h"

namespace simcore::api {

namespace {

enum Registration : int { kNone, kState, kEvent, kConnection, kFounder, kLog };

constexpr int kLevelInfo = 2;  // what users see when they have not asked for the log

uintptr_t addressOf(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }

}  // namespace

void Dispatcher::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_events.clear();
    }
    m_wake.notify_all();
    // A callback that ends the process would wait for itself here.
    if (m_thread.joinable() && std::this_thread::get_id() != m_thread.get_id()) m_thread.join();
}

void Dispatcher::post(Event event) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopping) return;
        m_events.push_back(std::move(event));
        if (!m_thread.joinable()) m_thread = std::thread([this] { run(); });
    }
    m_wake.notify_one();
}

void Dispatcher::run() {
    quill::os::setCurrentThreadName("sim-events");
    std::unique_lock lock(m_mutex);
    m_threadId = std::this_thread::get_id();
    while (true) {
        m_wake.wait(lock, [this] { return m_stopping || !m_events.empty(); });
        if (m_stopping) return;
        const Event event = std::move(m_events.front());
        m_events.pop_front();
        event(*this, lock);
    }
}

template <class Fn>
void Dispatcher::callOut(Key key, std::unique_lock<std::mutex>& lock, Fn fn) {
    m_running = key;
    lock.unlock();
    fn();
    lock.lock();
    m_running = {kNone, 0};
    m_idle.notify_all();
}

void Dispatcher::waitFor(Key key, std::unique_lock<std::mutex>& lock) {
    if (std::this_thread::get_id() == m_threadId) return;
    m_idle.wait(lock, [&] { return m_running != key; });
}

void Dispatcher::setStateCallback(int32_t handle, RvDeviceStateFn fn, void* context) {
    std::unique_lock lock(m_mutex);
    if (fn != nullptr) {
        m_stateCallbacks[handle] = {fn, context};
    } else {
        m_stateCallbacks.erase(handle);
    }
    waitFor({kState, static_cast<uintptr_t>(handle)}, lock);
}

void Dispatcher::setEventCallback(int32_t handle, RvDeviceEventFn fn, void* context) {
    std::unique_lock lock(m_mutex);
    if (fn != nullptr) {
        m_eventCallbacks[handle] = {fn, context};
    } else {
        m_eventCallbacks.erase(handle);
    }
    waitFor({kEvent, static_cast<uintptr_t>(handle)}, lock);
}

void Dispatcher::setConnectionObserver(int32_t handle, RvDeviceConnectionObserver* observer) {
    std::unique_lock lock(m_mutex);
    if (observer != nullptr) {
        m_connectionObservers[handle] = observer;
    } else {
        m_connectionObservers.erase(handle);
    }
    waitFor({kConnection, static_cast<uintptr_t>(handle)}, lock);
}

void Dispatcher::addFounderObserver(RvDeviceFounderObserver* observer) {
    const std::lock_guard lock(m_mutex);
    if (observer == nullptr) return;
    const auto at = std::find(m_founderObservers.begin(), m_founderObservers.end(), observer);
    if (at == m_founderObservers.end()) m_founderObservers.push_back(observer);
}

void Dispatcher::removeFounderObserver(RvDeviceFounderObserver* observer) {
    std::unique_lock lock(m_mutex);
    std::erase(m_founderObservers, observer);
    waitFor({kFounder, addressOf(observer)}, lock);
}

void Dispatcher::startFounder(bool networkDevices) {
    const std::lock_guard lock(m_mutex);
    m_founderStarted = true;
    m_founderNetwork = networkDevices;
}

bool Dispatcher::founderReports(int32_t type) const {
    const std::lock_guard lock(m_mutex);
    return m_founderStarted && (type != RvDeviceTypeHub4e || m_founderNetwork);
}

void Dispatcher::setLogCallback(RvLogFn fn) {
    std::unique_lock lock(m_mutex);
    m_logFn = fn;
    waitFor({kLog, 0}, lock);
}

void Dispatcher::deviceState(int32_t handle, RvDeviceState state) {
    post([handle, state](Dispatcher& self, std::unique_lock<std::mutex>& lock) {
        const auto at = self.m_stateCallbacks.find(handle);
        if (at == self.m_stateCallbacks.end()) return;
        const StateCallback callback = at->second;
        self.callOut({kState, static_cast<uintptr_t>(handle)}, lock,
                     [&] { callback.fn(handle, state, callback.context); });
    });
}

void Dispatcher::postDeviceEvent(int32_t handle, const RvDeviceEvent& event) {
    post([handle, event](Dispatcher& self, std::unique_lock<std::mutex>& lock) {
        const auto at = self.m_eventCallbacks.find(handle);
        if (at == self.m_eventCallbacks.end()) return;
        const EventCallback callback = at->second;
        self.callOut({kEvent, static_cast<uintptr_t>(handle)}, lock,
                     [&] { callback.fn(handle, &event, callback.context); });
    });
}

void Dispatcher::connectionEvent(int32_t handle, RvConnectionEventType type, int32_t channel,
                                 int32_t value) {
    RvDeviceEvent event;
    event.type = type;
    event.channel = channel;
    event.value = value;
    postDeviceEvent(handle, event);
    post([handle, event](Dispatcher& self, std::unique_lock<std::mutex>& lock) {
        const auto at = self.m_connectionObservers.find(handle);
        if (at == self.m_connectionObservers.end()) return;
        RvDeviceConnectionObserver* observer = at->second;
        self.callOut({kConnection, static_cast<uintptr_t>(handle)}, lock,
                     [&] { observer->onConnectionEvent(event.type, event.channel, event.value); });
    });
}

void Dispatcher::dipChanged(int32_t handle, const RvDipStatus& status) {
    RvDeviceEvent event;
    event.kind = RvEventDipStatus;
    event.dip = status;
    postDeviceEvent(handle, event);
}

void Dispatcher::postDevice(const RvDeviceDesc& desc, FounderCall call) {
    post([desc, call](Dispatcher& self, std::unique_lock<std::mutex>& lock) {
        if (!self.m_founderStarted) return;
        if (desc.type == RvDeviceTypeHub4e && !self.m_founderNetwork) return;
        const std::vector<RvDeviceFounderObserver*> observers = self.m_founderObservers;
        for (RvDeviceFounderObserver* observer : observers) {
            // One that was removed while another was being called is left out.
            const auto& known = self.m_founderObservers;
            if (std::find(known.begin(), known.end(), observer) == known.end()) continue;
            self.callOut({kFounder, addressOf(observer)}, lock, [&] { (observer->*call)(desc); });
        }
    });
}

void Dispatcher::reportFound(const RvDeviceDesc& desc) {
    postDevice(desc, &RvDeviceFounderObserver::onDeviceFound);
}

void Dispatcher::deviceFound(const engine::DeviceIdentity& device) {
    postDevice(describe(device), &RvDeviceFounderObserver::onDeviceFound);
}

void Dispatcher::deviceChanged(const engine::DeviceIdentity& device) {
    postDevice(describe(device), &RvDeviceFounderObserver::onDeviceChanged);
}

void Dispatcher::deviceLost(const engine::DeviceIdentity& device) {
    postDevice(describe(device), &RvDeviceFounderObserver::onDeviceLost);
}

void Dispatcher::callFault(const engine::CallFault& fault) {
    Library::instance().gate().set(fault);
}

void Dispatcher::log(int level, const std::string& text) {
    post([level, text](Dispatcher& self, std::unique_lock<std::mutex>& lock) {
        const RvLogFn fn = self.m_logFn;
        self.callOut({kLog, 0}, lock, [&] {
            if (fn != nullptr) {
                fn(level, text.c_str());
            } else if (level >= kLevelInfo) {
                std::fprintf(stderr, "simcore: %s\n", text.c_str());
            }
        });
    });
}

}  // namespace simcore::api
