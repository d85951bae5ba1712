#include "core/playback/recorder/FrameRecorder.h"

#include <exception>
#include <stdexcept>

#include "core/log/Log.h"
#include "core/playback/recorder/RecordingFormat.h"
#include "quill_os/paths.h"
#include "quill_os/threads.h"
#include "rvconverter/ConvertToolkit.h"

namespace playback {

namespace {

using quill::log::kRecorder;
using namespace std::chrono_literals;

constexpr auto kAutoSavePeriod = 100ms;

uint64_t wallClockSeconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

std::chrono::steady_clock::duration steadyNow() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

std::shared_ptr<rv::ConvertContext> createContext(const RecorderConfig& config) {
    rv::ConvertInfo info;
    info.type = config.type;
    try {
        info.path = quill::os::wideFromUtf8(config.path);
    } catch (const std::exception& error) {
        QUILL_ERROR(kRecorder, "output path is no UTF-8 text: {}", error.what());
        return nullptr;
    }
    if (config.extraLimit > 0) {
        info.extraLimit = config.extraLimit;
        info.extraParam = config.extraParam;
    }
    auto context = rv::ConvertToolkit::createConvertContextPtr(info);
    if (!context) {
        QUILL_ERROR(kRecorder, "convert context: {}", rv::ConvertToolkit::lastError());
    }
    return context;
}

// Second of the oldest staged record; the first word of every record. Empty entries have none.
const uint32_t* firstSecond(const std::vector<rv::RecordHandle>& staged) {
    for (const rv::RecordHandle& entry : staged) {
        if (entry) return static_cast<const uint32_t*>(entry.record());
    }
    return nullptr;
}

}  // namespace

FrameRecorder::FrameRecorder(RecorderConfig config) : m_config(std::move(config)) {
    m_context = createContext(m_config);
    if (!m_context) {
        throw std::invalid_argument("create convert context fail, path " + m_config.path +
                                    ", type " + recordingFormatText(m_config.type));
    }
    m_staged.reserve(kStagingLimit);
}

FrameRecorder::~FrameRecorder() {
    bool stopped = false;
    {
        const std::lock_guard control(m_controlMutex);
        stopped = m_stopped;
    }
    if (!stopped) stopRecord();
}

void FrameRecorder::startRecord() {
    const std::lock_guard control(m_controlMutex);
    if (m_recording) {
        QUILL_ERROR(kRecorder, "repeatedly start recording");
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_frameNums = 0;
        m_startedAt = steadyNow();
        m_recording = true;
    }
    m_stopped = false;
    m_tasks.push_back(std::async(std::launch::async, [this] { convertTask(); }));
    m_tasks.push_back(std::async(std::launch::async, [this] { persistTask(); }));
    m_tasks.push_back(std::async(std::launch::async, [this] { autoSaveTask(); }));
}

void FrameRecorder::stopRecord() {
    const std::lock_guard control(m_controlMutex);
    {
        // Cleared under the mutex of the wait, else the automatic save could miss the wake-up.
        const std::lock_guard lock(m_mutex);
        if (m_recording.exchange(false)) m_stoppedAt = steadyNow();
    }
    m_stopWake.notify_all();
    if (!m_context) return;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_staged.empty()) {
            m_context->acceptRecords(std::move(m_staged));
            m_staged.clear();
        }
    }
    // Producers first, then the loops in the order of the data, the file last.
    m_context->endOfInput();
    for (std::future<void>& task : m_tasks) task.wait();
    m_tasks.clear();
    m_context->close();
    m_stopped = true;
    logFailureOnce();
    QUILL_INFO(kRecorder, "FrameRecorder stop. record frame num {}", offeredFrames());
}

void FrameRecorder::recordFrame(const rv::Frame& frame) {
    if (!m_recording) return;
    const std::lock_guard lock(m_mutex);
    // A stop in between has handed over the last list; nothing may follow it.
    if (!m_recording) return;
    ++m_frameNums;
    if (m_staged.size() >= kStagingLimit) handOverAndRenew();
    m_staged.push_back(m_builder.build(frame));
}

void FrameRecorder::handOverAndRenew() {
    m_context->acceptRecords(std::move(m_staged));
    m_staged.clear();  // a library may leave entries behind
    std::vector<rv::RecordHandle> fresh;
    fresh.reserve(kStagingLimit);
    m_staged = std::move(fresh);
}

void FrameRecorder::convertTask() {
    quill::os::setCurrentThreadName("rec-convert");
    QUILL_INFO(kRecorder, "start to convertFrames at memory");
    m_context->convertFrames();
    QUILL_INFO(kRecorder, "convertFrames finish at memory");
}

void FrameRecorder::persistTask() {
    quill::os::setCurrentThreadName("rec-persist");
    QUILL_INFO(kRecorder, "start to persistence frames");
    m_context->persistFrames();
    QUILL_INFO(kRecorder, "record finish, export frames {}, queryTotalNums {}",
               m_context->exportedFrames(), offeredFrames());
}

void FrameRecorder::autoSaveTask() {
    quill::os::setCurrentThreadName("rec-autosave");
    std::unique_lock lock(m_mutex);
    while (m_recording) {
        saveIfDue();
        m_stopWake.wait_for(lock, kAutoSavePeriod, [this] { return !m_recording; });
        lock.unlock();
        logFailureOnce();
        lock.lock();
    }
}

void FrameRecorder::saveIfDue() {
    const uint32_t* second = firstSecond(m_staged);
    if (second == nullptr || !isDue(*second, wallClockSeconds())) return;
    QUILL_INFO(kRecorder, "save automatically more than 3 seconds, frame nums {}", m_staged.size());
    handOverAndRenew();
}

uint64_t FrameRecorder::offeredFrames() const {
    const std::lock_guard lock(m_mutex);
    return m_frameNums;
}

void FrameRecorder::logFailureOnce() {
    if (m_failureLogged) return;
    const std::string error = m_context->errorText();
    if (error.empty() || m_failureLogged.exchange(true)) return;
    QUILL_ERROR(kRecorder, "recording to {} loses frames: {}", m_config.path, error);
}

RecordingStatus FrameRecorder::status() const {
    RecordingStatus status;
    const rv::ConvertStatistics library = m_context->statistics();
    {
        const std::lock_guard lock(m_mutex);
        status.recording = m_recording;
        status.offered = m_frameNums;
        status.staged = m_staged.size();
        const auto end = status.recording ? steadyNow() : m_stoppedAt.load();
        status.seconds = std::chrono::duration<double>(end - m_startedAt.load()).count();
    }
    status.converted = library.converted;
    status.written = library.written;
    status.dropped = library.dropped;
    status.skipped = library.skipped;
    status.bytes = library.bytes;
    status.error = m_context->errorText();
    return status;
}

}  // namespace playback
