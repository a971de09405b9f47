#include <HabitraBackup/Document/DocumentRow.h>
#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/JSONValues.h>
#include <HabitraModel/Store/Engine/Field.h>

#include <cmath>
#include <limits>
#include <type_traits>

namespace habitra::document_row {

namespace {

template <std::signed_integral T>
void writeMember(JSONWriter& writer, const AttributeDescription& attribute, const T& value) {
  if (document_values::isDay(attribute) && !document_values::day(value)) return;
  writer.member(attribute.name, std::int64_t{value});
}
void writeMember(JSONWriter& writer, const AttributeDescription& attribute, const bool& value) {
  writer.member(attribute.name, value);
}
void writeMember(JSONWriter& writer, const AttributeDescription& attribute, const double& value) {
  if (std::isfinite(value)) writer.member(attribute.name, value);
}
void writeMember(JSONWriter& writer, const AttributeDescription& attribute, const std::string& value) {
  if (!document_values::isIdentifier(attribute)) {
    writer.member(attribute.name, std::string_view(value));
  } else if (const auto identifier = qz::UniqueID::fromText(value)) {
    writer.member(attribute.name, *identifier);
  }
}
void writeMember(JSONWriter& writer, const AttributeDescription& attribute, const Bytes& value) {
  writer.member(attribute.name, value);
}
void writeMember(JSONWriter& writer, const AttributeDescription& attribute, const qz::Moment& value) {
  if (document_values::isWritable(value)) writer.member(attribute.name, value);
}

template <std::signed_integral T>
void readValue(const JSONFound& found, const AttributeDescription& attribute, T& value) {
  using Limits = std::numeric_limits<T>;
  value = static_cast<T>(document_values::isDay(attribute) ? found.day().intValue()
                                                           : found.wholeNumber(Limits::min(), Limits::max()));
}
void readValue(const JSONFound& found, const AttributeDescription&, bool& value) { value = found.truth(); }
void readValue(const JSONFound& found, const AttributeDescription&, double& value) { value = found.number(); }
void readValue(const JSONFound& found, const AttributeDescription& attribute, std::string& value) {
  value = document_values::isIdentifier(attribute) ? found.identifier().text() : found.text();
}
void readValue(const JSONFound& found, const AttributeDescription&, Bytes& value) { value = found.bytes(); }
void readValue(const JSONFound& found, const AttributeDescription&, qz::Moment& value) { value = found.moment(); }

}  // namespace

void write(JSONWriter& writer, const EntityDescription& entity, const void* row,
           const std::function<bool(std::string_view)>& isWritten) {
  for (const AttributeDescription& attribute : entity.attributes) {
    if (attribute.type == StoredType::reference || (isWritten && !isWritten(attribute.name))) continue;
    visitField(attribute, row, [&]<typename Field>(const Field& value) {
      if constexpr (!std::is_same_v<Field, ObjectID>) {
        if (isAtDefault(value)) return;
        if constexpr (isOptionalField<Field>) {
          writeMember(writer, attribute, *value);
        } else {
          writeMember(writer, attribute, value);
        }
      }
    });
  }
}

bool read(const EntityDescription& entity, void* row, std::string_view name, const nlohmann::json& json,
          const JSONPlace& place, std::string_view member) {
  const auto position = entity.position(name);
  if (!position || entity.attributes[*position].type == StoredType::reference) return false;
  const AttributeDescription& attribute = entity.attributes[*position];
  const JSONFound found{json, place, member};
  visitField(attribute, row, [&]<typename Field>(Field& value) {
    if constexpr (isOptionalField<Field>) {
      readValue(found, attribute, value.emplace());
    } else if constexpr (!std::is_same_v<Field, ObjectID>) {
      readValue(found, attribute, value);
    }
  });
  return true;
}

void readAll(const EntityDescription& entity, void* row, const nlohmann::json& json, const JSONPlace& place,
             HabitraJSONRemarks& remarks) {
  for (const auto& [name, value] : JSONFound{json, place}.object().items())
    if (!read(entity, row, name, value, place, name)) remarks.addUnknownKey(place.kind(name));
}

}  // namespace habitra::document_row
