#include <span>
#include <string_view>
#include <vector>

#include "TraceExport.h"
#include "quill_traceformats/OutputFile.h"
#include "quill_traceformats/asc_layout.h"

namespace quilltrace {
namespace {
namespace tf = quill::traceformats;

constexpr size_t kFlushBytes = 1U << 20U;

std::span<const uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

class AscExport final : public TraceExport {
public:
    bool open(const std::string& path, uint64_t startNs) override {
        const auto start = tf::calendarFromEpoch(startNs, tf::localOffsetSeconds(startNs));
        return m_file.create(path, bytesOf(tf::ascHeader(start)), m_error);
    }

    bool write(const tf::TraceFrame& frame) override {
        const size_t room = tf::ascLineRoom(frame);
        if (room == 0) {
            ++m_leftOut;
            return true;
        }
        const size_t at = m_text.size();
        m_text.resize(at + room);
        char* const line = m_text.data() + at;
        m_text.resize(at + static_cast<size_t>(tf::writeAscLine(frame, line) - line));
        return m_text.size() < kFlushBytes || flush();
    }

    bool close() override {
        m_text.insert(m_text.end(), tf::kAscEnd.begin(), tf::kAscEnd.end());
        const bool flushed = flush();
        if (m_file.close() && flushed) return true;
        if (m_error.empty()) m_error = m_file.errorText();
        return false;
    }

private:
    bool flush() {
        const bool written = m_file.append(bytesOf({m_text.data(), m_text.size()}));
        m_text.clear();
        if (!written) m_error = m_file.errorText();
        return written;
    }

    tf::OutputFile m_file;
    std::vector<char> m_text;
};
}  // namespace

std::unique_ptr<TraceExport> makeAscExport() { return std::make_unique<AscExport>(); }

}  // namespace quilltrace
