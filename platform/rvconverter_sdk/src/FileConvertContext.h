#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "BlockPipeline.h"
#include "RecordQueue.h"
#include "TraceSink.h"
#include "rvconverter/ConvertContext.h"

namespace rv {

// The open implementation: records wait in a bounded queue, the conversion loop lays them out in
// blocks, the pipeline packs these beside it, the persistence loop writes them in order.
class FileConvertContext final : public ConvertContext {
public:
    // Records that may wait for conversion, in bytes; at 200,000 CAN frames a second some 20 s.
    static constexpr size_t kMaxInputBytes = size_t{256} << 20U;
    // Blocks between the loops; bounds the memory there to some 8 MiB.
    static constexpr size_t kMaxBlocks = 16;

    // The sink has created its file; `startNs` stands until the first record tells better.
    FileConvertContext(std::unique_ptr<TraceSink> sink, uint64_t startNs,
                       size_t maxInputBytes = kMaxInputBytes);
    ~FileConvertContext() override { finishFile(); }
    FileConvertContext(const FileConvertContext&) = delete;
    FileConvertContext& operator=(const FileConvertContext&) = delete;

    void convertFrames() override;
    uint64_t pendingRecords() const override { return m_input.waitingRecords(); }
    void acceptRecords(std::vector<RecordHandle>&& records) override;
    void endOfInput() override { m_input.close(); }
    void persistFrames() override;
    uint64_t exportedFrames() const override { return m_written.load(); }
    ConvertStatistics statistics() const override;
    void close() override { finishFile(); }
    std::string errorText() const override;

private:
    using Frame = quill::traceformats::TraceFrame;

    // Marks a loop as running for its scope, so that close() can wait for it.
    class LoopGuard {
    public:
        explicit LoopGuard(FileConvertContext& context);
        ~LoopGuard();
        LoopGuard(const LoopGuard&) = delete;
        LoopGuard& operator=(const LoopGuard&) = delete;
        [[nodiscard]] bool mayRun() const { return m_mayRun; }

    private:
        FileConvertContext& m_context;
        bool m_mayRun;
    };

    // Conversion loop.
    void convertBatch(const std::vector<RecordHandle>& records);
    void fixStart(const std::vector<RecordHandle>& records);
    [[nodiscard]] uint64_t sinceStart(uint64_t epochNs) const;
    bool appendEvent(const Frame& frame);
    void appendLoss(const RecordQueue::Loss& loss);
    void submitBlock();

    // Persistence loop.
    void writeBlock(const Block& block);
    [[nodiscard]] bool writePendingLoss(uint64_t timeNs);
    void noteFailure(const std::string& text);

    void finishFile();

    const std::unique_ptr<TraceSink> m_sink;
    RecordQueue m_input;
    BlockPipeline m_pipeline;

    uint64_t m_startNs;  // conversion loop only, as the next two
    bool m_startFixed = false;
    std::unique_ptr<Block> m_block;

    RecordQueue::Loss m_unwritten;  // persistence loop only; times since the start
    uint64_t m_unwrittenStartNs = 0;

    std::atomic<uint64_t> m_accepted{0};
    std::atomic<uint64_t> m_skipped{0};
    std::atomic<uint64_t> m_converted{0};
    std::atomic<uint64_t> m_written{0};
    std::atomic<uint64_t> m_dropped{0};
    std::atomic<uint64_t> m_bytes{0};

    mutable std::mutex m_stateMutex;
    std::condition_variable m_loopEnded;
    int m_loops = 0;  // guarded by m_stateMutex, as all below
    bool m_closed = false;
    std::string m_error;
};

}  // namespace rv
