#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/Core.h"
#include "engine/Port.h"

namespace simcore::engine {

// Share of the time that a bus was occupied, over the last second, in steps of 10 ms.
class LoadMeter {
public:
    void occupied(int64_t from, int64_t to);
    [[nodiscard]] double load(int64_t now) const;

private:
    static constexpr int64_t kStepNs = 10'000'000;
    static constexpr int64_t kSteps = 100;
    // A frame on the wire reaches beyond now, so the ring holds more than the second looked at.
    static constexpr int64_t kRing = 2 * kSteps;
    struct Step {
        int64_t number = -1;
        int64_t busyNs = 0;
    };
    std::array<Step, kRing> m_steps{};
};

// A bus that ports of boxes hang on: the part that does not depend on the kind of frame. Guarded by
// the engine's lock.
class Bus : public Task, public std::enable_shared_from_this<Bus> {
public:
    Bus(Core& core, std::string name, BusKind kind, BusRates rates);

    [[nodiscard]] const std::string& name() const { return m_name; }
    [[nodiscard]] BusKind kind() const { return m_kind; }
    [[nodiscard]] const BusRates& rates() const { return m_rates; }
    [[nodiscard]] bool paced() const { return m_rates.bitrate > 0; }
    [[nodiscard]] const std::vector<Port*>& ports() const { return m_ports; }
    [[nodiscard]] double load() const;

    virtual void attach(Port& port) { m_ports.push_back(&port); }
    // Forgets what a port wanted to send.
    virtual void dropPending(const Port& port) = 0;
    // How many frames a source without a pace of its own may put on the bus now, at most `most`:
    // nothing while no receiver listens or the slowest one has enough waiting.
    [[nodiscard]] virtual size_t room(size_t most) const = 0;
    // True when a source that waits for room should go on: somebody listens and every receiver has
    // read half of what it may have waiting.
    [[nodiscard]] virtual bool roomy() const = 0;
    // True when a box traces a channel of this bus.
    [[nodiscard]] bool observed() const;

protected:
    // Stamps for `count` frames that go out at engine time `at`; never before an earlier stamp.
    [[nodiscard]] uint64_t takeStamps(int64_t at, size_t count);

    Core& m_core;
    std::vector<Port*> m_ports;
    LoadMeter m_load;

private:
    const std::string m_name;
    const BusKind m_kind;
    const BusRates m_rates;
    uint64_t m_lastStamp = 0;
};

}  // namespace simcore::engine
