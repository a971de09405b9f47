#pragma once

#include <QZLog/Log.h>

#include <exception>
#include <utility>

namespace habitra {

/// Does a part of the work without which the rest is still right; what it fails with is logged after `what`.
template <typename Work>
void attempt(const char* what, Work&& work) noexcept {
  try {
    std::forward<Work>(work)();
  } catch (const std::exception& error) {
    qz::log::warning("{}: {}", what, error.what());
  }
}

}  // namespace habitra
