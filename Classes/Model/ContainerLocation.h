#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

namespace habitra {

/// Where a container keeps its store.
class ContainerLocation {
 public:
  /// A file; its folder is the home. `cloudContainer` names the private cloud database that the store is mirrored to;
  /// none: it is mirrored nowhere.
  [[nodiscard]] static ContainerLocation url(std::filesystem::path file,
                                             std::optional<std::string> cloudContainer = std::nullopt) {
    ContainerLocation location;
    location.file_ = std::move(file);
    location.cloudContainer_ = std::move(cloudContainer);
    return location;
  }
  [[nodiscard]] static ContainerLocation inMemory() { return {}; }

  /// None: in memory.
  [[nodiscard]] const std::optional<std::filesystem::path>& file() const { return file_; }
  [[nodiscard]] const std::optional<std::string>& cloudContainer() const { return cloudContainer_; }

  /// "in memory", or the path of the file.
  [[nodiscard]] std::string description() const { return file_ ? file_->string() : "in memory"; }

  friend bool operator==(const ContainerLocation&, const ContainerLocation&) = default;

 private:
  std::optional<std::filesystem::path> file_;
  std::optional<std::string> cloudContainer_;
};

}  // namespace habitra
