#pragma once

#include <HabitraModel/Store/Engine/Field.h>
#include <HabitraModel/Store/ObjectID.h>

#include <rapidcheck.h>

#include <cmath>
#include <string>
#include <type_traits>

#include "HabitraCore/NotificationGenerators.h"

namespace habitra {

// Rows that hold anything their columns can, often nearly what the mappings write there.

inline void setAny(bool& value) { value = anyBool(); }
template <std::signed_integral T>
void setAny(T& value) {
  value = anyBool() ? *rc::gen::arbitrary<T>() : static_cast<T>(qz::between(-2, 127));
  if constexpr (sizeof(T) >= 4)
    if (anyBool()) value = static_cast<T>(anyCommonDay().intValue());
}
inline void setAny(double& value) {
  value = *rc::gen::arbitrary<double>();
  if (!std::isfinite(value)) value = 0;
}
inline void setAny(std::string& value) {
  static const std::vector<std::string> texts{"",      "d",          "w",      "tod",       "loc",
                                              "none",  "incomplete", "custom", "automatic", "bell",
                                              "owner", "0,2",        "3,-1,",  ",",         "1,,2",
                                              "1 ,2",  "0x1",        "timer",  "water",     "99999999999999999999",
                                              "yes",   "2024-01-01", "TMP",    "viewer",    "a,b,c,d,e,f"};
  value = anyBool() ? *rc::gen::elementOf(texts) : *rc::gen::arbitrary<std::string>();
  if (qz::between(0, 5) == 0) value = anyID().text();
}
inline void setAny(Bytes& value) {
  static const std::vector<std::string> texts{"",
                                              "{}",
                                              "[]",
                                              "null",
                                              "1e999",
                                              R"({"latitude":1,"longitude":2,"radius":3})",
                                              R"({"latitude":1,"longitude":2,"radius":3,"notifyOnEntry":1})",
                                              R"({"version":1,"summary":{}})",
                                              R"({"version":2,"summary":7})",
                                              R"([{"identifier":"a","role":"king"},{"name":"b"},3])",
                                              "{\"title\":\"\xff\"}"};
  const std::string text = *rc::gen::elementOf(texts);
  value = anyBool() ? Bytes(text.begin(), text.end()) : *rc::gen::arbitrary<Bytes>();
}
inline void setAny(qz::Moment& value) {
  value = qz::Moment(std::chrono::microseconds(*rc::gen::arbitrary<std::int64_t>()));
}

template <typename T>
T anyRow() {
  T row;
  for (const AttributeDescription& attribute : T::description().attributes)
    visitField(attribute, &row, []<typename Field>(Field& value) {
      if constexpr (std::is_same_v<Field, ObjectID>) {
        value = ObjectID{qz::between(0, 9)};
      } else if constexpr (isOptionalField<Field>) {
        if (qz::between(0, 4) > 0) setAny(value.emplace());
      } else {
        setAny(value);
      }
    });
  return row;
}

}  // namespace habitra
