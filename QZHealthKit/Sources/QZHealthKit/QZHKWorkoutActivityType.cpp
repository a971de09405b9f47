#include <QZHealthKit/QZHKWorkoutActivityType.h>

#include <cstddef>

namespace qz {

namespace {

struct TitleRow {
  QZHKWorkoutActivityType type;
  std::string_view title;
};

constexpr std::array<TitleRow, 50> titleRows = [] {
  using W = QZHKWorkoutActivityType;
  return std::array<TitleRow, 50>{{
      {W::aerobics, "Aerobics"},
      {W::archery, "Archery"},
      {W::badminton, "Badminton"},
      {W::baseball, "Baseball"},
      {W::basketball, "Basketball"},
      {W::bowling, "Bowling"},
      {W::boxing, "Boxing"},
      {W::climbing, "Climbing"},
      {W::cooldown, "Cooldown"},
      {W::coreTraining, "Core training"},
      {W::cricket, "Cricket"},
      {W::crossTraining, "Cross training"},
      {W::cycling, "Cycling"},
      {W::dance, "Dance"},
      {W::elliptical, "Elliptical"},
      {W::fencing, "Fencing"},
      {W::fishing, "Fishing"},
      {W::football, "Football"},
      {W::golf, "Golf"},
      {W::gymnastics, "Gymnastics"},
      {W::handball, "Handball"},
      {W::hiking, "Hiking"},
      {W::hockey, "Hockey"},
      {W::horseRiding, "Horse riding"},
      {W::intervalTraining, "Interval training"},
      {W::jumpRope, "Jump rope"},
      {W::martialArts, "Martial arts"},
      {W::paddling, "Paddling"},
      {W::pilates, "Pilates"},
      {W::rowing, "Rowing"},
      {W::rugby, "Rugby"},
      {W::running, "Running"},
      {W::sailing, "Sailing"},
      {W::skating, "Skating"},
      {W::skiing, "Skiing"},
      {W::snowboarding, "Snowboarding"},
      {W::squash, "Squash"},
      {W::stairClimbing, "Stair climbing"},
      {W::strengthTraining, "Strength training"},
      {W::stretching, "Stretching"},
      {W::surfing, "Surfing"},
      {W::swimming, "Swimming"},
      {W::tableTennis, "Table tennis"},
      {W::taiChi, "Tai chi"},
      {W::tennis, "Tennis"},
      {W::volleyball, "Volleyball"},
      {W::walking, "Walking"},
      {W::wheelchair, "Wheelchair"},
      {W::yoga, "Yoga"},
      {W::other, "Other"},
  }};
}();

// A row is found by its place.
static_assert([] {
  for (std::size_t index = 0; index < titleRows.size(); ++index) {
    if (static_cast<std::size_t>(titleRows[index].type) != index) return false;
  }
  return titleRows.size() == RawValueTable<QZHKWorkoutActivityType>::rows.size();
}());

}  // namespace

std::string_view title(QZHKWorkoutActivityType type) { return titleRows[static_cast<std::size_t>(type)].title; }

}  // namespace qz
