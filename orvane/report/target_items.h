#pragma once

#include "orvane/core/targets/loudness_target.h"
#include "orvane/core/targets/loudness_target_evaluator.h"
#include "orvane/report/orvane_report.h"

namespace orvane {

/// The report's figures that targets are judged on: those of the selection when there is one, else
/// those of the file. Only finite ones are present.
core::LoudnessTargetMeasurement targetMeasurement(const OrvaneReport& report);

/// A target as a report keeps it, with its verdict.
ReportLoudnessTargetItem targetItem(const core::LoudnessTarget& target,
                                    const core::LoudnessTargetMeasurement& measurement);

/// The target that the item was made from, told by the item alone.
core::LoudnessTarget rehydrateTarget(const ReportLoudnessTargetItem& item);

}  // namespace orvane
