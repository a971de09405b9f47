#pragma once

#include <QZKit/Error.h>

#include <cstdint>
#include <string>

namespace habitra {

/// A failure of an export or import that is not the file system's or the text's. Known to callers as
/// TaskDataExporter::Error and TaskDataImporter::Error.
class TaskDataExchangeError : public qz::Error {
 public:
  enum Case : std::uint8_t {
    noUrl,                ///< no file was named
    importerUnavailable,  ///< there is nothing to import into
    notLocalFile,         ///< the name is an address of the network
    invalidFormat,        ///< the file's form cannot be written or read
    taskDataMissing,      ///< a task that was asked for is not there
  };

  TaskDataExchangeError(Case theCase, const std::string& message) : qz::Error(message), case_(theCase) {}

  /// Which failure it is.
  [[nodiscard]] Case kind() const { return case_; }

 private:
  Case case_;
};

}  // namespace habitra
