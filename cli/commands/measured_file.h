#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/options/file_list.h"
#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/audio/audio_file_identity.h"
#include "orvane/music/music_section_loudness.h"
#include "orvane/report/orvane_report.h"

namespace orvane::cli {

/// What a second, equal loudspeaker adds: 10·lg 2 LU.
inline constexpr float kDualMonoGainLU = 3.0103F;

/// All that is known about a file once it is measured.
struct MeasuredFile {
  InputName name{};
  OfflineAnalysisPipeline::Result result{};
  OfflineAnalysisPipeline::AnalysisDetail detail{};
  std::optional<AudioFileIdentity> identity{};  ///< absent for headerless PCM
  int sourceBitDepth = 0;   ///< bits of the original audio in a lossless codec; 0 if unknown
  bool isDualMono = false;  ///< loudness figures were raised for two loudspeakers
  std::vector<std::string> channelLabels{};  ///< the user's names for the channels; empty for none
  std::vector<std::string> notes{};          ///< findings of the program, one sentence each
  /// What is reported of it, made when more than its own figures is asked for.
  std::optional<OrvaneReport> report{};
  std::optional<MusicSectionLoudness> sectionLoudness{};
  bool isJudged = false;  ///< the report's targets were asked for

  /// "24-bit integer", "FLAC, 16-bit", "AAC".
  std::string encodingText() const;

  /// One name per channel: the user's, those of the layout, else "Mono", "L" and "R", or "Ch 1" …
  std::vector<std::string> channelNames() const;

  /// Every finding worth telling, one sentence each.
  std::vector<std::string> warnings() const;

  /// For a mono file that stands for two equal loudspeakers: adds `kDualMonoGainLU` to every
  /// loudness figure, and the energy to the gating blocks. Does nothing to other files.
  void raiseForDualMono();
};

/// What an encoding is called when the depth of the original audio is known too.
std::string encodingText(const AudioFileIdentity& identity, int sourceBitDepth);

/// Names of channels of which only the count is known.
std::vector<std::string> plainChannelNames(std::size_t count);

}  // namespace orvane::cli
