#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/ProgressBar.h>
#include <HabitraCLI/Session.h>
#include <HabitraCLI/UsageError.h>

#include <fmt/format.h>
#include <filesystem>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra export history.csv", "habitra export everything.habitra.zst",
                                         "habitra export - | head"};

constexpr Option options[] = {{"--format", "FORM", "csv, or habitra for everything; else the file's name says it"}};

/// By the name's ending, ".zst" left aside; nine columns where that says nothing.
HabitraBackupFormat formatOf(std::filesystem::path file) {
  if (file.extension() == ".zst") file.replace_extension();
  const std::string extension = file.extension().string();
  return formatOfFileExtension(std::string_view(extension).substr(extension.empty() ? 0 : 1))
      .value_or(HabitraBackupFormat::csv);
}

HabitraBackupFormat formatFrom(const std::string& text) {
  if (const auto format = formatOfFileExtension(text)) return *format;
  throw UsageError(fmt::format("'{}' is no format: write csv or habitra", text));
}

void run(Session& session, const Arguments& arguments) {
  const std::string& file = arguments.words.front();
  const auto option = arguments.option("--format");
  const HabitraBackupFormat format = option ? formatFrom(*option) : formatOf(file);
  Application& application = session.application();
  if (file == "-") {
    application.exportHistory(session.document(), format);
    return;
  }
  ExportedHistory exported{{}, file, format};
  {
    ProgressBar bar;
    application.setProgress([&bar](std::string_view step, double share) { bar.show(step, share); });
    exported.outcome = application.exportHistory(std::filesystem::path(file), format);
    application.setProgress({});
  }
  session.answer(exported);
}

}  // namespace

constinit const Command exportCommand{
    .verb = "export",
    .summary = "Write the whole history to a CSV file, or everything to a .habitra file",
    .words = {WordsTaken::Number::one, "FILE", "the file, or - for standard output"},
    .options = options,
    .examples = examples,
    .run = run};

}  // namespace habitra
