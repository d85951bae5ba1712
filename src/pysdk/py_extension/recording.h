#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/frame/Frame.h"
#include "core/playback/recorder/FrameRecorder.h"

namespace scripts {

// The recording that scripts switch on and off. Shared by the entry and the delivery.
class Recording {
public:
    // Starts to record the channels of all kinds with these numbers, all channels when there are
    // none. False when a recording runs; it goes on unchanged. Throws std::invalid_argument when
    // the file cannot be made.
    [[nodiscard]] bool start(const std::string& path, std::vector<int32_t> channels,
                             int64_t format);
    // Completes the file and forgets the recorder; does nothing without one.
    void stop();

    // Called by the dispatch thread for every delivered frame.
    void offer(const rv::Frame& frame);

    [[nodiscard]] bool running() const;
    // Of the running recording, else of the last one.
    [[nodiscard]] playback::RecordingStatus status() const;

private:
    std::mutex m_controlMutex;  // one start or stop at a time
    mutable std::mutex m_mutex;
    std::atomic<bool> m_active{false};  // spares frames the mutex while nothing is recorded
    std::unique_ptr<playback::FrameRecorder> m_recorder;  // guarded by m_mutex
    std::vector<int32_t> m_channels;                      // guarded by m_mutex
    playback::RecordingStatus m_last;                     // guarded by m_mutex
};

[[nodiscard]] std::string toText(const playback::RecordingStatus& status);

}  // namespace scripts
