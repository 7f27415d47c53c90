#include "orvane/analysis/album_measurement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <numeric>

#include "orvane/core/loudness/k_weighting.h"
#include "orvane/core/loudness/loudness_gating.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::AnalysisDetail;
using OfflineAnalysisPipeline::Result;

constexpr std::size_t kStepsPerBlock = 4;       // BS.1770-5, Annex 1
constexpr std::size_t kStepsPerShortTerm = 30;  // EBU Tech 3342

/// The power of each whole step. The curve begins with windows of which only the first steps are
/// audio, which tells these one by one; two neighbouring blocks differ by their outer steps, which
/// tells all others, without rounding them to the 32 bits of a curve.
std::vector<double> stepPowers(const Result& result, const std::vector<double>& blockPowers) {
  std::vector<double> powers;
  double before = 0;
  const std::size_t told = std::min(kStepsPerBlock - 1, result.loudnessCurve.size());
  for (std::size_t step = 0; step < told; ++step) {
    const double window =
        kStepsPerShortTerm *
        core::powerOfLoudness(static_cast<double>(result.loudnessCurve[step].shortTerm));
    powers.push_back(std::max(window - before, 0.0));
    before = window;
  }
  if (result.loudnessCurve.size() < kStepsPerBlock) return powers;
  for (const double block : blockPowers) {
    const auto inner = powers.end() - (kStepsPerBlock - 1);
    powers.push_back(
        std::max(kStepsPerBlock * block - std::accumulate(inner, powers.end(), 0.0), 0.0));
  }
  return powers;
}

/// The mean of each `steps` neighbours.
std::vector<double> windowPowers(const std::vector<double>& stepPowers, std::size_t steps) {
  std::vector<double> powers;
  for (std::size_t end = steps; steps > 0 && end <= stepPowers.size(); ++end) {
    const double* const last = stepPowers.data() + end;
    powers.push_back(std::accumulate(last - steps, last, 0.0) / static_cast<double>(steps));
  }
  return powers;
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
    speech_ = Speech{};
    channels_.assign(result.channelPeakDB.size(), {});
  }
  seconds_ += result.durationSeconds;
  std::ranges::move(stepPowers(result, detail.blockPowers), std::back_inserter(stepPowers_));
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
  const auto blocks = windowPowers(stepPowers_, std::min(kStepsPerBlock, stepPowers_.size()));
  result.integratedLUFS =
      static_cast<float>(core::loudnessOfPower(core::LoudnessGating::gatedPower(blocks)));
  result.loudnessRange = static_cast<float>(
      core::loudnessRangeOfPowers(windowPowers(stepPowers_, kStepsPerShortTerm)));
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
