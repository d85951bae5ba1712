#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "engine/EventSink.h"
#include "simcore/flat.h"
#include "simcore/founder.h"

namespace simcore::api {

// The library's event thread: everything that is reported to users is called from here, one call
// at a time and never from inside a call of theirs. Clearing a registration waits for its running
// call, except on the event thread itself.
class Dispatcher final : public engine::EventSink {
public:
    ~Dispatcher() override { stop(); }

    void stop();  // events that wait are dropped

    void setStateCallback(int32_t handle, RvDeviceStateFn fn, void* context);
    void setEventCallback(int32_t handle, RvDeviceEventFn fn, void* context);
    void setConnectionObserver(int32_t handle, RvDeviceConnectionObserver* observer);
    void addFounderObserver(RvDeviceFounderObserver* observer);
    void removeFounderObserver(RvDeviceFounderObserver* observer);
    // Which devices founder observers hear of; none before start.
    void startFounder(bool networkDevices);
    [[nodiscard]] bool founderReports(int32_t type) const;
    void setLogCallback(RvLogFn fn);

    void deviceState(int32_t handle, RvDeviceState state) override;
    void connectionEvent(int32_t handle, RvConnectionEventType type, int32_t channel,
                         int32_t value) override;
    void dipChanged(int32_t handle, const RvDipStatus& status) override;
    void deviceFound(const engine::DeviceIdentity& device) override;
    void deviceChanged(const engine::DeviceIdentity& device) override;
    void deviceLost(const engine::DeviceIdentity& device) override;
    void callFault(const engine::CallFault& fault) override;
    void log(int level, const std::string& text) override;

    // Reports one device to every observer as found.
    void reportFound(const RvDeviceDesc& desc);

private:
    using Key = std::pair<int, uintptr_t>;  // kind of registration, handle or address
    using Event = std::function<void(Dispatcher&, std::unique_lock<std::mutex>&)>;
    using FounderCall = void (RvDeviceFounderObserver::*)(const RvDeviceDesc&);

    void post(Event event);
    void run();
    // Calls out without the lock while `key` is marked as running.
    template <class Fn>
    void callOut(Key key, std::unique_lock<std::mutex>& lock, Fn fn);
    void waitFor(Key key, std::unique_lock<std::mutex>& lock);
    void postDevice(const RvDeviceDesc& desc, FounderCall call);
    void postDeviceEvent(int32_t handle, const RvDeviceEvent& event);

    struct StateCallback {
        RvDeviceStateFn fn = nullptr;
        void* context = nullptr;
    };
    struct EventCallback {
        RvDeviceEventFn fn = nullptr;
        void* context = nullptr;
    };

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::deque<Event> m_events;
    std::map<int32_t, StateCallback> m_stateCallbacks;
    std::map<int32_t, EventCallback> m_eventCallbacks;
    std::map<int32_t, RvDeviceConnectionObserver*> m_connectionObservers;
    std::vector<RvDeviceFounderObserver*> m_founderObservers;
    bool m_founderStarted = false;
    bool m_founderNetwork = false;
    RvLogFn m_logFn = nullptr;
    Key m_running{0, 0};
    bool m_stopping = false;
    std::thread::id m_threadId;
    std::thread m_thread;  // started with the first event
};

}  // namespace simcore::api
