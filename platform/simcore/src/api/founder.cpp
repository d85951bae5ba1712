// Class interface: discovery of USB and general bus devices.
#include "simcore/founder.h"

#include <algorithm>

#include "api/DeviceText.h"
#include "api/Library.h"

namespace api = simcore::api;
namespace engine = simcore::engine;

RvDeviceInfo::RvDeviceInfo(RvDeviceType type) { m_desc.type = type; }
RvDeviceInfo::RvDeviceInfo(const RvDeviceDesc& desc) : m_desc(desc) {}
RvDeviceInfo::RvDeviceInfo(const RvDeviceInfo& other) = default;
RvDeviceInfo& RvDeviceInfo::operator=(const RvDeviceInfo& other) = default;
RvDeviceInfo::~RvDeviceInfo() = default;  // NOLINT

RvDeviceType RvDeviceInfo::getType() const { return m_desc.type; }
const char* RvDeviceInfo::getDeviceModel() const { return m_desc.model; }
const char* RvDeviceInfo::getDevicePath() const { return m_desc.path; }
std::string RvDeviceInfo::getVersion() const { return api::textOf(m_desc.version); }
std::string RvDeviceInfo::getBuildTime() const { return api::textOf(m_desc.buildTime); }

bool RvDeviceInfo::getSNR(unsigned char* out) const {
    if (out == nullptr) return false;
    std::copy(std::begin(m_desc.snr), std::end(m_desc.snr), out);
    return true;
}

std::string RvDeviceInfo::getSnrStr() const { return api::textOf(m_desc.serial); }
int RvDeviceInfo::getComPort() const { return m_desc.comPort; }
int RvDeviceInfo::getCanCount() const { return m_desc.canCount; }
int RvDeviceInfo::getLinCount() const { return m_desc.linCount; }

bool RvDeviceInfo::getChannels(char names[][64], int& count) const {
    if (names == nullptr || count < 0) return false;
    const int room = count;
    count = 0;
    const auto add = [&](const char* kind, int channels) {
        for (int i = 1; i <= channels && count < room; ++i) {
            api::copyText(names[count++], kind + std::to_string(i));
        }
    };
    add("CAN", m_desc.canCount);
    add("LIN", m_desc.linCount);
    return true;
}

RvDeviceFounder* RvDeviceFounder::instance() {
    static RvDeviceFounder founder;
    return &founder;
}

bool RvDeviceFounder::init(FounderInitParams /*params*/, RvDeviceFounderObserver* observer) {
    api::Library& library = api::Library::instance();
    if (library.enter(api::Call::founderInit, std::string()) != kRvOk) return false;
    std::string reason;
    if (!library.ensureNetwork(reason)) {
        api::setLastError(reason);
        return false;
    }
    if (observer != nullptr) library.dispatcher().addFounderObserver(observer);
    return true;
}

bool RvDeviceFounder::start(bool networkDevices) {
    api::Library& library = api::Library::instance();
    if (library.enter(api::Call::founderStart, std::string()) != kRvOk) return false;
    const auto network = library.network();
    if (network == nullptr) {
        api::setLastError(api::errorText(kRvErrorNotInit));
        return false;
    }
    // With the engine's lock held no device can come or go between the two steps.
    const engine::CoreGuard guard(network->core());
    library.dispatcher().startFounder(networkDevices);
    for (const auto& box : network->boxes()) {
        if (box->present()) library.dispatcher().deviceFound(box->identity());
    }
    return true;
}

void RvDeviceFounder::addObserver(RvDeviceFounderObserver* observer) {
    api::Library::instance().dispatcher().addFounderObserver(observer);
}

void RvDeviceFounder::removeObserver(RvDeviceFounderObserver* observer) {
    api::Library::instance().dispatcher().removeFounderObserver(observer);
}

std::vector<RvDeviceInfo> RvDeviceFounder::getDeviceInfos() {
    api::Library& library = api::Library::instance();
    std::vector<RvDeviceInfo> infos;
    if (library.enter(api::Call::founderDeviceInfos, std::string()) != kRvOk) return infos;
    const auto network = library.network();
    if (network == nullptr) return infos;
    const engine::CoreGuard guard(network->core());
    for (const auto& box : network->boxes()) {
        const RvDeviceDesc desc = api::describe(box->identity());
        if (box->present() && library.dispatcher().founderReports(desc.type)) {
            infos.emplace_back(desc);
        }
    }
    return infos;
}

RvKeyLogger* RvKeyLogger::instance() {
    static RvKeyLogger logger;
    return &logger;
}

void RvKeyLogger::setLogCallback(RvLogFn fn) {
    api::Library::instance().dispatcher().setLogCallback(fn);
}

void RvKeyLogger::notifyLog(int level, const char* text) {
    if (text != nullptr) api::Library::instance().dispatcher().log(level, text);
}
