#pragma once

#include <QZKit/Error.h>

#include <string>

namespace habitra {

/// What can be wrong with a store. `what()` is one line that names the file.
class StoreError : public qz::Error {
 public:
  enum class Kind {
    newerVersion,  ///< made by a newer version; left untouched
    olderVersion,  ///< of an earlier version, to be brought up to date by CoreDataMigrator; left untouched
    notAStore,     ///< another kind of file, or a folder
    damaged,       ///< a store whose content cannot be read
    foreignOwner,  ///< the home belongs to somebody else
    insecurePath,  ///< a link inside the home, or something that is no plain file
    busy,          ///< another writer did not end its turn in time
    diskFull,      ///< nothing was written
    readOnly,      ///< may be read, not written
    conflict,      ///< somebody else has changed or removed, since it was read, what is to be written or linked to
    failed,        ///< any other refusal of the operating system or the engine
  };

  StoreError(Kind kind, const std::string& message) : qz::Error(message), kind_(kind) {}

  [[nodiscard]] Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

}  // namespace habitra
