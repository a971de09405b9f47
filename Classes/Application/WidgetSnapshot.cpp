#include <HabitraApp/WidgetSnapshot.h>
#include <HabitraModel/Settings/DefaultsFile.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace habitra {
namespace {

struct Made {
  std::int64_t sequence;
  std::int64_t day;
};

/// Of which state of this store a file was made; none where it was another one or the file cannot be read.
std::optional<Made> madeOf(const std::optional<std::string>& text, const HistoryToken& stored) {
  const auto there = text ? nlohmann::json::parse(*text, nullptr, false) : nlohmann::json();
  if (!there.is_object() || there.value("store", nlohmann::json()) != stored.storeIdentifier) return std::nullopt;
  const auto sequence = there.value("sequence", nlohmann::json());
  const auto day = there.value("day", nlohmann::json());
  if (!sequence.is_number_integer() || !day.is_number_integer()) return std::nullopt;
  return Made{.sequence = sequence.get<std::int64_t>(), .day = day.get<std::int64_t>()};
}

}  // namespace

bool WidgetSnapshot::isOutdated(const HistoryToken& stored, qz::YYYYMMDD day) const {
  if (isOutdated_) return true;
  const auto text = readDefaultsFile(file_);
  if (!text) return false;
  const auto made = madeOf(text, stored);
  return !made || made->sequence < stored.sequence ||
         (made->sequence == stored.sequence && made->day != day.intValue());
}

void WidgetSnapshot::write(const Content& content) {
  // Whoever asks while it is written asks for another.
  isOutdated_ = false;
  try {
    const nlohmann::json snapshot{{"version", 1},
                                  {"store", content.stored.storeIdentifier},
                                  {"sequence", content.stored.sequence},
                                  {"day", content.day},
                                  {"habits", content.habits}};
    const DefaultsFileTurn turn(file_);
    const auto there = madeOf(readDefaultsFile(turn.file()), content.stored);
    if (there && there->sequence > content.stored.sequence) return;
    turn.replace(snapshot.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
  } catch (...) {
    isOutdated_ = true;
    throw;
  }
}

}  // namespace habitra
