#pragma once

#include <HabitraModel/ContainerLocation.h>
#include <HabitraModel/Store/Author.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// Owns the persistent store: where it lies, when it is opened, and the contexts that work on it.
///
/// The store is opened at the first context. `context()` and its siblings may be called from any thread.
class DataManager {
 public:
  using Author = habitra::Author;

  /// The files that a store can be kept in, inside the home.
  enum class StoreFile {
    cloudKit,    ///< "Habitra-CloudKit.sqlite", once a cloud is configured
    local,       ///< "Habitra-Local.sqlite", until then
    production,  ///< "Habitra-Production.sqlite", the single store of early versions
  };
  [[nodiscard]] static std::string_view fileName(StoreFile file);

  using ContainerLocation = habitra::ContainerLocation;

  /// Looks up an environment variable; none when it is not set.
  using Environment = std::function<std::optional<std::string>(const std::string& name)>;
  [[nodiscard]] static Environment processEnvironment();

  /// The home folder: $HABITRA_HOME, else $XDG_DATA_HOME/habitra, else ~/.local/share/habitra. An empty variable counts
  /// as not set, and so does an XDG_DATA_HOME that is not absolute. Throws qz::Error when no variable says it.
  [[nodiscard]] static std::filesystem::path homeDirectory(const Environment& environment);

  /// The store in the home folder `home`, in the file in use there.
  [[nodiscard]] static ContainerLocation storeLocation(const std::filesystem::path& home);

  DataManager(ContainerLocation location, std::shared_ptr<const qz::Clock> clock);
  ~DataManager();
  DataManager(const DataManager&) = delete;
  DataManager& operator=(const DataManager&) = delete;

  [[nodiscard]] const ContainerLocation& location() const { return location_; }
  /// The folder that holds the store and what lies beside it; empty for a store in memory.
  [[nodiscard]] std::filesystem::path home() const;
  [[nodiscard]] const qz::Clock& clock() const { return *clock_; }

  /// A context on the store, which is made when there is none. Throws StoreError.
  [[nodiscard]] std::unique_ptr<StoreContext> context();

  /// A context to read from, or null when there is no store yet; makes nothing. Throws StoreError.
  [[nodiscard]] std::unique_ptr<StoreContext> contextForReading();

  /// `requestedId` when no task has it; otherwise logs "Received duplicate ID, generating" and gives a new one.
  [[nodiscard]] qz::UniqueID generateUniqueTaskId(StoreContext& context, const qz::UniqueID& requestedId) const;

 private:
  struct Container;

  ContainerLocation location_;
  std::shared_ptr<const qz::Clock> clock_;
  std::unique_ptr<Container> container_;
};

}  // namespace habitra
