#include "quill_traceformats/BlfFrameDecoder.h"

#include <algorithm>
#include <cstring>

#include "quill_traceformats/blf_objects.h"
#include "quill_traceformats/byte_order.h"

namespace quill::traceformats {
namespace {
using Body = std::span<const uint8_t>;

FrameDirection blfDirection(uint32_t number) {
    return number == 1 ? FrameDirection::Tx
                       : (number == 2 ? FrameDirection::TxRequest : FrameDirection::Rx);
}

Body part(Body body, size_t offset, size_t count) {
    return offset >= body.size() ? Body{}
                                 : body.subspan(offset, std::min(count, body.size() - offset));
}

bool canError(Body body, TraceFrame& frame) {
    if (body.size() < 4) return false;
    frame.kind = FrameKind::CanError;
    frame.channel = bytes::little16(body.data());
    return true;
}

bool canFdError64(Body body, TraceFrame& frame) {
    if (body.size() < 44) return false;
    const uint8_t* p = body.data();
    const uint16_t fdFlags = bytes::little16(p + 8);
    const uint32_t id = bytes::little32(p + 12);
    frame.kind = FrameKind::CanError;
    frame.channel = p[0];
    frame.dlc = p[1] & 0x0FU;
    frame.errorCode = p[3];
    frame.errorFlags = bytes::little16(p + 6);
    frame.errorPosition = static_cast<uint8_t>(std::min<uint16_t>(bytes::little16(p + 40), 0xFF));
    frame.id = id & kBlfIdMask;
    frame.flags = ((id & kBlfExtendedId) != 0 ? kCanExtended : 0U) |
                  ((fdFlags & 0x80U) != 0 ? kCanFd : 0U) |
                  ((fdFlags & 0x40U) != 0 ? kCanBitRateSwitch : 0U) |
                  ((fdFlags & 0x20U) != 0 ? kCanErrorState : 0U);
    frame.data = part(body, 44, std::min<size_t>(p[2], 64));
    return true;
}

bool linMessage(Body body, TraceFrame& frame) {
    if (body.size() < 20) return false;
    const uint8_t* p = body.data();
    frame.kind = FrameKind::Lin;
    frame.channel = bytes::little16(p);
    frame.id = p[2] & 0x3FU;
    frame.data = body.subspan(4, std::min<size_t>(p[3], 8));
    frame.dlc = static_cast<uint8_t>(frame.data.size());
    frame.checksum = bytes::little16(p + 16);
    frame.direction = blfDirection(p[18]);
    return true;
}

// Types 29 and 30 differ in one byte: the former has 12 data bytes, the latter 11 and the cycle.
bool flexRayData(Body body, bool sync, TraceFrame& frame) {
    if (body.size() < 24) return false;
    const uint8_t* p = body.data();
    frame.kind = FrameKind::FlexRay;
    frame.channel = bytes::little16(p);
    frame.id = bytes::little16(p + 4);
    frame.headerCrc = bytes::little16(p + 6);
    frame.direction = blfDirection(p[8]);
    frame.channelMask = static_cast<uint8_t>(p[2] == 1 ? 2 : 1);
    frame.flags = kFlexRayValidData | (sync ? kFlexRaySync : 0U);
    frame.data = body.subspan(12, std::min<size_t>(p[3], sync ? 11 : 12));
    if (sync) frame.cycle = p[23] & 0x3FU;
    return true;
}

bool flexRayMessage(Body body, TraceFrame& frame) {
    if (body.size() < 96) return false;
    const uint8_t* p = body.data();
    frame.kind = FrameKind::FlexRay;
    frame.channel = bytes::little16(p);
    frame.direction = blfDirection(p[2]);
    frame.id = bytes::little16(p + 20);
    frame.headerCrc = bytes::little16(p + 22);
    const uint16_t state = bytes::little16(p + 24);
    frame.cycle = p[27] & 0x3FU;
    frame.channelMask = 1;
    // Frame state: bit 0 payload preamble, 1 sync, 2 reserved, 3 null frame (inverted on the bus),
    // 4 startup.
    frame.flags = kFlexRayValidData | ((state & 1U) != 0 ? kFlexRayPreamble : 0U) |
                  ((state & 2U) != 0 ? kFlexRaySync : 0U) |
                  ((state & 16U) != 0 ? kFlexRayStartup : 0U);
    frame.data = body.subspan(32, std::min<size_t>(p[26], 64));
    return true;
}

bool flexRayReceive(Body body, TraceFrame& frame) {
    constexpr size_t kData = 44;
    if (body.size() < kData) return false;
    const uint8_t* p = body.data();
    frame.kind = FrameKind::FlexRay;
    frame.channel = bytes::little16(p);
    frame.channelMask = static_cast<uint8_t>(bytes::little16(p + 4) & 3U);
    frame.direction = blfDirection(p[6]);
    frame.id = bytes::little16(p + 16);
    const uint16_t crcA = bytes::little16(p + 18);
    frame.headerCrc = crcA != 0 ? crcA : bytes::little16(p + 20);
    frame.cycle = p[26] & 0x3FU;
    frame.flags = bytes::little32(p + 36) & 0x1FU;
    const size_t wanted = std::min<size_t>(bytes::little16(p + 24), 254);
    frame.data = part(body, kData, wanted);
    return frame.data.size() == wanted;
}

bool carriesFrame(BlfType type) {
    switch (type) {
        case BlfType::CanMessage:
        case BlfType::CanMessage2:
        case BlfType::CanFdMessage:
        case BlfType::CanFdMessage64:
        case BlfType::CanErrorExt:
        case BlfType::LinMessage2:
        case BlfType::EthernetFrameEx:
        case BlfType::EthernetFrameForwarded:
        case BlfType::FlexRayReceiveEx:
        case BlfType::DataLostBegin:
        case BlfType::DataLostEnd:
            return true;
        default:
            return false;
    }
}

struct TypeName {
    uint32_t type;
    const char* name;
};
constexpr TypeName kNames[] = {
    {3, "CAN_OVERLOAD"},
    {4, "CAN_STATISTIC"},
    {5, "APP_TRIGGER"},
    {6, "ENV_INTEGER"},
    {7, "ENV_DOUBLE"},
    {8, "ENV_STRING"},
    {9, "ENV_DATA"},
    {12, "LIN_CRC_ERROR"},
    {13, "LIN_DLC_INFO"},
    {14, "LIN_RCV_ERROR"},
    {15, "LIN_SND_ERROR"},
    {16, "LIN_SLV_TIMEOUT"},
    {17, "LIN_SCHED_MODCH"},
    {18, "LIN_SYN_ERROR"},
    {19, "LIN_BAUDRATE"},
    {20, "LIN_SLEEP"},
    {21, "LIN_WAKEUP"},
    {31, "CAN_DRIVER_ERROR"},
    {40, "FLEXRAY_CYCLE"},
    {44, "CAN_DRIVER_SYNC"},
    {45, "FLEXRAY_STATUS"},
    {46, "GPS_EVENT"},
    {51, "REALTIMECLOCK"},
    {54, "LIN_STATISTIC"},
    {58, "LIN_SND_ERROR2"},
    {60, "LIN_CRC_ERROR2"},
    {61, "LIN_RCV_ERROR2"},
    {62, "LIN_WAKEUP2"},
    {65, "APP_TEXT"},
    {72, "SYS_VARIABLE"},
    {74, "CAN_DRIVER_ERROR_EXT"},
    {90, "SERIAL_EVENT"},
    {92, "EVENT_COMMENT"},
    {96, "GLOBAL_MARKER"},
    {103, "ETHERNET_STATUS"},
    {114, "ETHERNET_STATISTIC"},
    {115, "restore points"},
    {124, "FUNCTION_BUS"},
    {127, "WATER_MARK_EVENT"},
    {128, "TRIGGER_CONDITION"},
};
}  // namespace

const char* blfTypeName(uint32_t type) {
    for (const TypeName& entry : kNames) {
        if (entry.type == type) return entry.name;
    }
    return nullptr;
}

bool BlfFrameDecoder::ethernetFrame(std::span<const uint8_t> body, TraceFrame& frame) {
    constexpr size_t kPayload = 32;
    if (body.size() < kPayload) return false;
    const uint8_t* p = body.data();
    const size_t length = bytes::little16(p + 22);
    const Body payload = part(body, kPayload, length);
    if (payload.size() < length) return false;
    const uint16_t tag = bytes::little16(p + 18);
    m_joined.resize((tag != 0 ? 18U : 14U) + length);
    uint8_t* out = m_joined.data();
    std::memcpy(out, p + 8, 6);  // destination goes first on the wire
    std::memcpy(out + 6, p, 6);
    out += 12;
    const auto putNumber = [&out](uint16_t value) {
        *out++ = static_cast<uint8_t>(value >> 8U);
        *out++ = static_cast<uint8_t>(value);
    };
    if (tag != 0) {
        putNumber(tag);
        putNumber(bytes::little16(p + 20));
    }
    putNumber(bytes::little16(p + 16));
    if (length > 0) std::memcpy(out, payload.data(), length);
    frame.kind = FrameKind::Ethernet;
    frame.channel = bytes::little16(p + 6);
    frame.direction = blfDirection(bytes::little16(p + 14));
    frame.data = m_joined;
    return true;
}

// Sparing writers leave trailing zeros out of the object; the count of valid bytes tells them.
void BlfFrameDecoder::completeFd(std::span<const uint8_t> body, TraceFrame& frame) {
    const size_t valid = std::min<size_t>(body[BlfCanFdMessage64::kValidBytes], 64);
    if ((frame.flags & kCanRemote) != 0 || frame.data.size() >= valid) return;
    m_joined.assign(frame.data.begin(), frame.data.end());
    m_joined.resize(valid);
    frame.data = m_joined;
}

Decoded BlfFrameDecoder::decode(std::span<const uint8_t> object, TraceFrame& frame) {
    const auto header = decodeBlfObjectHeader(object);
    if (!header) return Decoded::bad("object is shorter than its header");
    const auto type = static_cast<BlfType>(header->type);
    bool read = false;
    if (carriesFrame(type)) {
        read = decodeBlfFrame(*header, object, frame);
        if (read && type == BlfType::CanFdMessage64) {
            completeFd(object.subspan(header->headerSize), frame);
        }
    } else {
        const Body body = object.subspan(std::min<size_t>(header->headerSize, object.size()));
        frame = TraceFrame{};
        switch (type) {
            case BlfType::CanError:
                read = canError(body, frame);
                break;
            case BlfType::CanFdError64:
                read = canFdError64(body, frame);
                break;
            case BlfType::LinMessage:
                read = linMessage(body, frame);
                break;
            case BlfType::EthernetFrame:
                read = ethernetFrame(body, frame);
                break;
            case BlfType::FlexRayData:
                read = flexRayData(body, false, frame);
                break;
            case BlfType::FlexRaySync:
                read = flexRayData(body, true, frame);
                break;
            case BlfType::FlexRayMessage:
                read = flexRayMessage(body, frame);
                break;
            case BlfType::FlexRayReceive:
                read = flexRayReceive(body, frame);
                break;
            default:
                return Decoded::noFrame("object type", header->type);
        }
    }
    if (!read) return Decoded::bad("object is too short for its type", header->type);
    if ((frame.flags & kCanRemote) != 0 && frame.kind == FrameKind::Can) frame.data = {};
    frame.dlc = std::min<uint8_t>(frame.dlc, 15);
    frame.timeNs = header->timeNs();
    const bool coarse = (header->flags & kBlfTimeTenMicroseconds) != 0;
    if (header->timestamp > kLargestSpanNs / (coarse ? 10'000U : 1U)) {
        return Decoded::bad("time stamp is impossible", header->type);
    }
    return Decoded::frame();
}

}  // namespace quill::traceformats
