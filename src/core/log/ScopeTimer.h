#pragma once

#include <spdlog/common.h>

#include <chrono>

namespace quill::log {

// Whole milliseconds since a steady-clock moment, truncated toward zero.
[[nodiscard]] long long elapsedMs(std::chrono::steady_clock::time_point start);

// Logs "enter function: {}" now and "exit function: {}, cost: {} ms" at the end of the scope, both
// with the source location that is handed in.
class ScopeTimer {
public:
    ScopeTimer(const char* category, const char* function, spdlog::source_loc location,
               const char* exitName = nullptr);
    ~ScopeTimer();
    ScopeTimer(const ScopeTimer&) = delete;
    ScopeTimer& operator=(const ScopeTimer&) = delete;

private:
    const char* m_category;
    const char* m_exitName;
    spdlog::source_loc m_location;
    std::chrono::steady_clock::time_point m_start;
};

}  // namespace quill::log

#define QUILL_SCOPE_TIMER(category, function)       \
    const ::quill::log::ScopeTimer quillScopeTimer( \
        category, function, ::spdlog::source_loc{__FILE__, __LINE__, SPDLOG_FUNCTION})
