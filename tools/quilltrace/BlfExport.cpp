#include <vector>

#include "TraceExport.h"
#include "quill_traceformats/BlfContainerPacker.h"
#include "quill_traceformats/BlfFileWriter.h"
#include "quill_traceformats/blf_objects.h"

namespace quilltrace {
namespace {
namespace tf = quill::traceformats;

constexpr int kCompression = 6;

class BlfExport final : public TraceExport {
public:
    bool open(const std::string& path, uint64_t startNs) override {
        m_startNs = startNs;
        m_offset = tf::localOffsetSeconds(startNs);
        tf::BlfHeader header;
        header.compressionLevel = kCompression;
        header.start = tf::calendarFromEpoch(startNs, m_offset);
        header.last = header.start;
        return m_file.create(path, header, m_error);
    }

    bool write(const tf::TraceFrame& frame) override {
        const size_t size = tf::blfObjectSize(frame);
        if (size == 0) {
            ++m_leftOut;
            return true;
        }
        const size_t at = m_content.size();
        m_content.resize(at + size);
        tf::encodeBlfFrame(frame, m_content.data() + at);
        m_objects += tf::blfObjectsOf(frame);
        m_lastNs = frame.timeNs;
        return m_content.size() < tf::kBlfContainerContent || flush();
    }

    bool close() override {
        const bool flushed = m_content.empty() || flush();
        if (m_file.close() && flushed) return true;
        if (m_error.empty()) m_error = m_file.errorText();
        return false;
    }

private:
    bool flush() {
        const size_t packed = m_packer.pack(m_content, m_packed);
        tf::BlfFileWriter::ContainerFacts facts;
        facts.contentSize = m_content.size();
        facts.objects = m_objects;
        facts.start = tf::calendarFromEpoch(m_startNs, m_offset);
        facts.last = tf::calendarFromEpoch(m_startNs + m_lastNs, m_offset);
        m_content.clear();
        m_objects = 0;
        if (m_file.append({m_packed.data(), packed}, facts)) return true;
        m_error = m_file.errorText();
        return false;
    }

    tf::BlfFileWriter m_file;
    tf::BlfContainerPacker m_packer{kCompression};
    std::vector<uint8_t> m_content;
    std::vector<uint8_t> m_packed;
    uint64_t m_startNs = 0;
    uint64_t m_lastNs = 0;
    int32_t m_offset = 0;
    uint32_t m_objects = 0;
};
}  // namespace

std::unique_ptr<TraceExport> makeBlfExport() { return std::make_unique<BlfExport>(); }

}  // namespace quilltrace
