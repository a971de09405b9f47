#pragma once

#include <QZDateTime/DecodingError.h>

#include <nlohmann/json.hpp>
#include <string>

namespace habitra {

/// What the reader of a coded value complains of; nothing when it reads it.
template <typename T>
std::string complaint(const nlohmann::json& json) {
  try {
    static_cast<void>(json.get<T>());
  } catch (const qz::DecodingError& error) {
    return error.what();
  }
  return {};
}

}  // namespace habitra
