#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Exchange/ExchangeProgress.h>
#include <HabitraBackup/Exchange/ImportRemarks.h>
#include <HabitraBackup/MovingIn/ForeignHistory.h>

#include <cstdint>
#include <filesystem>
#include <istream>
#include <string_view>

namespace habitra {

/// A history that was read, and what there is to say of how.
struct LoadedHistory {
  enum class Form : std::uint8_t {
    document,  ///< a backup document
    rows,      ///< the nine columns of a task history
    foreign,   ///< of another tracker
  };

  Form form = Form::document;
  HabitraJSONBackup document;
  ImportRemarks remarks;
};

/// Reads a history of any form that is known, which is found out from its first bytes: a backup document, the nine
/// columns of a task history, or JSON of another tracker (each of these compressed or not), or another file or a folder
/// of another tracker. Throws what HabitraBackup and the readers of ForeignHistory.h throw. Safe from any thread;
/// `progress`, where there is one, is told on the thread of the call.
[[nodiscard]] LoadedHistory loadHistory(const std::filesystem::path& path, const ForeignHistorySettings& settings,
                                        const ExchangeProgress& progress = {});

/// The same from an open stream, which can hold neither an archive nor a database. `name` is what messages call it.
[[nodiscard]] LoadedHistory loadHistory(std::istream& stream, std::string_view name,
                                        const ForeignHistorySettings& settings);

}  // namespace habitra
