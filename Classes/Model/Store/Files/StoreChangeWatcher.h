#pragma once

#include <HabitraModel/Store/Store.h>

#include <filesystem>
#include <functional>
#include <memory>

namespace habitra {

class ChangeListeners;

/// Calls a function each time the store has been written to, by this process or another, until it is destroyed. Changes
/// that come quickly one after the other may give one call; a call without a change is possible. Every transaction that
/// is committed after the watcher was made is followed by a call that can see it.
///
/// Watches the file by which the store signals its changes, or the home until that is there, so it works where nothing
/// may be written; a store in memory is listened to directly.
///
/// The function runs on a thread of the watcher's own and must not destroy the watcher; what it throws is logged.
/// Making and destroying belong to one thread; destroying waits for a call that is under way.
class StoreChangeWatcher {
 public:
  /// Throws StoreError when the system gives no notifications; when it gives none any more later, that is logged and
  /// tried again each second. The store may be closed at any time; a file is watched on without it.
  StoreChangeWatcher(const Store& store, std::function<void()> onChange);
  /// The same for any store that signals through `file`, or tells `listeners`.
  StoreChangeWatcher(const std::filesystem::path& file, std::function<void()> onChange);
  StoreChangeWatcher(ChangeListeners& listeners, std::function<void()> onChange);
  ~StoreChangeWatcher();
  StoreChangeWatcher(const StoreChangeWatcher&) = delete;
  StoreChangeWatcher& operator=(const StoreChangeWatcher&) = delete;

 private:
  class Watching;
  std::unique_ptr<Watching> watching_;
};

}  // namespace habitra
