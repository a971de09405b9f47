#pragma once

#include <string>

namespace habitra {

/// Who holds a lock (flock) on the open file, as a person would say it: "habitra (process 812)", several of them joined
/// by commas, "this program itself" for this process; "another program" when the system does not tell.
[[nodiscard]] std::string lockHolders(int descriptor);

}  // namespace habitra
