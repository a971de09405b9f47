#pragma once

#include <HabitraModel/Store/StoredValues.h>
#include <QZKit/Clock.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace habitra {

/// Small values by key that are kept outside the store: what a device remembers for itself, and what has to be known
/// before a store is opened. A suite of them is one file in the home, or memory alone.
///
///     const auto defaults = KeyValueDefaults::file(home / KeyValueDefaults::sharedFileName);
///     const bool cloudSync = defaults->get<bool>("dm.cloudSync").value_or(false);
///     defaults->update([](KeyValueDefaults::Values& values) { values["count"] = std::int64_t{1}; });
///
/// **Files**: every read looks at the file, so that it sees what other processes have written; it takes no lock, sees
/// the old or the new content whole, and makes nothing. Writers take turns, and a write is on the disk when it returns;
/// one that changes nothing writes nothing. A file that is damaged, or is none of our own, is a StoreError and left as
/// it is.
///
/// May be shared by any threads.
class KeyValueDefaults {
 public:
  /// The suite of this device alone, and the one shared by all programs of the home.
  static constexpr std::string_view standardFileName = "Habitra-Standard.json";
  static constexpr std::string_view sharedFileName = "Habitra-Shared.json";

  class Value;
  using Values = std::map<std::string, Value, std::less<>>;
  using AnyValue = std::variant<bool, std::int64_t, double, std::string, Bytes, qz::Moment, Values>;

  /// One value, with its kind: a bool is not the integer 1, nor is 1 the number 1.0. Numbers are finite and texts
  /// (keys, too) UTF-8; to keep anything else stops the program.
  class Value : public AnyValue {
   public:
    using AnyValue::AnyValue;

    /// The value if it is of that kind.
    template <typename T>
    [[nodiscard]] const T* as() const {
      return std::get_if<T>(static_cast<const AnyValue*>(this));
    }

    friend bool operator==(const Value& a, const Value& b) {
      return static_cast<const AnyValue&>(a) == static_cast<const AnyValue&>(b);
    }
  };

  /// The suite in a file, which is made, with its folder, when something is first written.
  [[nodiscard]] static std::shared_ptr<KeyValueDefaults> file(std::filesystem::path file);
  /// A suite that lives as long as this object.
  [[nodiscard]] static std::shared_ptr<KeyValueDefaults> inMemory();

  virtual ~KeyValueDefaults() = default;
  KeyValueDefaults(const KeyValueDefaults&) = delete;
  KeyValueDefaults& operator=(const KeyValueDefaults&) = delete;

  /// All values. Throws StoreError.
  [[nodiscard]] virtual Values values() const = 0;

  /// Reads the values, lets `change` change them and writes them, with nobody else writing in between; when `change`
  /// throws, nothing is written. `change` must not use these defaults. Throws StoreError.
  virtual void update(const std::function<void(Values&)>& change) = 0;

  /// The value of `key`; none when there is none or it is of another kind. Throws StoreError.
  template <typename T>
  [[nodiscard]] std::optional<T> get(std::string_view key) const {
    const Values all = values();
    const auto found = all.find(key);
    const T* value = found == all.end() ? nullptr : found->second.template as<T>();
    return value == nullptr ? std::nullopt : std::optional<T>(*value);
  }

  /// Throws StoreError, as does remove().
  void set(std::string_view key, Value value);
  void remove(std::string_view key);

  /// In order.
  [[nodiscard]] std::vector<std::string> keys() const;

 protected:
  KeyValueDefaults() = default;
};

}  // namespace habitra
