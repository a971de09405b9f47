#pragma once

#include <string_view>

/// The keys of a backup document that are no attributes of a row. Those of a task's parts are the names that the
/// relationships between the rows have.
namespace habitra::document_keys {

inline constexpr std::string_view version = "version";
inline constexpr std::string_view timestamp = "timestamp";
inline constexpr std::string_view backupType = "backupType";
inline constexpr std::string_view backupDescription = "backupDescription";
inline constexpr std::string_view appVersion = "appVersion";
inline constexpr std::string_view pages = "pages";
inline constexpr std::string_view categories = "categories";
inline constexpr std::string_view settings = "settings";
inline constexpr std::string_view tasks = "tasks";

inline constexpr std::string_view titleFormatted = "titleFormatted";
inline constexpr std::string_view pageNumber = "pageNumber";
inline constexpr std::string_view taskNotificationSettings = "taskNotificationSettings";
inline constexpr std::string_view taskNotificationReminders = "taskNotificationReminders";
inline constexpr std::string_view taskCounter = "taskCounter";
inline constexpr std::string_view taskTimer = "taskTimer";
inline constexpr std::string_view taskCategories = "taskCategories";
inline constexpr std::string_view pauses = "pauses";
inline constexpr std::string_view taskNote = "taskNote";
inline constexpr std::string_view taskEntry = "taskEntry";

inline constexpr std::string_view pauseFrom = "from";
inline constexpr std::string_view pauseTo = "to";

// Attributes that are spoken of one by one.
inline constexpr std::string_view uniqueId = "uniqueId";
inline constexpr std::string_view title = "title";
inline constexpr std::string_view imageName = "imageName";
inline constexpr std::string_view daysMode = "daysMode";
inline constexpr std::string_view entryType = "entryType";
inline constexpr std::string_view entryDate = "entryDate";
inline constexpr std::string_view progress = "progress";
inline constexpr std::string_view progressTotal = "progressTotal";
inline constexpr std::string_view createdTimestamp = "createdTimestamp";
inline constexpr std::string_view createdTimeZone = "createdTimeZone";
inline constexpr std::string_view entryPeriodFrom = "entryPeriodFrom";
inline constexpr std::string_view entryPeriodTo = "entryPeriodTo";
inline constexpr std::string_view entryPeriodType = "entryPeriodType";
inline constexpr std::string_view cloudStatus = "cloudStatus";
inline constexpr std::string_view cloudStatusDate = "cloudStatusDate";

}  // namespace habitra::document_keys
