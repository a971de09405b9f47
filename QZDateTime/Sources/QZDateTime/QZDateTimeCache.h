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
/// What is *not* asked of it: a usual day (one the calendar has, within four million years) carries its number. Its
/// weekday, its neighbours, its distance to another and sums inside its month cost between one and five cycles, and
/// every look-up costs more, hash and comparison alone. So these never come here, and the fields serve what is left:
/// sums that leave their month, days beyond those years or that no calendar has, months outside 1 to 12, and above all
/// the way between moments and days, which reads zone rules.
class QZDateTimeCache {
 public:
  struct DayOfWeekEntry {
    YYYYMMDD day;
    DayOfWeek dayOfWeek;
  };
  /// A day and the one beside it.
  struct StepEntry {
    YYYYMMDD day;
    YYYYMMDDContainer container;
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

  /// Whether packed() takes a day: one that carries its number, of years that fit 17 bits.
  [[nodiscard]] static constexpr bool fitsWord(const YYYYMMDD& day) {
    return day.carriesNumber() && day.y_ >= -packedYears && day.y_ < packedYears;
  }
  /// A day as 32 bits: 17 of the year, 4 of the month, 5 of the day, 5 of the days left in its month. REQUIRES:
  /// fitsWord(day).
  [[nodiscard]] static constexpr std::uint32_t packed(const YYYYMMDD& day) {
    return static_cast<std::uint32_t>((day.y_ + packedYears) << 14 | day.m_ << 10 | day.d_ << 5 | day.left_);
  }
  /// The day of that word and number.
  [[nodiscard]] static constexpr YYYYMMDDContainer unpacked(std::uint32_t word, std::int32_t number) {
    return {YYYYMMDD(std::int64_t{word >> 14} - packedYears, word >> 10 & 15, word >> 5 & 31, number,
                     static_cast<std::int32_t>(word & 31))};
  }

  /// Days of a month outside 1 to 12, as a stored integer may hold it, keyed by its integer form. Those of a usual
  /// month are a matter of some bits.
  WordCache<256> yyyymmDaysInMonthCache;
  /// Distance between two days of which one carries no number, keyed by both.
  ThreadCache<DistanceEntry, 64, struct DistanceTag> yyyymmddDistanceCache;
  /// Weekday of a day that carries no number.
  ThreadCache<DayOfWeekEntry, 64, struct DayOfWeekTag> yyyymmddDayOfWeekCache;
  /// The days before and after a day that carries no number.
  ThreadCache<StepEntry, 64, struct PrevDateTag> yyyymmddPrevDateCache;
  ThreadCache<StepEntry, 64, struct NextDateTag> yyyymmddNextDateCache;
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
  static constexpr std::int64_t packedYears = 1 << 16;

  constexpr QZDateTimeCache() = default;

  static QZDateTimeCache shared_;
};

}  // namespace qz
