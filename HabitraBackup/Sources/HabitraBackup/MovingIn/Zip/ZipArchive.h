#pragma once

#include <HabitraBackup/MovingIn/Zip/ZipMember.h>

#include <filesystem>
#include <string_view>
#include <vector>

namespace habitra {

/// The wanted files of a zip archive, in its order, bounded by foreign_limits. The first call opens the module that
/// reads archives, libHabitraBackupZip.so in the folder "../lib" beside the running program, and keeps it. Throws
/// qz::Error for a damaged, encrypted or overlarge archive, for names that lead out of it, and where the module is
/// missing. May be called from any thread.
[[nodiscard]] std::vector<ZipMember> readZipArchive(const std::filesystem::path& archive,
                                                    bool (*isWanted)(std::string_view name));

}  // namespace habitra
