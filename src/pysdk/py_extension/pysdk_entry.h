#pragma once

#include <QObject>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pysdk/py_extension/device_records.h"
#include "pysdk/py_extension/frame_delivery.h"
#include "pysdk/py_extension/schedule_table.h"
#include "pysdk/py_extension/transmit_records.h"

// The one object behind all script functions. Its operations are called with the interpreter lock
// held and give it up wherever they wait. While they wait, exit() may destroy the entry, so none
// of them touches a member after a wait: they go on with the box manager, which is never deleted,
// and with the delivery, which they share.
class PySDKEntry : public QObject {
public:
    // The entry, created on first use. Raises RuntimeError after exit().
    static PySDKEntry& instance();
    // The entry if there is one that has not been destroyed.
    static PySDKEntry* existing();
    // exit(): destroys the entry, which is created first when there is none. The second call does
    // nothing. Raises RuntimeError inside a frame callable, whose thread exit() must wait for.
    static void destroyInstance();
    // For the end of an interpreter whose script did not call exit().
    static void closeAtInterpreterEnd();

    PySDKEntry();
    ~PySDKEntry() override;

    // Waits until a box is known, at least a second when there is none at first. Raises what a
    // signal handler raises.
    void waitScanBoxResult(int64_t timeoutMs);
    [[nodiscard]] std::vector<scripts::DeviceHandle> getDeviceList();
    [[nodiscard]] std::optional<scripts::DeviceHandle> getDeviceHandle(const std::string& mac);
    [[nodiscard]] std::optional<scripts::RVBoxDeviceInfo> GetDeviceInfo(const std::string& mac);
    // The box's answer fills the handle's configuration; false when there is none.
    [[nodiscard]] bool readConfig(scripts::DeviceHandle& handle);
    // Writes the handle's configuration to the box and keeps in it what the box then answers.
    [[nodiscard]] bool writeConfig(scripts::DeviceHandle& handle);
    [[nodiscard]] std::string statusText(const scripts::DeviceHandle& handle);

    // Settings of an update belong to the caller and stay unchanged for the whole call.
    rv::BoxResult sendFrame(const scripts::DeviceHandle& handle, const scripts::CANRawFrame& frame,
                            scripts::FrameFormat format, const rv::FrameUpdate* update);
    [[nodiscard]] scripts::CANCyclicFrameHandle startCyclic(const scripts::DeviceHandle& handle,
                                                            const scripts::CANRawFrame& frame,
                                                            int32_t ms, int32_t limitCount,
                                                            scripts::FrameFormat format,
                                                            const rv::FrameUpdate* update);
    [[nodiscard]] rv::BoxResult stopCyclic(const scripts::CANCyclicFrameHandle& cyclic);
    [[nodiscard]] rv::BoxResult pauseCyclic(const scripts::CANCyclicFrameHandle& cyclic);
    [[nodiscard]] rv::BoxResult resumeCyclic(const scripts::CANCyclicFrameHandle& cyclic);
    [[nodiscard]] rv::BoxResult updateCyclic(const scripts::CANCyclicFrameHandle& cyclic,
                                             const scripts::CANRawFrame& frame);
    rv::BoxResult startLinTable(const scripts::DeviceHandle& handle,
                                const scripts::LinScheduleTable& table);
    rv::BoxResult stopLinTable(const scripts::DeviceHandle& handle, int32_t channel);

    // An empty callable is stored like any other. True when tracing could be started.
    [[nodiscard]] bool subscribeCan(const scripts::DeviceHandle& handle,
                                    scripts::ScriptCallback callback);
    [[nodiscard]] bool subscribeLin(const scripts::DeviceHandle& handle,
                                    scripts::ScriptCallback callback);
    [[nodiscard]] bool subscribeEth(const scripts::DeviceHandle& handle,
                                    scripts::ScriptCallback callback);
    // True when tracing could be stopped.
    [[nodiscard]] bool unsubscribeCan(const scripts::DeviceHandle& handle);
    [[nodiscard]] bool unsubscribeLin(const scripts::DeviceHandle& handle);
    [[nodiscard]] bool unsubscribeEth(const scripts::DeviceHandle& handle);

    // Subscriptions whose callable takes lists; CAN and LIN. Unsubscribing leaves tracing on while
    // the box has another subscription or a recording runs.
    [[nodiscard]] bool subscribeBatch(const scripts::DeviceHandle& handle,
                                      scripts::FrameViews::Bus bus,
                                      std::shared_ptr<scripts::BatchSubscription> batch);
    [[nodiscard]] bool unsubscribeBatch(const scripts::DeviceHandle& handle,
                                        scripts::FrameViews::Bus bus);

    // A second start while a recording runs only tells of it. Raises ValueError when the file
    // cannot be made.
    void enableRecording(const std::string& path, std::vector<int32_t> channels, int64_t format);
    void disableRecording();
    [[nodiscard]] playback::RecordingStatus recordingStatus();

    [[nodiscard]] scripts::FrameDelivery& delivery() { return *m_delivery; }
    // For calls that wait: the delivery stays when exit() destroys the entry meanwhile.
    [[nodiscard]] std::shared_ptr<scripts::FrameDelivery> deliveryPtr() { return m_delivery; }
    [[nodiscard]] rv::RVBoxManager& manager() { return *m_manager; }

private:
    [[nodiscard]] bool startTracing(const std::string& mac);
    [[nodiscard]] bool stopTracing(const std::string& mac);

    // Holds the six registries and the recording. Shared with the box manager, which outlives the
    // entry.
    std::shared_ptr<scripts::FrameDelivery> m_delivery;
    rv::RVBoxManager* m_manager;  // stays alive until the process ends
};
