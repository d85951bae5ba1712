#include "engine/Box.h"

#include <algorithm>
#include <utility>

#include "engine/Bus.h"
#include "engine/CycleJob.h"
#include "engine/LinSchedule.h"
#include "engine/NetworkPlan.h"

namespace simcore::engine {

Box::Box(Core& core, DeviceIdentity identity, const BoxCapacity& capacity)
    : m_core(core),
      m_name(identity.name),
      m_identity(std::move(identity)),
      m_canQueue(capacity.can),
      m_linQueue(capacity.lin),
      m_ethQueue(capacity.ethernet),
      m_flexrayQueue(capacity.flexray) {}

Box::~Box() = default;

Port& Box::addPort(BusKind kind, Bus& bus) {
    auto& ports = m_ports[static_cast<size_t>(kind)];
    Port& port = ports.emplace_back();
    port.box = this;
    port.bus = &bus;
    port.kind = kind;
    port.index = static_cast<uint8_t>(ports.size() - 1);
    bus.attach(port);
    if (kind == BusKind::can) m_canConfigs.emplace_back();
    if (kind == BusKind::lin) m_linConfigs.emplace_back();
    if (kind == BusKind::ethernet) m_ethConfigs.emplace_back();
    m_identity.channels[static_cast<size_t>(kind)] = static_cast<int32_t>(ports.size());
    return port;
}

Port* Box::port(BusKind kind, int32_t channel) {
    auto& ports = m_ports[static_cast<size_t>(kind)];
    if (channel < 0 || static_cast<size_t>(channel) >= ports.size()) return nullptr;
    return &ports[static_cast<size_t>(channel)];
}

void Box::setIdentity(const DeviceIdentity& identity) {
    const auto channels = m_identity.channels;
    m_identity = identity;
    m_identity.channels = channels;
    if (present()) m_core.sink.deviceChanged(m_identity);
}

void Box::setInitial(int32_t handle, const BoxPlan& plan) {
    m_handle = handle;
    m_present = plan.plugged;
    m_linPortUsable = plan.linPortUsable;
    m_dip = plan.dip;
}

void Box::plug(int32_t newHandle) {
    m_handle.store(newHandle, std::memory_order_release);
    m_present.store(true, std::memory_order_release);
    m_core.sink.deviceFound(m_identity);
}

void Box::unplug() {
    const bool wasOpen = isOpen();
    m_present.store(false, std::memory_order_release);
    endSession();
    if (wasOpen) m_core.sink.deviceState(handle(), RvDeviceStateDisconnected);
    m_core.sink.deviceLost(m_identity);
}

int Box::open() {
    if (isOpen()) return kRvErrorRefused;
    m_canQueue.reset();
    m_linQueue.reset();
    m_ethQueue.reset();
    m_flexrayQueue.reset();
    m_open.store(true, std::memory_order_release);
    m_core.sink.deviceState(handle(), RvDeviceStateConnecting);
    m_core.sink.deviceState(handle(), RvDeviceStateConnected);
    return kRvOk;
}

int Box::close() {
    if (!isOpen()) return kRvErrorNotOpen;
    endSession();
    m_core.sink.deviceState(handle(), RvDeviceStateIdle);
    return kRvOk;
}

void Box::endSession() {
    m_tracing = false;
    m_open.store(false, std::memory_order_release);
    for (Jobs* jobs : {&m_canJobs, &m_ethJobs}) {
        for (auto& [uuid, job] : *jobs) {
            job->retire();
            m_core.bury(job);
        }
        jobs->clear();
    }
    m_phases.clear();
    for (auto& [channel, schedule] : m_linSchedules) m_core.bury(schedule);
    m_linSchedules.clear();
    for (auto& ports : m_ports) {
        for (Port& port : ports) port.bus->dropPending(port);
    }
    discardQueues();
    m_core.room.announceLocked();
}

void Box::discardQueues() {
    m_canQueue.discard();
    m_linQueue.discard();
    m_ethQueue.discard();
    m_flexrayQueue.discard();
}

int Box::startTrace() {
    if (!isOpen()) return kRvErrorNotOpen;
    m_tracing = true;
    if (m_core.traceStarted) m_core.traceStarted();
    m_core.room.announceLocked();
    return report(RvConnectionEventTypeStartTracing);
}

int Box::stopTrace() {
    if (!isOpen()) return kRvErrorNotOpen;
    m_tracing = false;
    discardQueues();
    m_core.room.announceLocked();
    return report(RvConnectionEventTypeStopTracing);
}

TraceCounters Box::counters() const {
    TraceCounters sum;
    m_canQueue.addTo(sum);
    m_linQueue.addTo(sum);
    m_ethQueue.addTo(sum);
    m_flexrayQueue.addTo(sum);
    return sum;
}

bool Box::setBusStatus(int32_t channel, int32_t status) {
    Port* target = port(BusKind::can, channel);
    if (target == nullptr || status < RvCanBusStatusTypeBusActive ||
        status > RvCanBusStatusTypeBusOff) {
        return false;
    }
    target->status = status;
    if (status == RvCanBusStatusTypeBusOff) target->bus->dropPending(*target);
    m_core.room.announceLocked();
    report(RvConnectionEventTypeBusStatus, channel, status);
    return true;
}

bool Box::raiseBusTimeout(int32_t channel) {
    if (port(BusKind::can, channel) == nullptr) return false;
    report(RvConnectionEventTypeBusTimeout, channel);
    return true;
}

void Box::setDip(const RvDipStatus& status) {
    m_dip = status;
    m_core.sink.dipChanged(handle(), status);
}

void Box::setClock(int64_t offsetNs, double driftPpm) {
    m_clockOffsetNs = offsetNs;
    m_clockDrift = driftPpm * 1e-6;
    m_driftFrom = m_core.clock.wallAt(m_core.clock.now());
}

uint64_t Box::boxTime(uint64_t wallNs) const {
    int64_t shift = m_clockOffsetNs;
    if (m_clockDrift != 0.0) {
        // Negative for a frame that was on its bus before the clock was changed and is seen later.
        const auto since = static_cast<int64_t>(wallNs - m_driftFrom);
        shift += static_cast<int64_t>(static_cast<double>(since) * m_clockDrift);
    }
    return wallNs + static_cast<uint64_t>(shift);
}

int Box::report(RvConnectionEventType type, int32_t channel, int32_t value) {
    if (isOpen()) m_core.sink.connectionEvent(handle(), type, channel, value);
    return kRvOk;
}

}  // namespace simcore::engine
