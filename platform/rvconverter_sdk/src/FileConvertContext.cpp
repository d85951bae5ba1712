#include "FileConvertContext.h"

#include <algorithm>
#include <limits>

#include "quill_traceformats/blf_objects.h"
#include "record_frame.h"

namespace rv {

namespace tf = quill::traceformats;

namespace {

constexpr uint64_t kNsPerMs = 1'000'000U;

// Records of a list that hold a frame.
uint64_t countFrames(const std::vector<RecordHandle>& records) {
    return static_cast<uint64_t>(std::count_if(
        records.begin(), records.end(), [](const RecordHandle& record) { return bool(record); }));
}

tf::TraceFrame lossMarker(uint64_t frames, uint64_t firstNs, uint64_t lastNs) {
    tf::TraceFrame marker;
    marker.kind = tf::FrameKind::LossMarker;
    marker.timeNs = lastNs;
    marker.firstLostNs = firstNs;
    marker.lostFrames =
        static_cast<uint32_t>(std::min<uint64_t>(frames, std::numeric_limits<uint32_t>::max()));
    return marker;
}

}  // namespace

FileConvertContext::LoopGuard::LoopGuard(FileConvertContext& context) : m_context(context) {
    const std::lock_guard lock(m_context.m_stateMutex);
    m_mayRun = !m_context.m_closed;
    if (m_mayRun) ++m_context.m_loops;
}

FileConvertContext::LoopGuard::~LoopGuard() {
    if (!m_mayRun) return;
    const std::lock_guard lock(m_context.m_stateMutex);
    --m_context.m_loops;
    m_context.m_loopEnded.notify_all();
}

FileConvertContext::FileConvertContext(std::unique_ptr<TraceSink> sink, uint64_t startNs,
                                       size_t maxInputBytes)
    : m_sink(std::move(sink)),
      m_input(maxInputBytes),
      m_pipeline(kMaxBlocks, m_sink->makePackers()),
      m_startNs(startNs),
      m_bytes(m_sink->fileSize()) {}

void FileConvertContext::acceptRecords(std::vector<RecordHandle>&& records) {
    const uint64_t entries = records.size();
    const uint64_t frames = countFrames(records);
    m_accepted += entries;
    m_skipped += entries - frames;
    if (m_input.push(std::move(records))) return;
    m_dropped += frames;
    noteFailure("input: records come faster than they can be converted");
}

void FileConvertContext::convertFrames() {
    const LoopGuard guard(*this);
    if (!guard.mayRun()) return;
    while (const auto batch = m_input.pop()) {
        if (batch->before.frames != 0) appendLoss(batch->before);
        convertBatch(batch->records);
        // What was handed over must not wait here for more: a crash would cost it.
        if (m_input.empty()) submitBlock();
    }
    submitBlock();
    m_pipeline.finish();
}

void FileConvertContext::fixStart(const std::vector<RecordHandle>& records) {
    uint64_t earliest = 0;
    for (const RecordHandle& record : records) {
        const uint64_t time = recordTimeNs(record);
        if (record && (earliest == 0 || time < earliest)) earliest = time;
    }
    if (earliest == 0) return;
    // Headers count in milliseconds: the start is cut to them, the events keep the difference.
    m_startNs = earliest / kNsPerMs * kNsPerMs;
    m_startFixed = true;
}

uint64_t FileConvertContext::sinceStart(uint64_t epochNs) const {
    return epochNs > m_startNs ? epochNs - m_startNs : 0;
}

void FileConvertContext::convertBatch(const std::vector<RecordHandle>& records) {
    if (!m_startFixed) fixStart(records);
    uint64_t converted = 0;
    uint64_t unfit = 0;
    tf::TraceFrame frame;
    for (const RecordHandle& record : records) {
        if (!record) continue;
        if (frameFromRecord(record, frame)) {
            frame.timeNs = sinceStart(frame.timeNs);
            if (appendEvent(frame)) {
                ++m_block->frames;
                ++converted;
                continue;
            }
        }
        ++unfit;
    }
    m_converted += converted;
    m_skipped += unfit;
}

bool FileConvertContext::appendEvent(const Frame& frame) {
    const size_t room = m_sink->roomFor(frame);
    if (room == 0) return false;
    if (m_block && m_block->used + room > m_sink->blockSize()) submitBlock();
    if (!m_block) {
        m_block = m_pipeline.take();
        m_block->startNs = m_startNs;
        m_block->firstNs = frame.timeNs;
        m_block->content.resize(std::max(m_block->content.size(), m_sink->blockSize()));
    }
    if (m_block->content.size() < room) m_block->content.resize(room);
    m_block->used += m_sink->encode(frame, {m_block->content.data() + m_block->used, room});
    m_block->objects += tf::blfObjectsOf(frame);
    m_block->lastNs = frame.timeNs;
    return true;
}

void FileConvertContext::appendLoss(const RecordQueue::Loss& loss) {
    appendEvent(lossMarker(loss.frames, sinceStart(loss.firstNs), sinceStart(loss.lastNs)));
}

void FileConvertContext::submitBlock() {
    if (!m_block) return;
    const uint64_t frames = m_block->frames;
    if (!m_pipeline.submit(std::move(m_block))) m_dropped += frames;
    m_block.reset();
}

void FileConvertContext::persistFrames() {
    const LoopGuard guard(*this);
    if (!guard.mayRun()) return;
    uint64_t lastNs = 0;
    while (std::unique_ptr<Block> block = m_pipeline.next()) {
        lastNs = block->lastNs;
        writeBlock(*block);
        m_pipeline.recycle(std::move(block));
    }
    static_cast<void>(writePendingLoss(lastNs));
}

void FileConvertContext::writeBlock(const Block& block) {
    m_unwrittenStartNs = block.startNs;
    if (writePendingLoss(block.firstNs) && m_sink->write(block)) {
        m_written += block.frames;
        m_bytes = m_sink->fileSize();
        return;
    }
    noteFailure(m_sink->errorText());
    m_dropped += block.frames;
    if (m_unwritten.frames == 0) m_unwritten.firstNs = block.firstNs;
    m_unwritten.frames += block.frames;
    m_unwritten.lastNs = block.lastNs;
}

bool FileConvertContext::writePendingLoss(uint64_t timeNs) {
    if (m_unwritten.frames == 0) return true;
    const Frame marker =
        lossMarker(m_unwritten.frames, m_unwritten.firstNs, std::max(timeNs, m_unwritten.lastNs));
    Block block;
    block.content.resize(m_sink->roomFor(marker));
    block.used = m_sink->encode(marker, block.content);
    block.objects = tf::blfObjectsOf(marker);
    block.startNs = m_unwrittenStartNs;
    block.lastNs = marker.timeNs;
    m_sink->packPlain(block);
    if (!m_sink->write(block)) return false;
    m_unwritten = {};
    m_bytes = m_sink->fileSize();
    return true;
}

void FileConvertContext::noteFailure(const std::string& text) {
    const std::lock_guard lock(m_stateMutex);
    if (m_error.empty()) m_error = text;
}

ConvertStatistics FileConvertContext::statistics() const {
    ConvertStatistics statistics;
    statistics.accepted = m_accepted;
    statistics.skipped = m_skipped;
    statistics.converted = m_converted;
    statistics.written = m_written;
    statistics.dropped = m_dropped;
    statistics.bytes = m_bytes;
    return statistics;
}

std::string FileConvertContext::errorText() const {
    const std::lock_guard lock(m_stateMutex);
    return m_error;
}

void FileConvertContext::finishFile() {
    m_input.close();
    m_pipeline.stop();
    {
        std::unique_lock lock(m_stateMutex);
        const bool first = !m_closed;
        m_closed = true;
        m_loopEnded.wait(lock, [this] { return m_loops == 0; });
        if (!first) return;
    }
    if (!m_sink->complete()) noteFailure(m_sink->errorText());
    m_bytes = m_sink->fileSize();
}

}  // namespace rv
