#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>

namespace habitra {

/// The days of a task's log that hold no entry, for somebody who writes day after day: it looks further ahead the
/// longer the run of empty days is, and so seldom. Nobody else may write to the log of the task meanwhile.
///
/// Belongs to the queue of its context, which must live longer.
class EmptyDays {
 public:
  EmptyDays(StoreContext& context, ObjectID task) : context_(context), task_(task) {}

  /// Whether the days from `first` to `last` are empty.
  [[nodiscard]] bool hold(qz::YYYYMMDD first, qz::YYYYMMDD last);
  /// Days up to this one may hold entries now.
  void endAt(qz::YYYYMMDD day);

 private:
  struct Span {
    qz::YYYYMMDD first;
    qz::YYYYMMDD last;
  };
  [[nodiscard]] bool isEmpty(const Span& span);

  StoreContext& context_;
  const ObjectID task_;
  std::optional<Span> known_;  ///< empty
  std::int64_t daysAhead_ = 0;
};

}  // namespace habitra
