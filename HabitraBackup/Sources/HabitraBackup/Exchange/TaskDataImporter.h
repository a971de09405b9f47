#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Exchange/ImportReport.h>
#include <HabitraBackup/Exchange/TaskDataExchangeError.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZKit/Clock.h>

#include <cstdint>

namespace habitra {

class StoreContext;
struct SaveRequest;

/// What happens where a task of a document is in the store already.
enum class ImportStrategy : std::uint8_t {
  skip,            ///< the stored one stays as it is
  overwrite,       ///< its settings and its log become those of the document
  merge,           ///< its settings stay; entries that it does not have yet are added
  importWithNewID  ///< nothing is looked for: every task of the document becomes a new one
};

/// Brings a backup document into a store, all of it or, when anything goes wrong, nothing.
///
/// *Which task is which*: a task of the document is the stored one with its identifier; one without an identifier is
/// the oldest stored one with its title that no other task of the document has taken. Deleted tasks are nobody's.
/// Stored tasks that the document does not name are not touched.
///
/// *A new task* has the settings of a newly made one, comes last on its page, which is made when it is missing, and
/// keeps its identifier where that is free. It counts as created now, or when the day of its earliest entry began.
///
/// *Entries*: see LogPartners for which are there already. Those dated after the task's today are left out, since the
/// next pass would delete them; the report counts them. An entry without moment of making is taken as made when its
/// day began, one without period gets that of the task's frequency. A full entry that is added takes the place of the
/// automatic ones that the store has for its period, unless the document has them, too; nothing else gives way. A task
/// that was created after the earliest added entry counts as created when that entry's day began. A changed task is to
/// be processed from its beginning.
///
/// Belongs to the context's queue.
class TaskDataImporter {
 public:
  using Error = TaskDataExchangeError;

  struct Settings {
    TaskCalendars calendars;  ///< when days begin
    qz::DayOfWeek firstDayOfWeek;
    qz::Moment now;
  };

  /// REQUIRES: `context` outlives the importer.
  TaskDataImporter(StoreContext& context, Settings settings);

  /// Imports and saves with `request`. Takes the writers' turn first; writes nothing when nothing is new. After an
  /// exception the store is as it was. REQUIRES: no unit of the context is open.
  ImportReport importBackup(const HabitraJSONBackup& document, ImportStrategy strategy, const SaveRequest& request);

 private:
  StoreContext& context_;
  Settings settings_;
};

}  // namespace habitra
