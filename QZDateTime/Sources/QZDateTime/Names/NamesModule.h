#pragma once

#include <QZDateTime/Names/NameSource.h>

#include <memory>
#include <string>

namespace qz {

/// The names of a locale ("de_AT.UTF-8"). For one that names a language the first call opens the names module,
/// libQZDateTimeNames.so in the folder "../lib" beside the running program, and keeps it; where that fails, and for "",
/// "C" and "POSIX", the names are English. Never null. May be called from any thread.
[[nodiscard]] std::unique_ptr<const NameSource> nameSource(const std::string& locale);

}  // namespace qz
