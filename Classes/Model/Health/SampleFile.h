#pragma once

#include <HabitraModel/Health/SampleTable.h>
#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Engine/FileFormat.h>
#include <HabitraModel/Store/Files/ChangeListeners.h>
#include <HabitraModel/Store/Files/StoreChangeSignal.h>
#include <HabitraModel/Store/Files/StoreChangeWatcher.h>
#include <HabitraModel/Store/Files/WritersTurn.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <semaphore>
#include <string>
#include <utility>
#include <vector>

namespace habitra {

/// Where samples are kept, a file in a home or memory, and the connections to it. Opens nothing before it is asked to.
///
/// May be shared by any threads; each works with a session of its own. All functions throw StoreError.
class SampleFile {
 public:
  static constexpr const char* lockName = "Habitra-Health.lock";
  static constexpr const char* signalName = "Habitra-Health.changed";

  /// All that a thread needs to read and write.
  struct Session {
    Session(const std::string& address, const std::filesystem::path& file, Connection::Access access);
    Session(const std::string& memoryAddress, std::shared_ptr<std::binary_semaphore> memoryTurn,
            std::shared_ptr<const ChangeListeners> listeners);

    Connection connection;
    SampleTable table;
    WritersTurn turn;  ///< in memory readers take it, too, since they would keep writers from committing
    StoreChangeSignal signal;
    Query beginView;
    Query beginUnit;
    bool isReadOnly;
    bool hasTables = false;  ///< was seen to have them
  };

  /// A session for the length of one use.
  class Use {
   public:
    Use(SampleFile& file, std::unique_ptr<Session> session) : file_(&file), session_(std::move(session)) {}
    /// Takes back what was not committed.
    ~Use();
    Use(Use&& other) noexcept = default;
    Use& operator=(Use&&) = delete;

    /// Whether there are samples to read: a file.
    explicit operator bool() const { return session_ != nullptr; }
    Session* operator->() const { return session_.get(); }
    Session& operator*() const { return *session_; }

    /// Commits, and tells others that these types have changed; does nothing when none has.
    void commit(const SampleTable::Reaches& changed);

   private:
    SampleFile* file_;
    std::unique_ptr<Session> session_;
  };

  explicit SampleFile(std::filesystem::path file) : file_(std::move(file)) {}
  /// Memory.
  SampleFile();

  /// A session with a view of what is committed, kept until its end; none when there is no file. Makes nothing.
  [[nodiscard]] Use beginReading();
  /// A session with the writers' turn and a transaction. Makes the file and its home when they are missing.
  [[nodiscard]] Use beginWriting();

  /// Calls a function after each change of the samples, of this process or another.
  [[nodiscard]] std::unique_ptr<StoreChangeWatcher> watch(std::function<void()> onChange);

 private:
  [[nodiscard]] bool isInMemory() const { return listeners_ != nullptr; }
  /// One that nobody uses; none when there is none.
  [[nodiscard]] std::unique_ptr<Session> takeIdle();
  void giveBack(std::unique_ptr<Session> session) noexcept;
  [[nodiscard]] std::unique_ptr<Session> connect(const std::filesystem::path& file) const;
  [[nodiscard]] std::unique_ptr<Session> connectInMemory() const;
  /// Takes the files that are written from everybody else; once.
  void tighten(const std::filesystem::path& file);

  std::filesystem::path file_;
  std::string memoryAddress_;
  std::shared_ptr<std::binary_semaphore> memoryTurn_;
  std::shared_ptr<ChangeListeners> listeners_;
  std::once_flag isTightened_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Session>> idle_;
  std::unique_ptr<Session> keeper_;  // keeps content in memory alive
};

}  // namespace habitra
