#include "cli/commands/measured_file.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cli/output/codec_text.h"
#include "cli/output/number_text.h"
#include "orvane/analysis/programme_summary.h"
#include "orvane/core/loudness/loudness_grid.h"

namespace orvane::cli {
namespace {

/// Pairs in the order of their first channel, as the channels that are all alike.
std::vector<std::vector<std::int64_t>> groupsOf(
    const std::vector<ProgrammeQuality::ChannelPair>& pairs) {
  std::vector<std::vector<std::int64_t>> groups;
  const auto holds = [](const std::vector<std::int64_t>& group, std::int64_t channel) {
    return std::find(group.begin(), group.end(), channel) != group.end();
  };
  for (const auto& pair : pairs) {
    const auto group = std::find_if(groups.begin(), groups.end(),
                                    [&](const auto& each) { return holds(each, pair.first); });
    if (group == groups.end())
      groups.push_back({pair.first, pair.second});
    else if (!holds(*group, pair.second))
      group->push_back(pair.second);
  }
  return groups;
}

}  // namespace

std::string encodingText(const AudioFileIdentity& identity, int sourceBitDepth) {
  std::string text = codecText(identity);
  if (!identity.pcmEncoding && sourceBitDepth > 0)
    text += ", " + std::to_string(sourceBitDepth) + "-bit";
  return text;
}

std::vector<std::string> shownChannelNames(const std::optional<ChannelLayout>& layout,
                                           std::size_t channelCount) {
  if (auto names = channelNames(layout, channelCount)) return *std::move(names);
  std::vector<std::string> names;
  for (std::size_t i = 1; i <= channelCount; ++i) names.push_back("Ch " + std::to_string(i));
  return names;
}

std::string MeasuredFile::encodingText() const {
  return identity ? cli::encodingText(*identity, sourceBitDepth) : "";
}

std::vector<std::string> MeasuredFile::channelNames() const {
  if (!channelLabels.empty()) return channelLabels;
  return shownChannelNames(detail.layout, static_cast<std::size_t>(result.channelCount));
}

void MeasuredFile::noteUnlessEmpty(std::string sentence) {
  if (!sentence.empty()) notes.push_back(std::move(sentence));
}

std::vector<std::string> MeasuredFile::warnings() const {
  std::vector<std::string> texts;
  for (const auto& warning : detail.warnings) texts.push_back(warning.text);
  const bool isTooSlow = result.sampleRate < core::LoudnessGrid::kLowestRate;
  if (isTooSlow || result.sampleRate > core::LoudnessGrid::kHighestRate)
    texts.push_back(std::string("Loudness is not defined ") +
                    (isTooSlow ? "below 8 kHz" : "above 768 kHz") +
                    " sample rate; only levels and peaks are measured.");
  if (detail.isSpeechDetectionMissing)
    texts.emplace_back("Speech could not be detected; \"orvane dialogue detect\" tells why.");
  if (detail.nonFiniteSampleCount > 0) {
    const bool isOne = detail.nonFiniteSampleCount == 1;
    texts.push_back(
        NumberText::counted(detail.nonFiniteSampleCount, "sample") +
        (isOne ? " is not a finite number and counts" : " are not finite numbers and count") +
        " as silence.");
  }
  texts.insert(texts.end(), notes.begin(), notes.end());
  return texts;
}

std::vector<std::string> MeasuredFile::qualityNotes() const {
  // At the edges some is usual, between words and movements more.
  constexpr double kNotedEdge = 1;
  constexpr double kNotedGap = 3;
  const ProgrammeQuality& quality = detail.quality;
  const auto names = channelNames();
  const auto nameOf = [&](std::int64_t channel) {
    return names[static_cast<std::size_t>(channel)];
  };
  const auto seconds = [&](std::int64_t frames) {
    return static_cast<double>(frames) / result.sampleRate;
  };
  const auto length = [&](std::int64_t frames) {
    return NumberText::fixed(seconds(frames), 1) + " s";
  };
  if (quality.silentChannels.size() == names.size()) return {"All of it is silent."};
  std::vector<std::string> texts;
  if (seconds(quality.headSilenceFrames) >= kNotedEdge)
    texts.push_back("Silent for " + length(quality.headSilenceFrames) + " at the head.");
  if (seconds(quality.tailSilenceFrames) >= kNotedEdge)
    texts.push_back("Silent for " + length(quality.tailSilenceFrames) + " at the tail.");
  if (const auto& gap = quality.longestGap; gap && seconds(gap->frameCount) >= kNotedGap)
    texts.push_back("Longest gap of silence: " + length(gap->frameCount) + " at " +
                    NumberText::duration(seconds(gap->startFrame)) + ".");
  for (const auto channel : quality.silentChannels)
    texts.push_back("Channel " + nameOf(channel) + " is silent.");
  for (const auto& group : groupsOf(quality.identicalChannels)) {
    std::string text = "Channels ";
    for (std::size_t i = 0; i < group.size(); ++i)
      text += (i == 0 ? "" : i + 1 < group.size() ? ", " : " and ") + nameOf(group[i]);
    texts.push_back(text + " are identical.");
  }
  for (const auto& pair : quality.invertedChannels)
    texts.push_back("Channels " + nameOf(pair.first) + " and " + nameOf(pair.second) +
                    " are of opposite polarity.");
  if (const auto& bits = quality.bitDepth; bits && bits->effective < bits->stored)
    texts.push_back("Only " + std::to_string(bits->effective) + " of the " +
                    std::to_string(bits->stored) + " bits per sample are used.");
  return texts;
}

}  // namespace orvane::cli
