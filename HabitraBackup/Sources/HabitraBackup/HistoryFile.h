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
/// columns of a task history (either compressed or not), or a file or folder of another tracker. Throws what
/// HabitraBackup and readForeignHistory() throw. Safe from any thread; `progress`, where there is one, is told on the
/// thread of the call.
[[nodiscard]] LoadedHistory loadHistory(const std::filesystem::path& path, const ForeignHistorySettings& settings,
                                        const ExchangeProgress& progress = {});

/// The same from an open stream, which can hold no history of another tracker. `name` is what messages call it.
[[nodiscard]] LoadedHistory loadHistory(std::istream& stream, std::string_view name, qz::Moment now);

}  // namespace habitra
