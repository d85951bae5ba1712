#include "engine/Network.h"

#include <algorithm>

#include "engine/FaultTable.h"
#include "engine/LinBus.h"
#include "engine/PeriodicSource.h"
#include "engine/Pump.h"
#include "engine/ReplaySource.h"

namespace simcore::engine {

namespace {

// A handle holds, from the top: session (15 bits), generation (8 bits), box number from 1 (8 bits).
constexpr uint32_t kBoxBits = 8;
constexpr uint32_t kGenerationBits = 8;
constexpr uint32_t kSessionMask = 0x7FFF;

std::shared_ptr<Bus> makeBus(Core& core, const BusPlan& plan) {
    switch (plan.kind) {
        case BusKind::lin:
            return std::make_shared<LinBus>(core, plan.name, plan.rates);
        case BusKind::ethernet:
            return std::make_shared<EthernetBus>(core, plan.name, plan.rates);
        case BusKind::flexray:
            return std::make_shared<FlexRayBus>(core, plan.name, plan.rates);
        case BusKind::can:
            break;
    }
    return std::make_shared<CanBus>(core, plan.name, plan.rates);
}

}  // namespace

Network::Network(Clock& clock, EventSink& sink, uint32_t generation)
    : m_core(clock, sink), m_generation(generation), m_scheduler(m_core) {
    m_core.traceStarted = [this] {
        for (const auto& source : m_sources) source->traceStarted();
    };
}

Network::~Network() {
    stop();
    const CoreGuard guard(m_core);
    m_core.agenda.clear();
}

bool Network::build(const NetworkPlan& plan, std::string& reason) {
    for (const BusPlan& bus : plan.buses) m_buses.push_back(makeBus(m_core, bus));
    for (const BoxPlan& box : plan.boxes) buildBox(box);
    for (const ResponderPlan& responder : plan.responders) {
        if (auto* bus = dynamic_cast<LinBus*>(busByName(responder.bus))) {
            bus->setResponder(responder.frame);
        }
    }
    for (const SourcePlan& source : plan.sources) {
        if (!buildSource(source, reason)) return false;
    }
    m_faults = std::make_shared<FaultTable>(*this, plan.faults, plan.seed);
    return true;
}

void Network::buildBox(const BoxPlan& plan) {
    auto box = std::make_unique<Box>(m_core, plan.identity, plan.capacity);
    for (size_t kind = 0; kind < kBusKinds; ++kind) {
        for (const std::string& bus : plan.channelBuses[kind]) {
            box->addPort(static_cast<BusKind>(kind), *busByName(bus));
        }
    }
    box->setInitial(handleFor(m_boxes.size(), 1), plan);
    m_sessions.push_back(1);
    m_boxes.push_back(std::move(box));
}

bool Network::buildSource(const SourcePlan& plan, std::string& reason) {
    std::shared_ptr<Source> source;
    if (const auto* periodic = std::get_if<PeriodicPlan>(&plan)) {
        source = makePeriodicSource(m_core, *busByName(periodic->bus), *periodic);
    } else {
        source = ReplaySource::open(*this, std::get<ReplayPlan>(plan), reason);
        if (source == nullptr) return false;
    }
    if (source->unpaced()) m_pumps.push_back(std::make_unique<Pump>(m_core, source));
    m_sources.push_back(std::move(source));
    return true;
}

void Network::start() {
    {
        const CoreGuard guard(m_core);
        for (const auto& source : m_sources) source->start();
        m_faults->start();
        for (const auto& box : m_boxes) {
            if (box->present()) m_core.sink.deviceFound(box->identity());
        }
    }
    m_scheduler.start();
    for (const auto& pump : m_pumps) pump->start();
}

void Network::stop() {
    for (const auto& pump : m_pumps) pump->stop();
    m_scheduler.stop();
}

void Network::advance(int64_t ns) {
    m_scheduler.advance(ns);
    CoreGuard guard(m_core);
    for (const auto& source : m_sources) {
        if (source->unpaced() && source->ready()) source->burst(guard.lock());
    }
}

void Network::clockChanged() {
    const CoreGuard guard(m_core);
    m_core.wake.notify_all();
    m_core.room.announceLocked();
}

Box* Network::boxByName(const std::string& name) const {
    const auto at = std::find_if(m_boxes.begin(), m_boxes.end(),
                                 [&](const auto& box) { return box->name() == name; });
    return at == m_boxes.end() ? nullptr : at->get();
}

Bus* Network::busByName(const std::string& name) const {
    const auto at = std::find_if(m_buses.begin(), m_buses.end(),
                                 [&](const auto& bus) { return bus->name() == name; });
    return at == m_buses.end() ? nullptr : at->get();
}

int32_t Network::handleFor(size_t index, uint32_t session) const {
    const uint32_t generation = m_generation & ((1U << kGenerationBits) - 1);
    return static_cast<int32_t>(((session & kSessionMask) << (kBoxBits + kGenerationBits)) |
                                (generation << kBoxBits) | static_cast<uint32_t>(index + 1));
}

Box* Network::boxByHandle(int32_t handle, int& error) const {
    error = kRvErrorHandle;
    const auto bits = static_cast<uint32_t>(handle);
    const size_t number = bits & ((1U << kBoxBits) - 1);
    if (handle <= 0 || number == 0 || number > m_boxes.size()) return nullptr;
    const uint32_t session = bits >> (kBoxBits + kGenerationBits);
    if (handleFor(number - 1, session) != handle) return nullptr;
    Box* box = m_boxes[number - 1].get();
    error = box->handle() == handle && box->present() ? kRvOk : kRvErrorGone;
    return error == kRvOk ? box : nullptr;
}

bool Network::unplug(const std::string& name) {
    Box* box = boxByName(name);
    if (box == nullptr) return false;
    if (box->present()) box->unplug();
    return true;
}

bool Network::plug(const std::string& name) {
    for (size_t i = 0; i < m_boxes.size(); ++i) {
        Box& box = *m_boxes[i];
        if (box.name() != name) continue;
        if (!box.present()) box.plug(handleFor(i, ++m_sessions[i]));
        return true;
    }
    return false;
}

}  // namespace simcore::engine
