#pragma once

#include <map>
#include <mutex>
#include <tuple>
#include <vector>

#include "core/hardware/boxdev/CommandTable.h"
#include "core/hardware/boxdev/DeviceBase.h"
#include "core/hardware/boxdev/DeviceCfg.h"
#include "core/hardware/boxdev/FrameUpdater.h"
#include "simcore/records.h"

namespace RV::BoxDev {

// A network box. Commands run on its worker thread; two reader threads poll its frames while
// tracing is on. Callbacks of the library only note what happened and post events.
class Hub4e final : public DeviceBase {
public:
    Hub4e(Hub4eCfg cfg, DeviceEventFn onEvent);
    ~Hub4e() override;

    [[nodiscard]] const std::string& id() const override { return m_cfg.mac; }
    [[nodiscard]] const std::string& name() const override { return m_cfg.name; }
    [[nodiscard]] const std::string& model() const override { return m_cfg.model; }
    [[nodiscard]] bool hasMac() const override { return true; }
    [[nodiscard]] int canCount() const override { return m_cfg.canCount; }
    [[nodiscard]] int linCount() const override { return m_cfg.linCount; }
    [[nodiscard]] int ethCount() const override { return m_cfg.ethCount; }
    [[nodiscard]] int flexrayCount() const override { return m_cfg.flexrayCount; }
    [[nodiscard]] rv::HandOver libraryCounters() const override;
    [[nodiscard]] bool open() override;
    void close() override;
    void markDisconnected() override;

private:
    using Json = nlohmann::json;

    static std::span<const CommandEntry<Hub4e>> commands();
    void runCommand(const std::string& text, RespondCmdMsg& answer);
    static void onState(int32_t handle, int32_t state, void* context);
    static void onEventOfLibrary(int32_t handle, const RvDeviceEvent* event, void* context);

    // Information and configuration.
    void getDevInfo(const Json& document, RespondCmdMsg& answer);
    void getChannelsConfig(const Json& document, RespondCmdMsg& answer);
    void setChannelsConfig(const Json& document, RespondCmdMsg& answer);
    void getChannelsCanConfig(const Json& document, RespondCmdMsg& answer);
    void setChannelsCanConfig(const Json& document, RespondCmdMsg& answer);
    void getChannelsEthConfig(const Json& document, RespondCmdMsg& answer);
    void setChannelsEthConfig(const Json& document, RespondCmdMsg& answer);
    void setChannelsLinConfig(const Json& document, RespondCmdMsg& answer);

    // Transmission.
    void startSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void pauseSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void resumeSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void removeSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void updateSendCanFrame(const Json& document, RespondCmdMsg& answer);
    void startSendEthFrame(const Json& document, RespondCmdMsg& answer);
    void pauseSendEthFrame(const Json& document, RespondCmdMsg& answer);
    void resumeSendEthFrame(const Json& document, RespondCmdMsg& answer);
    void removeSendEthFrame(const Json& document, RespondCmdMsg& answer);
    void startLinScheduleTable(const Json& document, RespondCmdMsg& answer);
    void stopLinScheduleTable(const Json& document, RespondCmdMsg& answer);

    // Tracing.
    void startTrace(const Json& document, RespondCmdMsg& answer);
    void stopTrace(const Json& document, RespondCmdMsg& answer);
    void stopReaders();
    void drainTrace();
    bool pollCan();
    bool pollLin();
    bool pollEthernet();
    bool pollFlexRay();

    [[nodiscard]] bool requireConnected(RespondCmdMsg& answer) const;
    void noteLibraryCounters() const;

    Hub4eCfg m_cfg;
    bool m_opened = false;  // used by the discovery thread only
    SingleSendCounters m_singleCounters;
    std::vector<rv::FrameHolder> m_canBatch;       // used by the CAN reader only
    std::vector<rv::FrameHolder> m_ethernetBatch;  // used by the Ethernet reader only
    mutable std::mutex m_countersMutex;
    mutable rv::HandOver m_libraryCounters;  // last reading; guarded by m_countersMutex
    TraceReader m_canReader;
    TraceReader m_ethernetReader;
};

}  // namespace RV::BoxDev
