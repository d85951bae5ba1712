#include "core/log/ScopeTimer.h"

#include <spdlog/spdlog.h>

namespace quill::log {

long long elapsedMs(std::chrono::steady_clock::time_point start) {
    const auto spent = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::nanoseconds>(spent).count() / 1'000'000;
}

ScopeTimer::ScopeTimer(const char* category, const char* function, spdlog::source_loc location,
                       const char* exitName)
    : m_category(category),
      m_exitName(exitName != nullptr ? exitName : function),
      m_location(location),
      m_start(std::chrono::steady_clock::now()) {
    spdlog::default_logger_raw()->log(m_location, spdlog::level::info, "[{}] enter function: {}",
                                      m_category, function);
}

ScopeTimer::~ScopeTimer() {
    spdlog::default_logger_raw()->log(m_location, spdlog::level::info,
                                      "[{}] exit function: {}, cost: {} ms", m_category, m_exitName,
                                      elapsedMs(m_start));
}

}  // namespace quill::log
