#pragma once

#include <HabitraModel/Store/Files/MaintenanceLock.h>
#include <HabitraModel/Store/ObjectID.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZKit/Clock.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <semaphore>
#include <string>

namespace habitra {

class ChangeListeners;
class Connection;
class StoreChangeSignal;
class WritersTurn;

/// A store of tasks: one SQLite file in a home folder, or memory alone.
///
/// A home that opening makes is 0700; one that is there keeps its mode. The files that are made are 0600 whatever the
/// umask is, and those that are written to become so. Opening follows no link inside the home, refuses a home that
/// belongs to somebody else, and leaves alone a file that is no store or was made by a newer version. While a
/// store is open, maintenance of its home waits; opening waits for maintenance that is under way.
///
/// May be shared by any threads; each reads and writes through a StoreContext of its own.
class Store : public std::enable_shared_from_this<Store> {
 public:
  /// The version of the layout that this program reads and writes; kept in the file as SQLite's user_version.
  static constexpr int schemaVersion = 3;
  /// "Hbtr", kept in the file as SQLite's application_id.
  static constexpr std::int32_t applicationID = 0x48627472;

  // A store of an earlier version is a StoreError of kind `olderVersion`, for CoreDataMigrator. Where nothing may be
  // written it is brought up to date in memory instead and opens for reading.

  /// Opens the store at `file`, making it, its home and whatever folder is missing above. Throws StoreError.
  /// A file, or its folder, that may not be written opens for reading alone. `patience` is for maintenance that is
  /// under way.
  [[nodiscard]] static std::shared_ptr<Store> open(
      const std::filesystem::path& file, std::shared_ptr<const qz::Clock> clock,
      std::chrono::milliseconds patience = MaintenanceLock::defaultPatience);

  /// Opens the store at `file`, or gives null and makes nothing when there is none. Throws StoreError.
  [[nodiscard]] static std::shared_ptr<Store> openForReading(
      const std::filesystem::path& file, std::shared_ptr<const qz::Clock> clock,
      std::chrono::milliseconds patience = MaintenanceLock::defaultPatience);

  /// A store in memory that lives as long as this object. It takes no file locks; its contexts keep no view of the
  /// store between two reads.
  [[nodiscard]] static std::shared_ptr<Store> inMemory(std::shared_ptr<const qz::Clock> clock);

  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  /// Empty for a store in memory.
  [[nodiscard]] const std::filesystem::path& file() const { return file_; }
  [[nodiscard]] bool isInMemory() const { return file_.empty(); }
  [[nodiscard]] bool isReadOnly() const { return isReadOnly_; }
  [[nodiscard]] const qz::Clock& clock() const { return *clock_; }

  /// Names this object among all that write to the file; kept with each transaction.
  [[nodiscard]] const std::string& writer() const { return writer_; }

  // For a StoreChangeWatcher of a store in memory, which has no file to watch.
  /// Those that are told after each transaction of this object, on the thread that saved and under its turn.
  [[nodiscard]] ChangeListeners& listeners() const;

 private:
  friend class StoreUnit;

  Store(std::filesystem::path file, std::shared_ptr<const qz::Clock> clock,
        std::chrono::milliseconds patience = MaintenanceLock::defaultPatience);

  /// Whether there is a store in the file; makes one in an empty file when it may.
  [[nodiscard]] bool prepare(bool mayMake);
  /// Gives a store that was put there by hand, a copy, its write-ahead log, without which readers keep writers out.
  void ensureLog();
  /// Takes the files that are written from everybody else; once.
  void tighten();
  /// Goes on with a copy in memory that is brought up to date.
  void moveIntoMemory();
  void makeSchema(Connection& connection) const;
  [[nodiscard]] std::unique_ptr<Connection> makeConnection() const;

  // For contexts.
  /// The connection that opening made, the first time; a new one after that.
  [[nodiscard]] std::unique_ptr<Connection> connect();
  [[nodiscard]] std::unique_ptr<WritersTurn> makeTurn() const;
  /// The number after `newestStored`, or after a greater one that was given to a row that was rolled back.
  [[nodiscard]] ObjectID nextObjectID(ObjectID newestStored);
  [[nodiscard]] StoreChangeSignal makeSignal() const;

  std::filesystem::path file_;
  std::string address_;  // what SQLite is asked to open
  MaintenanceLock maintenance_;
  std::shared_ptr<const qz::Clock> clock_;
  std::string writer_;
  bool isReadOnly_ = false;
  std::once_flag isTightened_;
  std::atomic<std::int64_t> newestGivenID_{0};
  std::shared_ptr<std::binary_semaphore> memoryTurn_;  // in memory only
  std::unique_ptr<Connection> keeper_;                 // keeps content in memory alive
  std::shared_ptr<ChangeListeners> listeners_;         // in memory only
  std::mutex firstConnectionMutex_;
  std::unique_ptr<Connection> firstConnection_;
};

}  // namespace habitra
