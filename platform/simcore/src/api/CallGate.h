#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "api/Calls.h"
#include "engine/EventSink.h"

namespace simcore::api {

// Counts the calls of imported functions and applies the faults that were set for them. A call
// without any fault costs two atomic operations.
class CallGate {
public:
    struct Verdict {
        int code = 0;
        int delayMs = 0;
    };

    void count(Call call) {
        m_counts[static_cast<size_t>(call)].fetch_add(1, std::memory_order_relaxed);
    }
    [[nodiscard]] uint64_t calls(Call call) const {
        return m_counts[static_cast<size_t>(call)].load(std::memory_order_relaxed);
    }
    [[nodiscard]] bool quiet() const { return !m_hasFaults.load(std::memory_order_acquire); }
    // What the faults say about a call on a box; uses up one of their times.
    [[nodiscard]] Verdict judge(Call call, const std::string& box);

    // A fault replaces an earlier one for the same box, function and kind; times 0 removes it.
    void set(const engine::CallFault& fault);
    void clear();

private:
    std::array<std::atomic<uint64_t>, kCalls> m_counts{};
    std::atomic<bool> m_hasFaults{false};
    std::mutex m_mutex;
    std::vector<engine::CallFault> m_faults;  // guarded by m_mutex
};

}  // namespace simcore::api
