#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// A file of an archive, unpacked.
struct ZipMember {
  std::string name;
  std::string content;
};

/// What is to be unpacked: the members that `isWanted`, of an archive that holds at most so many members, and at most
/// so many bytes when all of them are unpacked.
struct ZipRequest {
  const char* path = nullptr;
  bool (*isWanted)(std::string_view name) = nullptr;
  std::size_t mostMembers = 0;
  std::uint64_t mostBytes = 0;
};

/// The one entry of the module that reads zip archives, by this name. True when all went well; else `problem` says what
/// was found and what was expected. It throws nothing but for want of memory.
using UnpackZip = bool (*)(const ZipRequest& request, std::vector<ZipMember>& members, std::string& problem);
inline constexpr const char* unpackZipSymbol = "habitraUnpackZip";

}  // namespace habitra
