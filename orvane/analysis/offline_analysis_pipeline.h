#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/analysis/programme_quality.h"
#include "orvane/audio/audio_source.h"
#include "orvane/container/audio_file.h"
#include "orvane/core/curve_points.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/rawpcm/raw_pcm_format.h"
#include "orvane/speech/detector/silero_vad_tuning.h"
#include "orvane/speech/dialogue/dialogue_region.h"

/// Measures whole files.
namespace orvane::OfflineAnalysisPipeline {

/// What to measure. All four are the caller's choice; there are no defaults.
struct Options {
  bool enableSileroVAD;     ///< detect speech and gate loudness on it
  bool computeStereoWidth;  ///< compute the stereo-correlation curve
  SileroVADTuning vadTuning;
  std::optional<RawPCMFormat> rawFormat;  ///< present: the file is headerless PCM

  bool operator==(const Options&) const = default;
};

/// Every figure of one file. Levels are minus infinity where they are undefined.
struct Result {
  std::filesystem::path url{};
  /// The whole decoded audio, channels in canonical order; shared with whoever keeps the result.
  /// Null when the execution does not keep it.
  std::shared_ptr<PCMBuffer> buffer{};
  double sampleRate = 0;  ///< Hz
  std::int64_t channelCount = 0;
  double durationSeconds = 0;  ///< frames ÷ sample rate
  std::string fileFormat{};    ///< "WAV", "MP3, named .wav", "RAW s16le" …
  std::int64_t fileSize = 0;   ///< bytes; 0 when it cannot be read
  std::int64_t bitDepth = 0;   ///< stored bits per sample; 0 for compressed codecs
  std::optional<RawPCMFormat> rawFormat{};
  float integratedLUFS = 0;       ///< ITU-R BS.1770-5 gated programme loudness
  float loudnessRange = 0;        ///< LU, EBU Tech 3342
  float truePeakDB = 0;           ///< dBTP
  float samplePeakDB = 0;         ///< dBFS
  float maxMomentaryLUFS = 0;     ///< highest finite momentary value of the curve
  float maxShortTermLUFS = 0;     ///< highest finite short-term value of the curve
  std::int64_t dynamicRange = 0;  ///< DR score
  float speechGatedLUFS = 0;
  float speechPercentage = 0;                        ///< 0 … 100
  std::optional<std::vector<bool>> speechHistory{};  ///< one flag per 100 ms
  std::vector<LoudnessCurvePoint> loudnessCurve{};
  std::vector<StereoWidthCurvePoint> stereoWidthCurve{};
  std::vector<float> channelPeakDB{};         ///< dBFS, floored at −240
  std::vector<float> channelRMSDB{};          ///< dBFS, floored at −120
  std::vector<float> channelCrestFactorDB{};  ///< peak − RMS, dB
  std::vector<float> channelDCOffset{};       ///< mean sample value, linear
  std::vector<bool> channelHasClipping{};     ///< peak magnitude 0.999 or more
};

/// A run of neighbouring samples of one channel at or above the clipping threshold.
struct ClippingRun {
  std::uint32_t channel = 0;
  std::int64_t startFrame = 0;
  std::int64_t frameCount = 0;

  bool operator==(const ClippingRun&) const = default;
};

/// Findings beside the report's figures.
struct AnalysisDetail {
  /// Weighted channel sum of mean squares of each 400 ms gating block, one per 100 ms step.
  std::vector<double> blockPowers{};
  std::vector<AudioFileWarning> warnings{};
  std::optional<ChannelLayout> layout{};  ///< of the audio, channels in canonical order
  bool isDualMono = false;                ///< one channel, measured as two equal ones
  /// Speech was to be detected, but there is no detector to be had.
  bool isSpeechDetectionMissing = false;
  /// Samples that are not finite; they count as silence in the loudness and true-peak meters.
  std::int64_t nonFiniteSampleCount = 0;
  /// Runs of at least `kMinimumClippingRunFrames` clipped samples, in order of time; at most
  /// `kMaximumClippingRuns`.
  std::vector<ClippingRun> clippingRuns{};
  /// All runs, also those beyond the list.
  std::int64_t clippingRunCount = 0;
  ProgrammeQuality quality{};
};

inline constexpr float kClippingThreshold = 0.999F;
inline constexpr std::int64_t kMinimumClippingRunFrames = 3;
inline constexpr std::size_t kMaximumClippingRuns = 1000;

/// What a host may choose beside the options.
struct Choices {
  Execution execution{};
  std::optional<int> streamIndex{};  ///< which audio stream; absent for the default one
  /// Stretches that count as speech; the detector is then not asked.
  std::optional<std::vector<DialogueRegion>> dialogueRegions{};
  /// A file of one channel stands for two equal loudspeakers: every figure is that of the same
  /// programme on two channels. Changes nothing for other files.
  bool dualMono = false;
  /// Whether the result has the audio. Without, it is measured while it is read and only some tens
  /// of MiB of it are in memory at a time; the figures are the same.
  bool keepsBuffer = true;
};

/// Measures the file at `url`. Throws what `AudioSourceReader::load` throws, and
/// `AudioSourceReader::Failure` (empty) for a file without channels or frames.
ORVANE_API Result analyzeFile(const std::filesystem::path& url, const Options& options);

/// The same with choices; fills `detail` when it is given. Throws `Cancelled` when the
/// observer asks for it.
ORVANE_API Result analyzeFile(const std::filesystem::path& url, const Options& options,
                              const Choices& choices, AnalysisDetail* detail = nullptr);

/// The same of a source that is open already and from which nothing has been read; it knows its raw
/// format and stream itself.
ORVANE_API Result analyze(AudioSource& source, const Options& options, const Choices& choices,
                          AnalysisDetail* detail = nullptr);

}  // namespace orvane::OfflineAnalysisPipeline
