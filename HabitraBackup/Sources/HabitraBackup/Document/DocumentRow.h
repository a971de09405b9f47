#pragma once

#include <HabitraBackup/Document/HabitraJSONRemarks.h>
#include <HabitraBackup/Document/JSONStream.h>
#include <HabitraBackup/Document/JSONWriter.h>
#include <HabitraModel/Store/EntityDescription.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string_view>

/// Rows of the store as members of an object, coded by what their entity's description says of each attribute. The
/// number of a row and the references between rows are no part of a document.
namespace habitra::document_row {

/// Writes the attributes as members of the object that is open: those that are not at their default (0, false, none),
/// and of these those that `isWritten` (asked by name) and a document can hold.
void write(JSONWriter& writer, const EntityDescription& entity, const void* row,
           const std::function<bool(std::string_view)>& isWritten = {});

/// Sets the attribute called `name` to what `json` says. Gives false when there is none of that name. Throws
/// HabitraJSONError for what it cannot hold. REQUIRES: `name` is the last step of `place`, or its `member`.
bool read(const EntityDescription& entity, void* row, std::string_view name, const nlohmann::json& json,
          const JSONPlace& place, std::string_view member = {});

/// The row that an object holds. Keys of no attribute are remarked.
void readAll(const EntityDescription& entity, void* row, const nlohmann::json& json, const JSONPlace& place,
             HabitraJSONRemarks& remarks);

template <typename Row>
[[nodiscard]] Row rowFrom(const nlohmann::json& json, const JSONPlace& place, HabitraJSONRemarks& remarks) {
  Row row;
  readAll(Row::description(), &row, json, place, remarks);
  return row;
}

}  // namespace habitra::document_row
