#include <HabitraCLI/Session.h>
#include <HabitraCLI/TimeArguments.h>
#include <HabitraCLI/UsageError.h>
#include <HabitraModel/DataManager.h>
#include <QZLog/Log.h>

namespace habitra {
namespace {

std::filesystem::path homeOf(const GlobalOptions& options) {
  if (!options.home) return DataManager::homeDirectory(DataManager::processEnvironment());
  if (options.home->empty()) throw UsageError("option '--home' needs a value, DIR");
  return *options.home;
}

std::shared_ptr<const qz::Clock> clockOf(const GlobalOptions& options, const qz::TimeZone& timeZone) {
  if (!options.now) return std::make_shared<qz::SystemClock>();
  return std::make_shared<qz::FixedClock>(momentFromArgument(*options.now, timeZone));
}

}  // namespace

Session::Session(const GlobalOptions& options, StandardOutput& output)
    : output_(output),
      json_(options.json),
      timeIsGiven_(options.now.has_value()),
      home_(homeOf(options)),
      timeZone_(options.timeZone ? std::optional(timeZoneFromArgument(*options.timeZone)) : std::nullopt),
      clock_(clockOf(options, timeZone_ ? *timeZone_ : qz::TimeZone::current())) {
  qz::log::configure({.file = home_ / "habitra.log", .verbose = options.verbose});
}

Application& Session::application() {
  if (!application_) {
    application_ = std::make_unique<Application>(ApplicationSettings{.home = home_,
                                                                     .clock = clock_,
                                                                     .timeZone = timeZone_,
                                                                     .version = HABITRA_VERSION,
                                                                     .timeIsGiven = timeIsGiven_});
  }
  return *application_;
}

std::optional<qz::YYYYMMDD> Session::day(const std::optional<std::string>& option) {
  if (!option) return std::nullopt;
  return dayFromArgument(*option, [this] { return application().today(); });
}

void Session::catchUp() {
  output_.flush();
  if (!timeIsGiven_) application().processIfDue();
}

void Session::finish() {
  output_.flush();
  if (application_) application_->afterAnswer();
}

}  // namespace habitra
