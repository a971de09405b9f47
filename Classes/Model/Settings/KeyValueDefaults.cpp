// A suite is one JSON object in UTF-8, from key to value:
//
//     {
//       "dm.cloudSync": false,
//       "count": 3,
//       "share": 0.5,
//       "name": "Habitra",
//       "seen": {"moment": "2024-01-31T08:15:00.25Z"},
//       "token": {"bytes": "AAEC/w=="},
//       "places": {"dictionary": {"home": "2"}}
//     }
//
// true and false are truth values, a number without fraction and exponent is an integer of 64 bits, any other number
// one of double precision. An object as a value has one member, which names its form: "moment" (ISO 8601 in UTC, or
// microseconds since 1970 as an integer, where the year has no four digits), "bytes" (base64), "dictionary". What has
// any other form was written by a newer version: it reads as no value, and is kept when the file is rewritten.
//
// Beside the file lie "<name>.lock", on which writers take turns, and, while one of them writes, "<name>.new".

#include <HabitraModel/Settings/DefaultsCoding.h>
#include <HabitraModel/Settings/DefaultsFile.h>
#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/StoreError.h>

#include <fmt/format.h>

#include <mutex>
#include <nlohmann/json.hpp>

namespace habitra {
namespace {

class InMemoryDefaults final : public KeyValueDefaults {
 public:
  [[nodiscard]] Values values() const override {
    const std::scoped_lock lock(mutex_);
    return values_;
  }
  void update(const std::function<void(Values&)>& change) override {
    const std::scoped_lock lock(mutex_);
    Values changed = values_;
    change(changed);
    values_ = std::move(changed);
  }

 private:
  mutable std::mutex mutex_;
  Values values_;
};

class FileDefaults final : public KeyValueDefaults {
 public:
  explicit FileDefaults(std::filesystem::path path) : path_(std::move(path)) {}

  [[nodiscard]] Values values() const override {
    const auto text = readDefaultsFile(path_);
    return text ? decodeDefaults(parse(*text)) : Values();
  }

  void update(const std::function<void(Values&)>& change) override {
    const DefaultsFileTurn turn(path_);
    const auto text = readDefaultsFile(turn.file());
    nlohmann::json document = text ? parse(*text) : nlohmann::json::object();
    const Values before = decodeDefaults(document);
    Values after = before;
    change(after);
    if (after == before) return;
    mergeDefaults(document, before, after);
    turn.replace(document.dump(2) + '\n');
  }

 private:
  [[nodiscard]] nlohmann::json parse(std::string_view text) const {
    try {
      return parseDefaults(text);
    } catch (const DefaultsSyntaxError& error) {
      throw StoreError(StoreError::Kind::damaged,
                       fmt::format("{} is damaged ({}); mend it, or move it away to start with the defaults",
                                   path_.string(), error.what()));
    }
  }

  const std::filesystem::path path_;
};

}  // namespace

std::shared_ptr<KeyValueDefaults> KeyValueDefaults::file(std::filesystem::path file) {
  return std::make_shared<FileDefaults>(std::move(file));
}

std::shared_ptr<KeyValueDefaults> KeyValueDefaults::inMemory() { return std::make_shared<InMemoryDefaults>(); }

void KeyValueDefaults::set(std::string_view key, Value value) {
  update([&](Values& values) { values.insert_or_assign(std::string(key), std::move(value)); });
}

void KeyValueDefaults::remove(std::string_view key) {
  update([&](Values& values) {
    if (const auto found = values.find(key); found != values.end()) values.erase(found);
  });
}

std::vector<std::string> KeyValueDefaults::keys() const {
  std::vector<std::string> keys;
  for (const auto& [key, value] : values()) keys.push_back(key);
  return keys;
}

}  // namespace habitra
