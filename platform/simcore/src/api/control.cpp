// Control of the virtual network, for tests and tools.
#include "simcore/virtual_network.h"

#include "api/DeviceText.h"
#include "api/Library.h"
#include "engine/LinBus.h"

namespace simcore {

namespace {

using api::Library;
using engine::BusKind;

// Runs an operation on a box by name with the engine's lock held; false when there is none.
template <class Fn>
bool onNamedBox(const std::string& name, Fn fn) {
    const auto network = Library::instance().network();
    if (network == nullptr) return false;
    engine::Box* box = network->boxByName(name);
    if (box == nullptr) return false;
    const engine::CoreGuard guard(network->core());
    return fn(*box);
}

template <class Frame>
bool inject(const std::string& name, Frame frame) {
    const auto network = Library::instance().network();
    if (network == nullptr || !engine::normalise(frame)) return false;
    engine::Bus* bus = network->busByName(name);
    if (bus == nullptr || bus->kind() != engine::FrameKind<Frame>::kKind) return false;
    const engine::CoreGuard guard(network->core());
    return static_cast<engine::TypedBus<Frame>*>(bus)->send(nullptr, frame) == kRvOk;
}

}  // namespace

bool loadNetwork(const std::string& document, std::string& reason) {
    return Library::instance().load(document, reason);
}

void useManualClock(uint64_t startNs) { Library::instance().useManualClock(startNs); }
void useSystemClock() { Library::instance().useSystemClock(); }
void advance(uint64_t ns) { Library::instance().advance(ns); }

bool unplug(const std::string& box) {
    const auto network = Library::instance().network();
    if (network == nullptr) return false;
    const engine::CoreGuard guard(network->core());
    return network->unplug(box);
}

bool plug(const std::string& box) {
    const auto network = Library::instance().network();
    if (network == nullptr) return false;
    const engine::CoreGuard guard(network->core());
    return network->plug(box);
}

bool setBusStatus(const std::string& box, int32_t channel, int32_t status) {
    return onNamedBox(box, [&](engine::Box& b) { return b.setBusStatus(channel, status); });
}

bool raiseBusTimeout(const std::string& box, int32_t channel) {
    return onNamedBox(box, [&](engine::Box& b) { return b.raiseBusTimeout(channel); });
}

bool setDipStatus(const std::string& box, const RvDipStatus& status) {
    return onNamedBox(box, [&](engine::Box& b) {
        b.setDip(status);
        return true;
    });
}

bool setClock(const std::string& box, int64_t offsetNs, double driftPpm) {
    return onNamedBox(box, [&](engine::Box& b) {
        b.setClock(offsetNs, driftPpm);
        return true;
    });
}

bool refuseSends(const std::string& box, int32_t channel, int times) {
    return onNamedBox(box, [&](engine::Box& b) {
        engine::Port* port = b.port(BusKind::can, channel);
        if (port == nullptr) return false;
        port->refuse = times;
        return true;
    });
}

bool describeDevice(const std::string& box, RvDeviceDesc& desc) {
    return onNamedBox(box, [&](engine::Box& b) {
        desc = api::describe(b.identity());
        return true;
    });
}

bool changeDevice(const std::string& box, const RvDeviceDesc& desc) {
    return onNamedBox(box, [&](engine::Box& b) {
        engine::DeviceIdentity identity = b.identity();
        api::applyDescription(desc, identity);
        b.setIdentity(identity);
        return true;
    });
}

void failCalls(const std::string& box, const std::string& function, int code, int times) {
    engine::CallFault fault{box, function, code == kRvOk ? kRvErrorRefused : code, 0, times};
    Library::instance().gate().set(fault);
}

void slowCalls(const std::string& box, const std::string& function, int delayMs, int times) {
    Library::instance().gate().set({box, function, kRvOk, delayMs, times});
}

bool injectCan(const std::string& bus, const RvCanFrame& frame) { return inject(bus, frame); }

bool injectLin(const std::string& bus, const RvLinFrame& frame) {
    RvLinFrame complete = frame;
    if (complete.checksum == 0) complete.checksum = engine::linChecksum(complete);
    return inject(bus, complete);
}

bool injectEthernet(const std::string& bus, const RvEthFrame& frame) { return inject(bus, frame); }
bool injectFlexRay(const std::string& bus, const RvFlexRayFrame& frame) {
    return inject(bus, frame);
}

double busLoad(const std::string& bus) {
    const auto network = Library::instance().network();
    if (network == nullptr) return -1.0;
    const engine::Bus* target = network->busByName(bus);
    if (target == nullptr) return -1.0;
    const engine::CoreGuard guard(network->core());
    return target->load();
}

uint64_t callCount(const std::string& function) {
    const auto call = api::callByName(function);
    return call ? Library::instance().gate().calls(*call) : 0;
}

}  // namespace simcore
