#pragma once

#include <HabitraModel/Mapping/StoredIdentifier.h>

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// Which row of a document is which of a store. For the importer.
namespace habitra {

template <typename Row>
concept Identified = requires(const Row& row) {
  row.uniqueId;
};

template <typename Row>
[[nodiscard]] std::optional<std::string> usualIdentifier(const Row& row) {
  if constexpr (Identified<Row>) {
    if (row.uniqueId) return usualForm(*row.uniqueId);
  }
  return std::nullopt;
}

/// The stored rows that rows of a document are: those with their identifiers, else those with equal content by
/// `contentOf`, whose result is ordered. Each stored row is the partner of one at most.
template <typename Row>
class RowPartners {
 public:
  template <typename ContentOf>
  RowPartners(std::span<const Row> wanted, std::vector<Row*> stored, const ContentOf& contentOf)
      : left_(std::move(stored)), partners_(wanted.size()) {
    if constexpr (Identified<Row>) pair(wanted, &usualIdentifier<Row>);
    pair(wanted, [&contentOf](const Row& row) { return std::make_optional(contentOf(row)); });
    std::erase(left_, nullptr);
  }

  /// The partner of the document's row at `index`, or null.
  [[nodiscard]] Row* ofWanted(std::size_t index) const { return partners_[index]; }
  /// The stored rows that are nobody's partners.
  [[nodiscard]] const std::vector<Row*>& withoutPartner() const { return left_; }

 private:
  template <typename KeyOf>
  void pair(std::span<const Row> wanted, const KeyOf& keyOf) {
    std::multimap<typename decltype(keyOf(wanted[0]))::value_type, std::size_t> free;
    for (std::size_t index = 0; index < left_.size(); ++index) {
      if (left_[index] == nullptr) continue;
      if (auto key = keyOf(*left_[index])) free.emplace(*std::move(key), index);
    }
    for (std::size_t index = 0; index < wanted.size() && !free.empty(); ++index) {
      if (partners_[index] != nullptr) continue;
      const auto key = keyOf(wanted[index]);
      if (!key) continue;
      const auto found = free.lower_bound(*key);
      if (found == free.end() || found->first != *key) continue;
      partners_[index] = std::exchange(left_[found->second], nullptr);
      free.erase(found);
    }
  }

  std::vector<Row*> left_;
  std::vector<Row*> partners_;
};

/// Whether a row of the store bears the identifier, in whichever letters.
template <Identified Row, typename Context>
[[nodiscard]] bool isIdentifierTaken(Context& context, const std::string& identifier) {
  const auto id = qz::UniqueID::fromText(identifier);
  if (!id) return context.template find<Row>("uniqueId", identifier) != nullptr;
  for (const std::string& form : storedForms(*id))
    if (context.template find<Row>("uniqueId", form) != nullptr) return true;
  return false;
}

}  // namespace habitra
