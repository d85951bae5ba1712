#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>
#include "core/hardware/RVBoxManager.h"
#include "core/hardware/RVBoxManagerImpl.h"
#include "core/hardware/boxdev/SendDocument.h"
#include "core/log/Log.h"
#include "core/log/ScopeTimer.h"

// Transmission: arguments are checked here, documents go to the box.
namespace rv {

using quill::log::kSimCore;
using RV::BoxDev::CanSendRequest;
using RV::BoxDev::CommandCode;

namespace {

BoxResult resultOf(CommandCode code) {
    switch (code) {
        case CommandCode::Done:
            return BoxResult::Done;
        case CommandCode::NoSuchJob:
            return BoxResult::NoSuchJob;
        case CommandCode::BadValue:
        case CommandCode::BadDocument:
            return BoxResult::InvalidParam;
        case CommandCode::TimedOut:
            return BoxResult::TimedOut;
        case CommandCode::NotConnected:
        case CommandCode::Stopped:
            return BoxResult::NotConnected;
        default:
            return BoxResult::DeviceRefused;
    }
}

// Payload length of a data length code; classic frames have at most 8 bytes.
size_t lengthOfDlc(uint8_t dlc, bool fd) {
    constexpr std::array<uint8_t, 16> kFdLengths = {0, 1,  2,  3,  4,  5,  6,  7,
                                                    8, 12, 16, 20, 24, 32, 48, 64};
    return fd ? kFdLengths[dlc & 15U] : std::min<size_t>(dlc, 8);
}

std::string checkFrame(const CanSendFrame& frame) {
    const bool fd = frame.extend.EDL() != 0;
    const uint32_t most = frame.extend.IDE() != 0 ? 0x1FFFFFFF : 0x7FF;
    if (frame.id > most) return "identifier " + std::to_string(frame.id) + " is out of range";
    if (fd && frame.extend.RTR() != 0) return "a CAN FD frame cannot be a remote frame";
    const size_t wanted = lengthOfDlc(frame.extend.DLC(), fd);
    const bool remote = frame.extend.RTR() != 0;
    if (!remote && frame.data.size() != wanted) {
        return "DLC " + std::to_string(frame.extend.DLC()) + " stands for " +
               std::to_string(wanted) + " data bytes, the frame has " +
               std::to_string(frame.data.size());
    }
    if (remote && !frame.data.empty()) return "a remote frame has no data";
    return {};
}

std::string describe(const CanSendFrame& frame) {
    return fmt::format("id 0x{:X} channel {} length {}", frame.id, frame.channel,
                       frame.data.size());
}

BoxResult refused(const std::string& deviceId, const std::string& reason) {
    QUILL_WARN(kSimCore, "not sent through {}: {}", deviceId, reason);
    return BoxResult::InvalidParam;
}

CanSendRequest cyclicRequest(const CyclicCanFrame& job) {
    CanSendRequest request;
    request.frame = job.frame;
    request.update = job.update;
    request.cyclic = true;
    request.uuid = job.gid;
    request.cycleMs = job.cycleMs;
    request.limitCount = job.limitCount;
    return request;
}

}  // namespace

BoxResult RVBoxManager::Impl::command(const std::string& deviceId, const std::string& text,
                                      const char* what) {
    const DeviceHub::Device device = lookUp(deviceId);
    if (device == nullptr) return BoxResult::NoSuchDevice;
    const auto answer = device->execute(text);
    if (answer.code != CommandCode::Done) {
        QUILL_WARN(kSimCore, "{} through {}: {} ({})", what, deviceId, answer.message,
                   static_cast<int32_t>(answer.code));
    }
    return resultOf(answer.code);
}

BoxResult RVBoxManager::sendCanFrame(const QString& deviceId, const CanSendFrame& frame,
                                     const FrameUpdate* update) {
    const std::string id = deviceId.toStdString();
    if (const std::string reason = checkFrame(frame); !reason.empty()) return refused(id, reason);
    CanSendRequest request;
    request.frame = frame;
    if (update != nullptr) request.update = *update;
    return m_impl->command(id, RV::BoxDev::buildCanSendDocument("StartSendCANFrame", id, request),
                           "send CAN frame");
}

BoxResult RVBoxManager::addSendCanFrame(const QString& deviceId, const CyclicCanFrame& job) {
    const std::string id = deviceId.toStdString();
    if (const std::string reason = checkFrame(job.frame); !reason.empty()) {
        return refused(id, reason);
    }
    if (job.cycleMs <= 0) return refused(id, "cycle time must be above 0 ms");
    return m_impl->command(
        id, RV::BoxDev::buildCanSendDocument("StartSendCANFrame", id, cyclicRequest(job)),
        "add cyclic CAN frame");
}

BoxResult RVBoxManager::addSendUdsCanFrame(const QString& deviceId, const CyclicCanFrame& job) {
    const std::string id = deviceId.toStdString();
    if (const std::string reason = checkFrame(job.frame); !reason.empty()) {
        return refused(id, reason);
    }
    CanSendRequest request = cyclicRequest(job);
    request.cyclic = job.cycleMs > 0;
    QUILL_INFO(kSimCore, "SendUdsCANFrame {} every {} ms through {}", describe(job.frame),
               job.cycleMs, id);
    return m_impl->command(id, RV::BoxDev::buildCanSendDocument("SendUdsCANFrame", id, request),
                           "send UDS CAN frame");
}

BoxResult RVBoxManager::removeSendCanFrame(const QString& deviceId, const std::string& gid) {
    const std::string id = deviceId.toStdString();
    return m_impl->command(id, RV::BoxDev::buildJobDocument("RemoveSendCANFrame", id, gid),
                           "remove cyclic CAN frame");
}

BoxResult RVBoxManager::pauseSendCanFrame(const QString& deviceId, const std::string& gid) {
    const std::string id = deviceId.toStdString();
    return m_impl->command(id, RV::BoxDev::buildJobDocument("PauseSendCANFrame", id, gid),
                           "pause cyclic CAN frame");
}

BoxResult RVBoxManager::resumeSendCanFrame(const QString& deviceId, const std::string& gid) {
    const std::string id = deviceId.toStdString();
    return m_impl->command(id, RV::BoxDev::buildJobDocument("ResumeSendCANFrame", id, gid),
                           "resume cyclic CAN frame");
}

BoxResult RVBoxManager::updateSendCanFrame(const QString& deviceId, const std::string& gid,
                                           const CanSendFrame& frame, int32_t cycleMs) {
    const std::string id = deviceId.toStdString();
    if (const std::string reason = checkFrame(frame); !reason.empty()) return refused(id, reason);
    if (cycleMs <= 0) return refused(id, "cycle time must be above 0 ms");
    CyclicCanFrame job;
    job.gid = gid;
    job.frame = frame;
    job.cycleMs = cycleMs;
    return m_impl->command(
        id, RV::BoxDev::buildCanSendDocument("UpdateSendCANFrame", id, cyclicRequest(job)),
        "update cyclic CAN frame");
}

BoxResult RVBoxManager::startLinScheduleTable(const QString& deviceId, int32_t channel,
                                              const std::string& name,
                                              const std::vector<LinSlot>& slots) {
    const std::string id = deviceId.toStdString();
    return m_impl->command(id, RV::BoxDev::buildLinScheduleDocument(id, {channel, name, slots}),
                           "start LIN schedule table");
}

BoxResult RVBoxManager::stopLinScheduleTable(const QString& deviceId, int32_t channel) {
    const std::string id = deviceId.toStdString();
    nlohmann::ordered_json document{
        {"cmd", "StopLinScheduleTable"}, {"id", id}, {"port_id", channel}};
    return m_impl->command(id, document.dump(), "stop LIN schedule table");
}

}  // namespace rv
