#pragma once

#include <QZDateTime/CacheSlots.h>
#include <QZDateTime/DateFormatter.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace qz {

/// What a slot that remembers a day holds.
struct YYYYMMDDContainer {
  YYYYMMDD yyyymmdd;
};

/// What a slot that remembers a list of weekdays holds.
struct DayOfWeekContainer {
  std::array<DayOfWeek, 7> days;
};

/// Remembers the results of costly calendar work for the whole process; the day, month and weekday types ask it by
/// themselves. Nothing in it is ever needed: it may be emptied at any moment, and results are the same without it. All
/// of it may be used from any thread, without locks.
///
/// What is *not* asked of it: a look-up costs about as much as ten additions, and a usual day (one the calendar has,
/// within four million years) carries its number. Its weekday, its distance to another such day, and steps inside a
/// month are cheaper than any look-up and never come here. The fields serve what is left: steps out of a month, days
/// beyond those years or that no calendar has, and above all the way between moments and days, which reads zone rules.
class QZDateTimeCache {
 public:
  struct DayEntry {
    YYYYMMDD day;
    DayOfWeek dayOfWeek;
  };
  struct DistanceEntry {
    YYYYMMDD day;
    YYYYMMDD to;
    std::int64_t distance;
  };
  struct DateAtEntry {
    TimeZone timeZone;
    YYYYMMDD day;
    std::int64_t time;  ///< seconds since midnight
    Moment date;
  };
  /// While clocks stand still: from <= moment < until. The container's day, counted from midnight to midnight, begins
  /// at `midnight`; the days of all other moments of the span follow from it by counting, whatever the start of day.
  struct FromDateEntry {
    TimeZone timeZone;
    Moment from;
    Moment until;
    Moment midnight;
    YYYYMMDDContainer container;
  };

  /// The one object of the process.
  [[nodiscard]] static QZDateTimeCache& shared() { return shared_; }

  QZDateTimeCache(const QZDateTimeCache&) = delete;
  QZDateTimeCache& operator=(const QZDateTimeCache&) = delete;

  /// Empties every cache, for a process that runs short of memory. The formatters stay.
  void evictAll();

  /// Made at the first call, then kept.
  [[nodiscard]] static const DateFormatter& titleWithYearFormatter();
  [[nodiscard]] static const DateFormatter& shortTitleWithYearFormatter();
  [[nodiscard]] static const DateFormatter& localizedYearFormatter();
  [[nodiscard]] static const DateFormatter& symbolsFormatter();

  /// A day as 32 bits: the year shifted into 23 of them, 4 for the month, 5 for the day. REQUIRES: a day that carries
  /// its number.
  [[nodiscard]] static constexpr std::uint32_t packed(const YYYYMMDD& day) {
    return static_cast<std::uint32_t>((day.y_ + day_number::nearYears) << 9 | day.m_ << 5 | day.d_);
  }
  [[nodiscard]] static constexpr YYYYMMDDContainer unpacked(std::uint32_t word, std::int32_t number) {
    return {YYYYMMDD(std::int64_t{word >> 9} - day_number::nearYears, word >> 5 & 15, word & 31, number)};
  }

  /// Days of a February, keyed by the month's integer form; other months are a matter of one bit.
  WordCache<256> yyyymmDaysInMonthCache;
  /// Distance between two days of which one carries no number, keyed by both.
  ThreadCache<DistanceEntry, 64, struct DistanceTag> yyyymmddDistanceCache;
  /// Weekday of a day that carries no number.
  ThreadCache<DayEntry, 64, struct DayOfWeekTag> yyyymmddDayOfWeekCache;
  /// The day before the first of a month, keyed by its own number.
  WordCache<1024> yyyymmddPrevDateCache;
  /// The day after the last of a month, keyed by its own number.
  WordCache<1024> yyyymmddNextDateCache;
  /// The moment at which a date shows a time of day in a zone.
  ThreadCache<DateAtEntry, 1024, struct DateAtTag> yyyymmddDateAtCache;
  /// A day plus a number of days, keyed by the number of the day reached: all sums that lead to a day share its slot.
  WordCache<8192> yyyymmddAddCache;
  /// The day of a moment, keyed by zone and moment. One entry serves all moments between two changes of a zone's
  /// clocks, about half a year: finding a day from there costs less than keeping every day, which would also wear out
  /// the processor's own caches.
  ThreadCache<FromDateEntry, 256, struct FromDateTag> yyyymmddFromDate;

  /// Lists of all weekdays, keyed by the first. A table of 49 bytes laid down by the compiler, the cheapest cache of
  /// all: always full, nothing to evict.
  class EveryDayCache {
   public:
    [[nodiscard]] constexpr const DayOfWeekContainer& find(DayOfWeek first) const {
      return rows_[static_cast<std::size_t>(first.rawValue())];
    }

   private:
    static constexpr DayOfWeekContainer row(DayOfWeek first) {
      return {{first, first.add(1), first.add(2), first.add(3), first.add(4), first.add(5), first.add(6)}};
    }

    std::array<DayOfWeekContainer, 7> rows_{
        row(DayOfWeek::sunday),   row(DayOfWeek::monday), row(DayOfWeek::tuesday), row(DayOfWeek::wednesday),
        row(DayOfWeek::thursday), row(DayOfWeek::friday), row(DayOfWeek::saturday)};
  };
  EveryDayCache everyDayCache;

 private:
  constexpr QZDateTimeCache() = default;

  static QZDateTimeCache shared_;
};

}  // namespace qz
