#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <string>
#include <string_view>
#include <utility>

namespace habitra {

/// Writes comma-separated text in the form that CSVReader reads: UTF-8 without a byte-order mark, rows that end in a
/// line feed, and quotes only around fields that hold a comma, a quote, a carriage return or a line feed. What a text
/// file cannot hold (a NUL, bytes that are not UTF-8) is written as U+FFFD. One writer belongs to one thread.
class CSVWriter {
 public:
  explicit CSVWriter(ByteSink sink) : sink_(std::move(sink)) {}

  /// Adds a field to the row.
  void field(std::string_view text);
  void endRow();
  /// Hands on what has been written so far. REQUIRES: called after the last row; nothing is handed on without it.
  void flush();

 private:
  ByteSink sink_;
  std::string buffer_;
  bool isRowBegun_ = false;
};

}  // namespace habitra
