#pragma once

#include <HabitraApp/Application.h>
#include <HabitraCLI/Answers.h>
#include <HabitraCLI/GlobalOptions.h>
#include <HabitraCLI/ProgressBar.h>
#include <HabitraCLI/StandardOutput.h>
#include <HabitraCLI/Terminal.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {

/// What a command runs in: the application as the global options set it up, and the way to answer.
/// Belongs to one thread.
class Session {
 public:
  /// Throws UsageError for a home, zone or moment that cannot be. Opens nothing.
  Session(const GlobalOptions& options, StandardOutput& output);

  /// Made when first asked for.
  [[nodiscard]] Application& application();

  /// The day that the option spells; none when it was not given. Throws UsageError.
  [[nodiscard]] std::optional<qz::YYYYMMDD> day(const std::optional<std::string>& option);

  /// Writes the answer as the person asked for it.
  template <typename Answer>
  void answer(const Answer& answer) {
    output_.write(json_ ? asJSON(answer) : asText(answer, Terminal::of(descriptor)));
  }

  /// Hands out what was answered so far, for a command that stays.
  void flush() { output_.flush(); }

  /// Does something that takes long while a bar on standard error shows how far it has come.
  template <typename Work>
  auto withProgress(Work&& work) {
    ProgressBar bar;
    const ProgressReset reset(application());
    application().setProgress([&bar](std::string_view step, double share) { bar.show(step, share); });
    return std::forward<Work>(work)();
  }

  /// For an answer that is a document by itself.
  [[nodiscard]] std::ostream& document() { return output_.stream(); }

  /// After a command that only looked: hands the answer out, then does what is due since the day changed. Under --now
  /// nothing is due, since that moment need not have come.
  void catchUp();

  /// After any command: hands the answer out, then does what nobody waits for.
  void finish();

 private:
  static constexpr int descriptor = 1;

  /// Lets the application tell nobody any more how far it has come.
  class ProgressReset {
   public:
    explicit ProgressReset(Application& application) : application_(application) {}
    ~ProgressReset() { application_.setProgress({}); }
    ProgressReset(const ProgressReset&) = delete;
    ProgressReset& operator=(const ProgressReset&) = delete;

   private:
    Application& application_;
  };

  StandardOutput& output_;
  bool json_;
  bool timeIsGiven_;
  std::filesystem::path home_;
  std::optional<qz::TimeZone> timeZone_;  // none: the system's
  std::shared_ptr<const qz::Clock> clock_;
  std::unique_ptr<Application> application_;
};

}  // namespace habitra
