#pragma once

#include <HabitraCore/AutomaticTaskType/ScreenTimeSettings.h>
#include <QZHealthKit/QZHKQuery.h>
#include <QZHealthKit/QZHKSample.h>

#include <set>
#include <span>
#include <string>

/// How long a screen was used.
namespace habitra {

/// The sources of a type of usage (applications, sites, categories) that a selection names.
[[nodiscard]] std::set<std::string> selectedSources(const FamilyActivitySelection& selection, qz::QZHKObjectType type);

/// The seconds of use in a span. Applications add up, and so do sites and categories; but a site is used in a browser,
/// and a category holds applications: of what lies at one time only the kind that says most counts. Use within a sample
/// is taken to be spread evenly.
[[nodiscard]] double usedSeconds(const qz::QZHKSpan& span, std::span<const qz::QZHKSample> samples);

}  // namespace habitra
