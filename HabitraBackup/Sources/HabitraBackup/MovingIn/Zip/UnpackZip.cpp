// The module of archives: the only place that knows libzip. Built as a library of its own.

#include <HabitraBackup/MovingIn/Zip/ZipMember.h>

#include <fmt/core.h>
#include <zip.h>
#include <array>
#include <memory>

namespace habitra {
namespace {

struct Close {
  void operator()(zip_t* archive) const { zip_discard(archive); }
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using Archive = std::unique_ptr<zip_t, Close>;
using File = std::unique_ptr<zip_file_t, Close>;

/// Whether a name stays within the archive's own folder.
bool staysInside(std::string_view name) {
  if (name.empty() || name.front() == '/' || name.find('\\') != std::string_view::npos) return false;
  while (!name.empty()) {
    const std::string_view part = name.substr(0, name.find('/'));
    if (part == "..") return false;
    name.remove_prefix(part.size() < name.size() ? part.size() + 1 : part.size());
  }
  return true;
}

class Unpacking {
 public:
  Unpacking(const ZipRequest& request, std::vector<ZipMember>& members, std::string& problem)
      : request_(request), members_(members), problem_(problem), bytesLeft_(request.mostBytes) {}

  bool run() {
    int code = 0;
    archive_.reset(zip_open(request_.path, ZIP_RDONLY | ZIP_CHECKCONS, &code));
    if (!archive_) return refuse(fmt::format("the archive is damaged ({})", textOf(code)));
    const zip_int64_t count = zip_get_num_entries(archive_.get(), 0);
    if (count < 0 || static_cast<std::uint64_t>(count) > request_.mostMembers) {
      return refuse(fmt::format("{} members found, at most {} expected", count, request_.mostMembers));
    }
    const auto numMembers = static_cast<zip_uint64_t>(count);
    for (zip_uint64_t index = 0; index < numMembers; ++index) {
      if (!look(index)) return false;
    }
    // Only now anything is unpacked: what the members say of their sizes is refused as a whole, what they really have
    // while they are unpacked.
    for (const zip_uint64_t index : wanted_) {
      if (!unpack(index)) return false;
    }
    return true;
  }

 private:
  bool refuse(std::string problem) {
    problem_ = std::move(problem);
    return false;
  }

  static std::string textOf(int code) {
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    std::string text = zip_error_strerror(&error);
    zip_error_fini(&error);
    return text;
  }

  bool look(zip_uint64_t index) {
    zip_stat_t stat;
    if (zip_stat_index(archive_.get(), index, 0, &stat) != 0 || (stat.valid & ZIP_STAT_NAME) == 0) {
      return refuse(fmt::format("member {} cannot be read ({})", index + 1, zip_strerror(archive_.get())));
    }
    const std::string_view name = stat.name;
    if (!staysInside(name)) return refuse(fmt::format("member {} has a name that leads out of the archive", index + 1));
    const std::uint64_t size = (stat.valid & ZIP_STAT_SIZE) != 0 ? stat.size : 0;
    if (size > request_.mostBytes - bytesSaid_) return refuseSize();
    bytesSaid_ += size;
    if (name.back() != '/' && request_.isWanted(name)) wanted_.push_back(index);
    return true;
  }

  bool unpack(zip_uint64_t index) {
    std::string name = zip_get_name(archive_.get(), index, 0);
    const File file(zip_fopen_index(archive_.get(), index, 0));
    if (!file) return refuse(fmt::format("{} cannot be unpacked ({})", name, zip_strerror(archive_.get())));
    std::string content;
    std::array<char, std::size_t{1} << 16U> chunk{};
    while (true) {
      const zip_int64_t length = zip_fread(file.get(), chunk.data(), chunk.size());
      if (length < 0) return refuse(fmt::format("{} is damaged ({})", name, zip_file_strerror(file.get())));
      if (length == 0) break;
      if (static_cast<std::uint64_t>(length) > bytesLeft_) return refuseSize();
      bytesLeft_ -= static_cast<std::uint64_t>(length);
      content.append(chunk.data(), static_cast<std::size_t>(length));
    }
    members_.push_back({std::move(name), std::move(content)});
    return true;
  }

  bool refuseSize() {
    return refuse(fmt::format("unpacked, more than {} MiB found, less was expected", request_.mostBytes >> 20U));
  }

  const ZipRequest& request_;
  std::vector<ZipMember>& members_;
  std::string& problem_;
  std::uint64_t bytesSaid_ = 0;  // by the members that were looked at
  std::uint64_t bytesLeft_;      // that may still be unpacked
  std::vector<zip_uint64_t> wanted_;
  Archive archive_;
};

}  // namespace
}  // namespace habitra

extern "C" [[gnu::visibility("default")]] bool habitraUnpackZip(const habitra::ZipRequest& request,
                                                                std::vector<habitra::ZipMember>& members,
                                                                std::string& problem) {
  return habitra::Unpacking(request, members, problem).run();
}
