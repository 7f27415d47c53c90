#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/commands/speech_model.h"
#include "cli/options/file_list.h"
#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/audio/audio_file_identity.h"
#include "orvane/container/chapter_mark.h"
#include "orvane/music/music_section_loudness.h"
#include "orvane/report/orvane_report.h"

namespace orvane::cli {

/// All that is known about a file once it is measured.
struct MeasuredFile {
  InputName name{};
  OfflineAnalysisPipeline::Result result{};
  OfflineAnalysisPipeline::AnalysisDetail detail{};
  std::optional<AudioFileIdentity> identity{};  ///< absent for headerless PCM
  int sourceBitDepth = 0;      ///< bits of the original audio in a lossless codec; 0 if unknown
  std::vector<int> streams{};  ///< that were measured, of `streamCount`
  int streamCount = 1;         ///< audio streams of the file
  std::vector<std::string> channelLabels{};  ///< the user's names for the channels; empty for none
  std::vector<ChapterMark> chapterMarks{};   ///< that the file itself holds, when asked for
  std::vector<std::string> notes{};          ///< findings of the program, one sentence each
  /// What is reported of it, made when more than its own figures is asked for.
  std::optional<OrvaneReport> report{};
  std::optional<MusicSectionLoudness> sectionLoudness{};
  std::optional<SpeechModelName> speechModel{};  ///< by which speech was detected
  bool isJudged = false;                         ///< the report's targets were asked for

  /// "24-bit integer", "FLAC, 16-bit", "AAC".
  std::string encodingText() const;

  /// One name per channel: the user's, those of the layout, else "Mono", "L" and "R", or "Ch 1" …
  std::vector<std::string> channelNames() const;

  void noteUnlessEmpty(std::string sentence);

  /// Every finding worth telling, one sentence each.
  std::vector<std::string> warnings() const;

  /// What an engineer may want to look at: silence, channels that are dead, alike or inverted, bits
  /// that are never used; one sentence each.
  std::vector<std::string> qualityNotes() const;
};

/// What an encoding is called when the depth of the original audio is known too.
std::string encodingText(const AudioFileIdentity& identity, int sourceBitDepth);

/// One name per channel: that of its place where it is known, else "Ch 1" …
std::vector<std::string> shownChannelNames(const std::optional<ChannelLayout>& layout,
                                           std::size_t channelCount);

}  // namespace orvane::cli
