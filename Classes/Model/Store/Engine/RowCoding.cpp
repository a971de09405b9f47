#include <HabitraModel/Store/Engine/Field.h>
#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/OwnedObject.h>
#include <QZKit/Trap.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace habitra {

namespace {

enum class Form : std::uint8_t { integer = 0, real = 1, text = 2, bytes = 3 };

class Writer {
 public:
  explicit Writer(Bytes& out) : out_(out) {}

  void header(std::size_t position, Form form) {
    out_.push_back(static_cast<std::uint8_t>(position << 2 | static_cast<std::size_t>(form)));
  }
  void natural(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7) out_.push_back(static_cast<std::uint8_t>(value | 0x80));
    out_.push_back(static_cast<std::uint8_t>(value));
  }
  void integer(std::int64_t value) {
    natural(static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63));
  }
  void real(double value) {
    qz::require(std::isfinite(value), "a number to be stored is not finite");
    const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
    for (int shift = 0; shift < 64; shift += 8) out_.push_back(static_cast<std::uint8_t>(bits >> shift));
  }
  void content(const void* data, std::size_t size) {
    natural(size);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    out_.insert(out_.end(), bytes, bytes + size);
  }

 private:
  Bytes& out_;
};

class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> encoded) : rest_(encoded) {}

  [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }

  [[nodiscard]] std::optional<std::uint8_t> byte() {
    if (rest_.empty()) return std::nullopt;
    const std::uint8_t value = rest_.front();
    rest_ = rest_.subspan(1);
    return value;
  }
  [[nodiscard]] std::optional<std::uint64_t> natural() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const auto next = byte();
      if (!next) return std::nullopt;
      value |= static_cast<std::uint64_t>(*next & 0x7f) << shift;
      if (*next < 0x80) return value;
    }
    return std::nullopt;
  }
  [[nodiscard]] std::optional<std::int64_t> integer() {
    const auto value = natural();
    if (!value) return std::nullopt;
    return static_cast<std::int64_t>(*value >> 1) ^ -static_cast<std::int64_t>(*value & 1);
  }
  [[nodiscard]] std::optional<double> real() {
    std::uint64_t bits = 0;
    for (unsigned shift = 0; shift < 64; shift += 8) {
      const auto next = byte();
      if (!next) return std::nullopt;
      bits |= static_cast<std::uint64_t>(*next) << shift;
    }
    return std::bit_cast<double>(bits);
  }
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> content() {
    const auto size = natural();
    if (!size || *size > rest_.size()) return std::nullopt;
    const auto value = rest_.first(static_cast<std::size_t>(*size));
    rest_ = rest_.subspan(value.size());
    return value;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

void write(Writer& writer, std::size_t position, bool value) {
  writer.header(position, Form::integer);
  writer.integer(value ? 1 : 0);
}
template <std::signed_integral T>
void write(Writer& writer, std::size_t position, T value) {
  writer.header(position, Form::integer);
  writer.integer(value);
}
void write(Writer& writer, std::size_t position, ObjectID value) { write(writer, position, rawValue(value)); }
void write(Writer& writer, std::size_t position, qz::Moment value) {
  write(writer, position, std::int64_t{value.time_since_epoch().count()});
}
void write(Writer& writer, std::size_t position, double value) {
  writer.header(position, Form::real);
  writer.real(value);
}
void write(Writer& writer, std::size_t position, const std::string& value) {
  writer.header(position, Form::text);
  writer.content(value.data(), value.size());
}
void write(Writer& writer, std::size_t position, const Bytes& value) {
  writer.header(position, Form::bytes);
  writer.content(value.data(), value.size());
}

[[nodiscard]] bool read(Reader& reader, Form form, bool& value) {
  const auto integer = form == Form::integer ? reader.integer() : std::nullopt;
  value = integer.value_or(0) != 0;
  return integer && (*integer == 0 || *integer == 1);
}
template <std::signed_integral T>
[[nodiscard]] bool read(Reader& reader, Form form, T& value) {
  const auto integer = form == Form::integer ? reader.integer() : std::nullopt;
  if (!integer || !std::in_range<T>(*integer)) return false;
  value = static_cast<T>(*integer);
  return true;
}
[[nodiscard]] bool read(Reader& reader, Form form, ObjectID& value) {
  std::int64_t raw = 0;
  const bool isRead = read(reader, form, raw);
  value = ObjectID{raw};
  return isRead;
}
[[nodiscard]] bool read(Reader& reader, Form form, qz::Moment& value) {
  std::int64_t microseconds = 0;
  const bool isRead = read(reader, form, microseconds);
  value = qz::Moment(std::chrono::microseconds(microseconds));
  return isRead;
}
[[nodiscard]] bool read(Reader& reader, Form form, double& value) {
  const auto real = form == Form::real ? reader.real() : std::nullopt;
  value = real.value_or(0);
  return real && std::isfinite(*real);
}
[[nodiscard]] bool read(Reader& reader, Form form, std::string& value) {
  const auto content = form == Form::text ? reader.content() : std::nullopt;
  if (content) value.assign(content->begin(), content->end());
  return content.has_value();
}
[[nodiscard]] bool read(Reader& reader, Form form, Bytes& value) {
  const auto content = form == Form::bytes ? reader.content() : std::nullopt;
  if (content) value.assign(content->begin(), content->end());
  return content.has_value();
}

}  // namespace

AttributeSet encodeAttributes(const EntityDescription& entity, const void* object, AttributeSet which, Bytes& out) {
  Writer writer(out);
  AttributeSet written;
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
    if (!which.contains(i)) continue;
    visitField(entity.attributes[i], object, [&]<typename T>(const T& value) {
      if (isAtDefault(value)) return;
      written.insert(i);
      if constexpr (isOptionalField<T>)
        write(writer, i, *value);
      else
        write(writer, i, value);
    });
  }
  return written;
}

bool decodeAttributes(const EntityDescription& entity, std::span<const std::uint8_t> encoded, AttributeSet which,
                      void* object) {
  for (std::size_t i = 0; i < entity.attributes.size(); ++i)
    if (which.contains(i)) visitField(entity.attributes[i], object, [](auto& value) { setToDefault(value); });
  const OwnedObject ignored(entity);
  Reader reader(encoded);
  while (!reader.isAtEnd()) {
    const std::uint8_t header = *reader.byte();
    const std::size_t position = header >> 2;
    if (position >= entity.attributes.size()) return false;
    const auto form = static_cast<Form>(header & 3);
    // What was not asked for is read as well, to come to what follows it.
    void* const target = which.contains(position) ? object : ignored.get();
    const bool isRead = visitField(entity.attributes[position], target, [&]<typename T>(T& value) {
      if constexpr (isOptionalField<T>)
        return read(reader, form, value.emplace());
      else
        return read(reader, form, value);
    });
    if (!isRead) return false;
  }
  return true;
}

std::int64_t rowChecksum(const EntityDescription& entity, const void* object) {
  thread_local Bytes buffer;
  buffer.clear();
  Writer writer(buffer);
  writer.natural(static_cast<std::uint64_t>(entity.number));
  writer.integer(rawValue(entity.objectID(const_cast<void*>(object))));
  encodeAttributes(entity, object, allAttributes(entity), buffer);
  return static_cast<std::int64_t>(XXH3_64bits(buffer.data(), buffer.size()));
}

std::int64_t checkpointChecksum(ObjectID task, const Checkpoint& checkpoint) {
  Bytes buffer;
  Writer writer(buffer);
  writer.integer(rawValue(task));
  writer.integer(checkpoint.closedThrough);
  writer.integer(checkpoint.fingerprint);
  writer.content(checkpoint.content.data(), checkpoint.content.size());
  return static_cast<std::int64_t>(XXH3_64bits(buffer.data(), buffer.size()));
}

AttributeSet differences(const EntityDescription& entity, const void* a, const void* b) {
  AttributeSet different;
  for (std::size_t i = 0; i < entity.attributes.size(); ++i)
    if (!entity.attributes[i].isSame(a, b)) different.insert(i);
  return different;
}

AttributeSet attributesWithValues(const EntityDescription& entity, const void* object) {
  AttributeSet found;
  for (std::size_t i = 0; i < entity.attributes.size(); ++i)
    if (!visitField(entity.attributes[i], object, [](const auto& value) { return isAtDefault(value); }))
      found.insert(i);
  return found;
}

void assignAttributes(const EntityDescription& entity, AttributeSet which, void* object, void* from) {
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
    if (!which.contains(i)) continue;
    const AttributeDescription& attribute = entity.attributes[i];
    visitField(attribute, object, [&]<typename T>(T& value) { value = *static_cast<const T*>(attribute.field(from)); });
  }
}

AttributeSet allAttributes(const EntityDescription& entity) {
  return AttributeSet(entity.attributes.size() == 64 ? ~std::uint64_t{0}
                                                     : (std::uint64_t{1} << entity.attributes.size()) - 1);
}

}  // namespace habitra
