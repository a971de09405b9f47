#pragma once

#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMM.h>
#include <QZDateTime/YYYYMMDD.h>

#include <ostream>

/// How values show in a failed expectation.
namespace qz {

inline std::ostream& operator<<(std::ostream& out, const YYYYMMDD& day) { return out << day.debugDescription(); }
inline std::ostream& operator<<(std::ostream& out, const YYYYMM& month) { return out << month.debugDescription(); }
inline std::ostream& operator<<(std::ostream& out, const HHMMSS& time) { return out << time.debugDescription(); }
inline std::ostream& operator<<(std::ostream& out, DayOfWeek day) { return out << "weekday " << day.rawValue(); }

}  // namespace qz
