#pragma once

#include <HabitraBackup/Files/ByteStreams.h>
#include <HabitraModel/Health/SampleStore.h>
#include <QZHealthKit/QZHKSample.h>

#include <array>
#include <filesystem>
#include <functional>
#include <istream>
#include <string_view>

namespace habitra {

/// The headers of the columns of health samples.
inline constexpr std::array<std::string_view, 6> healthSampleHeaders{"type", "start", "end", "value", "unit", "source"};

/// Turns the text of health samples into samples, each with an identifier that follows from all that its row says and
/// from the number of equal rows before it: the same rows are the same samples however often they are read.
///
///     type    a type by its name, stepCount
///     start   a date-time of RFC 3339 with any offset
///     end     likewise; empty: the moment of the start
///     value   quantity: a decimal number, 1.5
///             sleep:    inBed, asleep, awake, core, deep, rem
///             workout:  the activity, and what it took where that is known: "running", "running 300 kcal 5.2 km"
///             else      empty
///     unit    quantity: a unit that measures the type, by its symbol: km; else empty
///     source  the program that recorded it; of use, the application, site or category that was used
///
/// All six columns are needed, in any order; others are ignored. What cannot be a sample is refused with a CSVError
/// that names line and column, what was found and what was expected. Stateless: may be used from any thread.
class HealthSampleCSVDecoder {
 public:
  using Handler = std::function<void(const qz::QZHKSample&)>;

  /// Reads `source` to its end; what it or `onSample` throws reaches the caller.
  void decode(const ByteSource& source, const Handler& onSample) const;
};

// Both bring in all samples of a text or, when they throw, none; the same text twice changes nothing. They throw as
// readFile() and readStream() do, and QZHealthStoreError.

SampleStore::Saved importHealthSamples(const std::filesystem::path& file, SampleStore& store);
/// `name` is what messages call the stream ("standard input").
SampleStore::Saved importHealthSamples(std::istream& stream, std::string_view name, SampleStore& store);

}  // namespace habitra
