#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "engine/Core.h"
#include "engine/Port.h"

namespace simcore::engine {

struct CycleCounters {
    uint64_t transmitted = 0;
    uint64_t refused = 0;
    uint64_t missed = 0;
    int32_t lastError = kRvOk;
};

// A frame that a box repeats. Its times lie on a grid: a job that comes late transmits once and
// goes on at the grid's next time, it never makes up for what it missed.
class CycleJob : public Task, public std::enable_shared_from_this<CycleJob> {
public:
    // What ends a job by its count; the box then forgets it.
    CycleJob(Core& core, Box& box, Port& port, std::string uuid, int32_t periodMs, int limit);

    // First transmission one phase after `from`: jobs of equal period that start together are
    // spread.
    void start(int64_t from, int phaseNumber);
    void pause();
    void resume();
    void setPeriod(int32_t periodMs);
    // The box has dropped the job: nothing is transmitted any more.
    void retire() { m_retired = true; }

    [[nodiscard]] const CycleCounters& counters() const { return m_counters; }
    [[nodiscard]] const std::string& uuid() const { return m_uuid; }
    [[nodiscard]] const Port& port() const { return m_port; }
    [[nodiscard]] int64_t periodNs() const { return m_periodNs; }
    [[nodiscard]] int64_t phasePeriodNs() const { return m_phasePeriodNs; }
    [[nodiscard]] int phaseNumber() const { return m_phaseNumber; }

    void run(int64_t now, Lock& lock) override;

    // Offset of the n-th job within its period: one of up to ten points, taken in an order that
    // keeps neighbours far apart.
    [[nodiscard]] static int64_t phaseOf(int number, int64_t periodNs);

protected:
    // One transmission; may give the lock back in between. kRvOk or the reason of the refusal.
    virtual int transmit(Lock& lock) = 0;

    [[nodiscard]] Port& targetPort() { return m_port; }
    [[nodiscard]] bool retired() const { return m_retired; }

private:
    Core& m_core;
    Box& m_box;
    Port& m_port;
    const std::string m_uuid;
    int64_t m_periodNs;
    const int m_limit;
    int64_t m_due = 0;
    int64_t m_lastDue = -1;  // grid time of the last transmission
    int64_t m_phasePeriodNs = 0;
    int m_phaseNumber = 0;
    bool m_paused = false;
    bool m_retired = false;
    CycleCounters m_counters;
};

class CanCycleJob final : public CycleJob {
public:
    CanCycleJob(Core& core, Box& box, Port& port, const RvCanCycleJob& description);
    ~CanCycleJob() override;

    // Takes effect with the next transmission.
    void replaceFrame(const RvCanFrame& frame) { m_replacement = frame; }

protected:
    int transmit(Lock& lock) override;

private:
    RvCanFrame m_frame;
    std::optional<RvCanFrame> m_replacement;
    const RvFrameUpdateFn m_update;
    void* const m_settings;
    const RvReleaseFn m_release;
};

class EthernetCycleJob final : public CycleJob {
public:
    EthernetCycleJob(Core& core, Box& box, Port& port, const RvEthCycleJob& description);

protected:
    int transmit(Lock& lock) override;

private:
    RvEthFrame m_frame;
};

}  // namespace simcore::engine
