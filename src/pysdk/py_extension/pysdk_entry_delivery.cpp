// Receiving and transmitting of the entry.
#include <QString>
#include <memory>
#include <utility>

#include "core/log/Log.h"
#include "pysdk/py_extension/interpreter_lock.h"
#include "pysdk/py_extension/pysdk_entry.h"
#include "pysdk/py_extension/standard_output.h"

using quill::log::kPysdk;
using rv::BoxResult;
using scripts::CANCyclicFrameHandle;
using scripts::CANRawFrame;
using scripts::DeviceHandle;
using scripts::InterpreterRelease;
using scripts::ScriptCallback;

bool PySDKEntry::startTracing(const std::string& mac) {
    rv::RVBoxManager& boxes = *m_manager;
    const rv::TraceSubscriber subscriber{m_delivery, 0};
    const InterpreterRelease released;
    return boxes.start(QString::fromStdString(mac), subscriber);
}

bool PySDKEntry::stopTracing(const std::string& mac) {
    rv::RVBoxManager& boxes = *m_manager;
    const InterpreterRelease released;
    return boxes.stop(QString::fromStdString(mac));
}

bool PySDKEntry::subscribeCan(const DeviceHandle& handle, ScriptCallback callback) {
    m_delivery->registries().setCan(handle.deviceInfo.mac, std::move(callback));
    return startTracing(handle.deviceInfo.mac);
}

bool PySDKEntry::subscribeLin(const DeviceHandle& handle, ScriptCallback callback) {
    m_delivery->registries().setLin(handle.deviceInfo.mac, std::move(callback));
    return startTracing(handle.deviceInfo.mac);
}

bool PySDKEntry::subscribeEth(const DeviceHandle& handle, ScriptCallback callback) {
    m_delivery->registries().setEth(handle.deviceInfo.mac, std::move(callback));
    return startTracing(handle.deviceInfo.mac);
}

bool PySDKEntry::unsubscribeCan(const DeviceHandle& handle) {
    m_delivery->registries().removeCan(handle.deviceInfo.mac);
    return stopTracing(handle.deviceInfo.mac);
}

bool PySDKEntry::unsubscribeLin(const DeviceHandle& handle) {
    m_delivery->registries().removeLin(handle.deviceInfo.mac);
    return stopTracing(handle.deviceInfo.mac);
}

bool PySDKEntry::unsubscribeEth(const DeviceHandle& handle) {
    m_delivery->registries().removeEth(handle.deviceInfo.mac);
    return stopTracing(handle.deviceInfo.mac);
}

bool PySDKEntry::subscribeBatch(const DeviceHandle& handle, scripts::FrameViews::Bus bus,
                                std::shared_ptr<scripts::BatchSubscription> batch) {
    m_delivery->registries().setBatch(handle.deviceInfo.mac, bus, std::move(batch));
    return startTracing(handle.deviceInfo.mac);
}

bool PySDKEntry::unsubscribeBatch(const DeviceHandle& handle, scripts::FrameViews::Bus bus) {
    const std::string mac = handle.deviceInfo.mac;
    m_delivery->registries().setBatch(mac, bus, nullptr);
    if (m_delivery->registries().hasSubscription(mac) || m_delivery->recording().running()) {
        return true;
    }
    return stopTracing(mac);
}

void PySDKEntry::enableRecording(const std::string& path, std::vector<int32_t> channels,
                                 int64_t format) {
    const std::shared_ptr<scripts::FrameDelivery> delivery = m_delivery;
    bool started = false;
    {
        const InterpreterRelease released;
        started = delivery->recording().start(path, std::move(channels), format);
    }
    if (started) return;
    scripts::flushScriptOutput();
    scripts::writeLine("enableDataRecording and disableDataRecording are called in pairs");
}

void PySDKEntry::disableRecording() {
    const std::shared_ptr<scripts::FrameDelivery> delivery = m_delivery;
    const InterpreterRelease released;
    delivery->recording().stop();
}

playback::RecordingStatus PySDKEntry::recordingStatus() {
    const std::shared_ptr<scripts::FrameDelivery> delivery = m_delivery;
    const InterpreterRelease released;
    return delivery->recording().status();
}

BoxResult PySDKEntry::sendFrame(const DeviceHandle& handle, const CANRawFrame& frame,
                                scripts::FrameFormat format, const rv::FrameUpdate* update) {
    rv::RVBoxManager& boxes = *m_manager;
    std::string reason;
    const auto out = scripts::toSendFrame(frame, format, reason);
    if (!out) {
        QUILL_WARN(kPysdk, "frame refused: {}", reason);
        return BoxResult::InvalidParam;
    }
    const QString id = QString::fromStdString(handle.deviceInfo.mac);
    const InterpreterRelease released;
    return boxes.sendCanFrame(id, *out, update);
}

CANCyclicFrameHandle PySDKEntry::startCyclic(const DeviceHandle& handle, const CANRawFrame& frame,
                                             int32_t ms, int32_t limitCount,
                                             scripts::FrameFormat format,
                                             const rv::FrameUpdate* update) {
    rv::RVBoxManager& boxes = *m_manager;
    CANCyclicFrameHandle cyclic;
    cyclic.gid = scripts::makeJobId();
    cyclic.deviceInfo = handle;
    cyclic.ms = ms;
    cyclic.limitCount = limitCount;
    cyclic.mac = handle.deviceInfo.mac;
    cyclic.format = format;
    std::string reason;
    auto out = scripts::toSendFrame(frame, format, reason);
    if (!out) {
        QUILL_WARN(kPysdk, "cyclic frame refused: {}", reason);
        cyclic.result = BoxResult::InvalidParam;
        return cyclic;
    }
    rv::CyclicCanFrame job{cyclic.gid, std::move(*out), ms, limitCount, {}};
    if (update != nullptr) job.update = *update;
    const InterpreterRelease released;
    cyclic.result = boxes.addSendCanFrame(QString::fromStdString(cyclic.mac), job);
    return cyclic;
}

BoxResult PySDKEntry::stopCyclic(const CANCyclicFrameHandle& cyclic) {
    rv::RVBoxManager& boxes = *m_manager;
    const CANCyclicFrameHandle job = cyclic;
    const InterpreterRelease released;
    return boxes.removeSendCanFrame(QString::fromStdString(job.mac), job.gid);
}

BoxResult PySDKEntry::pauseCyclic(const CANCyclicFrameHandle& cyclic) {
    rv::RVBoxManager& boxes = *m_manager;
    const CANCyclicFrameHandle job = cyclic;
    const InterpreterRelease released;
    return boxes.pauseSendCanFrame(QString::fromStdString(job.mac), job.gid);
}

BoxResult PySDKEntry::resumeCyclic(const CANCyclicFrameHandle& cyclic) {
    rv::RVBoxManager& boxes = *m_manager;
    const CANCyclicFrameHandle job = cyclic;
    const InterpreterRelease released;
    return boxes.resumeSendCanFrame(QString::fromStdString(job.mac), job.gid);
}

BoxResult PySDKEntry::updateCyclic(const CANCyclicFrameHandle& cyclic, const CANRawFrame& frame) {
    rv::RVBoxManager& boxes = *m_manager;
    std::string reason;
    const auto out = scripts::toSendFrame(frame, cyclic.format, reason);
    if (!out) {
        QUILL_WARN(kPysdk, "update of cyclic frame {} refused: {}", cyclic.gid, reason);
        return BoxResult::InvalidParam;
    }
    const CANCyclicFrameHandle job = cyclic;
    const InterpreterRelease released;
    return boxes.updateSendCanFrame(QString::fromStdString(job.mac), job.gid, *out, job.ms);
}

BoxResult PySDKEntry::startLinTable(const DeviceHandle& handle,
                                    const scripts::LinScheduleTable& table) {
    rv::RVBoxManager& boxes = *m_manager;
    const std::vector<rv::LinSlot> slots = scripts::toBoxSlots(table);
    const QString id = QString::fromStdString(handle.deviceInfo.mac);
    const std::string name = table.name;
    const int32_t channel = table.channel_id;
    const InterpreterRelease released;
    return boxes.startLinScheduleTable(id, channel, name, slots);
}

BoxResult PySDKEntry::stopLinTable(const DeviceHandle& handle, int32_t channel) {
    rv::RVBoxManager& boxes = *m_manager;
    const QString id = QString::fromStdString(handle.deviceInfo.mac);
    const InterpreterRelease released;
    return boxes.stopLinScheduleTable(id, channel);
}
