#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>
#include <HabitraCLI/UsageError.h>

#include <fmt/ranges.h>
#include <charconv>

namespace habitra {
namespace {

constexpr Option options[] = {{"--streak", "COUNT", "it has been kept so many times in a row before today"}};
constexpr std::string_view examples[] = {"habitra add Read ten pages", "habitra add Meditate --streak 30"};

std::int64_t countFrom(const std::string& text) {
  std::int64_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, failure] = std::from_chars(text.data(), end, count);
  if (failure != std::errc() || rest != end) throw UsageError(fmt::format("'{}' is not a count", text));
  return count;
}

void run(Session& session, const Arguments& arguments) {
  const auto streak = arguments.option("--streak");
  session.answer(AddedHabit{
      session.application().add(fmt::format("{}", fmt::join(arguments.words, " ")), streak ? countFrom(*streak) : 0)});
}

}  // namespace

constinit const Command addCommand{
    .verb = "add",
    .summary = "Add a habit that is to be done every day",
    .words = {WordsTaken::Number::oneOrMore, "TITLE", "what it is called; words are joined by blanks"},
    .options = options,
    .examples = examples,
    .run = run};

}  // namespace habitra
