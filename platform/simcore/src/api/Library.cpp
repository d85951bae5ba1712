#include "api/Library.h"

#include <array>
#include <chrono>

#include "document/DocumentReader.h"

namespace simcore::api {

namespace {

std::string& lastErrorOfThread() {
    thread_local std::string text;
    return text;
}

// Ends the library's threads when the process exits or the library is unloaded.
struct ExitGuard {
    explicit ExitGuard(Library& libraryToStop) : library(libraryToStop) {}
    ExitGuard(const ExitGuard&) = delete;
    ExitGuard& operator=(const ExitGuard&) = delete;
    ~ExitGuard() { library.shutdown(); }
    Library& library;
};

}  // namespace

Library& Library::instance() {
    static Library* const kLibrary = new Library;  // reachable for good, see the class
    static const ExitGuard kGuard(*kLibrary);
    return *kLibrary;
}

std::shared_ptr<engine::Network> Library::network() const {
    const std::lock_guard lock(m_mutex);
    return m_network;
}

bool Library::ensureNetwork(std::string& reason) {
    const std::lock_guard loading(m_loading);
    if (network() != nullptr) return true;
    std::string origin;
    const auto plan = document::planFromEnvironment(origin, reason);
    return plan && replace(*plan, origin, reason);
}

bool Library::load(const std::string& text, std::string& reason) {
    const std::lock_guard loading(m_loading);
    std::string origin;
    const auto plan = document::readPlan(text, "network document", origin, reason);
    return plan && replace(*plan, origin, reason);
}

bool Library::replace(const engine::NetworkPlan& plan, const std::string& origin,
                      std::string& reason) {
    auto fresh = std::make_shared<engine::Network>(m_clock, m_dispatcher, ++m_generation);
    if (!fresh->build(plan, reason)) {
        reason = origin + ": " + reason;
        return false;
    }
    std::shared_ptr<engine::Network> old;
    {
        const std::lock_guard lock(m_mutex);
        if (m_shutdown) {
            reason = "the library has been shut down";
            return false;
        }
        old.swap(m_network);
    }
    if (old != nullptr) {
        old->stop();
        const engine::CoreGuard guard(old->core());
        for (const auto& box : old->boxes()) {
            if (box->present()) box->unplug();
        }
    }
    m_gate.clear();
    fresh->start();
    const std::lock_guard lock(m_mutex);
    m_network = std::move(fresh);
    return true;
}

void Library::shutdown() {
    std::shared_ptr<engine::Network> last;
    {
        const std::lock_guard lock(m_mutex);
        m_shutdown = true;
        last.swap(m_network);
    }
    {
        const std::lock_guard lock(m_delayMutex);
        m_delayCancelled = true;
    }
    m_delayWake.notify_all();
    if (last != nullptr) last->stop();
    m_dispatcher.stop();
}

void Library::useManualClock(uint64_t startNs) {
    m_clock.useManual(startNs);
    if (const auto current = network()) current->clockChanged();
}

void Library::useSystemClock() {
    m_clock.useSystem();
    if (const auto current = network()) current->clockChanged();
    m_delayWake.notify_all();
}

void Library::advance(uint64_t ns) {
    const auto current = network();
    if (current != nullptr) {
        current->advance(static_cast<int64_t>(ns));
    } else if (m_clock.manual()) {
        m_clock.moveTo(m_clock.now() + static_cast<int64_t>(ns));
    }
    { const std::lock_guard lock(m_delayMutex); }
    m_delayWake.notify_all();
}

int Library::enter(Call call, const std::string& box) {
    m_gate.count(call);
    if (m_gate.quiet()) return kRvOk;
    const CallGate::Verdict verdict = m_gate.judge(call, box);
    if (verdict.delayMs > 0) delay(verdict.delayMs);
    if (verdict.code != kRvOk) setLastError(errorText(verdict.code));
    return verdict.code;
}

int Library::enter(Call call, const engine::Box* box) {
    if (m_gate.quiet()) {
        m_gate.count(call);
        return kRvOk;
    }
    return enter(call, box == nullptr ? std::string() : box->name());
}

void Library::delay(int ms) {
    const int64_t until = m_clock.now() + static_cast<int64_t>(ms) * 1'000'000;
    std::unique_lock lock(m_delayMutex);
    while (!m_delayCancelled && m_clock.now() < until) {
        if (m_clock.manual()) {
            m_delayWake.wait(lock);
        } else {
            m_delayWake.wait_until(lock, m_clock.steadyAt(until));
        }
    }
}

void setLastError(std::string text) { lastErrorOfThread() = std::move(text); }
const std::string& lastError() { return lastErrorOfThread(); }

const char* errorText(int code) {
    static constexpr std::array<const char*, 12> kTexts{
        "",
        "no device has this handle",
        "the device is not reachable",
        "an argument is out of range",
        "the device has no such channel, or it is disabled",
        "the device is not open",
        "the channel is bus-off",
        "the device refused the call",
        "no cyclic job or schedule has this identifier",
        "the transmit queue is full",
        "a cyclic job with this identifier runs already",
        "the library is not initialised",
    };
    if (code < 0 || static_cast<size_t>(code) >= kTexts.size()) return "the call failed";
    return kTexts[static_cast<size_t>(code)];
}

}  // namespace simcore::api
