#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/file_list.h"
#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/audio/audio_file_identity.h"

namespace orvane::cli {

/// All that is known about a file once it is measured.
struct MeasuredFile {
  InputName name{};
  OfflineAnalysisPipeline::Result result{};
  OfflineAnalysisPipeline::AnalysisDetail detail{};
  std::optional<AudioFileIdentity> identity{};  ///< absent for headerless PCM
  int sourceBitDepth = 0;   ///< bits of the original audio in a lossless codec; 0 if unknown
  bool isDualMono = false;  ///< loudness figures were raised for two loudspeakers

  /// "24-bit integer", "FLAC, 16-bit", "AAC".
  std::string encodingText() const;

  /// One name per channel: those of the layout, else "Mono", "L" and "R", or "Ch 1" …
  std::vector<std::string> channelNames() const;

  /// Every finding worth telling, one sentence each.
  std::vector<std::string> warnings() const;

  /// For a mono file that stands for two equal loudspeakers: adds 10·lg 2 = 3.01 LU to every
  /// loudness figure, the energy of the second one. Does nothing to other files.
  void raiseForDualMono();
};

/// What an encoding is called when the depth of the original audio is known too.
std::string encodingText(const AudioFileIdentity& identity, int sourceBitDepth);

/// Names of channels of which only the count is known.
std::vector<std::string> plainChannelNames(std::size_t count);

}  // namespace orvane::cli
