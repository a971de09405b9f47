#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Files/ByteStreams.h>

#include <memory>

namespace habitra {

class JSONWriter;

/// Writes a backup document as a stream, one task at a time: begin(), task() for each, end(). The same content gives
/// the same bytes. What a document cannot hold, as a damaged row may have it, is left out: days that the calendar does
/// not have, moments outside the years 0 to 9999, numbers that are not finite, identifiers that are no UUID, and
/// periods that are not whole; bytes that are no text become U+FFFD. A text of more than 16 MiB throws
/// HabitraJSONError. What the sink throws reaches the caller. One encoder writes one document and belongs to one
/// thread.
class HabitraJSONEncoder {
 public:
  explicit HabitraJSONEncoder(ByteSink sink);
  ~HabitraJSONEncoder();
  HabitraJSONEncoder(const HabitraJSONEncoder&) = delete;
  HabitraJSONEncoder& operator=(const HabitraJSONEncoder&) = delete;

  /// Everything of the document but its tasks.
  void begin(const HabitraJSONBackup& header);
  void task(const HabitraJSONBackupTask& task);
  /// Hands on what has been written so far.
  void end();

 private:
  std::unique_ptr<JSONWriter> writer_;
};

/// Writes a whole document.
void encode(const HabitraJSONBackup& document, const ByteSink& sink);

}  // namespace habitra
