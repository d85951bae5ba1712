#include "quill_traceformats/asc_layout.h"

#include <algorithm>
#include <array>

#include "quill_traceformats/blf_objects.h"
#include "quill_traceformats/text_format.h"

namespace quill::traceformats {

namespace {

// Columns of one line without its payload; the longest is a LIN line with eight end-of-byte times.
constexpr size_t kLineBase = 448;
constexpr size_t kIdColumn = 16;

std::string_view directionText(FrameDirection direction) {
    constexpr std::array<std::string_view, 3> kTexts{"Rx  ", "Tx  ", "TxRq"};
    return kTexts[static_cast<size_t>(direction)];
}

char* putCanId(char* out, const TraceFrame& frame) {
    out = putHex(out, frame.id);
    if ((frame.flags & kCanExtended) != 0) *out++ = 'x';
    return out;
}

char* padTo(char* out, const char* columnEnd) {
    while (out < columnEnd) *out++ = ' ';
    return out;
}

char* putClassicCan(char* out, const TraceFrame& frame) {
    out = putDecimal(out, frame.channel);
    out = putText(out, "  ");
    char* const columnEnd = out + kIdColumn;
    out = padTo(putCanId(out, frame), columnEnd);
    out = putText(out, directionText(frame.direction));
    out = putText(out, (frame.flags & kCanRemote) != 0 ? " r " : " d ");
    out = putHex(out, frame.dlc & 0x0FU);
    if ((frame.flags & kCanRemote) != 0) return out;
    const size_t length = lengthFromDlc(frame.dlc, false);
    out = putSpacedBytes(out, frame.data.first(std::min(length, frame.data.size())));
    // A line holds as many bytes as its code says, whatever the box delivered.
    for (size_t i = frame.data.size(); i < length; ++i) out = putText(out, " 00");
    return out;
}

char* putCanFd(char* out, const TraceFrame& frame) {
    using Layout = BlfCanFdMessage64;
    uint32_t flags = Layout::kEdl;
    const bool switched = (frame.flags & kCanBitRateSwitch) != 0;
    const bool passive = (frame.flags & kCanErrorState) != 0;
    if (switched) flags |= Layout::kBrs;
    if (passive) flags |= Layout::kEsi;
    out = putText(out, "CANFD ");
    out = putDecimal(out, frame.channel);
    *out++ = ' ';
    out = putText(out, directionText(frame.direction));
    *out++ = ' ';
    char* const columnEnd = out + 9;
    out = padTo(putCanId(out, frame), columnEnd);
    *out++ = ' ';
    *out++ = switched ? '1' : '0';
    *out++ = ' ';
    *out++ = passive ? '1' : '0';
    *out++ = ' ';
    out = putHex(out, frame.dlc & 0x0FU);
    *out++ = ' ';
    out = putDecimal(out, frame.data.size());
    out = putSpacedBytes(out, frame.data);
    out = putText(out, "        0    0 ");
    out = putHex(out, flags);
    return putText(out, " 0 0 0 0 0");
}

char* putCanError(char* out, const TraceFrame& frame) {
    using Layout = BlfCanErrorExt;
    uint32_t valid = 0;
    if (frame.errorCode != 0) valid |= Layout::kHasCode;
    if (frame.errorFlags != 0) valid |= Layout::kHasFlagsExt;
    if (frame.errorPosition != 0) valid |= Layout::kHasPosition;
    out = putDecimal(out, frame.channel);
    out = putText(out, "  ErrorFrame  Flags = 0x");
    out = putHex(out, valid);
    out = putText(out, " CodeExt = 0x");
    out = putHex(out, frame.errorFlags);
    out = putText(out, " Code = 0x");
    out = putHex(out, frame.errorCode);
    out = putText(out, " ID = ");
    out = putCanId(out, frame);
    out = putText(out, " DLC = ");
    out = putHex(out, frame.dlc);
    out = putText(out, " Position = ");
    out = putDecimal(out, frame.errorPosition);
    return putText(out, " Length = 0");
}

char* putLin(char* out, const TraceFrame& frame) {
    *out++ = 'L';
    if (frame.channel == 1) {
        *out++ = 'i';
    } else {
        out = putDecimal(out, frame.channel);
    }
    *out++ = ' ';
    char* const columnEnd = out + kIdColumn;
    out = padTo(putHex(out, frame.id), columnEnd);
    out = putText(out, directionText(frame.direction));
    *out++ = ' ';
    out = putDecimal(out, frame.data.size());
    out = putSpacedBytes(out, frame.data);
    out = putText(out, "  checksum = ");
    out = putHex(out, frame.checksum);
    out = putText(out,
                  "   header time =   0, full time =   0  SOF = 0.000000  BR = 0  break = 0 0"
                  "   EOH = 0.000000   EOB =");
    for (size_t i = 0; i < frame.data.size(); ++i) out = putText(out, " 0.000000");
    out = putText(out, "   sim = 0  EOF = ");
    char time[40];
    char* const timeEnd = putSeconds(time, frame.timeNs);
    const char* timeBegin = std::find_if(time, timeEnd, [](char c) { return c != ' '; });
    out = putText(out, std::string_view(timeBegin, static_cast<size_t>(timeEnd - timeBegin)));
    out = putText(out, "  RBR = 0  HBR = 0  HSO = 0  RSO = 0  CSM = ");
    return putText(out, (frame.flags & kLinEnhancedChecksum) != 0 ? "enhanced" : "classic");
}

char* putEthernet(char* out, const TraceFrame& frame) {
    out = putText(out, "ETH ");
    out = putDecimal(out, frame.channel);
    *out++ = ' ';
    out = putText(out, directionText(frame.direction));
    *out++ = ' ';
    out = putHex(out, static_cast<uint32_t>(frame.data.size()));
    *out++ = ':';
    return putBytes(out, frame.data);
}

char* putFlexRay(char* out, const TraceFrame& frame) {
    out = putText(out, "Fr ");
    out = putDecimal(out, frame.channel);
    *out++ = ' ';
    out = putText(out, kAscFlexRayReceive);
    *out++ = ' ';
    out = putHex(out, frame.channelMask);
    *out++ = ' ';
    out = putHex(out, frame.id);
    *out++ = ' ';
    out = putDecimal(out, frame.cycle);
    *out++ = ' ';
    out = putText(out, directionText(frame.direction));
    *out++ = ' ';
    out = putHex(out, frame.flags);
    *out++ = ' ';
    out = putHex(out, frame.headerCrc);
    *out++ = ' ';
    out = putDecimal(out, frame.data.size());
    return putSpacedBytes(out, frame.data);
}

char* putLoss(char* out, const TraceFrame& frame) {
    out = putText(out, "// ");
    out = putSeconds(out, frame.timeNs);
    *out++ = ' ';
    out = putDecimal(out, frame.lostFrames);
    out = putText(out, " frames lost from ");
    return putSeconds(out, frame.firstLostNs);
}

char* putEvent(char* out, const TraceFrame& frame) {
    switch (frame.kind) {
        case FrameKind::Can:
            return (frame.flags & kCanFd) != 0 ? putCanFd(out, frame) : putClassicCan(out, frame);
        case FrameKind::CanError:
            return putCanError(out, frame);
        case FrameKind::Lin:
            return putLin(out, frame);
        case FrameKind::Ethernet:
            return putEthernet(out, frame);
        case FrameKind::FlexRay:
            return putFlexRay(out, frame);
        case FrameKind::LossMarker:
        case FrameKind::None:
            break;
    }
    return out;
}

}  // namespace

std::string ascDate(const CalendarTime& time) {
    constexpr std::array<std::string_view, 7> kDays{"Sun", "Mon", "Tue", "Wed",
                                                    "Thu", "Fri", "Sat"};
    constexpr std::array<std::string_view, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    char text[48];
    char* out = putText(text, kDays[time.dayOfWeek % 7U]);
    *out++ = ' ';
    out = putText(out, kMonths[(time.month + 11U) % 12U]);
    *out++ = ' ';
    out = putDecimalPair(out, time.day % 100U);
    *out++ = ' ';
    out = putDecimalPair(out, time.hour % 100U);
    *out++ = ':';
    out = putDecimalPair(out, time.minute % 100U);
    *out++ = ':';
    out = putDecimalPair(out, time.second % 100U);
    *out++ = '.';
    *out++ = static_cast<char>('0' + time.millisecond / 100U % 10U);
    out = putDecimalPair(out, time.millisecond % 100U);
    *out++ = ' ';
    out = putDecimalPair(out, time.year / 100U % 100U);
    out = putDecimalPair(out, time.year % 100U);
    return std::string(text, out);
}

std::string ascHeader(const CalendarTime& start) {
    const std::string date = ascDate(start);
    std::string header = "date " + date + "\n";
    header += "base hex  timestamps absolute\ninternal events logged\n// version 13.0.0\n";
    header += "Begin TriggerBlock " + date + "\n";
    return header.append(kAscStart);
}

size_t ascLineRoom(const TraceFrame& frame) {
    const size_t length = frame.data.size();
    switch (frame.kind) {
        case FrameKind::Can:
            return length <= ((frame.flags & kCanFd) != 0 ? 64U : 8U) ? kLineBase + 3 * length : 0;
        case FrameKind::Lin:
            return length <= 8 ? kLineBase : 0;
        case FrameKind::Ethernet:
            return length <= 65535 ? kLineBase + 2 * length : 0;
        case FrameKind::FlexRay:
            return length <= 254 ? kLineBase + 3 * length : 0;
        case FrameKind::CanError:
        case FrameKind::LossMarker:
            return kLineBase;
        case FrameKind::None:
            break;
    }
    return 0;
}

char* writeAscLine(const TraceFrame& frame, char* out) {
    if (frame.kind == FrameKind::LossMarker) {
        out = putLoss(out, frame);
    } else {
        out = putSeconds(out, frame.timeNs);
        *out++ = ' ';
        out = putEvent(out, frame);
    }
    *out++ = '\n';
    return out;
}

}  // namespace quill::traceformats
