#include "engine/Clock.h"

#include <cstdlib>

namespace simcore::engine {

namespace {

constexpr int64_t kMeasureEveryNs = 1'000'000'000;
constexpr int64_t kToleratedSlipNs = 1'000'000;

int64_t steadyNow() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

int64_t systemNow() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace

Clock::Clock() {
    const int64_t steadyNs = steadyNow();
    m_steadyBase = steadyNs;
    m_wallOffset = systemNow();
    m_nextMeasure = steadyNs + kMeasureEveryNs;
}

int64_t Clock::now() const {
    if (manual()) return m_manualNow.load(std::memory_order_acquire);
    const int64_t steadyNs = steadyNow();
    if (steadyNs >= m_nextMeasure.load(std::memory_order_relaxed)) followSystemTime(steadyNs);
    return steadyNs - m_steadyBase.load(std::memory_order_relaxed);
}

std::chrono::steady_clock::time_point Clock::steadyAt(int64_t at) const {
    const int64_t steadyNs = at + m_steadyBase.load(std::memory_order_relaxed);
    return std::chrono::steady_clock::time_point(
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(
            std::chrono::nanoseconds(steadyNs)));
}

uint64_t Clock::wallAt(int64_t at) const {
    return static_cast<uint64_t>(at + m_wallOffset.load(std::memory_order_relaxed));
}

void Clock::followSystemTime(int64_t steadyNs) const {
    m_nextMeasure.store(steadyNs + kMeasureEveryNs, std::memory_order_relaxed);
    const int64_t offset = systemNow() - (steadyNow() - m_steadyBase.load());
    if (std::llabs(offset - m_wallOffset.load()) > kToleratedSlipNs) m_wallOffset.store(offset);
}

void Clock::useManual(uint64_t wallNs) {
    const int64_t at = now();
    m_manualNow = at;
    m_wallOffset = static_cast<int64_t>(wallNs) - at;
    m_manual.store(true, std::memory_order_release);
}

void Clock::useSystem() {
    if (!manual()) return;
    const int64_t steadyNs = steadyNow();
    m_steadyBase = steadyNs - m_manualNow.load();
    m_wallOffset = systemNow() - m_manualNow.load();
    m_nextMeasure = steadyNs + kMeasureEveryNs;
    m_manual.store(false, std::memory_order_release);
}

void Clock::moveTo(int64_t at) {
    if (manual() && at > m_manualNow.load()) m_manualNow.store(at, std::memory_order_release);
}

}  // namespace simcore::engine
