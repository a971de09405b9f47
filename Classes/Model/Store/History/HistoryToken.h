#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// How far somebody has read the history of a store: everything up to and with the transaction `sequence` of the store
/// that bears this identifier.
struct HistoryToken {
  std::string storeIdentifier;
  std::int64_t sequence = 0;

  /// "018D…-… 42", for key-value defaults.
  [[nodiscard]] std::string text() const;
  /// None for anything that text() does not give.
  [[nodiscard]] static std::optional<HistoryToken> fromText(std::string_view text);

  friend bool operator==(const HistoryToken&, const HistoryToken&) = default;
};

}  // namespace habitra
