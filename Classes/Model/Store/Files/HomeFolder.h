#pragma once

#include <filesystem>

/// The folder that a store lies in, and the files in it. Everything made here is the owner's alone whatever the umask
/// is, a folder that is there keeps its mode, and no link inside the folder is followed; the folder itself may be one.
namespace habitra {

/// Makes `folder` and what is missing above it, and gives its path without links. Throws StoreError when it is no
/// folder or belongs to somebody else.
[[nodiscard]] std::filesystem::path makeHomeFolder(const std::filesystem::path& folder);

/// The path without links of a folder that is there, checked in the same way; empty when there is none.
[[nodiscard]] std::filesystem::path existingHomeFolder(const std::filesystem::path& folder);

/// Makes `folder`, whose parent is there, if it is missing. Throws StoreError when something else is there: a link, a
/// file, a folder of somebody else.
void makePrivateFolder(const std::filesystem::path& folder);

/// Whether there is a file of our own at `file`. Throws StoreError when something else is: a link, a folder, a file of
/// somebody else. Never opens it: closing a file would end the locks that SQLite holds on it in this process.
[[nodiscard]] bool isPrivateFile(const std::filesystem::path& file);

/// Makes an empty file, 0600. Does nothing when there is one.
void makePrivateFile(const std::filesystem::path& file);

/// Takes a file of our own from everybody else. Does nothing where there is none or that cannot be; never opens it.
void tightenFile(const std::filesystem::path& file) noexcept;

/// Whether an open file still has a name.
[[nodiscard]] bool isLinked(int descriptor);

}  // namespace habitra
