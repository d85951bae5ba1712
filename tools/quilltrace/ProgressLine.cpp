#include "ProgressLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "quill_os/terminal.h"

namespace quilltrace {
namespace {
constexpr size_t kBarWidth = 24;
constexpr auto kTerminalPause = std::chrono::milliseconds(100);
constexpr auto kPlainPause = std::chrono::seconds(2);

std::string countText(double count) {
    if (count >= 1e6) return fmt::format("{:.1f} M", count / 1e6);
    if (count >= 1e4) return fmt::format("{:.0f} k", count / 1e3);
    return fmt::format("{:.0f}", count);
}
}  // namespace

ProgressLine::ProgressLine(std::string name, uint64_t totalBytes, bool quiet)
    : m_name(std::move(name)),
      m_total(totalBytes),
      m_terminal(quill::os::isTerminal(stderr)),
      m_quiet(quiet),
      m_last(m_start) {}

std::string ProgressLine::text(const std::string& name, double share, uint64_t frames,
                               double seconds) {
    share = std::clamp(share, 0.0, 1.0);
    const auto filled = static_cast<size_t>(share * kBarWidth);
    std::string line = fmt::format("{} [{}{}] {:3.0f}%  {} frames", name, std::string(filled, '='),
                                   std::string(kBarWidth - filled, ' '), share * 100,
                                   countText(static_cast<double>(frames)));
    if (seconds > 0.2) {
        line += fmt::format("  {}/s", countText(static_cast<double>(frames) / seconds));
        if (share > 0.01) line += fmt::format("  {:.0f} s left", seconds * (1 - share) / share);
    }
    return line;
}

void ProgressLine::show(uint64_t bytesRead, uint64_t frames) {
    const auto now = Clock::now();
    if (m_quiet) return;
    if (m_terminal ? now - m_last < kTerminalPause : now - m_last < kPlainPause) return;
    m_last = now;
    const double share =
        m_total == 0 ? 0 : static_cast<double>(bytesRead) / static_cast<double>(m_total);
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    const std::string line = text(m_name, share, frames, seconds);
    if (m_terminal) {
        const size_t blanks = m_drawn > line.size() ? m_drawn - line.size() : 0;
        fmt::print(stderr, "\r{}{}", line, std::string(blanks, ' '));
        m_drawn = line.size();
    } else {
        fmt::print(stderr, "{}\n", line);
    }
    (void)std::fflush(stderr);
}

void ProgressLine::finish() {
    if (m_drawn > 0) fmt::print(stderr, "\r{}\r", std::string(m_drawn, ' '));
    m_drawn = 0;
}

}  // namespace quilltrace
