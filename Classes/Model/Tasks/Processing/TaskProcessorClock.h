#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <QZKit/Clock.h>

namespace habitra {

/// Whether a clock that says `now` can be right, going by the moments at which the store was written to. Filling in or
/// deleting by a clock that is wrong could cost what a person recorded.
///
/// A clock that is no more than a day behind every transaction can be. One that is further behind contradicts the
/// transactions that were written at later moments, and one of the two is wrong. These are the wrong ones once they
/// have been outlived: when, since the last of them, the store has been written to on more different days, none of
/// them doubted, than they lie on themselves. So a program that ran for an hour under a clock set to 2038 holds passes
/// up for two days of use; and a clock that fell back to 1970, or by two years, is not believed however often somebody
/// records by it within a day, because it contradicts all the days of the real history.
///
/// Nothing is written. Reads history only where the clock is behind.
[[nodiscard]] bool clockCanBeRight(StoreContext& context, qz::Moment now);

}  // namespace habitra
