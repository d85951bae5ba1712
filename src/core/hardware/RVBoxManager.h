#pragma once

#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/hardware/ReceiveCallback.h"
#include "core/hardware/RoadCounters.h"
#include "core/hardware/boxdev/BoxConfig.h"
#include "core/hardware/boxdev/TransmitTypes.h"

namespace rv {

// What scripts of the entry are told about boxes coming and going; printed, never delivered.
struct DeviceNotice {
    uint32_t type = 0;  // 0 new, 1 lost, 2 DIP-switch change
    std::string name;
    std::string deviceId;
    std::string message;
};
using DeviceNoticeFn = std::function<void(std::shared_ptr<DeviceNotice>)>;

// Receiver of a device's frames with the subscription's flag byte. No callback drops the receiver.
struct TraceSubscriber {
    ReceiveCallback callback;
    uint8_t flag = 0;
};

// Channel kinds of the channel tables.
enum class ChannelType : int { FlexRay = 1, Can = 2, Ethernet = 8, Lin = 32 };
// Channel index counted from 0 and enabled flag.
using ChannelTable = std::map<ChannelType, std::vector<std::pair<int, int>>>;
// "CAN", "LIN", "ETH" or "FLEXRAY".
[[nodiscard]] const char* channelKindText(ChannelType type);

// The one object through which the rest of the system uses the boxes. Devices are addressed by
// their identifier, the MAC address text of a box. Thread-safe. An unknown identifier is answered
// with a false or empty result and the warning "no such device: {}".
class RVBoxManager : public QObject {
public:
    explicit RVBoxManager(void* context = nullptr, QObject* parent = nullptr);
    ~RVBoxManager() override;

    // Starts discovery; `notice` runs on the library's and the discovery's threads. False when the
    // device library cannot be started; the reason is logged.
    [[nodiscard]] bool init(DeviceNoticeFn notice);

    void refreshDeviceList();
    void setDeviceExpanded(const QString& deviceId, bool expanded);
    void deleteDevice(const QString& deviceId);

    // Identifiers of all known boxes that have a MAC address, in the order they were found.
    [[nodiscard]] std::vector<std::string> deviceMacs() const;
    [[nodiscard]] std::optional<ChannelTable> channelTable(const QString& deviceId) const;

    // Channels have names: "<box name>.CAN1" is the first CAN channel of the boxes of that name,
    // and "CAN1" that of any box. Names come and go with the boxes.
    [[nodiscard]] std::vector<std::string> channelNames(const QString& deviceId) const;
    // Kind and index of a channel name; empty when no known box has such a channel.
    [[nodiscard]] std::optional<std::pair<ChannelType, int>> findChannel(
        const std::string& name) const;

    // Asks the box itself and waits for its answer, bounded by the command time-out.
    [[nodiscard]] std::optional<BoxIdentity> fetchIdentity(const QString& deviceId);
    // The box's configuration: `config` as the manager holds it, `fetch` asks the box, `write`
    // sets it in the box and reads it back. A reason is given on failure.
    [[nodiscard]] std::optional<BoxConfig> config(const QString& deviceId) const;
    [[nodiscard]] std::optional<BoxConfig> fetchConfig(const QString& deviceId);
    [[nodiscard]] bool writeConfig(const QString& deviceId, const BoxConfig& config,
                                   std::string& reason);
    // "connected", "disconnected" or "unknown".
    [[nodiscard]] std::string statusText(const QString& deviceId) const;

    // Tracing and delivery of a device's frames.
    [[nodiscard]] bool start(const QString& deviceId, const TraceSubscriber& subscriber);
    [[nodiscard]] bool stop(const QString& deviceId);
    [[nodiscard]] bool startStopTracing(const QString& deviceId, bool start);

    // Transmission. Arguments are checked; a refusal is logged with its reason.
    [[nodiscard]] BoxResult sendCanFrame(const QString& deviceId, const CanSendFrame& frame,
                                         const FrameUpdate* update = nullptr);
    [[nodiscard]] BoxResult addSendCanFrame(const QString& deviceId, const CyclicCanFrame& job);
    [[nodiscard]] BoxResult removeSendCanFrame(const QString& deviceId, const std::string& gid);
    [[nodiscard]] BoxResult pauseSendCanFrame(const QString& deviceId, const std::string& gid);
    [[nodiscard]] BoxResult resumeSendCanFrame(const QString& deviceId, const std::string& gid);
    // Replaces the frame of a running job and sets its cycle; counter and phase go on.
    [[nodiscard]] BoxResult updateSendCanFrame(const QString& deviceId, const std::string& gid,
                                               const CanSendFrame& frame, int32_t cycleMs);
    [[nodiscard]] BoxResult addSendUdsCanFrame(const QString& deviceId, const CyclicCanFrame& job);
    [[nodiscard]] BoxResult startLinScheduleTable(const QString& deviceId, int32_t channel,
                                                  const std::string& name,
                                                  const std::vector<LinSlot>& slots);
    [[nodiscard]] BoxResult stopLinScheduleTable(const QString& deviceId, int32_t channel);

    [[nodiscard]] RoadCounters counters() const;

    // No callback is called any more once this has returned: waits for a running one, but not
    // longer than `waitMs`. False when one still runs. Frames that come later are dropped. Called
    // with the interpreter lock released.
    [[nodiscard]] bool stopDelivery(int waitMs);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace rv
