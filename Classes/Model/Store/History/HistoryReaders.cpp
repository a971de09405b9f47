#include <HabitraModel/Store/History/HistoryReaders.h>

#include <algorithm>
#include <string_view>

namespace habitra {

namespace {

constexpr std::string_view keyPrefix = "pho.token.";

template <typename T>
const T* member(const KeyValueDefaults::Values& values, std::string_view key) {
  const auto found = values.find(key);
  return found == values.end() ? nullptr : found->second.as<T>();
}

std::optional<HistoryReader> readerFrom(const KeyValueDefaults::Value& value) {
  const auto* const values = value.as<KeyValueDefaults::Values>();
  if (values == nullptr) return std::nullopt;
  const auto* const text = member<std::string>(*values, "token");
  const auto* const read = member<qz::Moment>(*values, "read");
  const auto token = text == nullptr ? std::nullopt : HistoryToken::fromText(*text);
  if (!token || read == nullptr) return std::nullopt;
  return HistoryReader{.token = *token, .lastRead = *read};
}

}  // namespace

std::string historyReaderKey(Author target) { return std::string(keyPrefix).append(rawValue(target)); }

std::optional<HistoryReader> historyReader(const KeyValueDefaults& defaults, Author target) {
  const auto value = defaults.get<KeyValueDefaults::Values>(historyReaderKey(target));
  return value ? readerFrom(*value) : std::nullopt;
}

std::vector<HistoryReader> historyReaders(const KeyValueDefaults& defaults) {
  std::vector<HistoryReader> readers;
  for (const auto& [key, value] : defaults.values()) {
    if (!key.starts_with(keyPrefix)) continue;
    if (const auto reader = readerFrom(value)) readers.push_back(*reader);
  }
  return readers;
}

void setHistoryReader(KeyValueDefaults& defaults, Author target, const HistoryReader& reader) {
  defaults.update([&](KeyValueDefaults::Values& values) {
    HistoryReader kept = reader;
    const std::string key = historyReaderKey(target);
    if (const auto found = values.find(key); found != values.end()) {
      const auto earlier = readerFrom(found->second);
      if (earlier && earlier->token.storeIdentifier == kept.token.storeIdentifier)
        kept.token.sequence = std::max(kept.token.sequence, earlier->token.sequence);
    }
    values[key] = KeyValueDefaults::Values{{"token", kept.token.text()}, {"read", kept.lastRead}};
  });
}

}  // namespace habitra
