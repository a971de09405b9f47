#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// Whose health data count for an automatic task. defaultDataSource() (AutomaticTaskType.h) says what counts when
/// nobody chose.
enum class DataSource : std::uint8_t {
  currentTask,  ///< only what was written for this task
  allData,      ///< everything, whoever wrote it
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::DataSource> {
  using T = habitra::DataSource;
  static constexpr std::array<RawValueRow<T, std::string_view>, 2> rows{{
      {T::currentTask, "curr", "currentTask"},
      {T::allData, "all", "allData"},
  }};
};
