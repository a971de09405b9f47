#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Exchange/EntriesAfterToday.h>
#include <HabitraBackup/Exchange/ExchangeProgress.h>
#include <HabitraBackup/Exchange/ImportRemarks.h>
#include <HabitraBackup/Exchange/ImportReport.h>
#include <HabitraBackup/Exchange/ImportStrategy.h>
#include <HabitraBackup/Exchange/TaskDataExchangeError.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZKit/Clock.h>

namespace habitra {

class StoreContext;
struct SaveRequest;

/// Brings a backup document into a store, all of it or, when anything goes wrong, nothing. The same document twice,
/// merged, changes nothing the second time.
///
/// *Which task is which*: a task of the document is the stored one with its identifier; one without an identifier is
/// the oldest stored one with its title that no other task of the document has taken. Deleted tasks are nobody's: one
/// of the store that bears the identifier of a new task goes, and one of the document is left out. Stored tasks that
/// the document does not name are not touched. A task that the document has twice is merged with itself.
///
/// *A new task* has what the document's record of it says, and without one the settings of a newly made task. Without a
/// whole record it has the last place on its page. It keeps its identifier; it is to be processed from its beginning.
/// Where the record does not say when it was made, that is now, but not later than the day of its earliest entry.
///
/// *Entries*: see LogPartners for which are there already, and LogImport for their order. Those dated after the task's
/// today are left out, unless the settings say otherwise, since the next pass would delete them; the report counts
/// them. An entry without moment of making is taken as made when its day began, one without period gets that of the
/// task's frequency. A full entry that is added, but for one that a pass filled in, takes the place of what a pass had
/// filled in for its period in the store, unless the document has that, too; nothing else gives way. What a pass had
/// filled in for the document does not come into a period for which the store has a full entry. A stored task that was
/// created after the earliest entry that is added to it counts as created when that entry's day began. A changed task
/// is to be processed from its beginning.
///
/// *Notes and other parts*: see TaskParts. Overwriting takes those away that the document does not have; of a task
/// without record it says nothing of parts, which then stay, but makes its settings those of a newly made one. The page
/// stays where the document does not say it, and so does the picture where its record is not whole or absent.
///
/// *Identifiers* stay unique: one that another row has already is that one's, and the new row gets another. With
/// `importWithNewID` all rows of tasks get new ones. Timers follow their entries.
///
/// *Pages and categories* are added where they are missing; those of the store stay as they are, but for `overwrite`. A
/// task of the first page makes no profile for it.
///
/// *App-wide settings* decide over tasks that are in the store already. So they come in only where there are none, or
/// with `overwrite`; otherwise a remark names those that the store does not have. The start of day and the first day of
/// the week that count for the tasks of the document are those of the store afterwards.
///
/// Belongs to the context's queue.
class TaskDataImporter {
 public:
  using Error = TaskDataExchangeError;

  struct Settings {
    TaskCalendars calendars;  ///< when days begin
    qz::DayOfWeek firstDayOfWeek;
    qz::Moment now;
    ExchangeProgress progress{};
    EntriesAfterToday entriesAfterToday = EntriesAfterToday::leftOut;
  };

  /// REQUIRES: `context` outlives the importer.
  TaskDataImporter(StoreContext& context, Settings settings);

  /// Imports and saves with `request`. Takes the writers' turn first; writes nothing when nothing is new. After an
  /// exception the store is as it was. The report hands on `remarks`, before what the import has to say itself.
  /// REQUIRES: no unit of the context is open that has changes of its own.
  ImportReport importBackup(const HabitraJSONBackup& document, ImportStrategy strategy, const SaveRequest& request,
                            const ImportRemarks& remarks = {});

 private:
  [[nodiscard]] Settings settingsAsStored() const;

  StoreContext& context_;
  Settings settings_;
};

}  // namespace habitra
