#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace quilltrace {

// Progress of one import on standard error: a bar that is drawn over itself on a terminal, a line
// every few seconds otherwise.
class ProgressLine {
public:
    ProgressLine(std::string name, uint64_t totalBytes, bool quiet);

    void show(uint64_t bytesRead, uint64_t frames);
    // Clears a bar, so that what comes next starts on an empty line.
    void finish();

    // The bar's text, for a given state: "drive.blf [=====     ]  52%  1.2 M frames ...".
    [[nodiscard]] static std::string text(const std::string& name, double share, uint64_t frames,
                                          double seconds);

private:
    using Clock = std::chrono::steady_clock;
    std::string m_name;
    uint64_t m_total;
    bool m_terminal;
    bool m_quiet;
    size_t m_drawn = 0;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_last;
};

}  // namespace quilltrace
