#include "pysdk/py_extension/script_records.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "core/frame/Frame.h"

namespace scripts {
namespace {

constexpr uint64_t kStampNsPerSecond = 1'000'000'000U;

// Parameters by value: the members of packed records cannot be bound to references.
uint64_t joinTime(uint32_t seconds, uint32_t nanoseconds) {
    return seconds * kStampNsPerSecond + nanoseconds;
}

const char* checkTypeText(uint8_t checkMode) {
    switch (checkMode) {
        case 0:
            return "Classic";
        case 1:
            return "Enhance";
        default:
            return "";
    }
}

template <class Record>
void fillCommon(Record& record, const rv::Frame& frame) {
    record.seconds = frame.seconds;
    record.nanoseconds = frame.nanoseconds;
    record.channelId = frame.channel;
    record.dir = static_cast<uint16_t>(frame.direction);
}

void fillData(ByteList& data, std::span<const uint8_t> payload) {
    const size_t kept = std::min(payload.size(), ByteList::kCapacity);
    (void)data.assign(payload.first(kept));  // fits after the cut
}

std::string macText(std::span<const uint8_t> mac) {
    return fmt::format("{:02X}", fmt::join(mac, ":"));
}

}  // namespace

std::string toText(const CANFrameExtend& extend) {
    return fmt::format(
        "CANFrameExtend:\tEDL:{}\tBRS:{}\tESI:{}\tCOD:{}\tUU2:{}\tSRR:{}\tIDE:{}\tRTR:{}\tDLC:{}"
        "\terrorFlag:{}",
        extend.EDL(), extend.BRS(), extend.ESI(), extend.COD(), extend.UU2(), extend.SRR(),
        extend.IDE(), extend.RTR(), extend.DLC(), extend.errorFlag());
}

std::string toText(std::span<const uint8_t> data) {
    return fmt::format("Data: [{0:#X}]", fmt::join(data, ", "));
}

uint64_t CANRawFrame::timestampNs() const { return joinTime(seconds, nanoseconds); }
uint64_t LinFrame::timestampNs() const { return joinTime(seconds, nanoseconds); }
uint64_t EthFrame::timestampNs() const { return joinTime(seconds, nanoseconds); }

std::string CANRawFrame::toText() const {
    const uint32_t frameId = id;
    std::string text = fmt::format("CANRawFrame: timestamp:{} id = {} channelId = {} {} \n{}",
                                   timestampNs(), frameId, unsigned{channelId},
                                   scripts::toText(extend), scripts::toText(data.bytes()));
    if (parsed) text = fmt::format("{} \nparesed info:\nname:{}", text, name.text());
    return text;
}

std::string LinFrame::toText() const {
    const uint16_t frameId = id;
    const uint16_t sum = checksum;
    const uint16_t direction = dir;
    return fmt::format(
        "LinFrame: timestamp:{} id = {} channelId = {} checkType = {} checksum = {:#x} dir = {} {} "
        "\n",
        timestampNs(), frameId, unsigned{channelId}, checkTypeText(checkMode), sum, direction,
        scripts::toText(data.bytes()));
}

std::string EthFrame::toText() const {
    const uint16_t direction = dir;
    const std::span<const uint8_t> bytes = data.bytes();
    std::string text = fmt::format("EthFrame: timestamp:{} channelId = {} dir = {} length = {}",
                                   timestampNs(), unsigned{channelId}, direction, bytes.size());
    constexpr size_t kHeader = 14;  // destination, source, type
    if (bytes.size() >= kHeader) {
        text += fmt::format(" dst = {} src = {} type = {:#06x}", macText(bytes.subspan(0, 6)),
                            macText(bytes.subspan(6, 6)), bytes[12] * 256U + bytes[13]);
    }
    return fmt::format("{} {}", text, scripts::toText(bytes));
}

bool CANRawFrame::operator==(const CANRawFrame& other) const {
    return timestampNs() == other.timestampNs() && channelId == other.channelId && id == other.id &&
           extend == other.extend && data == other.data && parsed == other.parsed &&
           name == other.name && dir == other.dir;
}

bool LinFrame::operator==(const LinFrame& other) const {
    return timestampNs() == other.timestampNs() && channelId == other.channelId &&
           dir == other.dir && id == other.id && data == other.data &&
           checkMode == other.checkMode && checksum == other.checksum;
}

bool EthFrame::operator==(const EthFrame& other) const {
    return timestampNs() == other.timestampNs() && channelId == other.channelId &&
           dir == other.dir && data == other.data;
}

void fill(CANRawFrame& record, const rv::Frame& frame) {
    fillCommon(record, frame);
    record.id = frame.id;
    record.extend = frame.can.extend;
    fillData(record.data, frame.payload());
}

void fill(LinFrame& record, const rv::Frame& frame) {
    fillCommon(record, frame);
    record.id = static_cast<uint16_t>(frame.id);
    record.checkMode = frame.lin.checkMode;
    record.checksum = frame.lin.checksum;
    fillData(record.data, frame.payload());
}

void fill(EthFrame& record, const rv::Frame& frame) {
    fillCommon(record, frame);
    const std::span<const uint8_t> payload = frame.payload();
    record.data.assign({reinterpret_cast<const char*>(payload.data()), payload.size()});
}

}  // namespace scripts
