#include <HabitraBackup/CSV/CSVWriter.h>
#include <HabitraBackup/CSV/HabitraCSVCoder.h>
#include <HabitraBackup/Document/DocumentValues.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/Trap.h>

#include <fmt/core.h>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace habitra {

namespace {

// A number written without an exponent has at most as many digits before its point as the largest has, and at most as
// many after it as the smallest needs to be told from zero.
constexpr std::size_t longestQuantity = 8 + std::numeric_limits<double>::max_exponent10 +
                                        static_cast<std::size_t>(-std::numeric_limits<double>::min_exponent10) +
                                        2 * std::numeric_limits<double>::max_digits10;

std::string quantityText(double quantity) {
  std::array<char, longestQuantity> digits;
  const auto [end, error] =
      std::to_chars(digits.data(), digits.data() + digits.size(), quantity, std::chars_format::fixed);
  qz::require(error == std::errc{}, "a quantity fits its buffer");
  std::string text(digits.data(), end);
  if (text.find('.') == std::string::npos) text += ".0";
  return text;
}

// A day that the calendar does not have can come from a damaged store; a reader would refuse the whole file for it.
std::string dayText(qz::YYYYMMDD day) {
  const bool isReadable = day.y() >= 1 && day.y() <= 9999 && day.exists();
  return isReadable ? fmt::format("{:08}", day.intValue()) : std::string();
}

// Only years of four digits can be read back.
std::string momentText(qz::Moment moment) {
  return document_values::isWritable(moment) ? qz::iso8601WholeSeconds(moment) : std::string();
}

void writeText(CSVWriter& writer, const std::optional<std::string>& text) {
  writer.field(text ? std::string_view(*text) : std::string_view());
}

void writeRow(CSVWriter& writer, const HabitraCSVBackupRow& row) {
  writeText(writer, row.taskId);
  writeText(writer, row.title);
  writer.field(row.visualRepresentation ? row.visualRepresentation->text() : std::string());
  writer.field(row.entryType ? rawValue(*row.entryType) : std::string_view());
  writer.field(row.entryDate ? dayText(*row.entryDate) : std::string());
  writer.field(row.entryTimestamp ? momentText(*row.entryTimestamp) : std::string());
  writer.field(row.quantity && std::isfinite(*row.quantity) ? quantityText(*row.quantity) : std::string());
  writer.field(row.page ? fmt::format("{}", row.page->rawValue()) : std::string());
  writeText(writer, row.notes);
  writer.endRow();
}

}  // namespace

void HabitraCSVEncoder::encode(const std::function<void(const CSVRowHandler&)>& produce, const ByteSink& sink) const {
  CSVWriter writer(sink);
  for (const std::string_view name : csvColumnHeaders) writer.field(name);
  writer.endRow();
  produce([&writer](const HabitraCSVBackupRow& row) { writeRow(writer, row); });
  writer.flush();
}

}  // namespace habitra
