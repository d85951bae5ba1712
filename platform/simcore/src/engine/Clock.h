#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace simcore::engine {

// Time of the engine: nanoseconds that never run backwards, from the system's steady clock or moved
// by hand. Changing between the two does not make the time jump. Safe to use from any thread.
class Clock {
public:
    Clock();

    [[nodiscard]] int64_t now() const;
    [[nodiscard]] bool manual() const { return m_manual.load(std::memory_order_acquire); }
    // Steady-clock time at which now() reaches `at`; meaningless while the clock is manual.
    [[nodiscard]] std::chrono::steady_clock::time_point steadyAt(int64_t at) const;
    // Nanoseconds since 1970 at engine time `at`.
    [[nodiscard]] uint64_t wallAt(int64_t at) const;

    void useManual(uint64_t wallNs);
    void useSystem();
    void moveTo(int64_t at);  // manual clock only; earlier times are ignored

private:
    void followSystemTime(int64_t steadyNs) const;

    std::atomic<bool> m_manual{false};
    std::atomic<int64_t> m_manualNow{0};
    std::atomic<int64_t> m_steadyBase{0};  // engine time = steady time - base
    // Wall time = engine time + offset. Measured again from time to time, so that the stamps follow
    // a system clock that is being adjusted.
    mutable std::atomic<int64_t> m_wallOffset{0};
    mutable std::atomic<int64_t> m_nextMeasure{0};
};

}  // namespace simcore::engine
