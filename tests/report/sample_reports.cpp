#include "tests/report/sample_reports.h"

#include <chrono>
#include <cstddef>
#include <limits>

namespace orvane::test {
namespace {

constexpr float kSilence = -std::numeric_limits<float>::infinity();

/// A triangle between −1 and 1 with that period, 0 at 0.
double triangle(double t, double period) {
  const double phase = t / period - static_cast<double>(static_cast<long>(t / period));
  if (phase < 0.25) return 4 * phase;
  return phase < 0.75 ? 2 - 4 * phase : 4 * phase - 4;
}

/// The times of a curve: a point per 100 ms, or as many as keep renderings easy to compare.
std::vector<double> times(double seconds, std::size_t mostPoints) {
  const auto blocks = static_cast<std::size_t>(seconds * 10);
  const std::size_t stride = (blocks + mostPoints - 1) / mostPoints;
  std::vector<double> result;
  for (std::size_t k = stride; k <= blocks; k += stride)
    result.push_back(static_cast<double>(k) * 0.1);
  return result;
}

std::vector<LoudnessCurvePoint> loudnessCurve(double seconds, double middle,
                                              std::size_t mostPoints = 200) {
  std::vector<LoudnessCurvePoint> curve;
  for (const double time : times(seconds, mostPoints)) {
    const double swell = 4 * triangle(time, seconds / 3);
    const double beat = 3 * triangle(time, seconds / 60);
    curve.push_back(
        {.time = time,
         .momentary = time < 0.35 ? kSilence : static_cast<float>(middle + swell + beat),
         .shortTerm = static_cast<float>(middle + swell),
         .integrated = static_cast<float>(middle + swell / 8)});
  }
  return curve;
}

std::vector<StereoWidthCurvePoint> widthCurve(double seconds, std::size_t mostPoints = 200) {
  std::vector<StereoWidthCurvePoint> curve;
  for (const double time : times(seconds, mostPoints)) {
    const double value =
        0.35 + 0.65 * triangle(time, seconds / 5) - 0.3 * triangle(time, seconds / 40);
    curve.push_back({time, static_cast<float>(value > 1 ? 1 : value < -1 ? -1 : value)});
  }
  return curve;
}

ReportFileInfo fileInfo(std::string name, std::string format, double seconds,
                        std::int64_t channels) {
  return {.fileName = name,
          .filePath = "/music/" + name,
          .fileFormat = std::move(format),
          .fileSize = static_cast<std::int64_t>(seconds * 48000) * channels * 3 + 44,
          .duration = seconds,
          .sampleRate = 48000,
          .channelCount = channels,
          .channelLayout = channels == 2 ? "L R" : "C",
          .bitDepth = 24};
}

ReportInputs stereoInputs(std::string name, double seconds, double middle) {
  return {.appVersion = "0.1.0",
          .fileInfo = fileInfo(std::move(name), "WAV", seconds, 2),
          .channelLayoutLabels = {"L", "R"},
          .channelClipping = {false, true},
          .fileLoudnessCurve = loudnessCurve(seconds, middle),
          .fileSamplePeakDB = -0.8F,
          .fileTruePeakDB = -0.4F,
          .fileLoudnessRange = 7.3F,
          .fileMaxMomentaryLUFS = static_cast<float>(middle + 7),
          .fileMaxShortTermLUFS = static_cast<float>(middle + 4),
          .fileDynamicRange = 9,
          .fileChannelPeakDB = {-0.8F, -5.2F},
          .fileChannelRMSDB = {-15.25F, -16.5F},
          .fileChannelCrestFactorDB = {14.45F, 11.3F},
          .fileChannelDCOffset = {0.00012F, -0.00004F},
          .fileSpeechGatedLUFS = kSilence,
          .fileStereoWidthCurve = widthCurve(seconds)};
}

MusicAnalysisResult song(double seconds) {
  using namespace std::chrono;
  MusicAnalysisResult result{
      .source = "Apple Music Understanding",
      .analysedAt = sys_days(2026y / January / 4) + 20h,
      .duration = seconds,
      .stems = {{.stem = MusicAnalysisResult::Stem::vocal,
                 .ranges = {{10, 60}, {80, 140}},
                 .activity = {{10, 0.8F}, {60, 0.1F}}},
                {.stem = MusicAnalysisResult::Stem::drum, .ranges = {{4, seconds}}},
                {.stem = MusicAnalysisResult::Stem::bass, .ranges = {{8, 150}}}},
      .beatsPerMinute = 120,
      .sections = {{0, 40}, {40, 80}, {80, 140}, {140, seconds}},
      .segments = {{0, 20}, {20, 40}, {40, 80}, {80, 110}, {110, 140}, {140, seconds}},
      .phrases = {{0, 8}, {8, 16}},
      .keys = {{.span = {0, 120}, .tonic = "fSharp", .mode = "minor"},
               {.span = {120, seconds}, .tonic = "a", .mode = "major"}},
      .paces = {{.span = {0, seconds}, .value = 120}}};
  for (double t = 0; t < seconds; t += 0.5) result.beats.push_back(t);
  for (double t = 0; t < seconds; t += 2) result.bars.push_back(t);
  return result;
}

StemGatedLoudness stemLoudness() {
  return {.vocal = {.presentLUFS = -13.2F,
                    .absentLUFS = -15.9F,
                    .balanceLU = 2.7F,
                    .presentSeconds = 108.4,
                    .absentSeconds = 64},
          .drums = {.presentLUFS = -13.8F, .presentSeconds = 170.3, .absentSeconds = 2.1},
          .source = StemGatedLoudness::kSource};
}

/// A narrator whose levels drift; one chapter too loud, one silent, one unmeasured.
std::vector<core::Chapter> chapters(std::int64_t count) {
  std::vector<core::Chapter> result;
  for (std::int64_t i = 1; i <= count; ++i) {
    const auto drift = static_cast<float>(i % 5) * 0.4F;
    const double start = static_cast<double>(i - 1) * 1234.5;
    result.push_back({.index = i,
                      .name = "Chapter " + std::to_string(i),
                      .startSec = start,
                      .endSec = start + 1234.5,
                      .integratedLUFS = -20 + drift,
                      .rmsDBFS = -20.5F + drift,
                      .truePeakDBTP = -3.6F + drift / 2,
                      .samplePeakDBFS = -3.9F + drift / 2,
                      .loudnessRange = 5.5F,
                      .maxMomentaryLUFS = -14.2F,
                      .maxShortTermLUFS = -16.8F,
                      .speechGatedLUFS = -19.7F + drift,
                      .noiseFloorDBRMS = -64.4F + 2 * drift,
                      .speechPercentage = 0.91F});
  }
  result[1].name = "The \"Quiet\" <Room> & the Narrator's Very Long Way Home";
  result[1].integratedLUFS = -15.0F;
  result[1].rmsDBFS = -16.2F;
  result[1].noiseFloorDBRMS = -57.0F;
  result[2].integratedLUFS = kSilence;
  result[2].rmsDBFS = result[2].truePeakDBTP = result[2].noiseFloorDBRMS = kSilence;
  if (count > 3)
    result[3] = {.index = 4, .name = "Not measured", .startSec = 3703.5, .endSec = 4938};
  return result;
}

void addChapters(ReportInputs& inputs, std::int64_t count, std::string origin) {
  inputs.chapters = chapters(count);
  inputs.chapterMedianLUFS = -19.2F;
  inputs.chapterDeviationThresholdLU = 2;
  inputs.chapterOrigin = std::move(origin);
}

SelectionAnalysisResult selectionOf() {
  SelectionAnalysisResult result{.timeRange = {30, 60},
                                 .peakDB = {-1.2F, -0.6F},
                                 .rmsDB = {-15, -14.5F},
                                 .crestFactorDB = {13.8F, 13.9F},
                                 .dcOffset = {0.0001F, 0},
                                 .samplePeakDB = -0.6F,
                                 .headroomDB = 0.6F,
                                 .dynamicRange = 8,
                                 .integratedLUFS = -12.4F,
                                 .loudnessRange = 5.1F,
                                 .truePeakDB = -0.3F,
                                 .speechGatedLUFS = -13.9F,
                                 .speechPercentage = 62,
                                 .speechGatedNoiseFloorDBRMS = -58.5F,
                                 .maxMomentaryLUFS = -5.5F,
                                 .maxShortTermLUFS = -9.9F};
  for (const LoudnessCurvePoint& point : loudnessCurve(60, -14, 600)) {
    if (point.time <= 30) continue;
    result.momentaryCurve.push_back({point.time, point.momentary});
    result.shortTermCurve.push_back({point.time, point.shortTerm});
    result.integratedCurve.push_back({point.time, point.integrated});
  }
  return result;
}

OrvaneReport built(const ReportInputs& inputs) {
  using namespace std::chrono;
  OrvaneReport report = OrvaneReport::build(inputs, {});
  report.generatedAt = sys_days(2026y / January / 5) + 15h + 4min + 59s;
  return report;
}

}  // namespace

OrvaneReport fullReport() {
  ReportInputs inputs = stereoInputs("Everything.raw", 180, -14);
  inputs.fileInfo.fileFormat = "RAW s24le";
  inputs.fileInfo.rawFormat = RawPCMFormat{.sampleRate = 48000,
                                           .channelCount = 2,
                                           .encoding = RawPCMFormat::Encoding::int24Packed,
                                           .headerSkipBytes = 44};
  inputs.fileSpeechGatedLUFS = -16.1F;
  inputs.fileSpeechHistory = {true, true, false, true};
  inputs.selectionAnalysis = selectionOf();
  inputs.violationsEnabled = true;
  inputs.momentaryThreshold = -9.0F;
  inputs.shortTermThreshold = -10.5F;
  inputs.momentaryViolations = {{12.3, 13.1}, {40, 44.25}, {100.5, 101}};
  inputs.shortTermViolations = {{41, 43.5}};
  inputs.loudnessTargetSelection.mode = core::LoudnessTargetMode::podcast;
  addChapters(inputs, 4, "imported");
  inputs.musicAnalysis = song(180);
  inputs.stemGatedLoudness = stemLoudness();
  return built(inputs);
}

OrvaneReport silentFileReport() {
  ReportInputs inputs = stereoInputs("Silence.wav", 12, 0);
  for (auto& point : inputs.fileLoudnessCurve)
    point = {
        .time = point.time, .momentary = kSilence, .shortTerm = kSilence, .integrated = kSilence};
  for (auto& point : inputs.fileStereoWidthCurve) point.correlation = 0;
  inputs.channelClipping = {false, false};
  inputs.fileSamplePeakDB = inputs.fileTruePeakDB = kSilence;
  inputs.fileLoudnessRange = 0;
  inputs.fileMaxMomentaryLUFS = inputs.fileMaxShortTermLUFS = kSilence;
  inputs.fileDynamicRange = 0;
  inputs.fileChannelPeakDB = {-240, -240};
  inputs.fileChannelRMSDB = {-120, -120};
  inputs.fileChannelCrestFactorDB = {-120, -120};
  inputs.fileChannelDCOffset = {0, 0};
  return built(inputs);
}

OrvaneReport monoFileReport() {
  ReportInputs inputs = stereoInputs("Interview.flac", 42.9, -17);
  inputs.fileInfo = fileInfo("Interview.flac", "FLAC", 42.9, 1);
  inputs.fileInfo.sampleRate = 44100;
  inputs.channelLayoutLabels = {"C"};
  inputs.channelClipping = {false};
  inputs.fileChannelPeakDB = {-2.5F};
  inputs.fileChannelRMSDB = {-19.5F};
  inputs.fileChannelCrestFactorDB = {17};
  inputs.fileChannelDCOffset = {0};
  inputs.fileSpeechGatedLUFS = -17.9F;
  inputs.fileSpeechHistory = {true, true, true, false};
  inputs.loudnessTargetSelection.mode = core::LoudnessTargetMode::podcast;
  return built(inputs);
}

OrvaneReport musicFileReport() {
  ReportInputs inputs = stereoInputs("Song.m4a", 180, -13.5);
  inputs.fileInfo.fileFormat = "M4A";
  inputs.fileInfo.bitDepth = 0;
  inputs.musicAnalysis = song(180);
  inputs.stemGatedLoudness = stemLoudness();
  return built(inputs);
}

OrvaneReport headerlessFileReport() {
  ReportInputs inputs = stereoInputs("capture.pcm", 5, -23);
  inputs.fileInfo.fileFormat = "RAW f32be";
  inputs.fileInfo.fileSize = 500;
  inputs.fileInfo.sampleRate = 800;
  inputs.fileInfo.rawFormat = RawPCMFormat{.sampleRate = 800,
                                           .channelCount = 2,
                                           .encoding = RawPCMFormat::Encoding::float32,
                                           .endianness = RawPCMFormat::Endianness::big,
                                           .isPlanar = true};
  inputs.fileTruePeakDB = kSilence;  // unknown, unlike the sample peak
  inputs.loudnessTargetSelection.mode = core::LoudnessTargetMode::broadcast;
  return built(inputs);
}

OrvaneReport audiobookReport() {
  ReportInputs inputs = stereoInputs("Book.m4b", 37035, -20);
  inputs.fileInfo.fileFormat = "M4B";
  inputs.fileStereoWidthCurve.clear();
  inputs.loudnessTargetSelection = {.mode = core::LoudnessTargetMode::podcast,
                                    .targetIDs = {{"acx", "apple-podcasts"}}};
  addChapters(inputs, 30, "detected");
  return built(inputs);
}

OrvaneReport longProgrammeReport(int hours) {
  const double seconds = hours * 3600.0;
  const auto everyPoint = static_cast<std::size_t>(hours) * 36'000;
  ReportInputs inputs = stereoInputs("Long.wav", seconds, -16);
  inputs.fileLoudnessCurve = loudnessCurve(seconds, -16, everyPoint);
  inputs.fileStereoWidthCurve = widthCurve(seconds, everyPoint);
  return built(inputs);
}

OrvaneReport reportSaying(const std::string& text) {
  ReportInputs inputs = stereoInputs("=" + text, 30, -14);
  inputs.appVersion = text;
  inputs.fileInfo.fileFormat = text;
  inputs.fileInfo.channelLayout = text;
  inputs.channelLayoutLabels = {text, text};
  addChapters(inputs, 3, text);
  for (auto& chapter : inputs.chapters) chapter.name = "-" + text;
  inputs.musicAnalysis = song(30);
  inputs.musicAnalysis->source = text;
  inputs.musicAnalysis->keys = {{.span = {0, 30}, .tonic = text, .mode = text}};
  OrvaneReport report = built(inputs);
  report.loudnessTargets.targets = {{.id = text, .name = text, .mode = text}};
  return report;
}

OrvaneReport hostileReport() {
  return reportSaying("</script><b>\"'&=cmd\x1B[31m\u202Egpj.\xFF");
}

std::vector<std::pair<std::string, OrvaneReport>> sampleReports() {
  return {{"full", fullReport()},
          {"silent", silentFileReport()},
          {"mono", monoFileReport()},
          {"music", musicFileReport()},
          {"headerless", headerlessFileReport()},
          {"audiobook", audiobookReport()}};
}

}  // namespace orvane::test
