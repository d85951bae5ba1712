// Flat functions: finding boxes, sessions, callbacks and settings.
#include <algorithm>

#include "api/DeviceText.h"
#include "api/OnBox.h"
#include "simcore/flat.h"

namespace api = simcore::api;
namespace engine = simcore::engine;
using api::Call;
using api::onBox;

int rvhub4e_init() {
    api::Library& library = api::Library::instance();
    const int verdict = library.enter(Call::init, std::string());
    if (verdict != kRvOk) return verdict;
    std::string reason;
    if (!library.ensureNetwork(reason)) {
        api::setLastError(reason);
        return kRvErrorParam;
    }
    library.setInitialised();
    return kRvOk;
}

const char* rvhub4e_last_error() { return api::lastError().c_str(); }

int scan_rvhub4e(int32_t* handles, int32_t* count, int32_t /*reserved*/,
                 const RvHub4eScanParams* params) {
    api::Library& library = api::Library::instance();
    const int verdict = library.enter(Call::scan, std::string());
    if (verdict != kRvOk) return verdict;
    const auto network = library.initialised() ? library.network() : nullptr;
    if (network == nullptr) return api::finish(kRvErrorNotInit);
    if (handles == nullptr || count == nullptr || params == nullptr || *count < 0) {
        return api::finish(kRvErrorParam);
    }
    const int32_t room = *count;
    int32_t found = 0;
    const engine::CoreGuard guard(network->core());
    for (const auto& box : network->boxes()) {
        if (box->identity().type != engine::BoxType::hub4e || !box->present()) continue;
        if (found < room) handles[found] = box->handle();
        ++found;
    }
    // A full array is told by its own length, so that a caller never reads behind it.
    *count = std::min(found, room);
    return kRvOk;
}

int get_device_info(int32_t handle, RvHub4eDeviceInfo* info) {
    return onBox(Call::deviceInfo, handle, [&](engine::Box& box) -> int {
        if (info == nullptr) return kRvErrorParam;
        const engine::DeviceIdentity& identity = box.identity();
        *info = {};
        api::copyText(info->name, identity.name);
        std::copy(identity.mac.begin(), identity.mac.end(), info->mac);
        api::copyText(info->serial, identity.serial);
        api::copyText(info->version, identity.version);
        api::copyText(info->model, identity.model);
        api::copyText(info->networkCard, identity.networkCard);
        info->com = identity.comPort;
        info->canCount = identity.channels[static_cast<size_t>(engine::BusKind::can)];
        info->linCount = identity.channels[static_cast<size_t>(engine::BusKind::lin)];
        info->ethCount = identity.channels[static_cast<size_t>(engine::BusKind::ethernet)];
        info->flexrayCount = identity.channels[static_cast<size_t>(engine::BusKind::flexray)];
        return kRvOk;
    });
}

int Lin_CheckPort(int32_t handle) {
    return onBox(Call::linCheckPort, handle,
                 [](engine::Box& box) { return box.linPortUsable() ? kRvOk : kRvErrorRefused; });
}

int get_dip_status(int32_t handle, RvDipStatus* status) {
    return onBox(Call::dipStatus, handle, [&](engine::Box& box) -> int {
        if (status == nullptr) return kRvErrorParam;
        *status = box.dip();
        return kRvOk;
    });
}

int get_can_bus_status(int32_t handle, int32_t channel, int32_t* status) {
    return onBox(Call::canBusStatus, handle, [&](engine::Box& box) -> int {
        const engine::Port* port = box.port(engine::BusKind::can, channel);
        if (port == nullptr) return kRvErrorChannel;
        if (status == nullptr) return kRvErrorParam;
        *status = port->status;
        return kRvOk;
    });
}

int open_device(int32_t handle) {
    return onBox(Call::openDevice, handle, [](engine::Box& box) { return box.open(); });
}

int close_device(int32_t handle) {
    return onBox(Call::closeDevice, handle, [](engine::Box& box) { return box.close(); });
}

// The callbacks are registered without the engine's lock: clearing one waits for its running call.
// They are also taken for a box that has left, so that they can always be cleared.
int set_device_state_callback(int32_t handle, RvDeviceStateFn fn, void* context) {
    const int known = onBox(Call::setStateCallback, handle, [](engine::Box&) { return kRvOk; });
    if (known != kRvOk && fn != nullptr) return known;
    api::Library::instance().dispatcher().setStateCallback(handle, fn, context);
    return known;
}

int set_event_callback(int32_t handle, RvDeviceEventFn fn, void* context) {
    const int known = onBox(Call::setEventCallback, handle, [](engine::Box&) { return kRvOk; });
    if (known != kRvOk && fn != nullptr) return known;
    api::Library::instance().dispatcher().setEventCallback(handle, fn, context);
    return known;
}

int get_can_config(int32_t handle, int32_t channel, RvCanChannelConfig* config) {
    return onBox(Call::getCanConfig, handle, [&](engine::Box& box) {
        return config == nullptr ? kRvErrorParam : box.canConfig(channel, *config);
    });
}

int set_can_config(int32_t handle, int32_t channel, const RvCanChannelConfig* config) {
    return onBox(Call::setCanConfig, handle, [&](engine::Box& box) {
        return config == nullptr ? kRvErrorParam : box.setCanConfig(channel, *config, false);
    });
}

int get_lin_config(int32_t handle, int32_t channel, RvLinChannelConfig* config) {
    return onBox(Call::getLinConfig, handle, [&](engine::Box& box) {
        return config == nullptr ? kRvErrorParam : box.linConfig(channel, *config);
    });
}

int set_lin_config(int32_t handle, int32_t channel, const RvLinChannelConfig* config) {
    return onBox(Call::setLinConfig, handle, [&](engine::Box& box) {
        return config == nullptr ? kRvErrorParam : box.setLinConfig(channel, *config);
    });
}

int get_eth_config(int32_t handle, int32_t channel, RvEthChannelConfig* config) {
    return onBox(Call::getEthConfig, handle, [&](engine::Box& box) {
        return config == nullptr ? kRvErrorParam : box.ethConfig(channel, *config);
    });
}

int set_eth_config(int32_t handle, int32_t channel, const RvEthChannelConfig* config) {
    return onBox(Call::setEthConfig, handle, [&](engine::Box& box) {
        return config == nullptr ? kRvErrorParam : box.setEthConfig(channel, *config);
    });
}

int Dev_Sync(int32_t handle) {
    return onBox(Call::sync, handle, [](engine::Box& box) { return box.sync(); });
}
