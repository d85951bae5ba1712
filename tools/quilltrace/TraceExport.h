#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "quill_traceformats/TraceFrame.h"

namespace quilltrace {

// Writes frames into one trace file. Times of the frames count from the start of measurement.
class TraceExport {
public:
    TraceExport() = default;
    virtual ~TraceExport() = default;
    TraceExport(const TraceExport&) = delete;
    TraceExport& operator=(const TraceExport&) = delete;

    // False with errorText set when the file cannot be written.
    [[nodiscard]] virtual bool open(const std::string& path, uint64_t startNs) = 0;
    // True also for a frame that the format has no form for; it is counted as left out.
    [[nodiscard]] virtual bool write(const quill::traceformats::TraceFrame& frame) = 0;
    [[nodiscard]] virtual bool close() = 0;

    [[nodiscard]] const std::string& errorText() const { return m_error; }
    [[nodiscard]] uint64_t leftOut() const { return m_leftOut; }

protected:
    std::string m_error;
    uint64_t m_leftOut = 0;
};

[[nodiscard]] std::unique_ptr<TraceExport> makeBlfExport();
[[nodiscard]] std::unique_ptr<TraceExport> makeAscExport();

}  // namespace quilltrace
