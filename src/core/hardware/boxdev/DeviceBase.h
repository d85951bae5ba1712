#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "core/hardware/boxdev/BusStatusTable.h"
#include "core/hardware/boxdev/CommandWorker.h"
#include "core/hardware/boxdev/DeviceEvent.h"
#include "core/hardware/boxdev/DeviceInterface.h"
#include "core/hardware/boxdev/TraceReader.h"

namespace RV::BoxDev {

// What every device object has: a state, a command worker, an outlet for its frames, the status of
// its buses and a way to report events. Derived classes start the worker when they are complete and
// stop it before they go.
class DeviceBase : public DeviceInterface {
public:
    explicit DeviceBase(DeviceEventFn onEvent) : m_onEvent(std::move(onEvent)) {}

    [[nodiscard]] DeviceState state() const override { return m_state.load(); }
    void postRequest(std::shared_ptr<RequestCmdMsg> request, RespondCallback callback) override {
        m_worker->post(std::move(request), std::move(callback));
    }
    [[nodiscard]] RespondCmdMsg execute(const std::string& text, CallbackOption option) override {
        return m_worker->execute(text, option);
    }
    void setTraceSink(TraceSink sink) override { m_outlet.setSink(std::move(sink)); }
    [[nodiscard]] rv::HandOver readerCounters() const override { return m_outlet.counters(); }
    [[nodiscard]] DeviceTraffic traffic() const override { return m_outlet.traffic(); }
    void markDisconnected() override { m_state = DeviceState::Disconnected; }

    [[nodiscard]] const BusStatusTable& busStatus() const { return m_busStatus; }

protected:
    // Hands an event on; safe from any thread, must not be called with a device mutex held.
    void report(DeviceEventKind kind, const std::string& message, const rv::DipState& dip = {}) {
        auto event = std::make_shared<DeviceEvent>();
        event->kind = kind;
        event->name = name();
        event->deviceId = id();
        event->message = message;
        event->dip = dip;
        if (m_onEvent) m_onEvent(event, event->deviceId);
    }
    void handleConnectionEvent(int32_t type, int32_t channel, int32_t value) {
        const auto notice = m_busStatus.handle(type, channel, value);
        if (notice) report(DeviceEventKind::BusNotice, *notice);
    }

    std::atomic<DeviceState> m_state{DeviceState::Idle};
    TraceOutlet m_outlet;
    BusStatusTable m_busStatus;
    std::unique_ptr<CommandWorker> m_worker;

private:
    DeviceEventFn m_onEvent;
};

}  // namespace RV::BoxDev
