#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "api/CallGate.h"
#include "api/Dispatcher.h"
#include "engine/Clock.h"
#include "engine/Network.h"

namespace simcore::api {

// The state of the device library in this process: the current network, its clock, the event
// thread and the gate of the calls. It is never destroyed, so that calls which come while the
// process ends meet a stopped library instead of none; its threads are joined at exit.
class Library {
public:
    static Library& instance();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // Loads the network that the environment names, unless one is loaded already.
    [[nodiscard]] bool ensureNetwork(std::string& reason);
    [[nodiscard]] bool load(const std::string& document, std::string& reason);
    // Null before a network was loaded and after shutdown.
    [[nodiscard]] std::shared_ptr<engine::Network> network() const;
    [[nodiscard]] bool initialised() const { return m_initialised.load(); }
    void setInitialised() { m_initialised = true; }
    void shutdown();

    [[nodiscard]] engine::Clock& clock() { return m_clock; }
    [[nodiscard]] Dispatcher& dispatcher() { return m_dispatcher; }
    [[nodiscard]] CallGate& gate() { return m_gate; }

    void useManualClock(uint64_t startNs);
    void useSystemClock();
    void advance(uint64_t ns);

    // Counts the call and applies its faults; kRvOk to go on.
    [[nodiscard]] int enter(Call call, const std::string& box);
    [[nodiscard]] int enter(Call call, const engine::Box* box);

private:
    Library() = default;
    ~Library() = default;
    [[nodiscard]] bool replace(const engine::NetworkPlan& plan, const std::string& origin,
                               std::string& reason);
    void delay(int ms);

    engine::Clock m_clock;
    CallGate m_gate;
    Dispatcher m_dispatcher;
    std::atomic<bool> m_initialised{false};

    std::mutex m_loading;  // one load at a time
    mutable std::mutex m_mutex;
    std::shared_ptr<engine::Network> m_network;  // guarded by m_mutex
    bool m_shutdown = false;                     // guarded by m_mutex
    uint32_t m_generation = 0;                   // guarded by m_loading

    std::mutex m_delayMutex;
    std::condition_variable m_delayWake;
    bool m_delayCancelled = false;
};

// Text of the last failure of the calling thread.
void setLastError(std::string text);
[[nodiscard]] const std::string& lastError();
// Text for a kRvError code.
[[nodiscard]] const char* errorText(int code);

}  // namespace simcore::api
