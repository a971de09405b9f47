#pragma once

#include <QZDateTime/YYYYMMDD.h>

#include <cstddef>
#include <vector>

namespace habitra {

/// Which of the backups that were made day by day are kept: the newest of the last days, the newest of each of the last
/// weeks (which begin on Monday) and of each of the last months for which there are any. Days without a backup use up
/// nothing, so somebody who comes back after a year still finds all of them.
struct BackupRotation {
  std::size_t days = 12;
  std::size_t weeks = 10;
  std::size_t months = 9;

  /// Those of the days on which backups were made that are not kept, ascending. A backup that bears a day after
  /// `today`, made when the clock was wrong, is neither counted nor given; nor is the newest up to today, whatever the
  /// numbers. Pure; safe from any thread.
  [[nodiscard]] std::vector<qz::YYYYMMDD> outdated(std::vector<qz::YYYYMMDD> made, qz::YYYYMMDD today) const;
};

}  // namespace habitra
