#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "core/hardware/boxdev/CommandTable.h"
#include "core/hardware/boxdev/DeviceBase.h"
#include "core/hardware/boxdev/DeviceCfg.h"
#include "core/hardware/boxdev/FrameUpdater.h"
#include "core/hardware/boxdev/RvDeviceConnectionWrapper.h"

namespace RV::BoxDev {

// A CAN-only device of the founder route (USB-CAN, ETAS, RV-CANFD2), identified by its serial
// number.
class UniversalBusDevice final : public DeviceBase {
public:
    UniversalBusDevice(UniversalBusCfg cfg, const DeviceEventFn& onEvent);
    ~UniversalBusDevice() override;

    [[nodiscard]] const std::string& id() const override { return m_cfg.serial; }
    [[nodiscard]] const std::string& name() const override { return m_cfg.name; }
    [[nodiscard]] const std::string& model() const override { return m_cfg.model; }
    [[nodiscard]] bool hasMac() const override { return false; }
    [[nodiscard]] int canCount() const override { return m_cfg.canCount; }
    [[nodiscard]] int linCount() const override { return 0; }
    [[nodiscard]] int ethCount() const override { return 0; }
    [[nodiscard]] int flexrayCount() const override { return 0; }
    [[nodiscard]] rv::HandOver libraryCounters() const override { return {}; }
    [[nodiscard]] bool open() override;
    void close() override;

    // For the connection wrapper, which calls them on the library's threads.
    void requestRefresh() { m_refresh = true; }
    void onConnectionEvent(int32_t type, int32_t channel, int32_t value) {
        handleConnectionEvent(type, channel, value);
    }
    // True once after a change that calls for reading the device anew.
    [[nodiscard]] bool takeRefresh() { return m_refresh.exchange(false); }

private:
    using Json = nlohmann::json;

    static std::span<const CommandEntry<UniversalBusDevice>> commands();
    void runCommand(const std::string& text, RespondCmdMsg& answer);

    void getDevInfo(const Json& document, RespondCmdMsg& answer);
    void getChannelsConfig(const Json& document, RespondCmdMsg& answer);
    void setChannelsConfig(const Json& document, RespondCmdMsg& answer);
    void startSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void pauseSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void resumeSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void removeSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void startTrace(const Json& document, RespondCmdMsg& answer);
    void stopTrace(const Json& document, RespondCmdMsg& answer);
    bool pollCan();
    [[nodiscard]] bool requireConnected(RespondCmdMsg& answer) const;

    UniversalBusCfg m_cfg;
    std::atomic<bool> m_refresh{false};
    SingleSendCounters m_singleCounters;
    std::vector<rv::FrameHolder> m_batch;  // used by the reader only
    RvDeviceConnectionWrapper m_wrapper;
    TraceReader m_reader;
};

}  // namespace RV::BoxDev
