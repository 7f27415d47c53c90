#include "cli/commands/measured_file.h"

#include <utility>

#include "cli/output/codec_text.h"
#include "cli/output/number_text.h"
#include "orvane/analysis/programme_summary.h"
#include "orvane/core/loudness/loudness_grid.h"

namespace orvane::cli {

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

}  // namespace orvane::cli
