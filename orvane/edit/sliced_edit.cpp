#include "orvane/edit/sliced_edit.h"

#include <algorithm>
#include <utility>

#include "orvane/edit/dc_offset.h"
#include "orvane/edit/fade_envelope.h"
#include "orvane/edit/level.h"
#include "orvane/edit/peak_normalization.h"
#include "orvane/edit/slice_line.h"

namespace orvane {
namespace {

using namespace EditOperations;

/// Of the audio that a crossfade has to hold until its other side comes.
constexpr std::int64_t kMostHeldBytes = std::int64_t{64} << 20;

void addGain(SliceLine& line, double gainDB, const FrameRange& range) {
  line.addChange([=](const ProgrammeSlice& slice) { changeLevelOfSlice(slice, range, gainDB); });
}

/// A limiter behind the line, which goes through once to find out what all of it is scaled by. What
/// it gives is the audio already where that is 1.
template <class Take>
float addLimiter(SliceLine& line, float ceiling, Take take) {
  const auto& [sampleRate, channelCount, layout] = line.format();
  TruePeakLimiter limiter(sampleRate, channelCount, ceiling);
  line.run([&](MutablePlanarView slice) { take(limiter.process(slice)); });
  take(limiter.finish());
  const float lastScale = limiter.lastScale();
  line.add<LimitStage>(sampleRate, std::size_t{channelCount}, ceiling, lastScale);
  return lastScale;
}

/// A programme that is brought to a loudness by more stages of its line.
class SlicedProgramme final : public NormalizedProgramme {
 public:
  SlicedProgramme(SliceLine& line, std::int64_t frameCount, double ceilingDB)
      : line_(line), all_{0, frameCount}, ceiling_(linearGain(ceilingDB)) {}

  double integratedLUFS() override {
    if (!measured_) {
      SlicedMeter meter = line_.makeMeter();
      line_.run([&](MutablePlanarView slice) { meter.process(slice); });
      measured_ = meter.integratedLUFS();
    }
    return static_cast<double>(*measured_);
  }
  void changeLevel(double gainDB) override {
    addGain(line_, gainDB, all_);
    measured_.reset();
  }
  void limit() override {
    SlicedMeter meter = line_.makeMeter();
    const float lastScale =
        addLimiter(line_, ceiling_, [&](MutablePlanarView slice) { meter.process(slice); });
    measured_ = lastScale == 1 ? std::optional(meter.integratedLUFS()) : std::nullopt;
  }
  void remember() override { best_ = line_.stageCount(); }
  void restore() override { line_.keepStages(best_); }

 private:
  SliceLine& line_;
  FrameRange all_;
  float ceiling_;
  std::optional<float> measured_{};
  std::size_t best_ = 0;
};

/// Adds what one edit does beside moving frames. What it has to know of all the audio before it is
/// found out by that.
struct StageOfEdit {
  SliceLine& line;
  std::int64_t frameCount;
  std::vector<Normalization>& normalizations;

  void operator()(const TrimEdit&) const {}
  void operator()(const CutEdit&) const {}
  void operator()(const SilenceEdit& edit) const {
    if (edit.mode == SilenceMode::replace)
      line.addChange([=](const ProgrammeSlice& slice) { silenceSlice(slice, edit.range); });
  }
  void operator()(const FadeEdit& edit) const {
    line.addChange([=](const ProgrammeSlice& slice) {
      fadeSlice(slice, edit.range, edit.direction, edit.curve);
    });
  }
  void operator()(const GainEdit& edit) const { addGain(line, edit.gainDB, edit.range); }
  void operator()(const InvertEdit& edit) const {
    line.addChange([=](const ProgrammeSlice& slice) { invertPhaseOfSlice(slice, edit.range); });
  }
  void operator()(const DCOffsetEdit& edit) const {
    std::vector<DCOffsetMeter> meters(line.format().channelCount);
    std::int64_t position = 0;
    line.run([&](MutablePlanarView slice) {
      const auto part = ProgrammeSlice{slice, position}.within(edit.range).audio;
      for (std::size_t c = 0; c < part.channelCount(); ++c) meters[c].process(part.samples(c));
      position += static_cast<std::int64_t>(slice.frameCount());
    });
    std::vector<float> offsets;
    for (const DCOffsetMeter& meter : meters) offsets.push_back(meter.offset());
    line.addChange(
        [=](const ProgrammeSlice& slice) { subtractFromSlice(slice, edit.range, offsets); });
  }
  void operator()(const ExpandEdit& edit) const {
    const double rate = line.format().sampleRate;
    const std::int64_t blockFrames = speechBlockFrames(rate);
    line.add<ExpandStage>(NonSpeechExpander(
        rate, speechBlocks(edit.speech, frameCount, blockFrames), blockFrames, edit.expansion));
  }
  void operator()(const SwapEdit&) const {
    line.addChange([](const ProgrammeSlice& slice) {
      std::ranges::swap_ranges(slice.audio.samples(0), slice.audio.samples(1));
    });
  }
  void operator()(const PeakEdit& edit) const {
    float peak = 0;
    line.run([&](MutablePlanarView slice) { peak = std::max(peak, finitePeak(slice)); });
    addGain(line, peakNormalizationGainDB(peak, edit.targetDB), {0, frameCount});
  }
  void operator()(const LimitEdit& edit) const {
    addLimiter(line, linearGain(edit.ceilingDBTP), [](MutablePlanarView) {});
  }
  void operator()(const NormalizeEdit& edit) const {
    SlicedProgramme programme(line, frameCount, edit.ceilingDBTP);
    normalizations.push_back({edit, normalize(programme, edit.targetLUFS)});
  }
};

std::int64_t longestCrossfade(const FrameMap& map) {
  std::int64_t longest = 0;
  for (std::size_t i = 1; i < map.pieces.size(); ++i) {
    const FrameMap::Piece& before = map.pieces[i - 1];
    longest = std::max(longest, before.place + before.count - map.pieces[i].place);
  }
  return longest;
}

}  // namespace

AudioEndsEarly::AudioEndsEarly(std::int64_t frameCount)
    : Error("the audio ends before its stated length"), frameCount_(frameCount) {}
AudioEndsEarly::~AudioEndsEarly() = default;

struct SlicedEdit::State {
  EditChain chain;
  SliceLine line;
  Execution execution;
  bool isMeasuring = false;
  ProgrammeLevels levelsAfter{};
};

void SlicedEdit::requirePossible(const EditChain& chain, std::uint32_t channelCount) {
  const std::int64_t frameBytes = std::int64_t{channelCount} * std::int64_t{sizeof(float)};
  for (std::size_t i = 0; i < chain.steps().size(); ++i)
    if (longestCrossfade(chain.steps()[i]) > kMostHeldBytes / frameBytes)
      throw EditChainError(EditChainError::Case::longCrossfade, i);
}

SlicedEdit::SlicedEdit(const EditChain& chain, const AudioFormat& format, Opening open,
                       const Execution& execution)
    : state_(std::make_unique<State>(
          State{chain, SliceLine(std::move(open), format, chain.sourceFrameCount(), execution),
                execution})) {}
SlicedEdit::~SlicedEdit() = default;

std::vector<Normalization> SlicedEdit::prepare(bool measures) {
  auto& [chain, line, execution, isMeasuring, levelsAfter] = *state_;
  isMeasuring = measures;
  if (measures) line.measureSource();
  std::vector<Normalization> normalizations;
  std::int64_t frameCount = chain.sourceFrameCount();
  for (std::size_t i = 0; i < chain.edits().size(); ++i) {
    const FrameMap& step = chain.steps()[i];
    if (step != FrameMap::identity(frameCount))
      line.add<MoveStage>(step, std::size_t{line.format().channelCount});
    frameCount = step.frameCount;
    std::visit(StageOfEdit{line, frameCount, normalizations}, chain.edits()[i]);
  }
  return normalizations;
}

SlicedAudio SlicedEdit::audio() {
  return {state_->line.format().channelCount, state_->chain.frameMap().frameCount,
          [this](const SlicedAudio::Take& take) { deliver(take); }};
}

void SlicedEdit::deliver(const SlicedAudio::Take& take) {
  std::optional<SlicedMeter> meter;
  if (std::exchange(state_->isMeasuring, false)) meter.emplace(state_->line.makeMeter());
  state_->line.run([&](MutablePlanarView slice) {
    if (meter) meter->process(slice, state_->execution.threadCount);
    take(slice);
  });
  if (meter) state_->levelsAfter = meter->levels();
}

const ProgrammeLevels& SlicedEdit::levelsBefore() const noexcept {
  return state_->line.sourceLevels();
}
const ProgrammeLevels& SlicedEdit::levelsAfter() const noexcept {
  return state_->levelsAfter;
}

}  // namespace orvane
