#include <HabitraModel/Store/Engine/Migrations.h>

#include <array>

namespace habitra {

namespace {

// These texts say what a store of their version is. They are never changed, and follow from nothing that may change.

constexpr std::array<std::string_view, 26> toVersion2{
    "CREATE UNIQUE INDEX TaskLogEntryEntity_objectID ON TaskLogEntryEntity(objectID)",
    R"(CREATE TABLE TaskCounterEntity (
  objectID INTEGER PRIMARY KEY,
  createdTimestamp INTEGER,
  entryDate INTEGER NOT NULL DEFAULT 0,
  quantity INTEGER NOT NULL DEFAULT 0,
  status TEXT,
  uniqueId TEXT,
  task INTEGER REFERENCES TaskEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX TaskCounterEntity_uniqueId ON TaskCounterEntity(uniqueId)",
    "CREATE INDEX TaskCounterEntity_task ON TaskCounterEntity(task, entryDate)",
    R"(CREATE TABLE TaskNoteEntity (
  objectID INTEGER PRIMARY KEY,
  associatedValue REAL NOT NULL DEFAULT 0,
  content TEXT,
  createdTimestamp INTEGER,
  createdTimeZone TEXT,
  displayOrder INTEGER NOT NULL DEFAULT 0,
  jsonExtra BLOB,
  noteDate INTEGER NOT NULL DEFAULT 0,
  sentiment TEXT,
  status TEXT,
  uniqueId TEXT,
  task INTEGER REFERENCES TaskEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX TaskNoteEntity_uniqueId ON TaskNoteEntity(uniqueId)",
    "CREATE INDEX TaskNoteEntity_task ON TaskNoteEntity(task, noteDate)",
    R"(CREATE TABLE TaskTimerEntity (
  objectID INTEGER PRIMARY KEY,
  entryDate INTEGER NOT NULL DEFAULT 0,
  entryId TEXT,
  entryPeriodFrom INTEGER NOT NULL DEFAULT 0,
  entryPeriodTo INTEGER NOT NULL DEFAULT 0,
  entryPeriodType TEXT,
  finish INTEGER,
  start INTEGER,
  task INTEGER REFERENCES TaskEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX TaskTimerEntity_task ON TaskTimerEntity(task, entryDate)",
    R"(CREATE TABLE TaskNotificationSettingsEntity (
  objectID INTEGER PRIMARY KEY,
  automaticRemindersAreTimeSensitive INTEGER,
  badgeFrom INTEGER,
  badgeMode TEXT,
  badgeTimeZone TEXT,
  badgeTo INTEGER,
  completedNotification INTEGER NOT NULL DEFAULT 0,
  completedNotificationIsTimeSensitive INTEGER,
  difficultyNotificationStatus TEXT,
  lastUpdated INTEGER,
  liveActivityDisplayMode TEXT,
  maxReminders INTEGER,
  partiallyCompletedNotification INTEGER,
  partiallyCompletedNotificationIsTimeSensitive INTEGER,
  reminderType TEXT,
  snoozeDuration INTEGER,
  soundCompletion TEXT,
  soundPartialCompletion TEXT,
  soundReminder TEXT,
  soundTimerNotification TEXT,
  timerNotificationsAreTimeSensitive INTEGER,
  task INTEGER REFERENCES TaskEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX TaskNotificationSettingsEntity_task ON TaskNotificationSettingsEntity(task)",
    R"(CREATE TABLE TaskNotificationRemindersEntity (
  objectID INTEGER PRIMARY KEY,
  daysFromFinish TEXT,
  daysFromStart TEXT,
  daysOfWeek INTEGER,
  duration REAL,
  icon TEXT,
  region BLOB,
  reminderType TEXT,
  snoozeDate INTEGER,
  snoozeTime INTEGER,
  snoozeTimeZone TEXT,
  sound TEXT,
  timeOfDay INTEGER,
  timeZone TEXT,
  uniqueId TEXT,
  timeSensitive INTEGER,
  task INTEGER REFERENCES TaskEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    R"(CREATE INDEX TaskNotificationRemindersEntity_uniqueId ON TaskNotificationRemindersEntity(uniqueId))",
    "CREATE INDEX TaskNotificationRemindersEntity_task ON TaskNotificationRemindersEntity(task)",
    R"(CREATE TABLE TaskCategoryEntity (
  objectID INTEGER PRIMARY KEY,
  colorInfo TEXT,
  iconName TEXT,
  title TEXT,
  uniqueId TEXT,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX TaskCategoryEntity_uniqueId ON TaskCategoryEntity(uniqueId)",
    R"(CREATE TABLE TaskShareEntity (
  objectID INTEGER PRIMARY KEY,
  ckError TEXT,
  ckErrorUpdated INTEGER,
  ckRecordIdRecordName TEXT,
  ckRecordIdZoneName TEXT,
  ckRecordIdZoneOwnerName TEXT,
  ckShareIdRecordName TEXT,
  ckShareIdZoneName TEXT,
  ckShareIdZoneOwnerName TEXT,
  participantsJson BLOB,
  status TEXT,
  statusUpdated INTEGER,
  summaryJson BLOB,
  summaryJsonHashValue INTEGER NOT NULL DEFAULT 0,
  summaryJsonUpdated INTEGER,
  owner INTEGER REFERENCES TaskShareOwnerEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  task INTEGER REFERENCES TaskEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX TaskShareEntity_owner ON TaskShareEntity(owner)",
    "CREATE INDEX TaskShareEntity_task ON TaskShareEntity(task)",
    R"(CREATE TABLE TaskShareOwnerEntity (
  objectID INTEGER PRIMARY KEY,
  ckRecordIdRecordName TEXT,
  ckRecordIdZoneName TEXT,
  ckRecordIdZoneOwnerName TEXT,
  ckUserDisplayName TEXT,
  cloudStatus TEXT,
  cloudStatusDate INTEGER,
  cnFormattedName TEXT,
  cnIdentifier TEXT,
  cnPropertyIdentifier TEXT,
  cnPropertyLabel TEXT,
  cnPropertyType TEXT,
  cnPropertyValue TEXT,
  imageName TEXT,
  checksum INTEGER NOT NULL
) STRICT)",
    R"(CREATE TABLE HealthKitRequestEntity (
  objectID INTEGER PRIMARY KEY,
  created INTEGER,
  data BLOB,
  status TEXT,
  statusDate INTEGER,
  type TEXT,
  taskLogEntry INTEGER REFERENCES TaskLogEntryEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX HealthKitRequestEntity_taskLogEntry ON HealthKitRequestEntity(taskLogEntry)",
    R"(CREATE TABLE TaskEntity_taskCategories (
  objectID INTEGER PRIMARY KEY,
  task INTEGER REFERENCES TaskEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  category INTEGER REFERENCES TaskCategoryEntity(objectID) DEFERRABLE INITIALLY DEFERRED,
  checksum INTEGER NOT NULL
) STRICT)",
    "CREATE INDEX TaskEntity_taskCategories_task ON TaskEntity_taskCategories(task)",
    "CREATE INDEX TaskEntity_taskCategories_category ON TaskEntity_taskCategories(category)",
    "CREATE INDEX habitra_transaction_command ON habitra_transaction(sequence) WHERE command IS NOT NULL",
};

constexpr std::array<std::string_view, 3> toVersion3{
    R"(CREATE TABLE habitra_outbox (
  link TEXT NOT NULL,
  task INTEGER NOT NULL REFERENCES TaskEntity(objectID) ON DELETE CASCADE,
  due INTEGER NOT NULL,
  revision INTEGER NOT NULL,
  PRIMARY KEY (link, task)
) STRICT, WITHOUT ROWID)",
    "CREATE INDEX HealthKitRequestEntity_status ON HealthKitRequestEntity(status) WHERE status IS 'pending'",
    R"(CREATE TABLE habitra_health_anchor (
  task INTEGER PRIMARY KEY REFERENCES TaskEntity(objectID) ON DELETE CASCADE,
  anchor TEXT NOT NULL
) STRICT)",
};

constexpr std::array migrations{
    Migration{2, toVersion2},
    Migration{3, toVersion3},
};

}  // namespace

std::span<const Migration> allMigrations() { return migrations; }

}  // namespace habitra
