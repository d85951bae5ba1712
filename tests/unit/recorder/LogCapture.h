#pragma once

#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quill::testing {

// Lines of the default logger while it lives, as "level text".
class LogCapture {
public:
    LogCapture() : m_before(spdlog::default_logger()), m_sink(std::make_shared<Sink>()) {
        spdlog::set_default_logger(std::make_shared<spdlog::logger>("capture", m_sink));
    }
    ~LogCapture() { spdlog::set_default_logger(m_before); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    [[nodiscard]] std::vector<std::string> lines() const { return m_sink->copy(); }
    [[nodiscard]] long count(const std::string& line) const {
        const auto all = lines();
        return std::count(all.begin(), all.end(), line);
    }

private:
    class Sink : public spdlog::sinks::base_sink<std::mutex> {
    public:
        std::vector<std::string> copy() {
            const std::lock_guard lock(mutex_);
            return m_lines;
        }

    protected:
        void sink_it_(const spdlog::details::log_msg& message) override {
            const auto level = spdlog::level::to_string_view(message.level);
            m_lines.push_back(std::string(level.data(), level.size()) + " " +
                              std::string(message.payload.data(), message.payload.size()));
        }
        void flush_() override {}

    private:
        std::vector<std::string> m_lines;
    };

    std::shared_ptr<spdlog::logger> m_before;
    std::shared_ptr<Sink> m_sink;
};

}  // namespace quill::testing
