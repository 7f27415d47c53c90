#include "orvane/core/loudness/loudness_processor.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "orvane/core/channel_order.h"
#include "orvane/core/decibels.h"
#include "orvane/core/loudness/k_weighted_energy_meter.h"
#include "orvane/core/loudness/k_weighting.h"
#include "orvane/core/loudness/loudness_gating.h"
#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/core/peak/true_peak_meter.h"
#include "orvane/platform/precondition.h"

namespace orvane::core {
namespace {

constexpr float kSilence = -std::numeric_limits<float>::infinity();

}  // namespace

struct LoudnessProcessor::State {
  std::uint32_t channelCount;
  std::optional<KWeightedEnergyMeter> energies;  ///< absent at rates that are not metered
  TruePeakMeter truePeak;
  std::optional<std::vector<bool>> speech;
  bool isFlushed = false;
};

LoudnessProcessor::LoudnessProcessor(double sampleRate, std::uint32_t channelCount,
                                     std::optional<std::vector<bool>> precomputedSpeechHistory,
                                     std::optional<std::vector<float>> weights)
    : state_(new State{.channelCount = channelCount,
                       .energies = std::nullopt,
                       .truePeak = TruePeakMeter(sampleRate, channelCount),
                       .speech = std::move(precomputedSpeechHistory)}) {
  if (!weights) weights = ChannelOrder::defaultWeights(channelCount);
  precondition(weights->size() == channelCount, "a loudness meter needs one weight per channel");
  if (LoudnessGrid::hasLoudness(sampleRate))
    state_->energies.emplace(sampleRate, *std::move(weights));
}

LoudnessProcessor::~LoudnessProcessor() = default;
LoudnessProcessor::LoudnessProcessor(LoudnessProcessor&&) noexcept = default;
LoudnessProcessor& LoudnessProcessor::operator=(LoudnessProcessor&&) noexcept = default;

void LoudnessProcessor::process(PlanarView audio) {
  precondition(audio.channelCount() == state_->channelCount, "one pointer per channel is needed");
  precondition(!state_->isFlushed, "a flushed loudness meter takes no more audio");
  if (state_->energies) state_->energies->process(audio);
}

void LoudnessProcessor::updateTruePeak(PlanarView audio) {
  precondition(audio.channelCount() == state_->channelCount, "one pointer per channel is needed");
  precondition(!state_->isFlushed, "a flushed loudness meter takes no more audio");
  state_->truePeak.process(audio);
}

void LoudnessProcessor::flushPartialBlock() {
  if (std::exchange(state_->isFlushed, true)) return;
  if (state_->energies) state_->energies->finish();
  state_->truePeak.flush();
}

void LoudnessProcessor::setSpeechHistory(std::optional<std::vector<bool>> speechHistory) {
  state_->speech = std::move(speechHistory);
}

std::vector<LoudnessHistoryEntry> LoudnessProcessor::history() const {
  std::vector<LoudnessHistoryEntry> entries;
  if (!isRecording || !state_->energies) return entries;
  const LoudnessTimeline& timeline = state_->energies->timeline();
  const auto& powers = timeline.blockPowers();
  const std::vector<double> running = LoudnessGating::runningGatedPowers(powers);
  entries.reserve(timeline.entryCount());
  for (std::size_t i = 0; i < timeline.entryCount(); ++i) {
    // Block b ends with step b + 3; the partial step at the end completes none.
    const std::size_t complete = std::min(i + 1, timeline.wholeStepCount());
    const std::size_t blocks = complete >= LoudnessTimeline::kStepsPerBlock
                                   ? complete - LoudnessTimeline::kStepsPerBlock + 1
                                   : 0;
    const double integrated = blocks > 0 ? running[blocks - 1] : 0.0;
    entries.push_back({static_cast<float>(loudnessOfPower(timeline.momentaryPower(i))),
                       static_cast<float>(loudnessOfPower(timeline.shortTermPower(i))),
                       static_cast<float>(loudnessOfPower(integrated))});
  }
  // A programme below one block has its figure only when it ends.
  if (!entries.empty() && timeline.wholeStepCount() < LoudnessTimeline::kStepsPerBlock &&
      !running.empty())
    entries.back().integrated = static_cast<float>(loudnessOfPower(running.back()));
  return entries;
}

const std::vector<double>& LoudnessProcessor::blockPowers() const noexcept {
  static const std::vector<double> kNone;
  return state_->energies ? state_->energies->timeline().blockPowers() : kNone;
}

float LoudnessProcessor::integratedLUFS() const {
  return static_cast<float>(loudnessOfPower(LoudnessGating::gatedPower(blockPowers())));
}

float LoudnessProcessor::loudnessRange() const {
  if (!state_->energies) return 0.0F;
  return static_cast<float>(
      loudnessRangeOfPowers(state_->energies->timeline().wholeShortTermPowers()));
}

float LoudnessProcessor::speechGatedLUFS() const {
  if (!state_->speech) return kSilence;
  const auto& powers = blockPowers();
  const double gate = powerOfLoudness(LoudnessGating::kAbsoluteGateLUFS);
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t block = 0; block < std::min(powers.size(), state_->speech->size()); ++block)
    if ((*state_->speech)[block] && powers[block] > gate) {
      sum += powers[block];
      ++count;
    }
  if (count == 0) return kSilence;
  return static_cast<float>(loudnessOfPower(sum / static_cast<double>(count)));
}

float LoudnessProcessor::speechPercentage() const {
  if (!state_->speech || state_->speech->empty()) return 0.0F;
  const auto speech = std::count(state_->speech->begin(), state_->speech->end(), true);
  return static_cast<float>(100.0 * static_cast<double>(speech) /
                            static_cast<double>(state_->speech->size()));
}

float LoudnessProcessor::truePeakDB() const {
  const auto peaks = state_->truePeak.peaks();
  return peaks.empty() ? kSilence : linearToDB(*std::max_element(peaks.begin(), peaks.end()));
}

std::vector<float> LoudnessProcessor::channelTruePeaksDB() const {
  std::vector<float> levels;
  for (const float peak : state_->truePeak.peaks()) levels.push_back(linearToDB(peak));
  return levels;
}

}  // namespace orvane::core
