#include "pysdk/py_extension/transmit_records.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QUuid>
#include <algorithm>
#include <array>

namespace scripts {
namespace {

constexpr std::array<uint8_t, 16> kFdLengths = {0, 1,  2,  3,  4,  5,  6,  7,
                                                8, 12, 16, 20, 24, 32, 48, 64};
constexpr size_t kClassicLength = 8;

std::optional<uint8_t> dlcOf(size_t length) {
    const auto* const found = std::find(kFdLengths.begin(), kFdLengths.end(), length);
    if (found == kFdLengths.end()) return std::nullopt;
    return static_cast<uint8_t>(found - kFdLengths.begin());
}

size_t lengthOf(uint8_t dlc, bool fd) {
    const size_t length = kFdLengths[dlc & 0x0FU];
    // A classic frame with a DLC beyond 8 carries 8 bytes.
    return fd ? length : std::min(length, kClassicLength);
}

std::string checkLength(const CANRawFrame& frame, bool fd, uint8_t dlc) {
    const size_t length = frame.data.size();
    if (!fd && length > kClassicLength) {
        return fmt::format("a CAN frame carries up to 8 data bytes, not {}; set EDL for CAN FD",
                           length);
    }
    if (frame.extend.RTR() != 0) {
        if (fd) return "a CAN FD frame cannot be a remote frame";
        return length == 0 ? "" : "a remote frame carries no data";
    }
    if (!dlcOf(length)) return fmt::format("no CAN FD frame carries {} data bytes", length);
    if (lengthOf(dlc, fd) != length) {
        return fmt::format("DLC {} stands for {} data bytes, the frame has {}", unsigned{dlc},
                           lengthOf(dlc, fd), length);
    }
    return "";
}

}  // namespace

std::string toText(const CANCyclicFrameHandle& cyclic, const std::string& status) {
    return fmt::format("CANCyclicFrameHandle(gid={}, device {}, ms={})", cyclic.gid,
                       toText(cyclic.deviceInfo, status), cyclic.ms);
}

std::string toText(const rv::FrameUpdate& update) {
    return fmt::format(
        "FrameUpdate(counterEnabled={}, counterStartBit={}, counterLength={}, counterBigEndian={}, "
        "counterReset={}, crcType={}, crcStartBit={}, crcLength={}, crcBigEndian={}, "
        "crcKey=[{:#X}])",
        update.counterEnabled, update.counterStartBit, update.counterLength,
        update.counterBigEndian, update.counterReset, update.crcType, update.crcStartBit,
        update.crcLength, update.crcBigEndian, fmt::join(update.crcKey, ", "));
}

bool sameUpdate(const rv::FrameUpdate& left, const rv::FrameUpdate& right) {
    return left.counterEnabled == right.counterEnabled &&
           left.counterStartBit == right.counterStartBit &&
           left.counterLength == right.counterLength &&
           left.counterBigEndian == right.counterBigEndian &&
           left.counterReset == right.counterReset && left.crcType == right.crcType &&
           left.crcStartBit == right.crcStartBit && left.crcLength == right.crcLength &&
           left.crcBigEndian == right.crcBigEndian && left.crcKey == right.crcKey;
}

std::optional<rv::CanSendFrame> toSendFrame(const CANRawFrame& frame, FrameFormat format,
                                            std::string& reason) {
    rv::CanSendFrame out;
    out.channel = frame.channelId;
    out.id = frame.id;
    out.extend = frame.extend;
    if (format == FrameFormat::Fd) out.extend.setEDL(true);
    const bool fd = out.extend.EDL() != 0;
    if (out.extend.DLC() == 0) {
        if (const auto dlc = dlcOf(frame.data.size())) out.extend.setDLC(*dlc);
    }
    reason = checkLength(frame, fd, out.extend.DLC());
    if (!reason.empty()) return std::nullopt;
    out.data.assign(frame.data.begin(), frame.data.end());
    return out;
}

std::string makeJobId() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString(); }

}  // namespace scripts
