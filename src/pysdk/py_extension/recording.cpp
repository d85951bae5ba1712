#include "pysdk/py_extension/recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace scripts {

bool Recording::start(const std::string& path, std::vector<int32_t> channels, int64_t format) {
    const std::lock_guard control(m_controlMutex);
    {
        const std::lock_guard lock(m_mutex);
        if (m_recorder) return false;
    }
    playback::RecorderConfig config;
    config.path = path;
    config.type = format == 1 ? 1 : 0;
    config.extraParam = 1;
    config.extraLimit = -1;
    auto recorder = std::make_unique<playback::FrameRecorder>(std::move(config));
    recorder->startRecord();
    const std::lock_guard lock(m_mutex);
    m_recorder = std::move(recorder);
    m_channels = std::move(channels);
    m_active.store(true, std::memory_order_release);
    return true;
}

void Recording::stop() {
    const std::lock_guard control(m_controlMutex);
    std::unique_ptr<playback::FrameRecorder> recorder;
    {
        const std::lock_guard lock(m_mutex);
        m_active.store(false, std::memory_order_release);
        recorder = std::move(m_recorder);
    }
    if (!recorder) return;
    // Completing the file takes its time; frames are delivered meanwhile.
    recorder->stopRecord();
    const std::lock_guard lock(m_mutex);
    m_last = recorder->status();
}

void Recording::offer(const rv::Frame& frame) {
    if (!m_active.load(std::memory_order_acquire)) return;
    const std::lock_guard lock(m_mutex);
    if (!m_recorder) return;
    if (!m_channels.empty() && std::find(m_channels.begin(), m_channels.end(),
                                         int32_t{frame.channel}) == m_channels.end()) {
        return;
    }
    m_recorder->recordFrame(frame);
}

bool Recording::running() const {
    const std::lock_guard lock(m_mutex);
    return m_recorder != nullptr;
}

playback::RecordingStatus Recording::status() const {
    const std::lock_guard lock(m_mutex);
    return m_recorder ? m_recorder->status() : m_last;
}

std::string toText(const playback::RecordingStatus& status) {
    return fmt::format(
        "RecordingStatus(recording={}, offered={}, staged={}, converted={}, written={}, "
        "dropped={}, skipped={}, bytes={}, seconds={:.3f}, error={})",
        status.recording, status.offered, status.staged, status.converted, status.written,
        status.dropped, status.skipped, status.bytes, status.seconds, status.error);
}

}  // namespace scripts
