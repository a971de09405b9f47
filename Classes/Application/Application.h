#pragma once

#include <HabitraApp/HabitSummary.h>
#include <HabitraApp/SettingSummary.h>
#include <HabitraBackup/Document/HabitraBackupFormat.h>
#include <HabitraBackup/Exchange/ExchangeProgress.h>
#include <HabitraBackup/Exchange/ImportRemarks.h>
#include <HabitraBackup/Exchange/ImportReport.h>
#include <HabitraBackup/Exchange/ImportStrategy.h>
#include <HabitraBackup/Files/ByteStreams.h>
#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

class StoreContext;
struct HabitraJSONBackup;
struct TaskEntity;

/// What an application works on and with.
struct ApplicationSettings {
  std::filesystem::path home;              ///< the Habitra home; made when something is first written
  std::shared_ptr<const qz::Clock> clock;  ///< where "now" comes from
  /// The device's zone: days of tasks without a zone of their own. None: the system's, whichever that is at the time.
  std::optional<qz::TimeZone> timeZone;
  std::string version{};     ///< of the program, for what it writes
  bool timeIsGiven = false;  ///< "now" need not have come: then nothing goes because it is old
};

/// What became of one habit that a person marked.
struct Marked {
  enum class Outcome {
    recorded,  ///< an entry was written
    already,   ///< the day already stood as asked for; nothing was written
  };
  /// A day that was marked afterwards.
  struct PastDay {
    qz::YYYYMMDD day;
    std::optional<CompletionStatus> status;  ///< of the period that holds it, afterwards; see HabitSummary::status
  };

  Outcome outcome;
  HabitSummary habit;                ///< as it stands now, afterwards
  std::optional<PastDay> pastDay{};  ///< none when the habit's today was marked
};

/// What a pass over the habits did.
struct ProcessReport {
  std::size_t tasks = 0;     ///< active habits looked at
  std::size_t changed = 0;   ///< of these, the ones whose stored figures or log changed
  std::size_t filledIn = 0;  ///< automatic skips and misses added for days that are over
  std::size_t removed = 0;   ///< entries dated after today that were deleted
  /// What went wrong first; process() throws it instead. A watch tries again.
  std::optional<std::string> failure{};
};

/// What was brought in, and the pass that followed.
struct ImportOutcome {
  ImportReport report;
  std::optional<ProcessReport> processed;  ///< none when the pass failed: what was brought in is stored all the same
};

/// What an import of health samples came to.
struct HealthImportOutcome {
  std::size_t added = 0;
  std::size_t left = 0;  ///< were there already
};

/// A backup that was made by itself.
struct BackupSummary {
  qz::YYYYMMDD day;
  std::filesystem::path file;
  std::uintmax_t size = 0;  ///< bytes
};

/// What took the place of all that was stored, and the pass that followed.
struct RestoreOutcome {
  std::filesystem::path file;  ///< the backup
  std::size_t tasks = 0;
  std::size_t entries = 0;
  std::vector<std::string> remarks{};           ///< sentences on what of the backup could not be restored
  std::optional<std::filesystem::path> kept{};  ///< the store that was there before, where there was one
  std::optional<ProcessReport> processed;       ///< none when the pass failed: what was restored is stored all the same
};

/// What to export, and how.
struct ExportRequest {
  HabitraBackupFormat format = HabitraBackupFormat::csv;
  std::optional<std::int64_t> page{};  ///< only the habits of this page, from 1; none: all
};

struct ExportOutcome {
  std::size_t tasks = 0;
  std::size_t rows = 0;  ///< below the header; of a document: entries
};

/// Everything a front end can ask and do. A front end parses, asks here, prints, and decides nothing, so that no two of
/// them disagree.
///
/// A call that records takes the writers' turn, brings the habits it touches up to date before and after, and saves
/// once: when it returns, what it says is on disk; when it throws, nothing was changed. Calls that only look never
/// write and work the days since the last pass out in memory. Failures are qz::Error with a message fit to be shown; a
/// name that is not one habit's is a TaskNameError (TaskLookup.h).
///
/// Belongs to one thread.
class Application {
 public:
  explicit Application(ApplicationSettings settings);
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  /// All active habits by page and place on it. Empty when nothing was ever stored; nothing is made then.
  [[nodiscard]] std::vector<HabitSummary> list();

  /// The day that "now" belongs to, in the device's zone and by the app-wide start of day.
  [[nodiscard]] qz::YYYYMMDD today();

  /// A new habit: to do, on the first page, as often as the setting "default-frequency" says, and done so many times in
  /// a row before today. Throws qz::Error for a title that is empty, longer than 500 bytes, not UTF-8 or has control
  /// characters, and for a streak that is below 0 or longer than 10,000.
  HabitSummary add(std::string_view title, std::int64_t streak = 0);

  /// Marks the period of these habits that holds `day` (none: the today of each) done. Names are all looked up before
  /// anything is recorded. Throws qz::Error when the day lies in the future of one of them.
  std::vector<Marked> done(const std::vector<std::string>& names, std::optional<qz::YYYYMMDD> day);

  /// The same for skipped: the period then neither adds to a streak nor breaks it.
  std::vector<Marked> skip(const std::vector<std::string>& names, std::optional<qz::YYYYMMDD> day);

  /// Takes back what stands in the log of one habit for `day` (none: its today).
  /// Throws qz::Error when nothing that a person or an import recorded stands there, or the day lies in the future.
  HabitSummary undo(std::string_view name, std::optional<qz::YYYYMMDD> day);

  /// Brings every active habit up to date: fills in the days that are over, stores the figures. At most once a day what
  /// history nobody needs any more goes, too. When a habit could not be, the others are, and the first such failure is
  /// thrown then.
  ProcessReport process();

  /// The same after a call that only looked, when the day has changed since the last pass or something that was put off
  /// is due. Never throws: what could not be done now is done next time.
  void processIfDue() noexcept;

  /// What nobody waits for after an answer: writes health samples that entries asked for, the backup of the day, and
  /// the snapshot that desktop panels show, when it says anything else than what is stored. Never throws: it can wait
  /// for the next time.
  void afterAnswer() noexcept;

  /// Told of the first pass of a watch, and of each later one that was asked for by a new day or by another program.
  using PassObserver = std::function<void(const ProcessReport&)>;

  /// Stays until stopWatching() is called, and keeps habits up to date meanwhile: at once, as days begin, as data come
  /// in that complete habits, as what was put off becomes due, and as other programs save. Throws qz::Error when the
  /// store cannot be watched; what goes wrong later is logged, but for what `onPass` throws.
  void watch(const PassObserver& onPass);
  /// Lets watch() end; from any thread. A watch that has not begun ends at its beginning.
  void stopWatching();

  /// Reads a history (a backup document, nine columns, or what another tracker has written: which, it finds out),
  /// brings it into the store and the habits up to date. `name` is what errors call the stream, which can be
  /// neither archive nor database; `strategy` says what happens to habits that are here already. All or nothing.
  ImportOutcome importHistory(std::istream& stream, std::string_view name,
                              ImportStrategy strategy = ImportStrategy::merge);
  ImportOutcome importHistory(const std::filesystem::path& file, ImportStrategy strategy = ImportStrategy::merge);

  /// Reads health samples in six columns from `stream` into the store of samples, and brings the habits up to date that
  /// such data complete; the same ones twice change nothing. `name` is what errors call the stream. All or nothing.
  HealthImportOutcome importHealthSamples(std::istream& stream, std::string_view name);
  HealthImportOutcome importHealthSamples(const std::filesystem::path& file);

  /// Writes the history of every habit, or of those on a page, as nine columns, or as a backup document that holds
  /// everything. A file is replaced in one step, or left as it was, and compressed when its name ends in ".zst". The
  /// habits are brought up to date before, where that is due.
  ExportOutcome exportHistory(std::ostream& stream, const ExportRequest& request);
  ExportOutcome exportHistory(const std::filesystem::path& file, const ExportRequest& request);

  /// Is told from now on how far imports and exports have come.
  void setProgress(ExchangeProgress progress) { progress_ = std::move(progress); }

  /// Writes a sample of a history, "habitra-sample.csv", to the folder, or to that for temporary files where none is
  /// named, and gives its path.
  std::filesystem::path writeSample(const std::filesystem::path& folder);

  /// The backups that were made by themselves, newest first.
  [[nodiscard]] std::vector<BackupSummary> backups();

  /// Puts what the backup of that day says in the place of all that is stored, and brings the habits up to date. Throws
  /// qz::Error when there is none of that day, it is damaged, or another program does not let go of the store; nothing
  /// is changed then.
  RestoreOutcome restore(qz::YYYYMMDD day);
  /// The same from any backup document.
  RestoreOutcome restore(const std::filesystem::path& file);

  /// Every setting that a person can choose, in a fixed order.
  [[nodiscard]] std::vector<SettingSummary> settings();

  /// One of them. `name` is read in any case, words joined or parted by blanks, hyphens or underscores. Throws
  /// SettingError when there is no such setting, as the following do.
  [[nodiscard]] SettingSummary setting(std::string_view name);

  /// Chooses a value, in the form in which SettingSummary shows it. Throws SettingError when it is none; nothing is
  /// changed then. What it is chosen for counts from the next call on, in other programs, too.
  SettingSummary changeSetting(std::string_view name, std::string_view value);

  /// Gives up what was chosen, so that the default counts again.
  SettingSummary resetSetting(std::string_view name);

 private:
  void writeSnapshot();
  /// A pass after something that is stored whatever becomes of the pass; none when it fails.
  std::optional<ProcessReport> processAfter(std::string_view what);
  class Rooms;
  class Watch;

  /// Records one entry of this type for each habit whose period does not stand as it asks for yet.
  std::vector<Marked> mark(std::string_view verb, TaskLogEntryType type, const std::vector<std::string>& names,
                           std::optional<qz::YYYYMMDD> day);
  Marked markOne(StoreContext& context, TaskEntity& task, TaskLogEntryType type, std::optional<qz::YYYYMMDD> day);

  /// What an import of samples came to, once the habits have followed it.
  HealthImportOutcome healthImportOutcome(std::size_t added, std::size_t left);
  ExportOutcome exportHistory(const ExportRequest& request, const ByteSink& sink);
  ImportOutcome importDocument(const HabitraJSONBackup& document, std::string_view name, ImportStrategy strategy,
                               const ImportRemarks& remarks = {});

  std::unique_ptr<Rooms> rooms_;
  ExchangeProgress progress_;
};

}  // namespace habitra
