#include <HabitraBackup/AutomaticBackups/AutomaticBackups.h>
#include <HabitraBackup/AutomaticBackups/BackupRotation.h>
#include <HabitraBackup/Document/HabitraJSONDecoder.h>
#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraBackup/Files/Compression.h>
#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/Files/FileWriting.h>
#include <HabitraBackup/Files/Leftovers.h>
#include <HabitraModel/PersistentHistoryFetcher.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZKit/Error.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace habitra {

namespace {

constexpr std::string_view extension = ".habitra.zst";
constexpr std::size_t dayLength = 10;  // of "2024-01-31"

/// The day that a file's name bears; none for a file that is no backup of ours.
std::optional<qz::YYYYMMDD> dayOfName(std::string_view name) {
  if (name.size() != dayLength + extension.size() || !name.ends_with(extension)) return std::nullopt;
  std::int64_t number = 0;
  for (std::size_t at = 0; at < dayLength; ++at) {
    const bool isHyphen = at == 4 || at == 7;
    if (isHyphen ? name[at] != '-' : name[at] < '0' || name[at] > '9') return std::nullopt;
    if (!isHyphen) number = number * 10 + (name[at] - '0');
  }
  const auto day = qz::YYYYMMDD::fromRawValue(number);
  return day && day->exists() ? day : std::nullopt;
}

/// Whether it is what a program left that was stopped while it wrote a backup: ".2024-01-31.habitra.zst.4711-0".
bool isUnfinishedBackup(const std::filesystem::directory_entry& entry) {
  const std::string name = entry.path().filename().string();
  constexpr std::size_t length = 1 + dayLength + extension.size();
  return name.size() > length && name[0] == '.' && name[length] == '.' &&
         dayOfName(std::string_view(name).substr(1, length - 1)) &&
         entry.symlink_status().type() == std::filesystem::file_type::regular;
}

/// What was written or read, in short.
class Fingerprint {
 public:
  Fingerprint() : state_(XXH3_createState(), &XXH3_freeState) { XXH3_128bits_reset(state_.get()); }

  void add(std::string_view bytes) {
    XXH3_128bits_update(state_.get(), bytes.data(), bytes.size());
    length_ += bytes.size();
  }

  friend bool operator==(const Fingerprint& a, const Fingerprint& b) {
    return a.length_ == b.length_ &&
           XXH128_isEqual(XXH3_128bits_digest(a.state_.get()), XXH3_128bits_digest(b.state_.get())) != 0;
  }

 private:
  std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state_;
  std::size_t length_ = 0;
};

/// Reads a backup as a restore would.
Fingerprint readBack(const std::filesystem::path& file) {
  Fingerprint read;
  readFile(file, [&read](const ByteSource& bytes) {
    DecompressingSource source(bytes);
    const ByteSource seen = [&](std::span<char> chunk) {
      const std::size_t count = source.read(chunk);
      read.add({chunk.data(), count});
      return count;
    };
    (void)HabitraJSONDecoder().decode(seen, [](HabitraJSONBackupTask&&) {});
  });
  return read;
}

}  // namespace

AutomaticBackups::AutomaticBackups(const std::filesystem::path& home, KeyValueDefaults& standardDefaults,
                                   std::string appVersion)
    : folder_(home / folderName), defaults_(standardDefaults), appVersion_(std::move(appVersion)) {}

std::vector<AutomaticBackups::Backup> AutomaticBackups::all() const {
  std::vector<Backup> backups;
  std::error_code error;
  if (!std::filesystem::exists(folder_, error)) return backups;
  for (std::filesystem::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
    const auto day = dayOfName(entry->path().filename().string());
    if (day && std::filesystem::is_regular_file(entry->symlink_status(error)))
      backups.push_back({.day = *day, .file = entry->path()});
  }
  if (error) throw qz::Error(fmt::format("{} cannot be read: {}", folder_.string(), error.message()));
  std::ranges::sort(backups, std::greater<>(), &Backup::day);
  return backups;
}

bool AutomaticBackups::isDue(StoreContext& context, qz::YYYYMMDD today) const {
  std::error_code error;
  if (std::filesystem::exists(fileOf(today), error)) return false;
  const auto newest = defaults_.get<std::string>(newestKey);
  return !newest || *newest != PersistentHistoryFetcher(context).currentToken().text() || all().empty();
}

void AutomaticBackups::make(StoreContext& context, qz::YYYYMMDD today, qz::Moment now) {
  makePrivateFolder(folder_);
  const std::filesystem::path file = fileOf(today);
  const HistoryToken stored = PersistentHistoryFetcher(context).currentToken();
  const TaskDataExporter exporter(context);
  const std::vector<ObjectID> tasks = exporter.allTasks();
  HabitraJSONBackup header = exporter.header(tasks, HabitraJSONBackupType::scheduled, now);
  header.appVersion = appVersion_;
  Fingerprint written;
  std::size_t entriesLeftOut = 0;
  const auto write = [&](const ByteSink& sink) {
    entriesLeftOut = exporter
                         .writeJson(tasks, header,
                                    [&](std::string_view bytes) {
                                      written.add(bytes);
                                      sink(bytes);
                                    })
                         .entriesLeftOut;
  };
  writeFile(file, write, [&written, &file](const std::filesystem::path& unfinished) {
    tightenFile(unfinished);
    if (readBack(unfinished) != written) throw qz::Error(file.string() + " does not read back as it was written");
  });
  if (entriesLeftOut > 0)
    qz::log::warning("{} damaged entries, which no backup can hold, are not in {}", entriesLeftOut, file.string());
  defaults_.set(newestKey, stored.text());
  removeOutdated(today);
  removeLeftovers(folder_, isUnfinishedBackup);
}

std::filesystem::path AutomaticBackups::fileOf(qz::YYYYMMDD day) const {
  return folder_ / (day.debugDescription() + std::string(extension));
}

void AutomaticBackups::removeOutdated(qz::YYYYMMDD today) const {
  std::vector<qz::YYYYMMDD> days;
  for (const Backup& backup : all()) days.push_back(backup.day);
  for (const qz::YYYYMMDD day : BackupRotation().outdated(std::move(days), today)) {
    std::error_code error;
    if (!std::filesystem::remove(fileOf(day), error) && error)
      qz::log::warning("The backup of {} stays: {}", day.debugDescription(), error.message());
  }
}

}  // namespace habitra
