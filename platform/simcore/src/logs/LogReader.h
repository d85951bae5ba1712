#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "engine/NetworkPlan.h"
#include "logs/LineSource.h"

namespace simcore::logs {

// One frame of a recorded log.
struct LogFrame {
    int64_t timeNs = 0;      // on the log's own axis
    std::string channel;     // as a network document names it: "1", "L1", "E1", or "vcan0"
    uint32_t number = 1;     // of the channel among those of its bus kind, from 1
    engine::AnyFrame frame;  // normalised
};

enum class LineResult : uint8_t { frame, noFrame, unreadable };

// A log of one format, read line by line. A line that cannot be read is counted and passed over.
class LogReader {
public:
    virtual ~LogReader() = default;

    // Picks the format by extension and content; null with a reason that names the file.
    [[nodiscard]] static std::unique_ptr<LogReader> open(const std::string& path,
                                                         std::string& reason);
    // The same over a log in memory; `name` stands for the path.
    [[nodiscard]] static std::unique_ptr<LogReader> openText(const std::string& name,
                                                             std::string text, std::string& reason);
    // False at the end of the log.
    [[nodiscard]] bool next(LogFrame& frame);
    void rewind();
    [[nodiscard]] uint64_t unreadableLines() const { return m_unreadable; }

protected:
    virtual LineResult parse(std::string_view line, LogFrame& frame) = 0;
    virtual void begin() {}

private:
    [[nodiscard]] static std::unique_ptr<LogReader> openLines(const std::string& name,
                                                              LineSource lines,
                                                              std::string& reason);

    LineSource m_lines;
    uint64_t m_unreadable = 0;
};

}  // namespace simcore::logs
