#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

/// Everything in a folder, by path: the mode, and the bytes of each file or what a link leads to.
inline std::map<std::string, std::string> folderContent(const std::filesystem::path& folder) {
  std::map<std::string, std::string> content;
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
    struct stat status {};
    (void)::lstat(item.path().c_str(), &status);
    std::string& text = content[item.path().lexically_relative(folder)];
    text = std::to_string(status.st_mode) + ":";
    if (item.is_symlink()) {
      text += std::filesystem::read_symlink(item.path());
    } else if (item.is_regular_file()) {
      std::ifstream in(item.path(), std::ios::binary);
      text.append(std::istreambuf_iterator<char>(in), {});
    }
  }
  return content;
}
