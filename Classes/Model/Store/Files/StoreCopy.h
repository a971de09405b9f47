#pragma once

#include <filesystem>

namespace habitra {

/// Copies the store at `from`, as last committed, to the new file `to`. The copy is made under another name, verified
/// (the engine's integrity check, and row for row the same content), flushed to the disk and then given its name; it is
/// 0600, has no write-ahead log, and its folder, made when it is missing, is 0700. Throws StoreError and leaves nothing
/// behind then; also when there is a file at `to`, or its folder belongs to somebody else.
///
/// Takes no turn and no lock: a unit that is open meanwhile, be it in this process, is not in the copy. The source and
/// its folder need not be writable. May be called from any thread.
void copyStore(const std::filesystem::path& from, const std::filesystem::path& to);

/// Whether a copy can get this name: nothing bears it, be it a link, nor that of a log beside it.
[[nodiscard]] bool isFreeForCopy(const std::filesystem::path& file);

/// The folder for copies in a home, "Backups", made when it is missing. Throws StoreError when it is a link.
[[nodiscard]] std::filesystem::path backupFolder(const std::filesystem::path& home);

}  // namespace habitra
