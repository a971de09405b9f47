#include <HabitraApp/WidgetSnapshot.h>
#include <HabitraModel/Settings/DefaultsFile.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace habitra {
namespace {

/// Whether what is there was made of a later state of the same store. What cannot be read is no reason to keep it.
bool isLater(const std::optional<std::string>& text, const HistoryToken& stored) {
  const auto there = text ? nlohmann::json::parse(*text, nullptr, false) : nlohmann::json();
  if (!there.is_object()) return false;
  const auto store = there.find("store");
  const auto sequence = there.find("sequence");
  return store != there.end() && *store == stored.storeIdentifier && sequence != there.end() &&
         sequence->is_number_integer() && *sequence > stored.sequence;
}

}  // namespace

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
    if (isLater(readDefaultsFile(turn.file()), content.stored)) return;
    turn.replace(snapshot.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
  } catch (...) {
    isOutdated_ = true;
    throw;
  }
}

}  // namespace habitra
