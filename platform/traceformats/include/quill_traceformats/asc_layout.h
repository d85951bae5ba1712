#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/calendar_time.h"

// Line forms of ASC files as they are written. Times are seconds from the start of measurement with
// nine decimals, numbers hexadecimal unless told, channels decimal from 1.
//
//   <t> <ch>  <id>[x] <Rx|Tx|TxRq> d <dlc> <byte>...          classic CAN
//   <t> <ch>  <id>[x] <dir> r <dlc>                             remote frame
//   <t> CANFD <ch> <dir> <id>[x] <brs> <esi> <dlc> <length, decimal> <byte>...
//       <duration> <bit count> <flags> <crc> 0 0 0 0             flags as of BLF type 101
//   <t> <ch>  ErrorFrame  Flags = 0x<valid> CodeExt = 0x<flags> Code = 0x<ecc> ID = <id>
//       DLC = <dlc> Position = <pos> Length = 0
//   <t> Li|L<n> <id> <dir> <length> <byte>... checksum = <sum> header time = 0, full time = 0
//       SOF = .. BR = .. break = .. EOH = .. EOB = .. sim = 0 EOF = <t> RBR = .. HBR = .. HSO = ..
//       RSO = .. CSM = <enhanced|classic>                        unknown times are 0
//   <t> ETH <ch> <dir> <length>:<frame as hexadecimal digits>
//   <t> Fr <ch> RMSG <channel mask> <slot> <cycle, decimal> <dir> <frame flags> <header crc>
//       <length, decimal> <byte>...
//   // <t> <n> frames lost from <t of the first>                 where frames were dropped
namespace quill::traceformats {

inline constexpr std::string_view kAscStart = "   0.000000000 Start of measurement\n";
inline constexpr std::string_view kAscEnd = "End TriggerBlock\n";
inline constexpr std::string_view kAscFlexRayReceive = "RMSG";
inline constexpr size_t kAscHeaderSize = 189;

// Date as in header lines: "Sat Sep 30 15:06:13.191 2017", always 28 characters, English names.
[[nodiscard]] std::string ascDate(const CalendarTime& time);

// All lines before the first event, kAscHeaderSize bytes for any date of four-digit year, so that
// the header can be written again in place once the start of measurement is known.
[[nodiscard]] std::string ascHeader(const CalendarTime& start);

// Room that the frame's line needs at most, 0 when the frame has no line form.
[[nodiscard]] size_t ascLineRoom(const TraceFrame& frame);

// Writes the frame's line with its LF and returns the end. The frame's timeNs counts from the start
// of measurement; ascLineRoom(frame) bytes are there, and not 0.
char* writeAscLine(const TraceFrame& frame, char* out);

}  // namespace quill::traceformats
