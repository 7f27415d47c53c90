#include "orvane/analysis/album_measurement.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/core/loudness/k_weighting.h"
#include "orvane/core/loudness/loudness_gating.h"
#include "orvane/core/loudness/loudness_grid.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::AnalysisDetail;
using OfflineAnalysisPipeline::Result;

/// Points of a curve before the first whole 3 s window ends (EBU Tech 3342).
constexpr std::size_t kStepsBeforeWindow = 29;

/// Points of the curve that end whole steps; the last one may end with the file instead.
std::size_t wholeSteps(const Result& result) {
  const auto frames = std::llround(result.durationSeconds * result.sampleRate);
  const auto stepFrames = std::llround(result.sampleRate * core::LoudnessGrid::kStepSeconds);
  return std::min(static_cast<std::size_t>(frames / std::max(stepFrames, 1LL)),
                  result.loudnessCurve.size());
}

float toDB(double power) {
  return static_cast<float>(10 * std::log10(power));
}
double toPower(float levelDB) {
  return std::pow(10.0, static_cast<double>(levelDB) / 10);
}

}  // namespace

void AlbumMeasurement::add(const Result& result, const AnalysisDetail& detail) {
  if (fileCount_++ == 0) {
    highest_.truePeakDB = highest_.samplePeakDB = highest_.maxMomentaryLUFS =
        highest_.maxShortTermLUFS = -std::numeric_limits<float>::infinity();
    speech_.emplace();
    channels_.assign(result.channelPeakDB.size(), {});
  }
  seconds_ += result.durationSeconds;
  blockPowers_.insert(blockPowers_.end(), detail.blockPowers.begin(), detail.blockPowers.end());
  for (std::size_t step = kStepsBeforeWindow; step < wholeSteps(result); ++step)
    shortTermPowers_.push_back(
        core::powerOfLoudness(static_cast<double>(result.loudnessCurve[step].shortTerm)));
  highest_.truePeakDB = std::max(highest_.truePeakDB, result.truePeakDB);
  highest_.samplePeakDB = std::max(highest_.samplePeakDB, result.samplePeakDB);
  highest_.maxMomentaryLUFS = std::max(highest_.maxMomentaryLUFS, result.maxMomentaryLUFS);
  highest_.maxShortTermLUFS = std::max(highest_.maxShortTermLUFS, result.maxShortTermLUFS);
  dynamicRangeSum_ += result.dynamicRange;
  addSpeech(result, detail.blockPowers);
  addChannels(result);
}

void AlbumMeasurement::addSpeech(const Result& result, const std::vector<double>& powers) {
  if (!result.speechHistory) speech_.reset();
  if (!speech_) return;
  const auto& flags = *result.speechHistory;
  const double gate = core::powerOfLoudness(core::LoudnessGating::kAbsoluteGateLUFS);
  for (std::size_t block = 0; block < std::min(flags.size(), powers.size()); ++block)
    if (flags[block] && powers[block] > gate) {
      speech_->power += powers[block];
      ++speech_->blocks;
    }
  speech_->steps += std::ranges::count(flags, true);
  speech_->allSteps += static_cast<std::int64_t>(flags.size());
}

void AlbumMeasurement::addChannels(const Result& result) {
  if (channels_.size() != result.channelPeakDB.size()) channels_.clear();
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    Channel& channel = channels_[i];
    const float peakDB = result.channelPeakDB[i];
    channel.peakDB = fileCount_ == 1 ? peakDB : std::max(channel.peakDB, peakDB);
    channel.power += toPower(result.channelRMSDB[i]) * result.durationSeconds;
    channel.offset += static_cast<double>(result.channelDCOffset[i]) * result.durationSeconds;
    channel.isClipped = channel.isClipped || result.channelHasClipping[i];
  }
}

Result AlbumMeasurement::figures() const {
  Result result = highest_;
  result.durationSeconds = seconds_;
  result.integratedLUFS =
      static_cast<float>(core::loudnessOfPower(core::LoudnessGating::gatedPower(blockPowers_)));
  result.loudnessRange = static_cast<float>(core::loudnessRangeOfPowers(shortTermPowers_));
  result.dynamicRange = std::llround(static_cast<double>(dynamicRangeSum_) /
                                     static_cast<double>(std::max<std::size_t>(fileCount_, 1)));
  if (speech_) {
    // Who reads a result asks whether there are flags before he takes figures of speech from it.
    result.speechHistory.emplace();
    result.speechGatedLUFS = static_cast<float>(core::loudnessOfPower(
        speech_->power / static_cast<double>(std::max<std::int64_t>(speech_->blocks, 1))));
    result.speechPercentage =
        static_cast<float>(100 * static_cast<double>(speech_->steps) /
                           static_cast<double>(std::max<std::int64_t>(speech_->allSteps, 1)));
  }
  for (const Channel& channel : channels_) {
    const float rmsDB = toDB(channel.power / seconds_);
    result.channelPeakDB.push_back(channel.peakDB);
    result.channelRMSDB.push_back(rmsDB);
    result.channelCrestFactorDB.push_back(channel.peakDB - rmsDB);
    result.channelDCOffset.push_back(static_cast<float>(channel.offset / seconds_));
    result.channelHasClipping.push_back(channel.isClipped);
  }
  return result;
}

}  // namespace orvane
