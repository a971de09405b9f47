#include <HabitraModel/Tasks/Processing/TaskProcessorClock.h>
#include <QZDateTime/ISO8601.h>
#include <QZLog/Log.h>

#include <chrono>
#include <set>

namespace habitra {
namespace {

/// Clocks are put right by seconds, and wrong zones shift them by hours; that is nothing to stop for.
constexpr std::chrono::days tolerance{1};

using Days = std::set<std::chrono::sys_days>;

/// The days on which transactions were written that a clock at `latest` could not have written yet, and those on which
/// others were since the last of them.
struct WrittenDays {
  Days doubted;
  Days since;
};

WrittenDays writtenDays(StoreContext& context, qz::Moment latest) {
  WrittenDays days;
  context.readTransactions(0, [&](const StoredTransaction& transaction) {
    const auto day = std::chrono::floor<std::chrono::days>(transaction.moment);
    if (transaction.moment <= latest) {
      days.since.insert(day);
    } else {
      days.doubted.insert(day);
      days.since.clear();
    }
  });
  return days;
}

}  // namespace

bool clockCanBeRight(StoreContext& context, qz::Moment now) {
  const auto newest = context.newestTransactionMoment();
  if (!newest || now >= *newest - tolerance) return true;
  const WrittenDays days = writtenDays(context, now + tolerance);
  if (days.since.size() > days.doubted.size()) return true;
  qz::log::warning("The clock says {}, but the store was last written at {}; nothing is filled in", qz::iso8601(now),
                   qz::iso8601(*newest));
  return false;
}

}  // namespace habitra
