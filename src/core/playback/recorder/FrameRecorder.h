#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/frame/Frame.h"
#include "core/playback/recorder/RecordBuilder.h"
#include "rvconverter/ConvertContext.h"

namespace playback {

// What to record into.
struct RecorderConfig {
    std::string path;        // UTF-8
    uint32_t type = 0;       // output format: 0 BLF, 1 ASC
    int32_t extraParam = 1;  // reach the converter library only when extraLimit is positive
    int32_t extraLimit = -1;
};

// Progress of a recording. Frames offered are at any moment staged, waiting in the converter
// library, or counted as written, dropped or skipped.
struct RecordingStatus {
    bool recording = false;
    uint64_t offered = 0;
    uint64_t staged = 0;     // in memory, not yet handed over
    uint64_t converted = 0;  // laid out in the output format
    uint64_t written = 0;    // in the file
    uint64_t dropped = 0;    // lost: the file could not be written, or frames came too fast
    uint64_t skipped = 0;    // frames that the format cannot hold
    uint64_t bytes = 0;      // size of the file
    double seconds = 0;      // since the start, until the stop
    std::string error;       // first failure; empty without one
};

// Writes received frames into one trace file. Frames are staged in memory and handed to the
// converter library in lists: when 10000 are staged, when the oldest is more than three seconds
// old, and at the stop. Made for one recording: created, recording, stopped.
class FrameRecorder {
public:
    static constexpr size_t kStagingLimit = 10000;

    // Creates the file. Throws std::invalid_argument when the converter library cannot.
    explicit FrameRecorder(RecorderConfig config);
    // Ends the recording if it still runs.
    ~FrameRecorder();
    FrameRecorder(const FrameRecorder&) = delete;
    FrameRecorder& operator=(const FrameRecorder&) = delete;

    void startRecord();

    // Hands over what is staged and waits until the file is complete.
    void stopRecord();

    // Offers one frame; called by the delivery thread and never waits for conversion. A missing
    // frame, and any frame while not recording, is ignored.
    void recordFrame(const rv::Frame& frame);
    void recordFrame(const rv::FrameHolder& frame) {
        if (frame) recordFrame(*frame);
    }

    [[nodiscard]] RecordingStatus status() const;

    // Whether a list whose first frame has this second is due to be saved at that second.
    [[nodiscard]] static constexpr bool isDue(uint64_t firstSecond, uint64_t nowSecond) {
        return firstSecond + 3 < nowSecond;
    }

private:
    void convertTask();
    void persistTask();
    void autoSaveTask();
    void saveIfDue();         // with the mutex held
    void handOverAndRenew();  // likewise
    void logFailureOnce();
    [[nodiscard]] uint64_t offeredFrames() const;

    RecorderConfig m_config;
    std::vector<std::future<void>> m_tasks;
    std::shared_ptr<rv::ConvertContext> m_context;
    uint64_t m_frameNums = 0;                // guarded by m_mutex
    std::vector<rv::RecordHandle> m_staged;  // guarded by m_mutex
    mutable std::mutex m_mutex;
    std::atomic<bool> m_recording{false};

    RecordBuilder m_builder;             // guarded by m_mutex
    std::condition_variable m_stopWake;  // with m_mutex; the flag was cleared
    std::mutex m_controlMutex;           // one start or stop at a time
    bool m_stopped = false;              // guarded by m_controlMutex
    std::atomic<bool> m_failureLogged{false};
    std::atomic<std::chrono::steady_clock::duration> m_startedAt{};
    std::atomic<std::chrono::steady_clock::duration> m_stoppedAt{};
};

}  // namespace playback
