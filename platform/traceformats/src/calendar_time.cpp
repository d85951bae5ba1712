#include "quill_traceformats/calendar_time.h"

#include <chrono>

#include "quill_os/local_time.h"

namespace quill::traceformats {

namespace chrono = std::chrono;

CalendarTime calendarFromEpoch(uint64_t epochNs, int32_t offsetSeconds) {
    const chrono::sys_time<chrono::milliseconds> moment(
        chrono::milliseconds(static_cast<int64_t>(epochNs / 1'000'000U)) +
        chrono::seconds(offsetSeconds));
    const auto days = chrono::floor<chrono::days>(moment);
    const chrono::year_month_day date(days);
    const chrono::hh_mm_ss clock(moment - days);
    CalendarTime time;
    time.year = static_cast<uint16_t>(static_cast<int>(date.year()));
    time.month = static_cast<uint16_t>(static_cast<unsigned>(date.month()));
    time.dayOfWeek = static_cast<uint16_t>(chrono::weekday(days).c_encoding());
    time.day = static_cast<uint16_t>(static_cast<unsigned>(date.day()));
    time.hour = static_cast<uint16_t>(clock.hours().count());
    time.minute = static_cast<uint16_t>(clock.minutes().count());
    time.second = static_cast<uint16_t>(clock.seconds().count());
    time.millisecond = static_cast<uint16_t>(clock.subseconds().count());
    return time;
}

uint64_t epochFromCalendar(const CalendarTime& time, int32_t offsetSeconds) {
    const chrono::year_month_day date(chrono::year(time.year), chrono::month(time.month),
                                      chrono::day(time.day));
    if (!date.ok() || time.hour > 23 || time.minute > 59 || time.second > 60) return 0;
    const auto moment = chrono::sys_days(date).time_since_epoch() + chrono::hours(time.hour) +
                        chrono::minutes(time.minute) + chrono::seconds(time.second) -
                        chrono::seconds(offsetSeconds) + chrono::milliseconds(time.millisecond);
    // The year 2500 keeps the product below within 64 bits.
    if (moment.count() <= 0 || time.year > 2500) return 0;
    return static_cast<uint64_t>(moment.count()) * 1'000'000U;
}

int32_t localOffsetSeconds(uint64_t epochNs) {
    return os::localOffsetSeconds(static_cast<int64_t>(epochNs / 1'000'000'000U));
}

int32_t localOffsetSeconds(const CalendarTime& local) {
    const auto asUtc = static_cast<int64_t>(epochFromCalendar(local, 0) / 1'000'000'000U);
    // The first offset may lie on the other side of a clock change, the second does not.
    return os::localOffsetSeconds(asUtc - os::localOffsetSeconds(asUtc));
}

}  // namespace quill::traceformats
