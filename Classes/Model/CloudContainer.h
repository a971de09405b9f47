#pragma once

#include <functional>
#include <memory>
#include <string>

namespace habitra {

/// Whether the person's account lets the store be mirrored.
enum class CloudAccountStatus {
  couldNotDetermine,
  available,
  restricted,  ///< somebody who manages the device does not allow it
  noAccount,
  temporarilyUnavailable,
};

/// The private cloud database of one person, as far as the data manager needs it. A link to a cloud implements it;
/// while none is configured there is none.
///
/// May be called from any thread.
class CloudContainer {
 public:
  virtual ~CloudContainer() = default;

  [[nodiscard]] virtual std::string identifier() const = 0;
  /// May take as long as a network does.
  [[nodiscard]] virtual CloudAccountStatus accountStatus() = 0;
  /// Calls `changed` after each change of the account until the token is let go of.
  [[nodiscard]] virtual std::shared_ptr<void> observeAccount(std::function<void()> changed) = 0;
};

}  // namespace habitra
