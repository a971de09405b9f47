#include <HabitraModel/Health/SampleTable.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZHealthKit/QZHKActivitySummary.h>

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <tuple>

namespace habitra {

namespace {

using qz::QZHKQuantity;
using qz::QZHKSample;
using Type = qz::QZHKObjectType;
using Reach = qz::QZHKChanges::Reach;

/// What is longer lies in an index of its own as well, so that who asks for a day need not look through a month before
/// it for what reaches into it. Stands in the definition of that index, too.
constexpr std::int64_t longestShort = std::chrono::microseconds(std::chrono::hours(1)).count();

/// Samples of a type lie together in the order in which they are asked for. Types and sources are numbered, so that a
/// row is short; everything else reads as files name it.
constexpr std::string_view tables = R"(
CREATE TABLE SampleType (
  number INTEGER PRIMARY KEY,
  name TEXT NOT NULL UNIQUE,
  changed INTEGER NOT NULL
) STRICT;
CREATE TABLE SampleOrigin (
  number INTEGER PRIMARY KEY,
  source TEXT NOT NULL,
  device TEXT
) STRICT;
CREATE INDEX SampleOrigin_source ON SampleOrigin(source, device);
CREATE TABLE Sample (
  type INTEGER NOT NULL,
  startDate INTEGER NOT NULL,
  identifier BLOB NOT NULL,
  endDate INTEGER NOT NULL,
  origin INTEGER NOT NULL,
  amount REAL,
  unit TEXT,
  says TEXT,
  energy REAL,
  energyUnit TEXT,
  distance REAL,
  distanceUnit TEXT,
  task BLOB,
  PRIMARY KEY (type, startDate, identifier)
) STRICT, WITHOUT ROWID;
CREATE UNIQUE INDEX Sample_identifier ON Sample(identifier);
CREATE INDEX Sample_long ON Sample(type, startDate, identifier, endDate) WHERE endDate - startDate > 3600000000;
)";

/// Over which time each change of a type reached. Of each type the newest changes stand by themselves, those before
/// together.
constexpr const char* reachTable = R"(
CREATE TABLE IF NOT EXISTS SampleChange (
  type INTEGER NOT NULL,
  change INTEGER NOT NULL,
  earliest INTEGER NOT NULL,
  latest INTEGER NOT NULL,
  PRIMARY KEY (type, change)
) STRICT, WITHOUT ROWID;
)";
/// An import of years, with a sample now and then, is that many at once.
constexpr std::int64_t numSingleChanges = 2048;

/// Which store it is, made up once, so that numbers of changes are never taken for those of another.
constexpr const char* identityTable = R"(
CREATE TABLE SampleStore (
  id INTEGER PRIMARY KEY CHECK (id = 1),
  identifier BLOB NOT NULL
) STRICT;
INSERT INTO SampleStore VALUES (1, randomblob(16));
)";

constexpr std::string_view columns =
    "identifier, startDate, endDate, origin, amount, unit, says, energy, energyUnit, distance, distanceUnit, task";

enum SampleColumn : int {
  identifierAt,
  startAt,
  endAt,
  originAt,
  amountAt,
  unitAt,
  saysAt,
  energyAt,
  energyUnitAt,
  distanceAt,
  distanceUnitAt,
  taskAt
};

std::int64_t stored(qz::Moment moment) { return moment.time_since_epoch().count(); }

qz::Moment moment(std::int64_t stored) { return qz::Moment(std::chrono::microseconds(stored)); }

std::optional<qz::UniqueID> identifierOf(const Bytes& bytes) {
  qz::UniqueID::Bytes content{};
  if (bytes.size() != content.size()) return std::nullopt;
  std::ranges::copy(bytes, content.begin());
  return qz::UniqueID(content);
}

template <typename Value>
void bindOptional(Statement& statement, int parameter, const std::optional<Value>& value) {
  if (value)
    statement.bind(parameter, *value);
  else
    statement.bindNull(parameter);
}

void bindQuantity(Statement& statement, int parameter, const std::optional<QZHKQuantity>& quantity) {
  bindOptional(statement, parameter, quantity ? std::optional(quantity->value) : std::nullopt);
  bindOptional(statement, parameter + 1, quantity ? std::optional(qz::rawValue(quantity->unit)) : std::nullopt);
}

/// The word of a value that is no amount.
std::optional<std::string_view> wordOf(const qz::QZHKSampleValue& value) {
  if (const auto* sleep = std::get_if<qz::QZHKSleepValue>(&value)) return qz::rawValue(*sleep);
  if (const auto* workout = std::get_if<qz::QZHKWorkout>(&value)) return qz::rawValue(workout->activityType);
  return std::nullopt;
}

/// The rings change with what they are made of.
void includeRings(qz::QZHKChanges& since) {
  const auto count = [&](Type part) {
    if (const auto found = since.numbers.find(part); found != since.numbers.end())
      since.numbers[Type::activitySummary] += found->second;
  };
  const auto includeVaguely = [&](Type part) {
    if (const auto vague = since.vagueReaches.find(part); vague != since.vagueReaches.end())
      since.includeVaguely(Type::activitySummary, vague->second);
  };
  for (const Type part : qz::ringValueTypes) {
    count(part);
    includeVaguely(part);
    if (const auto found = since.reaches.find(part); found != since.reaches.end())
      for (const Reach& reach : found->second) since.include(Type::activitySummary, reach);
  }
  for (const Type part : qz::ringGoalTypes) {
    count(part);
    includeVaguely(part);
    if (const auto found = since.reaches.find(part); found != since.reaches.end() && !found->second.empty())
      since.includeVaguely(Type::activitySummary, {found->second.front().earliest, qz::latestSampleMoment});
  }
}

}  // namespace

std::string SampleTable::definition() { return std::string(tables) + identityTable; }

SampleTable::SampleTable(Connection& connection)
    : connection_(connection),
      readLong_(connection,
                fmt::format("SELECT {} FROM Sample INDEXED BY Sample_long WHERE type=? AND startDate>=? AND "
                            "startDate<? AND endDate>? AND endDate - startDate > {} ORDER BY startDate, "
                            "identifier",
                            columns, longestShort)),
      read_(connection,
            fmt::format("SELECT {} FROM Sample NOT INDEXED WHERE type=?1 AND startDate>=?2 AND startDate<?3 "
                        "AND (startDate>=?4 OR endDate>?4) ORDER BY startDate, identifier",
                        columns)),
      readLast_(connection, fmt::format("SELECT {} FROM Sample NOT INDEXED WHERE type=? AND startDate<? ORDER BY "
                                        "startDate DESC, identifier DESC LIMIT 1",
                                        columns)),
      findType_(connection, "SELECT number FROM SampleType WHERE name=?"),
      findOrigin_(connection, "SELECT number FROM SampleOrigin WHERE source=? AND device IS ?"),
      readOrigin_(connection, "SELECT source, device FROM SampleOrigin WHERE number=?"),
      insertType_(connection, "INSERT INTO SampleType(name, changed) VALUES (?, 0) RETURNING number"),
      insertOrigin_(connection, "INSERT INTO SampleOrigin(source, device) VALUES (?, ?) RETURNING number"),
      insert_(connection, fmt::format("INSERT INTO Sample(type, {}) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?) ON CONFLICT("
                                      "identifier) DO NOTHING",
                                      columns)),
      find_(connection,
            "SELECT SampleType.name, Sample.type, startDate, endDate FROM Sample JOIN SampleType ON number=type WHERE "
            "identifier=?"),
      remove_(connection, "DELETE FROM Sample WHERE type=? AND startDate=? AND identifier=?"),
      findSample_(connection, "SELECT 1 FROM Sample WHERE identifier=?"),
      readIdentity_(connection, "SELECT identifier FROM SampleStore"),
      readChanges_(connection, "SELECT name, changed FROM SampleType"),
      writeChange_(connection, "UPDATE SampleType SET changed=? WHERE number=?"),
      readReaches_(connection,
                   "SELECT name, earliest, latest FROM SampleChange JOIN SampleType ON number=type WHERE change>? "
                   "ORDER BY type, "
                   "change DESC"),
      writeReach_(connection, "INSERT INTO SampleChange(type, change, earliest, latest) VALUES (?,?,?,?)"),
      findOldReach_(connection, fmt::format("SELECT change FROM SampleChange WHERE type=? ORDER BY change DESC LIMIT 1 "
                                            "OFFSET {}",
                                            numSingleChanges)),
      mergeReaches_(connection,
                    "REPLACE INTO SampleChange(type, change, earliest, latest) SELECT type, ?2, min(earliest), "
                    "max(latest) FROM SampleChange WHERE type=?1 AND change<=?2"),
      removeReaches_(connection, "DELETE FROM SampleChange WHERE type=? AND change<?") {}

bool SampleTable::hasEverHadSamples() {
  return connection_.integer("SELECT EXISTS(SELECT 1 FROM SampleType WHERE changed>0)") != 0;
}

bool SampleTable::has(const qz::UniqueID& identifier) {
  auto row = findSample_.use();
  row->bind(1, std::span(identifier.bytes()));
  return row->step();
}

void SampleTable::read(Type type, const qz::QZHKSpan& span, const Reader& reader) {
  if (span.from >= span.to || span.to <= qz::earliestSampleMoment || span.from >= qz::latestSampleMoment) return;
  const std::int64_t from = stored(std::max(span.from, qz::earliestSampleMoment));
  const std::int64_t to = stored(std::min(span.to, qz::latestSampleMoment + std::chrono::microseconds(1)));
  constexpr std::int64_t longest = std::chrono::microseconds(qz::longestSample).count();
  readRows(readLong_, type, from - longest, std::min(from - longestShort, to), from, reader);
  readRows(read_, type, from - longestShort, to, from, reader);
}

std::optional<QZHKSample> SampleTable::lastBefore(Type type, qz::Moment before) {
  const auto number = findType(type);
  if (!number) return std::nullopt;
  auto row = readLast_.use();
  row->bind(1, *number);
  row->bind(2, stored(before));
  if (!row->step()) return std::nullopt;
  QZHKSample sample{.identifier = qz::UniqueID({}), .objectType = type};
  decode(*row, type, sample);
  return sample;
}

void SampleTable::readRows(Query& query, Type type, std::int64_t after, std::int64_t before, std::int64_t endAfter,
                           const Reader& reader) {
  const auto number = findType(type);
  if (!number) return;
  auto row = query.use();
  row->bind(1, *number);
  row->bind(2, after);
  row->bind(3, before);
  row->bind(4, endAfter);
  QZHKSample sample{.identifier = qz::UniqueID({}), .objectType = type};
  while (row->step()) {
    decode(*row, type, sample);
    reader(sample);
  }
}

void SampleTable::decode(Statement& row, Type type, QZHKSample& sample) {
  const auto identifier = identifierOf(row.bytes(identifierAt));
  if (!identifier) failDamaged("has no identifier");
  sample.identifier = *identifier;
  sample.start = moment(row.integer(startAt));
  sample.end = moment(row.integer(endAt));
  sample.value = valueOf(row, type);
  std::tie(sample.source, sample.device) = originOf(row.integer(originAt));
  sample.task = row.isNull(taskAt) ? std::nullopt : identifierOf(row.bytes(taskAt));
  if (const auto found = problem(sample)) failDamaged(*found);
}

qz::QZHKSampleValue SampleTable::valueOf(Statement& row, Type type) {
  if (const auto quantity = quantityAt(row, amountAt)) return *quantity;
  if (row.isNull(saysAt)) return {};
  const std::string_view word = row.text(saysAt);
  if (type == Type::sleepAnalysis) {
    if (const auto sleep = qz::fromRawValue<qz::QZHKSleepValue>(word)) return *sleep;
  } else if (const auto activity = qz::fromRawValue<qz::QZHKWorkoutActivityType>(word)) {
    return qz::QZHKWorkout{*activity, quantityAt(row, energyAt), quantityAt(row, distanceAt)};
  }
  failDamaged("says what nobody knows");
}

std::optional<QZHKQuantity> SampleTable::quantityAt(Statement& row, int column) {
  const Column amount = row.column(column);
  if (amount.isNull()) return std::nullopt;
  const auto unit = qz::fromRawValue<qz::QZHKUnit>(row.text(column + 1));
  if (!unit) failDamaged("has a unit that nobody knows");
  return QZHKQuantity{amount.real(), *unit};
}

SampleTable::Changes SampleTable::changes() {
  Changes changes;
  auto row = readChanges_.use();
  while (row->step()) {
    changes.newest = std::max(changes.newest, row->integer(1));
    if (const auto type = qz::fromRawValue<Type>(row->text(0))) changes.types.emplace(*type, row->integer(1));
  }
  return changes;
}

qz::QZHKChanges SampleTable::changesSince(std::int64_t number) {
  const Changes known = changes();
  if (known.newest < number) number = 0;
  qz::QZHKChanges since{.store = identity(), .newest = known.newest};
  if (keepsReaches()) {
    readReaches(number, since);
  } else {
    for (const auto& [type, changed] : known.types) {
      if (changed <= number) continue;
      since.includeVaguely(type, {qz::earliestSampleMoment, qz::latestSampleMoment});
      since.numbers.emplace(type, 1);
    }
  }
  includeRings(since);
  return since;
}

void SampleTable::readReaches(std::int64_t after, qz::QZHKChanges& since) {
  auto row = readReaches_.use();
  row->bind(1, after);
  while (row->step()) {
    const auto type = qz::fromRawValue<Type>(row->text(0));
    if (!type) continue;
    const Reach reach{moment(row->integer(1)), moment(row->integer(2))};
    // The oldest one may hold many, or all that was before reaches were kept.
    const bool isVague = ++since.numbers[*type] > numSingleChanges || reach.earliest == qz::earliestSampleMoment;
    if (isVague)
      since.includeVaguely(*type, reach);
    else
      since.include(*type, reach);
  }
}

bool SampleTable::insert(const QZHKSample& sample) {
  const auto workout = sample.workout();
  auto row = insert_.use();
  row->bind(1, numberOf(sample.objectType));
  row->bind(2, std::span(sample.identifier.bytes()));
  row->bind(3, stored(sample.start));
  row->bind(4, stored(sample.end));
  row->bind(5, numberOf(Origin(sample.source, sample.device)));
  bindQuantity(*row, 6, sample.quantity());
  bindOptional(*row, 8, wordOf(sample.value));
  bindQuantity(*row, 9, workout ? workout->energy : std::nullopt);
  bindQuantity(*row, 11, workout ? workout->distance : std::nullopt);
  bindOptional(*row, 13, sample.task ? std::optional(std::span(sample.task->bytes())) : std::nullopt);
  row->step();
  return connection_.changes() > 0;
}

void SampleTable::remove(const qz::UniqueID& identifier, qz::QZHKChanges& changed) {
  auto found = find_.use();
  found->bind(1, std::span(identifier.bytes()));
  if (!found->step()) return;
  const auto type = qz::fromRawValue<Type>(found->text(0));
  if (!type) failDamaged("is of a type that nobody knows");
  changed.include(*type, {moment(found->integer(2)), moment(found->integer(3))});
  auto row = remove_.use();
  row->bind(1, found->integer(1));
  row->bind(2, found->integer(2));
  row->bind(3, std::span(identifier.bytes()));
  row->step();
}

std::int64_t SampleTable::keepChange(const Reaches& changed) {
  if (!keepsReaches()) makeReaches();
  if (!hasTable("SampleStore")) connection_.execute(identityTable);
  const std::int64_t before = connection_.integer("SELECT ifnull(max(changed), 0) FROM SampleType");
  std::int64_t newest = before + 1;
  for (const auto& [type, reaches] : changed) {
    std::int64_t number = before;
    for (const Reach& reach : reaches) keepReach(numberOf(type), ++number, reach);
    foldReaches(numberOf(type));
    newest = std::max(newest, number);
    auto row = writeChange_.use();
    row->bind(1, number);
    row->bind(2, numberOf(type));
    row->step();
  }
  return newest;
}

std::optional<qz::UniqueID> SampleTable::identity() {
  if (!hasTable("SampleStore")) return std::nullopt;
  auto row = readIdentity_.use();
  const auto identity = row->step() ? identifierOf(row->bytes(0)) : std::nullopt;
  if (!identity)
    throw StoreError(StoreError::Kind::damaged,
                     fmt::format("{} is damaged: it does not say which store it is; restore a backup of it",
                                 connection_.file().string()));
  return identity;
}

bool SampleTable::hasTable(std::string_view name) {
  return connection_.integer(fmt::format("SELECT EXISTS(SELECT 1 FROM sqlite_schema WHERE name='{}')", name).c_str()) !=
         0;
}

bool SampleTable::keepsReaches() { return hasTable("SampleChange"); }

void SampleTable::makeReaches() {
  connection_.execute(reachTable);
  connection_.execute(fmt::format("INSERT INTO SampleChange SELECT number, changed, {}, {} FROM SampleType WHERE "
                                  "changed>0",
                                  stored(qz::earliestSampleMoment), stored(qz::latestSampleMoment))
                          .c_str());
}

void SampleTable::keepReach(std::int64_t type, std::int64_t change, const Reach& reach) {
  auto row = writeReach_.use();
  row->bind(1, type);
  row->bind(2, change);
  row->bind(3, stored(reach.earliest));
  row->bind(4, stored(reach.latest));
  row->step();
}

void SampleTable::foldReaches(std::int64_t type) {
  std::int64_t last = 0;
  {
    auto old = findOldReach_.use();
    old->bind(1, type);
    if (!old->step()) return;
    last = old->integer(0);
  }
  for (Query* step : {&mergeReaches_, &removeReaches_}) {
    auto one = step->use();
    one->bind(1, type);
    one->bind(2, last);
    one->step();
  }
}

void SampleTable::forget() {
  types_.clear();
  numbersOfOrigins_.clear();
  origins_.clear();
}

std::optional<std::int64_t> SampleTable::findType(Type type) {
  if (const auto known = types_.find(type); known != types_.end()) return known->second;
  auto row = findType_.use();
  row->bind(1, qz::rawValue(type));
  if (!row->step()) return std::nullopt;
  return types_.emplace(type, row->integer(0)).first->second;
}

std::int64_t SampleTable::numberOf(Type type) {
  if (const auto found = findType(type)) return *found;
  auto row = insertType_.use();
  row->bind(1, qz::rawValue(type));
  row->step();
  return types_.emplace(type, row->integer(0)).first->second;
}

std::int64_t SampleTable::numberOf(const Origin& origin) {
  if (const auto known = numbersOfOrigins_.find(origin); known != numbersOfOrigins_.end()) return known->second;
  const auto ask = [&](Query& query) -> std::optional<std::int64_t> {
    auto row = query.use();
    row->bind(1, origin.first);
    bindOptional(*row, 2, origin.second);
    return row->step() ? std::optional(row->integer(0)) : std::nullopt;
  };
  auto number = ask(findOrigin_);
  if (!number) number = ask(insertOrigin_);
  return numbersOfOrigins_.emplace(origin, *number).first->second;
}

const SampleTable::Origin& SampleTable::originOf(std::int64_t number) {
  if (const auto known = origins_.find(number); known != origins_.end()) return known->second;
  auto row = readOrigin_.use();
  row->bind(1, number);
  if (!row->step()) failDamaged("has no source");
  Origin origin(row->text(0), row->isNull(1) ? std::nullopt : std::optional(std::string(row->text(1))));
  return origins_.emplace(number, std::move(origin)).first->second;
}

void SampleTable::failDamaged(std::string_view what) const {
  throw StoreError(StoreError::Kind::damaged, fmt::format("{} is damaged: a sample {}; restore a backup of it",
                                                          connection_.file().string(), what));
}

}  // namespace habitra
