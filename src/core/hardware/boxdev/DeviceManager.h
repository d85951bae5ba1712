#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/hardware/boxdev/ClassFactory.h"
#include "core/hardware/boxdev/DeviceEvent.h"
#include "core/hardware/boxdev/DeviceInterface.h"

namespace RV::BoxDev {

// The device layer's one owner of devices: its worker thread runs the discovery, opens what is new
// and closes what is lost. Listeners hear of events on that thread. Lives until the process ends.
class DeviceManager {
public:
    static DeviceManager& instance();

    // Starts the device library and the worker. False with a reason when the library cannot be
    // started; a second call while it runs changes nothing.
    [[nodiscard]] bool start(std::string& reason);
    // Joins the worker, closes all devices and forgets them and the listeners. From the worker
    // thread itself it throws std::system_error (resource_deadlock_would_occur).
    void stop();

    // Listeners are called on the worker thread, for devices found later too.
    int addListener(DeviceEventFn listener);
    // The listener is not called any more once this has returned.
    void removeListener(int id);

    // Waits until the first look around is done, at most `ms`; false when it takes longer.
    bool waitFirstLook(int ms);
    [[nodiscard]] std::vector<std::shared_ptr<DeviceInterface>> devices() const;

private:
    struct Known {
        std::string id;
        std::shared_ptr<DeviceInterface> device;
    };
    struct Listener {
        int id;
        DeviceEventFn call;
    };
    // The states of the layer; discovery runs while it is Running.
    enum class LayerState : int { Stopped = 0, Starting = 1, Running = 2 };

    DeviceManager() = default;
    void run();
    void lookAround();
    bool isKnown(const std::string& id) const;
    void addDevice(ClassFactory& factory, const DeviceCfg& cfg, const std::string& id);
    void post(std::shared_ptr<DeviceEvent> event);
    void handle(const std::shared_ptr<DeviceEvent>& event);
    void tell(const std::shared_ptr<DeviceEvent>& event);

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    LayerState m_state = LayerState::Stopped;           // guarded by m_mutex
    bool m_lookedAround = false;                        // guarded by m_mutex
    std::deque<std::shared_ptr<DeviceEvent>> m_events;  // guarded by m_mutex
    std::vector<Known> m_known;                         // guarded by m_mutex, in the order found
    std::mutex m_listenerMutex;                         // held while listeners run
    std::vector<Listener> m_listeners;                  // guarded by m_listenerMutex
    int m_nextListener = 1;                             // guarded by m_listenerMutex
    std::vector<std::unique_ptr<ClassFactory>> m_factories;
    std::thread m_worker;
};

}  // namespace RV::BoxDev
