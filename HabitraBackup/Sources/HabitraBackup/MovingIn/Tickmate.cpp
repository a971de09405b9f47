// The database of Tickmate, layouts 10 to 14: tracks, and a row for each tick with the parts of its day, months from 0.
// Where a tick has no time of its own, hours and minutes say nothing.

#include <HabitraBackup/MovingIn/ForeignDatabase.h>
#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignHabit.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <QZKit/UTF8.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

namespace habitra {

namespace {

using Row = ForeignDatabase::Row;

constexpr std::int64_t oldestLayout = 10;
constexpr std::int64_t newestLayout = 14;

class TickmateReading {
 public:
  TickmateReading(const ForeignDatabase& database, const ForeignHistorySettings& settings,
                  const ExchangeProgress& progress)
      : database_(database), settings_(settings), progress_(progress) {}

  ForeignHistory run() {
    history_.format = "Tickmate, database";
    database_.wantVersion(oldestLayout, newestLayout);
    database_.forEachRow("tracks", {"_id", "name", "description", "enabled", "order"},
                         [this](const Row& row) { readTrack(row); });
    if (database_.hasTable("groups") && database_.hasTable("track2groups")) readGroups();
    database_.forEachRow(
        "ticks", {"_id", "_track_id", "year", "month", "day", "hour", "minute", "second", "has_time_info"},
        [this](const Row& row) { readTick(row); }, progress_);
    std::stable_sort(tracks_.begin(), tracks_.end(), [](const Track& a, const Track& b) { return a.order < b.order; });
    for (Track& track : tracks_) std::move(track.habit).moveInto(history_, settings_);
    addRemarks();
    return std::move(history_);
  }

 private:
  struct Track {
    ForeignHabit habit;
    std::int64_t order;
  };

  void addRemarks() {
    if (numHomeless_ > 0) {
      history_.remarks.push_back(foreign_text::counted(numHomeless_, "tick belongs", "ticks belong") +
                                 " to no track; left out");
    }
    history_.remarks.emplace_back("a track says nothing of how often it is wanted; each became a habit of every day");
    history_.remarks.emplace_back("the icons and colours of the tracks have no place here");
  }

  void readTrack(const Row& row) {
    ForeignHabit habit(row.text(1).value_or(std::string()));
    habit.remarkNoPlace("description", row.text(2).value_or(std::string()));
    if (row.integer(3).value_or(1) == 0) habit.setArchived();
    if (!places_.emplace(row.wantedInteger(0), tracks_.size()).second) row.refuse(0, "each track once");
    tracks_.push_back({std::move(habit), row.integer(4).value_or(-1)});
  }

  void readGroups() {
    std::unordered_map<std::int64_t, qz::UniqueID> groups;
    database_.forEachRow("groups", {"_id", "name", "description"}, [&](const Row& row) {
      const std::string name = row.text(1).value_or(std::string());
      if (!foreign_text::trimmed(row.text(2).value_or(std::string())).empty()) {
        history_.remarks.push_back("the description of the group " + qz::utf8::quoted(name) + " has no place here");
      }
      // Groups may share a name.
      const std::int64_t id = row.wantedInteger(0);
      groups.emplace(id, categoryOf(history_.document, name, name + "\n" + std::to_string(id)));
    });
    database_.forEachRow("track2groups", {"_id", "_track_id", "_group_id"}, [&](const Row& row) {
      const auto place = places_.find(row.wantedInteger(1));
      const auto group = groups.find(row.wantedInteger(2));
      if (place == places_.end() || group == groups.end()) return;
      tracks_[place->second].habit.addCategory(group->second);
    });
  }

  void readTick(const Row& row) {
    const auto place = places_.find(row.wantedInteger(1));
    if (place == places_.end()) {
      ++numHomeless_;
      return;
    }
    const std::int64_t year = row.wantedInteger(2);
    if (year < 1 || year > 9999) row.refuse(2, "a year from 1 to 9999");
    const std::int64_t month = row.wantedInteger(3);
    if (month < 0 || month > 11) row.refuse(3, "a month from 0 to 11");
    const qz::YYYYMMDD day(year, month + 1, row.wantedInteger(4));
    if (!day.exists()) row.refuse(4, "a day of the month");
    tracks_[place->second].habit.add(TaskLogEntryType::completedManuallyFull, day, std::nullopt, moment(row, day));
  }

  [[nodiscard]] std::optional<qz::Moment> moment(const Row& row, const qz::YYYYMMDD& day) const {
    if (row.integer(8).value_or(0) == 0) return std::nullopt;
    const std::int64_t hour = row.wantedInteger(5);
    const std::int64_t minute = row.wantedInteger(6);
    const std::int64_t second = row.wantedInteger(7);
    if (hour < 0 || hour > 23) row.refuse(5, "an hour from 0 to 23");
    if (minute < 0 || minute > 59) row.refuse(6, "a minute from 0 to 59");
    if (second < 0 || second > 59) row.refuse(7, "a second from 0 to 59");
    return day.dateAt(qz::HHMMSS::midnight, hour, minute, second, settings_.timeZone);
  }

  const ForeignDatabase& database_;
  const ForeignHistorySettings& settings_;
  const ExchangeProgress& progress_;
  std::vector<Track> tracks_;
  std::unordered_map<std::int64_t, std::size_t> places_;  // in tracks_, by the key of the row
  std::size_t numHomeless_ = 0;
  ForeignHistory history_;
};

}  // namespace

ForeignHistory readTickmate(const ForeignDatabase& database, const ForeignHistorySettings& settings,
                            const ExchangeProgress& progress) {
  return TickmateReading(database, settings, progress).run();
}

}  // namespace habitra
