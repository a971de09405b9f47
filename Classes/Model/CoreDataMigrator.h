#pragma once

#include <HabitraModel/Store/Files/MaintenanceLock.h>
#include <QZKit/Clock.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace habitra {

class Connection;

/// What brings a store up to date.
class CoreDataMigratorProtocol {
 public:
  virtual ~CoreDataMigratorProtocol() = default;

  /// The version of the layout that it makes.
  [[nodiscard]] virtual std::int64_t migratorVersion() const = 0;
  /// Whether the store is of an earlier version; false when there is none. Throws StoreError.
  [[nodiscard]] virtual bool needsMigration(const std::filesystem::path& store) const = 0;
  /// Brings the store to `migratorVersion`; does nothing when it is. Throws StoreError.
  virtual void migrate(const std::filesystem::path& store) = 0;
};

/// Changes whole store files: to the present layout, for one another, and from the names of earlier days.
///
/// All of it is maintenance: it waits until no store of the home is open, in this process neither, and takes the
/// writers' turn. A program that is killed in the midst of it leaves the store as it was or as it is to be. The copies
/// that it makes are verified and lie in the folder "Backups" of the home. Every failure is a StoreError.
///
/// Has no state; may be called from any thread.
class CoreDataMigrator final : public CoreDataMigratorProtocol {
 public:
  struct Options {
    /// How long it is waited for open stores and for writers.
    std::chrono::milliseconds patience = MaintenanceLock::defaultPatience;
    /// Called before each step, with the statement or with a word for it; for tests that end the program there.
    std::function<void(std::string_view step)> beforeStep = {};
  };

  /// `clock` names the copies.
  explicit CoreDataMigrator(std::shared_ptr<const qz::Clock> clock) : CoreDataMigrator(std::move(clock), Options()) {}
  CoreDataMigrator(std::shared_ptr<const qz::Clock> clock, Options options);

  [[nodiscard]] std::int64_t migratorVersion() const override;
  [[nodiscard]] bool needsMigration(const std::filesystem::path& store) const override;

  /// Does nothing, waits for nobody, when the store is up to date, be it that another program brings it there
  /// meanwhile. Copies the store to "<name>-version-<n>-<UTC time>.sqlite", then takes one version after the other,
  /// each in one transaction. Nothing is committed unless every row that matched its checksum still does, every
  /// reference leads to what it led to, and the tasks and owners are the same; what was damaged before may stay so,
  /// with a warning.
  void migrate(const std::filesystem::path& store) override;

  /// Looks for a home that has nothing but "Habitra-Production.sqlite", the one store of early versions, and copies
  /// that to "Habitra-Local.sqlite", which appears when it is up to date; Production stays byte for byte as it was.
  /// Gives the file to open then: the copy, or Production itself where the home may not be written. None when there is
  /// nothing to adopt.
  [[nodiscard]] std::optional<std::filesystem::path> adoptProductionStore(const std::filesystem::path& home);

  /// Keeps every store of the home closed and every writer out while it lives.
  class Maintenance;
  /// Waits for the others and begins it.
  [[nodiscard]] std::shared_ptr<const Maintenance> beginMaintenance(const std::filesystem::path& home) const;

  /// A copy of the store at `with` (a backup, or the file of another container), which stays, takes the place of
  /// `store`. It must be a whole store: a damaged one is refused, with the number of damaged rows and the first. One of
  /// an earlier version is brought up to date before it gets there. What was at `store`, if anything, is kept as
  /// "<name>-replaced-<UTC time>.sqlite", unless replacing it fails and it stays. The new store gets an identifier of
  /// its own, so that nobody takes its history for that of the old one. Gives the file of what was kept.
  std::optional<std::filesystem::path> replaceStore(const std::filesystem::path& store,
                                                    const std::filesystem::path& with);
  /// The same as one step of a longer maintenance of the home of `store`.
  std::optional<std::filesystem::path> replaceStore(const std::filesystem::path& store,
                                                    const std::filesystem::path& with, const Maintenance& maintenance);

 private:
  void step(std::string_view name) const;
  void bringUpToDate(Connection& copy) const;
  void adopt(const std::filesystem::path& production, const std::filesystem::path& local) const;
  [[nodiscard]] std::filesystem::path newBackup(const std::filesystem::path& file, std::string_view reason) const;

  std::shared_ptr<const qz::Clock> clock_;
  Options options_;
};

}  // namespace habitra
