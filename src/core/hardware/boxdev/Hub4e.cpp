#include "core/hardware/boxdev/Hub4e.h"

#include <array>
#include <iostream>

#include "core/hardware/boxdev/FrameConversion.h"
#include "core/hardware/boxdev/Library.h"
#include "core/log/Log.h"

namespace RV::BoxDev {

Hub4e::Hub4e(Hub4eCfg cfg, DeviceEventFn onEvent)
    : DeviceBase(std::move(onEvent)),
      m_cfg(std::move(cfg)),
      m_canReader("hub4e-can",
                  [this] {
                      // Both are polled in turn, so that one busy kind does not starve the other.
                      const bool can = pollCan();
                      return pollLin() || can;
                  }),
      m_ethernetReader("hub4e-eth", [this] {
          const bool ethernet = pollEthernet();
          return pollFlexRay() || ethernet;
      }) {
    m_worker = std::make_unique<CommandWorker>(
        "hub4e-cmd",
        [this](const std::string& text, RespondCmdMsg& answer) { runCommand(text, answer); });
}

Hub4e::~Hub4e() { close(); }

bool Hub4e::open() {
    const int result = withLibrary([&] { return open_device(m_cfg.handle); });
    if (result != kRvOk) {
        QUILL_WARN(quill::log::kSimCore, "open device({}) failed: {}", id(),
                   libraryResultText(result));
        return false;
    }
    m_opened = true;
    m_state = DeviceState::Connected;
    withLibrary([&] { return set_device_state_callback(m_cfg.handle, &Hub4e::onState, this); });
    withLibrary([&] { return set_event_callback(m_cfg.handle, &Hub4e::onEventOfLibrary, this); });
    return true;
}

void Hub4e::close() {
    // The worker first: its commands start and stop the readers.
    m_worker->stop();
    if (m_opened) {
        withLibrary([&] { return set_device_state_callback(m_cfg.handle, nullptr, nullptr); });
        withLibrary([&] { return set_event_callback(m_cfg.handle, nullptr, nullptr); });
    }
    stopReaders();
    if (m_opened) {
        noteLibraryCounters();
        withLibrary([&] { return close_device(m_cfg.handle); });
        m_opened = false;
    }
    if (m_state != DeviceState::Disconnected) m_state = DeviceState::Idle;
}

void Hub4e::markDisconnected() {
    // The library reports a lost box more than once; only the first time is told.
    if (m_state.exchange(DeviceState::Disconnected) == DeviceState::Disconnected) return;
    std::cout << "[Hub4e] Dev disconnected\n" << std::flush;
    report(DeviceEventKind::Lost, "device lossed...");
}

void Hub4e::onState(int32_t /*handle*/, int32_t state, void* context) {
    if (state == RvDeviceStateDisconnected) static_cast<Hub4e*>(context)->markDisconnected();
}

void Hub4e::onEventOfLibrary(int32_t /*handle*/, const RvDeviceEvent* event, void* context) {
    auto* self = static_cast<Hub4e*>(context);
    if (event->kind == RvEventDipStatus) {
        const rv::DipState dip{event->dip.program, event->dip.sel2, event->dip.sel1,
                               event->dip.sel0};
        self->report(DeviceEventKind::DipChanged, "dip status change", dip);
        return;
    }
    self->handleConnectionEvent(event->type, event->channel, event->value);
}

// The order is the order of comparison. "UpdateSendCANFrame" is this system's own and comes last.
std::span<const CommandEntry<Hub4e>> Hub4e::commands() {
    static constexpr std::array<CommandEntry<Hub4e>, 22> kCommands = {{
        {"GetDevInfo", &Hub4e::getDevInfo},
        {"GetChannelsConfig", &Hub4e::getChannelsConfig},
        {"SetChannelsConfig", &Hub4e::setChannelsConfig},
        {"GetChannelsCANConfig", &Hub4e::getChannelsCanConfig},
        {"SetChannelsCANConfig", &Hub4e::setChannelsCanConfig},
        {"StartSendCANFrame", &Hub4e::startSendCanFrame},
        {"PauseSendCANFrame", &Hub4e::pauseSendCanFrame},
        {"ResumeSendCANFrame", &Hub4e::resumeSendCanFrame},
        {"RemoveSendCANFrame", &Hub4e::removeSendCanFrame},
        {"GetChannelsETHConfig", &Hub4e::getChannelsEthConfig},
        {"SetChannelsETHConfig", &Hub4e::setChannelsEthConfig},
        {"StartSendETHFrame", &Hub4e::startSendEthFrame},
        {"PauseSendETHFrame", &Hub4e::pauseSendEthFrame},
        {"ResumeSendETHFrame", &Hub4e::resumeSendEthFrame},
        {"RemoveSendETHFrame", &Hub4e::removeSendEthFrame},
        {"StartReceiveChannelsTrace", &Hub4e::startTrace},
        {"StopReceiveChannelsTrace", &Hub4e::stopTrace},
        {"SendUdsCANFrame", &Hub4e::startSendCanFrame},
        {"SetChannelsLINConfig", &Hub4e::setChannelsLinConfig},
        {"StartLinScheduleTable", &Hub4e::startLinScheduleTable},
        {"StopLinScheduleTable", &Hub4e::stopLinScheduleTable},
        {"UpdateSendCANFrame", &Hub4e::updateSendCanFrame},
    }};
    return kCommands;
}

void Hub4e::runCommand(const std::string& text, RespondCmdMsg& answer) {
    dispatchCommand(*this, commands(), text, answer);
}

bool Hub4e::requireConnected(RespondCmdMsg& answer) const {
    if (m_state == DeviceState::Connected) return true;
    refuse(answer, CommandCode::NotConnected, "device " + m_cfg.mac + " is not connected");
    return false;
}

}  // namespace RV::BoxDev
