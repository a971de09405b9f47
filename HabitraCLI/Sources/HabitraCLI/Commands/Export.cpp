#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/Session.h>
#include <HabitraCLI/UsageError.h>

#include <fmt/format.h>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <system_error>

namespace habitra {
namespace {

constexpr std::string_view examples[] = {"habitra export history.csv", "habitra export everything.habitra.zst",
                                         "habitra export - | head"};

constexpr Option options[] = {{"--format", "FORM", "csv, or habitra for everything; else the file's name says it"},
                              {"--page", "NUMBER", "only the habits of this page"}};

HabitraBackupFormat formatFrom(const std::string& text) {
  if (const auto format = formatOfFileExtension(text)) return *format;
  throw UsageError(fmt::format("'{}' is no format: write csv or habitra", text), "export");
}

/// By the name's ending, ".zst" left aside. What is no plain file, standard output among it, gets nine columns.
HabitraBackupFormat formatOf(const std::string& name) {
  std::error_code error;
  const auto type = std::filesystem::status(name, error).type();
  const bool isSpecial = type != std::filesystem::file_type::regular && type != std::filesystem::file_type::not_found;
  if (name == "-" || isSpecial) return HabitraBackupFormat::csv;
  std::filesystem::path file = name;
  if (file.extension() == ".zst") file.replace_extension();
  std::string extension = file.extension().string();
  std::ranges::transform(extension, extension.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (const auto format = formatOfFileExtension(extension.empty() ? extension : extension.substr(1))) return *format;
  throw UsageError(
      fmt::format("'{}' does not say in which form: let it end in .csv or .habitra, or give --format", name), "export");
}

std::optional<std::int64_t> pageFrom(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
  if (error != std::errc() || end != text->data() + text->size() || number < 1)
    throw UsageError(fmt::format("'{}' is no page: write a number from 1 on", *text), "export");
  return number;
}

void run(Session& session, const Arguments& arguments) {
  const std::string& file = arguments.words.front();
  const auto option = arguments.option("--format");
  const ExportRequest request{.format = option ? formatFrom(*option) : formatOf(file),
                              .page = pageFrom(arguments.option("--page"))};
  Application& application = session.application();
  if (file == "-") {
    application.exportHistory(session.document(), request);
    return;
  }
  const ExportOutcome outcome =
      session.withProgress([&] { return application.exportHistory(std::filesystem::path(file), request); });
  session.answer(ExportedHistory{outcome, file, request.format});
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
