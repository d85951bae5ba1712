#pragma once

#include <cstdint>

namespace quill::traceformats {

// A moment as calendar fields, in the order of file headers. All zero means unknown.
struct CalendarTime {
    uint16_t year = 0;
    uint16_t month = 0;      // 1 to 12
    uint16_t dayOfWeek = 0;  // 0 Sunday
    uint16_t day = 0;
    uint16_t hour = 0;
    uint16_t minute = 0;
    uint16_t second = 0;
    uint16_t millisecond = 0;

    bool operator==(const CalendarTime&) const = default;
};

// Calendar fields of a moment `epochNs` nanoseconds after 1970-01-01 UTC, seen at an offset east of
// UTC. The fraction below a millisecond is cut off.
[[nodiscard]] CalendarTime calendarFromEpoch(uint64_t epochNs, int32_t offsetSeconds);

// The reverse, as nanoseconds since the epoch; 0 for fields that are no date after 1970.
[[nodiscard]] uint64_t epochFromCalendar(const CalendarTime& time, int32_t offsetSeconds);

// Seconds east of UTC that this machine's local time has at that moment.
[[nodiscard]] int32_t localOffsetSeconds(uint64_t epochNs);

// Seconds east of UTC of a moment given in local calendar fields.
[[nodiscard]] int32_t localOffsetSeconds(const CalendarTime& local);

}  // namespace quill::traceformats
