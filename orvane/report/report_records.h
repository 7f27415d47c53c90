#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/rawpcm/raw_pcm_format.h"

// The parts of a report. Times are seconds from the start of the file; levels have the unit that
// ends their name. Each record has a JSON form.
namespace orvane {

/// How the layout of a file ends whose one channel was measured as two equal loudspeakers.
inline constexpr std::string_view kDualMonoLayout = " as two equal loudspeakers";

struct ORVANE_API ReportFileInfo {
  std::string fileName{};  ///< last path component
  std::string filePath{};  ///< full path
  std::string fileFormat{};
  std::int64_t fileSize = 0;  ///< bytes
  double duration = 0;        ///< seconds
  double sampleRate = 0;      ///< Hz
  std::int64_t channelCount = 0;
  std::string channelLayout{};
  std::int64_t bitDepth = 0;                ///< stored bits per sample; 0 for compressed codecs
  std::optional<RawPCMFormat> rawFormat{};  ///< as declared for a headerless file

  bool operator==(const ReportFileInfo&) const = default;
};

/// One point of a loudness curve.
struct ORVANE_API LoudnessSample {
  double time = 0;
  float lufs = 0;

  bool operator==(const LoudnessSample&) const = default;
};

/// Figures of the whole file; absent where a measurement is no finite number.
struct ORVANE_API ReportFullFileLoudness {
  std::optional<float> integratedLUFS{};
  std::optional<float> samplePeakDB{};   ///< dBFS
  std::optional<float> truePeakDB{};     ///< dBTP
  std::optional<float> loudnessRange{};  ///< LU
  std::optional<float> maxMomentaryLUFS{};
  std::optional<float> maxShortTermLUFS{};
  std::optional<std::int64_t> dynamicRange{};  ///< DR score
  std::optional<float> speechGatedLUFS{};
  std::optional<float> speechPercentage{};  ///< 0 … 100
  std::vector<LoudnessSample> momentaryCurve{};
  std::vector<LoudnessSample> shortTermCurve{};
  std::vector<LoudnessSample> integratedCurve{};

  bool operator==(const ReportFullFileLoudness&) const = default;
};

/// Figures of a stretch of the file; minus infinity where they are undefined.
struct ORVANE_API ReportSelectionLoudness {
  double startTime = 0;
  double endTime = 0;
  float integratedLUFS = 0;
  float loudnessRange = 0;  ///< LU
  float truePeakDB = 0;     ///< dBTP
  float samplePeakDB = 0;   ///< dBFS
  float headroomDB = 0;
  std::int64_t dynamicRange = 0;  ///< DR score
  float speechGatedLUFS = 0;
  float speechPercentage = 0;            ///< 0 … 100
  float speechGatedNoiseFloorDBRMS = 0;  ///< level between the speech
  float maxMomentaryLUFS = 0;
  float maxShortTermLUFS = 0;
  std::vector<LoudnessSample> momentaryCurve{};
  std::vector<LoudnessSample> shortTermCurve{};
  std::vector<LoudnessSample> integratedCurve{};

  bool operator==(const ReportSelectionLoudness&) const = default;
};

struct ORVANE_API StereoWidthSample {
  double time = 0;
  float correlation = 0;  ///< −1 … +1

  bool operator==(const StereoWidthSample&) const = default;
};

/// Stereo correlation over time, and the shares of its points by zone, in percent.
struct ORVANE_API ReportStereoWidth {
  std::vector<StereoWidthSample> curve{};
  float averageCorrelation = 0;
  float monoPercent = 0;        ///< 0.95 and above
  float narrowPercent = 0;      ///< 0.5 up to 0.95
  float stereoPercent = 0;      ///< 0 up to 0.5
  float widePercent = 0;        ///< −0.5 up to 0
  float outOfPhasePercent = 0;  ///< below −0.5

  bool operator==(const ReportStereoWidth&) const = default;
};

struct ORVANE_API ReportChannel {
  std::int64_t index = 0;  ///< from 0
  std::string label{};
  float peakDB = 0;         ///< dBFS
  float rmsDB = 0;          ///< dBFS
  float crestFactorDB = 0;  ///< peak − RMS
  float dcOffset = 0;       ///< mean sample value, linear
  bool hasClipping = false;

  bool operator==(const ReportChannel&) const = default;
};

struct ORVANE_API ReportTimeRange {
  double start = 0;
  double end = 0;

  bool operator==(const ReportTimeRange&) const = default;
};

/// Where the loudness lies above the user's thresholds.
struct ORVANE_API ReportViolations {
  std::optional<float> momentaryThreshold{};  ///< LUFS
  std::optional<float> shortTermThreshold{};  ///< LUFS
  std::int64_t momentaryCount = 0;
  std::int64_t shortTermCount = 0;
  std::vector<ReportTimeRange> momentaryRanges{};
  std::vector<ReportTimeRange> shortTermRanges{};

  bool operator==(const ReportViolations&) const = default;
};

/// How a measurement stands to a delivery target.
struct ORVANE_API ReportTargetVerdict {
  /// "normalization", "compliant", "nonCompliant" or "tooQuiet", which stands for all that cannot
  /// be judged.
  std::string status{};
  float actualLUFS = 0;                  ///< the level judged, in the target's measure
  std::optional<float> penaltyGainDB{};  ///< the gain that the delivery side would apply
  std::optional<bool> penaltyApplies{};
  std::optional<bool> truePeakClean{};
  /// "loudness", "truePeak", "shortTerm" or "noiseFloor".
  std::optional<std::string> nonComplianceReason{};
  std::optional<float> nonComplianceActual{};
  std::optional<float> nonComplianceLimit{};

  bool operator==(const ReportTargetVerdict&) const = default;
};

/// A delivery target as it stood when the report was made.
struct ORVANE_API ReportLoudnessTargetItem {
  std::string id{};
  std::string name{};
  std::string mode{};           ///< "music", "podcast", "vod", "broadcast"
  std::string source{};         ///< judged on: "integrated", "dialogGated", "rms"
  std::string treatmentKind{};  ///< "compliance" or "penalty"
  float referenceLUFS = 0;
  std::optional<float> toleranceLU{};  ///< of compliance targets
  float truePeakCeilingDBTP = 0;
  std::optional<std::string>
      boostBehaviour{};  ///< of penalty targets: "symmetric", "turnsDownOnly"
  std::optional<float> noiseFloorMaxDBRMS{};
  std::optional<float> maxShortTermLUFS{};
  std::optional<float> maxSpeechPercentage{};  ///< judged only where there is less, 0 … 100
  std::optional<ReportTargetVerdict> verdict{};

  bool operator==(const ReportLoudnessTargetItem&) const = default;
};

struct ORVANE_API ReportLoudnessTargets {
  std::string activeMode{};  ///< "music", "podcast", "vod", "broadcast"
  std::vector<ReportLoudnessTargetItem> targets{};
  std::optional<float> programRMSDBFS{};

  bool operator==(const ReportLoudnessTargets&) const = default;
};

struct ORVANE_API ReportChapterEntry {
  std::int64_t index = 0;
  std::string name{};
  double startSec = 0;
  double endSec = 0;
  std::optional<float> integratedLUFS{};
  std::optional<float> rmsDBFS{};
  std::optional<float> deviationFromMedianLU{};
  std::optional<float> truePeakDBTP{};
  std::optional<float> samplePeakDBFS{};
  std::optional<float> loudnessRange{};  ///< LU
  std::optional<float> maxMomentaryLUFS{};
  std::optional<float> maxShortTermLUFS{};
  std::optional<float> speechGatedLUFS{};
  std::optional<float> noiseFloorDBRMS{};
  /// A fraction, 0 … 1, unlike the whole file's field of the same name.
  std::optional<float> speechPercentage{};

  bool operator==(const ReportChapterEntry&) const = default;
};

struct ORVANE_API ReportChapterTable {
  std::optional<float> medianLUFS{};
  float deviationThresholdLU = 0;  ///< chapters further from the median are flagged
  /// "detected", "manual", "imported", "recalled", "music", or a text of the caller's.
  std::string origin{};
  std::vector<ReportChapterEntry> entries{};

  bool operator==(const ReportChapterTable&) const = default;
};

}  // namespace orvane
