#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <QZHealthKit/QZHKChanges.h>
#include <QZHealthKit/QZHKQuery.h>
#include <QZHealthKit/QZHKSample.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace habitra {

/// The samples of a store as one connection reads and writes them. docs/Health.md describes the tables.
///
/// A row that cannot be a record is damage: a StoreError. Belongs to one thread at a time.
class SampleTable {
 public:
  using Type = qz::QZHKObjectType;
  using Reaches = std::map<Type, std::vector<qz::QZHKChanges::Reach>>;
  using Reader = std::function<void(const qz::QZHKSample&)>;

  /// Which types have changed since some change of the store.
  struct Changes {
    std::int64_t newest = 0;             ///< the number of the newest change; 0 where nothing was ever saved
    std::map<Type, std::int64_t> types;  ///< the number of the newest change of each
  };

  /// The statements that make the tables.
  [[nodiscard]] static std::string definition();

  explicit SampleTable(Connection& connection);

  /// Also those that were removed since count.
  [[nodiscard]] bool hasEverHadSamples();
  [[nodiscard]] bool has(const qz::UniqueID& identifier);

  /// Hands over the samples of a type that lie in the span at least in part, by start and then by identifier. What is
  /// handed over is good during the call. REQUIRES: a transaction.
  void read(Type type, const qz::QZHKSpan& span, const Reader& reader);

  /// The sample of a type that starts last before `moment`; of several, the one with the greatest identifier.
  [[nodiscard]] std::optional<qz::QZHKSample> lastBefore(Type type, qz::Moment moment);

  [[nodiscard]] Changes changes();

  /// What QZHealthStore::changesSince() answers.
  [[nodiscard]] qz::QZHKChanges changesSince(std::int64_t number);

  // REQUIRES of the following: the writers' turn and a transaction.

  /// Gives false, changing nothing, when the identifier is there already. REQUIRES: no problem(sample).
  bool insert(const qz::QZHKSample& sample);
  /// Adds what was removed to `changed`; nothing when there is no such sample.
  void remove(const qz::UniqueID& identifier, qz::QZHKChanges& changed);
  /// Says that samples of these types have come or gone, and over which times they reach: each of them is a change with
  /// a number of its own. Gives the number of the last.
  std::int64_t keepChange(const Reaches& changed);
  /// After a rollback: lets go of numbers that were given in it.
  void forget();

 private:
  /// Who wrote a sample, and with what.
  using Origin = std::pair<std::string, std::optional<std::string>>;

  /// Whether the file says over which time changes reach; one that was made before it did says so from its next change
  /// on.
  [[nodiscard]] bool keepsReaches();
  /// Which store this is; none of one that was made before it could say so, and has not been written to since.
  [[nodiscard]] std::optional<qz::UniqueID> identity();
  [[nodiscard]] bool hasTable(std::string_view name);
  void makeReaches();
  void keepReach(std::int64_t type, std::int64_t change, const qz::QZHKChanges::Reach& reach);
  /// Puts those together that are too many to be told apart.
  void foldReaches(std::int64_t type);
  void readReaches(std::int64_t after, qz::QZHKChanges& since);
  [[nodiscard]] std::optional<std::int64_t> findType(Type type);
  [[nodiscard]] std::int64_t numberOf(Type type);
  [[nodiscard]] std::int64_t numberOf(const Origin& origin);
  [[nodiscard]] const Origin& originOf(std::int64_t number);
  void readRows(Query& query, Type type, std::int64_t after, std::int64_t before, std::int64_t endAfter,
                const Reader& reader);
  void decode(Statement& row, Type type, qz::QZHKSample& sample);
  [[nodiscard]] qz::QZHKSampleValue valueOf(Statement& row, Type type);
  [[nodiscard]] std::optional<qz::QZHKQuantity> quantityAt(Statement& row, int column);
  [[noreturn]] void failDamaged(std::string_view what) const;

  Connection& connection_;
  Query readLong_;
  Query read_;
  Query readLast_;
  Query findType_;
  Query findOrigin_;
  Query readOrigin_;
  Query insertType_;
  Query insertOrigin_;
  Query insert_;
  Query find_;
  Query remove_;
  Query findSample_;
  Query readIdentity_;
  Query readChanges_;
  Query writeChange_;
  Query readReaches_;
  Query writeReach_;
  Query findOldReach_;
  Query mergeReaches_;
  Query removeReaches_;
  std::map<Type, std::int64_t> types_;
  std::map<Origin, std::int64_t> numbersOfOrigins_;
  std::unordered_map<std::int64_t, Origin> origins_;
};

}  // namespace habitra
