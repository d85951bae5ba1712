#pragma once

#include "TraceSink.h"
#include "quill_traceformats/BlfFileWriter.h"

namespace rv {

// BLF: each block becomes one LOG_CONTAINER of whole objects.
class BlfSink final : public TraceSink {
public:
    BlfSink(int compressionLevel, int threads)
        : m_compressionLevel(compressionLevel), m_threads(threads) {}

    bool create(const std::string& utf8Path, uint64_t startNs, std::string& reason) override;
    size_t blockSize() const override { return quill::traceformats::kBlfContainerContent; }
    size_t roomFor(const quill::traceformats::TraceFrame& frame) const override;
    size_t encode(const quill::traceformats::TraceFrame& frame,
                  std::span<uint8_t> out) const override;
    std::vector<BlockPipeline::Pack> makePackers() const override;
    void packPlain(Block& block) const override;
    bool write(const Block& block) override;
    bool complete() override { return m_file.close(); }
    uint64_t fileSize() const override { return m_file.size(); }
    std::string errorText() const override { return m_file.errorText(); }

private:
    void setStart(uint64_t startNs);

    const int m_compressionLevel;
    const int m_threads;
    quill::traceformats::BlfFileWriter m_file;
    uint64_t m_startNs = 0;
    int32_t m_offsetSeconds = 0;  // local time at the start, kept for the whole recording
};

}  // namespace rv
