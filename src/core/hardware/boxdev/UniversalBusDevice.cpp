#include "core/hardware/boxdev/UniversalBusDevice.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "core/hardware/boxdev/ConfigDocument.h"
#include "core/hardware/boxdev/FrameConversion.h"
#include "core/hardware/boxdev/Library.h"
#include "core/hardware/boxdev/SendDocument.h"
#include "core/log/Log.h"

namespace RV::BoxDev {
namespace {

constexpr int32_t kReadBatch = 512;

RvConnectionType connectionTypeOf(int32_t deviceType) {
    return deviceType == RvDeviceTypeEtas ? RvConnectionTypeEtas : RvConnectionTypeUsb;
}

}  // namespace

UniversalBusDevice::UniversalBusDevice(UniversalBusCfg cfg, const DeviceEventFn& onEvent)
    : DeviceBase(onEvent),
      m_cfg(std::move(cfg)),
      m_wrapper(connectionTypeOf(m_cfg.type), m_cfg.name, m_cfg.serial, onEvent, *this),
      m_reader("busdev-can", [this] { return pollCan(); }) {
    m_worker = std::make_unique<CommandWorker>(
        "busdev-cmd",
        [this](const std::string& text, RespondCmdMsg& answer) { runCommand(text, answer); });
}

UniversalBusDevice::~UniversalBusDevice() { close(); }

bool UniversalBusDevice::open() {
    if (!m_wrapper.open(m_cfg.path)) {
        QUILL_WARN(quill::log::kSimCore, "open device({}) failed", id());
        return false;
    }
    m_state = DeviceState::Connected;
    return true;
}

void UniversalBusDevice::close() {
    // The worker first: its commands start and stop the reader.
    m_worker->stop();
    m_reader.stop();
    m_wrapper.close();
    if (m_state != DeviceState::Disconnected) m_state = DeviceState::Idle;
}

std::span<const CommandEntry<UniversalBusDevice>> UniversalBusDevice::commands() {
    using Device = UniversalBusDevice;
    static constexpr std::array<CommandEntry<Device>, 12> kCommands = {{
        {"GetDevInfo", &Device::getDevInfo},
        {"GetChannelsConfig", &Device::getChannelsConfig},
        {"SetChannelsConfig", &Device::setChannelsConfig},
        {"GetChannelsCANConfig", &Device::getChannelsConfig},
        {"SetChannelsCANConfig", &Device::setChannelsConfig},
        {"StartSendCANFrame", &Device::startSendCanFrame},
        {"PauseSendCANFrame", &Device::pauseSendCanFrame},
        {"ResumeSendCANFrame", &Device::resumeSendCanFrame},
        {"RemoveSendCANFrame", &Device::removeSendCanFrame},
        {"StartReceiveChannelsTrace", &Device::startTrace},
        {"StopReceiveChannelsTrace", &Device::stopTrace},
        {"SendUdsCANFrame", &Device::startSendCanFrame},
    }};
    return kCommands;
}

void UniversalBusDevice::runCommand(const std::string& text, RespondCmdMsg& answer) {
    if (!dispatchCommand(*this, commands(), text, answer)) {
        std::printf("unknown cmd: %s\n", answer.cmd.c_str());
        std::fflush(stdout);
    }
}

bool UniversalBusDevice::requireConnected(RespondCmdMsg& answer) const {
    if (m_state == DeviceState::Connected) return true;
    refuse(answer, CommandCode::NotConnected, "device " + m_cfg.serial + " is not connected");
    return false;
}

void UniversalBusDevice::getDevInfo(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    rv::BoxIdentity identity;
    identity.model = m_cfg.model;
    identity.serial = m_cfg.serial;
    identity.version = m_cfg.version;
    answer.body = identityBody(identity);
}

void UniversalBusDevice::getChannelsConfig(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    rv::BoxConfig config;
    for (int32_t channel = 0; channel < m_cfg.canCount; ++channel) {
        RvCanChannelConfig c;
        const int result = m_wrapper.connection()->getCanConfig(channel, &c);
        if (result != kRvOk) {
            return refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
        }
        config.can.push_back({channel, c.enabled != 0, c.fd != 0, c.bitrate, c.dataBitrate,
                              c.samplePoint / 10.0, c.dataSamplePoint / 10.0, c.termination != 0,
                              c.listenOnly != 0});
    }
    answer.body = configBody(config);
}

void UniversalBusDevice::setChannelsConfig(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    std::string reason;
    const auto config = parseConfig(document, reason);
    if (!config) return refuse(answer, CommandCode::BadValue, reason);
    for (const rv::CanChannelSettings& s : config->can) {
        const RvCanChannelConfig c{s.enabled,
                                   s.fd,
                                   s.bitrate,
                                   s.dataBitrate,
                                   static_cast<int32_t>(std::lround(s.samplePoint * 10.0)),
                                   static_cast<int32_t>(std::lround(s.dataSamplePoint * 10.0)),
                                   s.termination,
                                   s.listenOnly};
        const int result = m_wrapper.connection()->setCanConfig(s.channel, &c);
        if (result != kRvOk) {
            return refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
        }
    }
}

void UniversalBusDevice::startSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    std::string reason;
    auto request = parseCanSendDocument(document, reason);
    if (!request) return refuse(answer, CommandCode::BadValue, reason);
    int result = kRvOk;
    if (request->cyclic) {
        RvCanCycleJob job;
        if (!fillCycleJob(*request, job, reason)) {
            return refuse(answer, CommandCode::BadValue, reason);
        }
        result = m_wrapper.connection()->addCanCycleFrame(&job);
    } else {
        if (!m_singleCounters.apply(request->frame, request->update, reason)) {
            return refuse(answer, CommandCode::BadValue, reason);
        }
        const RvCanFrame frame = toLibrary(request->frame);
        result = m_wrapper.connection()->sendCanFrame(&frame);
    }
    if (result != kRvOk) refuse(answer, CommandCode::SendFailed, libraryResultText(result));
}

namespace {

template <class Call>
void runOnConnectionJob(const nlohmann::json& document, Call call, RespondCmdMsg& answer) {
    const auto found = document.find("cycle_uuid");
    if (found == document.end() || !found->is_string()) {
        return refuse(answer, CommandCode::BadValue, "\"cycle_uuid\" is missing or not a text");
    }
    const int result = call(found->get_ref<const std::string&>().c_str());
    if (result == kRvOk) return;
    refuse(answer,
           result == kRvErrorUnknownJob ? CommandCode::NoSuchJob : CommandCode::LibraryFailed,
           libraryResultText(result));
}

}  // namespace

void UniversalBusDevice::pauseSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    runOnConnectionJob(
        document,
        [this](const char* uuid) { return m_wrapper.connection()->pauseCanCycleFrame(uuid); },
        answer);
}

void UniversalBusDevice::resumeSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    runOnConnectionJob(
        document,
        [this](const char* uuid) { return m_wrapper.connection()->resumeCanCycleFrame(uuid); },
        answer);
}

void UniversalBusDevice::removeSendCanFrame(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    runOnConnectionJob(
        document,
        [this](const char* uuid) { return m_wrapper.connection()->removeCanCycleFrame(uuid); },
        answer);
}

void UniversalBusDevice::startTrace(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    m_busStatus.clearTimeouts();
    const int result = m_wrapper.connection()->startTracing();
    if (result != kRvOk) {
        return refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
    }
    m_reader.start();
}

void UniversalBusDevice::stopTrace(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    m_reader.stop();
    pollCan();
    const int result = m_wrapper.connection()->stopTracing();
    if (result != kRvOk) refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
}

bool UniversalBusDevice::pollCan() {
    thread_local std::vector<RvCanFrame> records(kReadBatch);
    int32_t count = 0;
    const int result = m_wrapper.connection()->readCanFrames(records.data(), kReadBatch, &count);
    if (result != kRvOk || count <= 0) return false;
    for (int32_t i = 0; i < count; ++i) {
        m_batch.push_back(fromLibrary(records[static_cast<size_t>(i)]));
    }
    m_outlet.deliver(rv::FrameType::Can, m_batch);
    return count == kReadBatch;
}

}  // namespace RV::BoxDev
