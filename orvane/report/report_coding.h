#pragma once

#include "orvane/music/music_coding.h"
#include "orvane/rawpcm/raw_pcm_coding.h"
#include "orvane/report/orvane_report.h"
#include "orvane/text/json/json_coding.h"

// JSON forms of the report and its parts.
namespace orvane::json {

ORVANE_JSON_FIELDS(ReportFileInfo, fileName, filePath, fileFormat, fileSize, duration, sampleRate,
                   channelCount, channelLayout, bitDepth, rawFormat);

ORVANE_JSON_FIELDS(LoudnessSample, time, lufs);

ORVANE_JSON_FIELDS(ReportFullFileLoudness, integratedLUFS, samplePeakDB, truePeakDB, loudnessRange,
                   maxMomentaryLUFS, maxShortTermLUFS, dynamicRange, speechGatedLUFS,
                   speechPercentage, momentaryCurve, shortTermCurve, integratedCurve);

ORVANE_JSON_FIELDS(ReportSelectionLoudness, startTime, endTime, integratedLUFS, loudnessRange,
                   truePeakDB, samplePeakDB, headroomDB, dynamicRange, speechGatedLUFS,
                   speechPercentage, speechGatedNoiseFloorDBRMS, maxMomentaryLUFS, maxShortTermLUFS,
                   momentaryCurve, shortTermCurve, integratedCurve);

ORVANE_JSON_FIELDS(LoudnessCurvePoint, time, momentary, shortTerm, integrated);

ORVANE_JSON_FIELDS(StereoWidthCurvePoint, time, correlation);

ORVANE_JSON_FIELDS(StereoWidthSample, time, correlation);

ORVANE_JSON_FIELDS(ReportStereoWidth, curve, averageCorrelation, monoPercent, narrowPercent,
                   stereoPercent, widePercent, outOfPhasePercent);

ORVANE_JSON_FIELDS(ReportChannel, index, label, peakDB, rmsDB, crestFactorDB, dcOffset,
                   hasClipping);

ORVANE_JSON_FIELDS(ReportTimeRange, start, end);

ORVANE_JSON_FIELDS(ReportViolations, momentaryThreshold, shortTermThreshold, momentaryCount,
                   shortTermCount, momentaryRanges, shortTermRanges);

ORVANE_JSON_FIELDS(ReportTargetVerdict, status, actualLUFS, penaltyGainDB, penaltyApplies,
                   truePeakClean, nonComplianceReason, nonComplianceActual, nonComplianceLimit);

ORVANE_JSON_FIELDS(ReportLoudnessTargetItem, id, name, mode, source, treatmentKind, referenceLUFS,
                   toleranceLU, truePeakCeilingDBTP, boostBehaviour, noiseFloorMaxDBRMS,
                   maxShortTermLUFS, maxSpeechPercentage, verdict);

ORVANE_JSON_FIELDS(ReportLoudnessTargets, activeMode, targets, programRMSDBFS);

ORVANE_JSON_FIELDS(ReportChapterEntry, index, name, startSec, endSec, integratedLUFS, rmsDBFS,
                   deviationFromMedianLU, truePeakDBTP, samplePeakDBFS, loudnessRange,
                   maxMomentaryLUFS, maxShortTermLUFS, speechGatedLUFS, noiseFloorDBRMS,
                   speechPercentage);

/// A silent chapter is not one that was never measured.
template <>
inline constexpr bool kWritesUndefinedNumbers<ReportChapterEntry> = true;

ORVANE_JSON_FIELDS(ReportChapterTable, medianLUFS, deviationThresholdLU, origin, entries);

ORVANE_JSON_FIELDS(OrvaneReport, generatedAt, appVersion, file, fullFile, selection, stereoWidth,
                   channels, violations, loudnessTargets, chapters, musicAnalysis,
                   stemGatedLoudness);

}  // namespace orvane::json
