#include <HabitraBackup/CSV/CSVColumns.h>
#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/CSV/CSVNumber.h>
#include <HabitraBackup/CSV/CSVReader.h>
#include <HabitraBackup/CSV/HabitraCSVCoder.h>
#include <HabitraBackup/Document/DocumentValues.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/UTF8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace habitra {

namespace {

constexpr std::array<std::size_t, 1> requiredColumns{1};  // title

bool isDigit(char c) { return c >= '0' && c <= '9'; }

template <typename Number>
std::optional<Number> number(std::string_view text) {
  Number result{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return result;
}

class RowDecoder final : public CSVReader::Handler {
 public:
  explicit RowDecoder(const CSVRowHandler& onRow) : onRow_(onRow) {}

  void header(std::size_t line, std::span<const std::string_view> names) override {
    columns_.emplace(CSVColumnNames{csvColumnHeaders, requiredColumns}, line, names);
  }

  void row(std::size_t line, std::span<const std::string_view> fields) override {
    line_ = line;
    fields_ = fields;
    setText(row_.taskId, 0);
    setText(row_.title, 1);
    row_.visualRepresentation = HabitraJSONBackupVisualRepresentation::fromText(field(2));
    row_.entryType = entryType(3);
    row_.entryDate = entryDate(4);
    row_.entryTimestamp = entryTimestamp(5);
    row_.quantity = quantity(6);
    row_.page = page(7);
    setText(row_.notes, 8);
    onRow_(row_);
  }

 private:
  [[nodiscard]] std::string_view field(std::size_t column) const { return columns_->field(fields_, column); }

  // The text is assigned in place: the row keeps its buffers from one to the next.
  void setText(std::optional<std::string>& text, std::size_t column) const {
    const std::string_view value = field(column);
    if (value.empty()) {
      text.reset();
    } else if (text) {
      text->assign(value);
    } else {
      text.emplace(value);
    }
  }

  [[noreturn]] void refuse(std::size_t column, std::string_view problem) const {
    throw CSVError(line_, csvColumnHeaders[column], qz::utf8::quoted(field(column)) + std::string(problem));
  }

  [[nodiscard]] std::optional<HabitraCSVBackupEntryType> entryType(std::size_t column) const {
    if (field(column).empty()) return std::nullopt;
    const auto type = fromRawValue<HabitraCSVBackupEntryType>(field(column));
    if (!type) refuse(column, " is not an entry type such as completed_manually or skipped_manually");
    return type;
  }

  [[nodiscard]] std::optional<qz::YYYYMMDD> entryDate(std::size_t column) const {
    const std::string_view text = field(column);
    if (text.empty()) return std::nullopt;
    const auto digits = number<std::int64_t>(text);
    if (text.size() != 8 || !std::ranges::all_of(text, isDigit) || !digits) {
      refuse(column, " is not a day in eight digits such as 20240131");
    }
    const auto day = qz::YYYYMMDD::fromRawValue(*digits);
    if (!day || day->y() < 1 || !day->exists()) refuse(column, " is not a day of the calendar");
    return day;
  }

  [[nodiscard]] std::optional<qz::Moment> entryTimestamp(std::size_t column) const {
    if (field(column).empty()) return std::nullopt;
    const auto moment = qz::momentFromISO8601(field(column));
    if (!moment) refuse(column, " is not a moment such as 2024-01-31T08:15:00Z");
    if (!document_values::isWritable(*moment)) refuse(column, " lies outside the years 0 to 9999 of UTC");
    return moment;
  }

  [[nodiscard]] std::optional<double> quantity(std::size_t column) const {
    if (field(column).empty()) return std::nullopt;
    const auto value = decimalNumber(field(column));
    if (!value) refuse(column, " is not a decimal number such as 1.5");
    return value;
  }

  [[nodiscard]] std::optional<TaskPageNumber> page(std::size_t column) const {
    if (field(column).empty()) return std::nullopt;
    const auto value = number<std::int64_t>(field(column));
    const auto number = value ? TaskPageNumber::fromRawValue(*value) : std::nullopt;
    if (!number) refuse(column, " is not a page number from 1 to 32768");
    return number;
  }

  const CSVRowHandler& onRow_;
  std::optional<CSVColumns> columns_;
  HabitraCSVBackupRow row_;
  std::size_t line_ = 0;
  std::span<const std::string_view> fields_;
};

}  // namespace

void HabitraCSVDecoder::decode(const ByteSource& source, const CSVRowHandler& onRow) const {
  RowDecoder decoder(onRow);
  readCSV(source, decoder);
}

}  // namespace habitra
