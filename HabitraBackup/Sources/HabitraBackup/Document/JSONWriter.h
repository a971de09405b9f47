#pragma once

#include <HabitraBackup/Files/ByteStreams.h>
#include <HabitraModel/Store/StoredValues.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// Writes JSON as a stream, in UTF-8 without a byte-order mark. An object or list lies on one line or begins a new line
/// with each of its members; lines end in a line feed. What is no text (a NUL, bytes that are not UTF-8) becomes
/// U+FFFD. A text longer than document_values::longestText throws HabitraJSONError, since nobody would read it. One
/// writer belongs to one thread.
class JSONWriter {
 public:
  enum class Spread : bool { oneLine, lines };

  explicit JSONWriter(ByteSink sink) : sink_(std::move(sink)) {}

  void beginObject(Spread spread) { begin('{', spread); }
  void endObject() { end('}'); }
  void beginList(Spread spread) { begin('[', spread); }
  void endList() { end(']'); }

  /// The key of the next value. REQUIRES: it needs no escapes.
  void key(std::string_view name);

  void value(bool value);
  void value(std::int64_t value);
  void value(double value);  ///< in the fewest digits that read back. REQUIRES: finite
  void value(std::string_view text);
  void value(const Bytes& bytes);  ///< in Base64
  void value(qz::Moment moment);   ///< REQUIRES: document_values::isWritable
  void value(const qz::YYYYMMDD& day) { value(day.intValue()); }
  void value(const qz::UniqueID& identifier) { value(std::string_view(identifier.text())); }

  template <typename T>
  void member(std::string_view name, const T& held) {
    key(name);
    value(held);
  }

  /// Ends the text and hands everything on. REQUIRES: every object and list is ended.
  void finish();

 private:
  struct Open {
    Spread spread;
    bool isEmpty;
  };

  void begin(char bracket, Spread spread);
  void end(char bracket);
  /// Divides what comes from what came before.
  void separate();
  void newLine();
  void append(std::string_view text);

  ByteSink sink_;
  std::string buffer_;
  std::vector<Open> open_;
  bool isAfterKey_ = false;
};

}  // namespace habitra
