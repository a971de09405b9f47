#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
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
/// *A new task* has what the document's record of it says, and without one the settings of a newly made task and the
/// last place on its page. It keeps its identifier; it is to be processed from its beginning. Where the document does
/// not say when it was made, that is now; in any case not later than the day of its earliest entry.
///
/// *Entries*: see LogPartners for which are there already. Those dated after the task's today are left out, since the
/// next pass would delete them; the report counts them. An entry without moment of making is taken as made when its
/// day began, one without period gets that of the task's frequency. A full entry that is added takes the place of the
/// automatic ones that the store has for its period, unless the document has them, too; nothing else gives way. A task
/// that was created after the earliest added entry counts as created when that entry's day began. A changed task is to
/// be processed from its beginning.
///
/// *Notes and other parts*: see TaskParts. Overwriting takes those away that the document does not have; of a task
/// without record it says nothing of parts, which then stay, but makes its settings those of a newly made one.
///
/// *Identifiers* stay unique: one that another row has already is that one's, and the new row gets another. With
/// `importWithNewID` all rows of tasks get new ones. Timers follow their entries.
///
/// *Pages, categories and app-wide settings* are added where they are missing; those of the store stay as they are, but
/// for `overwrite`. The start of day and the first day of the week that come in count for the tasks that come along.
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
