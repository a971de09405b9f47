#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Document/HabitraJSONRemarks.h>
#include <HabitraBackup/Files/ByteStreams.h>

#include <functional>

namespace habitra {

/// A document that was read, and what of its text was read over.
struct LoadedBackup {
  HabitraJSONBackup document;
  HabitraJSONRemarks remarks;
};

/// Reads a backup document as a stream: beside the task that is being read, and what has been handed over, no more than
/// one entry or row of the text is in memory. Keys may stand in any order; those that it does not know are remarked.
/// Anything else that is not as the format says throws HabitraJSONError. Safe from any thread.
class HabitraJSONDecoder {
 public:
  using TaskHandler = std::function<void(HabitraJSONBackupTask&&)>;

  /// The whole document.
  [[nodiscard]] LoadedBackup decode(const ByteSource& source) const;

  /// The document without its tasks: each is handed to `onTask` when it is complete. Whether the rest is in order is
  /// not known before this returns. In a document that this program wrote everything else is read before the first
  /// task.
  [[nodiscard]] LoadedBackup decode(const ByteSource& source, const TaskHandler& onTask) const;
};

}  // namespace habitra
