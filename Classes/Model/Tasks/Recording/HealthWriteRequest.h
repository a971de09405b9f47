#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <QZHealthKit/QZHKSample.h>

#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// The source of the samples that are written for entries.
inline constexpr std::string_view healthSampleSource = "habitra";

/// What the health store is to be told of an entry: the sample, whose identifier is made with the request, so that a
/// write that is repeated after a crash counts once.
struct HealthWriteRequest {
  /// From the first moment on, up to the second.
  struct Span {
    qz::Moment beginning;
    qz::Moment end;
  };

  qz::QZHKSample sample;

  /// Writes it into a row: `type` is the raw value of the object type, `data` its coded form (JSON).
  void writeTo(HealthKitRequestEntity& row) const;
  /// None where the row does not hold one.
  [[nodiscard]] static std::optional<HealthWriteRequest> of(const HealthKitRequestEntity& row);
};

/// What a task of this type records of something that ended at `end`. `amount` is in the unit of the type; `duration`,
/// in seconds, is how long it took. It is no part of what came before `period`: what would have begun earlier begins
/// with it, and ends with it at the latest. None where the type writes nothing, or where nothing is left to say.
[[nodiscard]] std::optional<HealthWriteRequest> healthWriteRequest(const AutomaticTaskType& type,
                                                                   const HealthWriteRequest::Span& period,
                                                                   qz::Moment end, double amount, double duration,
                                                                   const std::optional<std::string>& device,
                                                                   const std::optional<qz::UniqueID>& task);

}  // namespace habitra
