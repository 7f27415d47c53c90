#include "orvane/analysis/programme_summary.h"

#include <algorithm>

#include "orvane/core/channel_order.h"

namespace orvane {

bool isMono(const std::optional<ChannelLayout>& layout, std::size_t channelCount) {
  if (channelCount != 1) return false;
  const auto labels =
      layout ? core::ChannelOrder::channelLabels(*layout) : std::vector<ChannelLabel>{};
  return labels.size() != 1 ||
         (labels.front() != ChannelLabel::lfe && labels.front() != ChannelLabel::lfe2);
}

std::optional<std::vector<std::string>> channelNames(const std::optional<ChannelLayout>& layout,
                                                     std::size_t channelCount) {
  if (isMono(layout, channelCount)) return std::vector<std::string>{"Mono"};
  if (layout) {
    auto names = core::ChannelOrder::displayShortNames(*layout);
    if (names.size() == channelCount) return names;
  }
  if (channelCount == 2) return std::vector<std::string>{"L", "R"};
  return std::nullopt;
}

std::optional<CorrelationSummary> audibleCorrelation(
    const OfflineAnalysisPipeline::Result& result) {
  constexpr float kAudibleLUFS = -70;  // the absolute gate of BS.1770-5
  const auto& curve = result.stereoWidthCurve;
  CorrelationSummary summary{.lowest = 1};
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < std::min(curve.size(), result.loudnessCurve.size()); ++i) {
    if (!(result.loudnessCurve[i].momentary > kAudibleLUFS)) continue;
    sum += static_cast<double>(curve[i].correlation);
    summary.lowest = std::min(summary.lowest, curve[i].correlation);
    ++count;
  }
  if (count == 0) return std::nullopt;
  summary.mean = static_cast<float>(sum / static_cast<double>(count));
  return summary;
}

}  // namespace orvane
