#include "pysdk/py_extension/device_records.h"

#include <fmt/format.h>

#include <regex>

namespace scripts {
namespace {

template <class Settings>
std::string listText(const ChannelList<Settings>& list) {
    std::string text;
    for (const auto& item : list.items()) {
        if (!text.empty()) text += ", ";
        text += toText(*item);
    }
    return "[" + text + "]";
}

}  // namespace

bool isMacAddress(const std::string& text) {
    static const std::regex kPattern(kMacPattern);
    return std::regex_match(text, kPattern);
}

std::string toText(const DipData& dip) {
    return fmt::format("DipData(program={}, sel2={}, sel1={}, sel0={})", dip.program, dip.sel2,
                       dip.sel1, dip.sel0);
}

std::string toText(const RVBoxDeviceInfo& info) {
    return fmt::format("RVBoxDeviceInfo(com={}, mac={}, model={}, networkCard={}, sn={}, dip={})",
                       info.com, info.mac, info.model, info.networkCard, info.sn, toText(info.dip));
}

std::string toText(const rv::CanChannelSettings& settings) {
    return fmt::format(
        "CanChannelConfig(channel={}, enabled={}, fd={}, bitrate={}, dataBitrate={}, "
        "samplePoint={}, dataSamplePoint={}, termination={}, listenOnly={})",
        settings.channel, settings.enabled, settings.fd, settings.bitrate, settings.dataBitrate,
        settings.samplePoint, settings.dataSamplePoint, settings.termination, settings.listenOnly);
}

std::string toText(const rv::LinChannelSettings& settings) {
    return fmt::format(
        "LinChannelConfig(channel={}, enabled={}, baudrate={}, master={}, version={})",
        settings.channel, settings.enabled, settings.baudrate, settings.master, settings.version);
}

std::string toText(const rv::EthChannelSettings& settings) {
    return fmt::format("EthChannelConfig(channel={}, enabled={}, speed={}, master={})",
                       settings.channel, settings.enabled, settings.speed, settings.master);
}

std::string toText(const DeviceConfig& config) {
    return fmt::format("BoxConfig(can={}, lin={}, eth={})", listText(config.can),
                       listText(config.lin), listText(config.eth));
}

std::string toText(const DeviceHandle& handle, const std::string& status) {
    return fmt::format("DeviceHandle(mac={}, status={}, type={})", handle.deviceInfo.mac, status,
                       handle.type == All ? "hub4e" : "other");
}

}  // namespace scripts
