#pragma once

#include "TraceSink.h"
#include "quill_traceformats/OutputFile.h"

namespace rv {

// ASC text: blocks are whole lines and reach the file as they are.
class AscSink final : public TraceSink {
public:
    bool create(const std::string& utf8Path, uint64_t startNs, std::string& reason) override;
    size_t blockSize() const override { return size_t{256} * 1024; }
    size_t roomFor(const quill::traceformats::TraceFrame& frame) const override;
    size_t encode(const quill::traceformats::TraceFrame& frame,
                  std::span<uint8_t> out) const override;
    std::vector<BlockPipeline::Pack> makePackers() const override { return {}; }
    void packPlain(Block&) const override {}
    bool write(const Block& block) override;
    bool complete() override;
    uint64_t fileSize() const override { return m_file.size(); }
    std::string errorText() const override { return m_file.errorText(); }

private:
    quill::traceformats::OutputFile m_file;
    uint64_t m_startNs = 0;
};

}  // namespace rv
