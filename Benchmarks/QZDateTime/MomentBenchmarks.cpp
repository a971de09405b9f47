// The way between moments and days, against the calendar of ICU; and the program's main, which ends with the table of
// what must hold.

#include <QZDateTime/Calendar.h>
#include <QZDateTime/ISO8601.h>
#include <QZDateTime/QZDateTimeCache.h>
#include <QZDateTime/YYYYMMDD.h>
#include <Support/RatioReport.h>

#include <unicode/gregocal.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace qz {
namespace {

constexpr const char* zoneName = "Europe/Berlin";
const HHMMSS startOfDay(3, 0);

TimeZone zone() { return TimeZone::fromIdentifier(zoneName).value(); }

/// Ten years of history, three moments a day, in order.
const std::vector<Moment>& moments() {
  static const std::vector<Moment> result = [] {
    std::mt19937_64 random(2);
    std::vector<Moment> list;
    for (std::int64_t i = 0; i < 3 * 3653; ++i)
      list.emplace_back(
          std::chrono::seconds(1'400'000'000 + i * 28'800 + static_cast<std::int64_t>(random() % 28'800)));
    return list;
  }();
  return result;
}

const std::vector<Moment>& shuffledMoments() {
  static const std::vector<Moment> result = [] {
    std::vector<Moment> list = moments();
    std::shuffle(list.begin(), list.end(), std::mt19937_64(3));
    return list;
  }();
  return result;
}

template <typename List, typename Call>
void each(benchmark::State& state, const List& list, Call call) {
  for (auto _ : state)
    for (const auto& element : list) {
      auto result = call(element);
      benchmark::DoNotOptimize(result);
    }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(list.size()));
}

/// The day of a moment as one asks ICU for it, stepping a day back before the start of day.
class ICUDay {
 public:
  ICUDay() : calendar_(icu::TimeZone::createTimeZone(zoneName), status_) {}

  YYYYMMDD operator()(Moment date) {
    calendar_.setTime(static_cast<double>(date.time_since_epoch().count()) / 1000, status_);
    const std::int64_t time = get(UCAL_HOUR_OF_DAY) * 3600 + get(UCAL_MINUTE) * 60 + get(UCAL_SECOND);
    if (time < startOfDay.intValue()) calendar_.add(UCAL_DATE, -1, status_);
    return YYYYMMDD(get(UCAL_YEAR), get(UCAL_MONTH) + 1, get(UCAL_DATE));
  }

 private:
  std::int64_t get(UCalendarDateFields field) { return calendar_.get(field, status_); }

  UErrorCode status_ = U_ZERO_ERROR;
  icu::GregorianCalendar calendar_;
};

void dayOfMomentICU(benchmark::State& state) { each(state, moments(), ICUDay()); }
void dayOfMoment(benchmark::State& state) {
  each(state, moments(), [zone = zone()](Moment date) { return YYYYMMDD::calculateCached(startOfDay, date, zone); });
}
void dayOfMomentUncached(benchmark::State& state) {
  each(state, moments(), [zone = zone()](Moment date) { return YYYYMMDD::calculateUncached(startOfDay, date, zone); });
}

void shuffledDayOfMomentICU(benchmark::State& state) { each(state, shuffledMoments(), ICUDay()); }
void shuffledDayOfMoment(benchmark::State& state) {
  each(state, shuffledMoments(),
       [zone = zone()](Moment date) { return YYYYMMDD::calculateCached(startOfDay, date, zone); });
}
void shuffledDayOfMomentUncached(benchmark::State& state) {
  each(state, shuffledMoments(),
       [zone = zone()](Moment date) { return YYYYMMDD::calculateUncached(startOfDay, date, zone); });
}

const std::vector<YYYYMMDD>& month() {
  static const std::vector<YYYYMMDD> result = [] {
    std::vector<YYYYMMDD> list;
    for (int i = 0; i < 365; ++i) list.push_back(YYYYMMDD(2023, 5, 1).add(i));
    return list;
  }();
  return result;
}

void dateAt(benchmark::State& state) {
  each(state, month(), [zone = zone()](const YYYYMMDD& day) { return day.dateAt(startOfDay, zone); });
}
void dateAtUncached(benchmark::State& state) {
  each(state, month(), [calendar = Calendar(zone())](const YYYYMMDD& day) { return calendar.date(day, startOfDay); });
}

void readISO8601(benchmark::State& state) {
  std::vector<std::string> texts;
  for (const Moment date : moments()) texts.push_back(iso8601(date));
  each(state, texts, [](const std::string& text) { return momentFromISO8601(text); });
}
void writeISO8601(benchmark::State& state) {
  each(state, moments(), [](Moment date) { return iso8601WholeSeconds(date); });
}

BENCHMARK(dayOfMomentICU);
BENCHMARK(dayOfMoment);
BENCHMARK(dayOfMomentUncached);
BENCHMARK(shuffledDayOfMomentICU);
BENCHMARK(shuffledDayOfMoment);
BENCHMARK(shuffledDayOfMomentUncached);
BENCHMARK(dateAt);
BENCHMARK(dateAtUncached);
BENCHMARK(readISO8601);
BENCHMARK(writeISO8601);

const std::vector<habitra::benchmarks::Ratio>& ratios() {
  static const std::vector<habitra::benchmarks::Ratio> result = {
      {"day of a moment / ICU", "dayOfMoment", "dayOfMomentICU", 0.1},
      {"day of a moment, uncached / ICU", "dayOfMomentUncached", "dayOfMomentICU", 0.25},
      {"day of a moment, shuffled / ICU", "shuffledDayOfMoment", "shuffledDayOfMomentICU", 0.1},
      {"day of a moment, shuffled, uncached / ICU", "shuffledDayOfMomentUncached", "shuffledDayOfMomentICU", 0.25},
      {"next day / day numbers", "nextDay", "stepNumbers", 3},
      {"previous day / day numbers", "previousDay", "stepNumbers", 3},
      {"weekday / day numbers", "weekday", "weekdayOfNumbers", 3},
      {"distance / day numbers", "distance", "distanceOfNumbers", 3},
      {"next day / uncached", "nextDay", "nextDayUncached", 1},
      {"previous day / uncached", "previousDay", "previousDayUncached", 1},
      {"weekday / uncached", "weekday", "weekdayUncached", 1},
      {"distance / uncached", "distance", "distanceUncached", 1},
      {"adding days / uncached", "addDays", "addDaysUncached", 1},
      {"adding weeks through 400 years / uncached", "addWeeksWide", "addWeeksWideUncached", 1},
      {"day after an odd day / uncached", "oddNextDay", "oddNextDayUncached", 1},
      {"weekday of an odd day / uncached", "oddWeekday", "oddWeekdayUncached", 1},
      {"distance of odd days / uncached", "oddDistance", "oddDistanceUncached", 1},
      {"days of an odd month / uncached", "oddDaysInMonth", "oddDaysInMonthUncached", 1},
      {"moment of a day / uncached", "dateAt", "dateAtUncached", 1},
  };
  return result;
}

}  // namespace
}  // namespace qz

int main(int argc, char** argv) { return habitra::benchmarks::runWithRatios(argc, argv, qz::ratios()); }
