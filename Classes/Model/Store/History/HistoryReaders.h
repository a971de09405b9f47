#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/Author.h>
#include <HabitraModel/Store/History/HistoryToken.h>
#include <QZKit/Clock.h>

#include <optional>
#include <string>
#include <vector>

/// Who reads the history, and how far each has come: kept in key-value defaults under "pho.token." and the author whose
/// view is kept current, as a dictionary of "token" (HistoryToken::text()) and "read" (the moment of reading). What is
/// damaged there counts as never written.
namespace habitra {

struct HistoryReader {
  HistoryToken token;
  qz::Moment lastRead;  ///< when it last looked

  friend bool operator==(const HistoryReader&, const HistoryReader&) = default;
};

[[nodiscard]] std::string historyReaderKey(Author target);

[[nodiscard]] std::optional<HistoryReader> historyReader(const KeyValueDefaults& defaults, Author target);

/// Every reader there is, whatever its store.
[[nodiscard]] std::vector<HistoryReader> historyReaders(const KeyValueDefaults& defaults);

/// Keeps how far the reader has come. Within one store it never goes back: two processes may read for one author.
void setHistoryReader(KeyValueDefaults& defaults, Author target, const HistoryReader& reader);

}  // namespace habitra
