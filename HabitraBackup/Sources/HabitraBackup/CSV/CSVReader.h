#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

namespace habitra {

/// Reads comma-separated text, piece by piece, without holding more of it than one row.
///
///     text   = [BOM] header *(end row) *end
///     header = row                              ; names the columns
///     row    = field *("," field)               ; as many fields as the header
///     field  = plain / <"> *(any / <"><">) <">  ; blanks belong to the field
///     plain  = *(any but comma, quote, CR, LF)
///     any    = a character of UTF-8 but NUL
///     end    = LF / CR LF
///
/// Empty lines may stand at the end of the text only. Anything else is refused with a CSVError, after the rows before
/// it were delivered. One reader reads one text and belongs to one thread.
class CSVReader {
 public:
  /// Who takes the rows. What is thrown here ends the reading and reaches the caller of feed() or finish().
  class Handler {
   public:
    virtual ~Handler() = default;
    /// The names of the columns; called once, before any row.
    virtual void header(std::size_t line, std::span<const std::string_view> names) = 0;
    /// The fields of a row, valid during the call; `line` is the physical line on which the row starts.
    virtual void row(std::size_t line, std::span<const std::string_view> fields) = 0;
  };

  /// A field may be this long, in bytes; an opening quote that is never closed is noticed there at the latest.
  static constexpr std::size_t longestField = std::size_t{16} << 20U;

  /// REQUIRES: `handler` outlives the reader.
  explicit CSVReader(Handler& handler);
  ~CSVReader();
  CSVReader(const CSVReader&) = delete;
  CSVReader& operator=(const CSVReader&) = delete;

  /// Takes the next piece of the text, cut anywhere.
  void feed(std::string_view piece);
  /// Says that the text has ended. A text without a header is refused.
  void finish();

 private:
  class Parser;
  std::unique_ptr<Parser> parser_;
};

/// Reads `source` to its end; what it or the handler throws reaches the caller.
void readCSV(const ByteSource& source, CSVReader::Handler& handler);

}  // namespace habitra
