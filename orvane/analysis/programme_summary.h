#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/platform/channel_layout.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Whether a programme has one channel, of whatever position; an LFE channel alone is no programme.
ORVANE_API bool isMono(const std::optional<ChannelLayout>& layout, std::size_t channelCount);

/// What the channels of a file are called: "Mono", those of the layout by their short names where
/// it lists them all, else "L" and "R"; absent for more channels of which nothing is known.
ORVANE_API std::optional<std::vector<std::string>> channelNames(
    const std::optional<ChannelLayout>& layout, std::size_t channelCount);

/// The stereo correlation of a programme in two numbers, −1 … +1.
struct CorrelationSummary {
  float mean = 0;
  float lowest = 0;

  bool operator==(const CorrelationSummary&) const = default;
};

/// Of the windows that can be heard: momentary loudness above −70 LUFS. Absent without any.
ORVANE_API std::optional<CorrelationSummary> audibleCorrelation(
    const OfflineAnalysisPipeline::Result& result);

}  // namespace orvane
