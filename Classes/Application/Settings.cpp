#include <HabitraApp/Application.h>
#include <HabitraApp/Rooms.h>
#include <HabitraApp/SettingText.h>
#include <HabitraApp/TaskLookup.h>
#include <HabitraModel/Settings/Settings.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <functional>

namespace habitra {
namespace {

/// A setting under the name by which a person knows it.
struct NamedSetting {
  std::string_view name;
  std::string_view meaning;
  std::string (*text)(const Settings& settings);
  bool (*isChosen)(const Settings& settings);
  /// Reads the value, which may throw, and gives what puts it into settings.
  std::function<void(Settings& settings)> (*parse)(std::string_view text);
  void (*reset)(Settings& settings);
};

template <const auto& setting, auto spell, auto read>
constexpr NamedSetting named(std::string_view name, std::string_view meaning) {
  return {.name = name,
          .meaning = meaning,
          .text = [](const Settings& settings) { return spell(settings.get(setting)); },
          .isChosen = [](const Settings& settings) { return settings.chosen(setting).has_value(); },
          .parse = [](std::string_view text) -> std::function<void(Settings&)> {
            return [value = read(text)](Settings& settings) { settings.set(setting, value); };
          },
          .reset = [](Settings& settings) { settings.reset(setting); }};
}

constexpr std::array namedSettings{
    named<settings::firstDayOfWeek, &weekdayText, &weekdayFromText>("first-day-of-week",
                                                                    "the day on which the weeks of new habits begin"),
    named<settings::startOfDay, &timeOfDayText, &timeOfDayFromText>(
        "start-of-day", "when a new day begins, for habits without a start of day of their own"),
    named<settings::defaultFrequency, &frequencyText, &frequencyFromText>("default-frequency",
                                                                          "how often a new habit is to be done"),
};

/// Lower case, without what parts words: "Start of Day" is "start-of-day".
std::string folded(std::string_view name) {
  std::string text;
  for (const char c : name)
    if (c != ' ' && c != '-' && c != '_') text += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

const NamedSetting& lookUpSetting(std::string_view name) {
  const auto found = std::ranges::find_if(
      namedSettings, [wanted = folded(name)](const NamedSetting& setting) { return folded(setting.name) == wanted; });
  if (found != namedSettings.end()) return *found;
  std::vector<std::string> names;
  for (const NamedSetting& setting : namedSettings) names.emplace_back(setting.name);
  throw SettingError(fmt::format("no setting is called {}{}", qz::utf8::quoted(name), didYouMean(name, names)));
}

SettingSummary summarize(const NamedSetting& setting, const Settings& settings) {
  return {.name = std::string(setting.name),
          .value = setting.text(settings),
          .isChosen = setting.isChosen(settings),
          .meaning = std::string(setting.meaning)};
}

}  // namespace

std::vector<SettingSummary> Application::settings() {
  const Settings settings = rooms_->settings(rooms_->readingContext());
  std::vector<SettingSummary> summaries;
  for (const NamedSetting& setting : namedSettings) summaries.push_back(summarize(setting, settings));
  return summaries;
}

SettingSummary Application::setting(std::string_view name) {
  const NamedSetting& setting = lookUpSetting(name);
  return summarize(setting, rooms_->settings(rooms_->readingContext()));
}

SettingSummary Application::changeSetting(std::string_view name, std::string_view value) {
  const NamedSetting& setting = lookUpSetting(name);
  const auto change = setting.parse(value);  // a mistyped value makes no store
  const auto context = rooms_->contextToWrite();
  Settings settings = rooms_->settings(context.get());
  change(settings);
  const SettingSummary summary = summarize(setting, settings);
  context->save({.author = Author::app, .command = fmt::format("set {} '{}'", setting.name, summary.value)});
  return summary;
}

SettingSummary Application::resetSetting(std::string_view name) {
  const NamedSetting& setting = lookUpSetting(name);
  if (rooms_->readingContext() != nullptr) {
    const auto context = rooms_->contextToWrite();
    Settings settings = rooms_->settings(context.get());
    setting.reset(settings);
    context->save({.author = Author::app, .command = fmt::format("reset {}", setting.name)});
  }
  return this->setting(setting.name);
}

}  // namespace habitra
