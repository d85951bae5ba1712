#include "core/hardware/boxdev/FrameUpdater.h"

#include <memory>
#include <utility>

#include "core/hardware/boxdev/FrameConversion.h"
#include "core/hardware/crc/Crc.h"
#include "core/hardware/crc/FrameUpdate.h"

namespace RV::BoxDev {
namespace {

using Crc::FrameUpdateSettings;

bool hasWork(const rv::FrameUpdate& update) {
    return update.counterEnabled || update.crcType != Crc::kNoCrc;
}

FrameUpdateSettings settingsOf(const rv::FrameUpdate& update, size_t dataLength) {
    FrameUpdateSettings settings;
    settings.dataLength = static_cast<int32_t>(dataLength);
    settings.counterEnabled = update.counterEnabled;
    settings.counterStartBit = update.counterStartBit;
    settings.counterLength = update.counterLength;
    settings.counterBigEndian = update.counterBigEndian;
    settings.resetPending = update.counterReset;
    settings.crcType = update.crcType;
    settings.crcStartBit = update.crcStartBit;
    settings.crcLength = update.crcLength;
    settings.crcBigEndian = update.crcBigEndian;
    settings.keyBytes = update.crcKey;
    return settings;
}

// Called by the device library with a fresh copy of the frame's data before every transmission.
bool updateOfJob(uint8_t* data, int32_t length, void* settings) {
    auto* own = static_cast<FrameUpdateSettings*>(settings);
    // The frame of a running job may have been replaced by one of another length.
    own->dataLength = length;
    return Crc::updateFrame({data, static_cast<size_t>(length)}, *own);
}

void releaseSettings(void* settings) { delete static_cast<FrameUpdateSettings*>(settings); }

}  // namespace

bool fillCycleJob(const CanSendRequest& request, RvCanCycleJob& job, std::string& reason) {
    request.uuid.copy(job.uuid, sizeof job.uuid - 1);
    job.frame = toLibrary(request.frame);
    job.periodMs = request.cycleMs;
    job.limitCount = request.limitCount;
    if (!hasWork(request.update)) return true;
    auto settings = std::make_unique<FrameUpdateSettings>(
        settingsOf(request.update, request.frame.data.size()));
    if (const auto fault = Crc::validate(*settings)) {
        reason = *fault;
        return false;
    }
    job.update = &updateOfJob;
    job.release = &releaseSettings;
    job.settings = settings.release();
    return true;
}

bool SingleSendCounters::apply(rv::CanSendFrame& frame, const rv::FrameUpdate& update,
                               std::string& reason) {
    if (!hasWork(update)) return true;
    FrameUpdateSettings settings = settingsOf(update, frame.data.size());
    if (const auto fault = Crc::validate(settings)) {
        reason = *fault;
        return false;
    }
    uint64_t& counter = m_counters[{frame.channel, frame.extend.IDE() != 0, frame.id}];
    settings.counter = counter;
    if (!Crc::updateFrame(frame.data, settings)) {
        reason = "counter or CRC does not fit the frame";
        return false;
    }
    counter = settings.counter;
    return true;
}

}  // namespace RV::BoxDev
