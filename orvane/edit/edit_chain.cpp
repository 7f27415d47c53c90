#include "orvane/edit/edit_chain.h"

#include <algorithm>
#include <string>
#include <utility>

#include "orvane/core/channel_order.h"
#include "orvane/edit/dc_offset.h"
#include "orvane/edit/fade_envelope.h"
#include "orvane/edit/level.h"
#include "orvane/edit/mapped_frames.h"
#include "orvane/edit/non_speech_expander.h"
#include "orvane/edit/peak_normalization.h"
#include "orvane/edit/trim_cut.h"
#include "orvane/edit/true_peak_limiter.h"
#include "orvane/platform/audio_load_limits.h"
#include "orvane/platform/precondition.h"

namespace orvane {
namespace {

using namespace EditOperations;
using Case = EditChainError::Case;

std::string descriptionOf(Case errorCase) {
  switch (errorCase) {
    case Case::emptyRange:
      return "there is no audio in the range";
    case Case::nothingLeft:
      return "nothing would be left";
    case Case::notStereo:
      return "only the two channels of stereo can be swapped";
    case Case::longCrossfade:
      break;
  }
  return "the audio does not fit into memory, and so long a crossfade cannot be done without";
}

bool isInsertion(const Edit& edit) {
  const auto* const silence = std::get_if<SilenceEdit>(&edit);
  return silence != nullptr && silence->mode != SilenceMode::replace;
}

/// Cuts the edit to what is there, and finds what makes no sense of it.
void adapt(Edit& edit, std::size_t index, std::int64_t frameCount, std::uint32_t channelCount) {
  std::visit(
      [&]<class Each>(Each& each) {
        if constexpr (requires { each.range; }) {
          if (isInsertion(edit)) {
            each.range.start = std::clamp<std::int64_t>(each.range.start, 0, frameCount);
            each.range.end = std::clamp<std::int64_t>(each.range.end, 0, frameCount);
            return;
          }
          each.range = each.range.clamped(frameCount);
          if (each.range.isEmpty()) throw EditChainError(Case::emptyRange, index);
        }
        if constexpr (std::is_same_v<Each, CutEdit>) {
          if (each.range.length() == frameCount) throw EditChainError(Case::nothingLeft, index);
          each.crossfadeFrames = std::max<std::int64_t>(
              0, std::min({each.crossfadeFrames, each.range.start, frameCount - each.range.end}));
        }
        if constexpr (std::is_same_v<Each, SwapEdit>)
          if (channelCount != 2) throw EditChainError(Case::notStereo, index);
      },
      edit);
}

/// The speech of a source, where the edits so far have put it.
void follow(ExpandEdit& edit, const FrameMap& map) {
  std::vector<FrameRange> speech;
  for (const FrameRange& range : edit.speech)
    for (const FrameRange& place : map.placesOf(range)) speech.push_back(place);
  edit.speech = std::move(speech);
}

/// Where one edit puts the frames.
struct MapOfEdit {
  std::int64_t frameCount;

  FrameMap operator()(const TrimEdit& edit) const {
    return trimMap(frameCount, edit.range.start, edit.range.end);
  }
  FrameMap operator()(const CutEdit& edit) const {
    return cutMap(frameCount, edit.range.start, edit.range.end, edit.crossfadeFrames);
  }
  FrameMap operator()(const SilenceEdit& edit) const {
    return silenceMap(frameCount, edit.range.start, edit.range.end, edit.mode, edit.durationFrames);
  }
  FrameMap operator()(const auto&) const { return FrameMap::identity(frameCount); }
};

/// What one edit does beside moving frames.
struct ChangeOfEdit {
  PCMBuffer& buffer;
  const Execution& execution;
  std::vector<Normalization>& normalizations;

  MutablePlanarView audio() const { return buffer.room().slice(0, buffer.frameLength()); }

  void operator()(const TrimEdit&) const {}
  void operator()(const CutEdit&) const {}
  void operator()(const SilenceEdit& edit) const {
    if (edit.mode == SilenceMode::replace) silenceSlice({audio()}, edit.range);
  }
  void operator()(const FadeEdit& edit) const {
    fadeInPlace(audio(), edit.range.start, edit.range.end, edit.direction, edit.curve);
  }
  void operator()(const GainEdit& edit) const {
    changeLevelInPlace(audio(), edit.gainDB, edit.range.start, edit.range.end);
  }
  void operator()(const InvertEdit& edit) const {
    invertPhaseInPlace(audio(), edit.range.start, edit.range.end);
  }
  void operator()(const DCOffsetEdit& edit) const {
    removeDCOffsetInPlace(audio(), edit.range.start, edit.range.end);
  }
  void operator()(const ExpandEdit& edit) const {
    const std::int64_t blockFrames = speechBlockFrames(buffer.sampleRate());
    expandNonSpeechInPlace(audio(), buffer.sampleRate(),
                           speechBlocks(edit.speech, buffer.frameLength(), blockFrames),
                           blockFrames, edit.expansion);
  }
  void operator()(const SwapEdit&) const { buffer.permuteChannels({1, 0}, buffer.format().layout); }
  void operator()(const PeakEdit& edit) const { normalizePeakInPlace(audio(), edit.targetDB); }
  void operator()(const LimitEdit& edit) const {
    applyTruePeakLimiter(audio(), linearGain(edit.ceilingDBTP), buffer.sampleRate(), execution);
  }
  void operator()(const NormalizeEdit& edit) const {
    normalizations.push_back(
        {edit, normalizeLUFSInPlace(audio(), buffer.sampleRate(), edit.targetLUFS, edit.ceilingDBTP,
                                    core::ChannelOrder::bs1770Weights(buffer), execution)});
  }
};

}  // namespace

EditChainError::EditChainError(Case errorCase, std::size_t index)
    : Error(descriptionOf(errorCase)), case_(errorCase), index_(index) {}
EditChainError::~EditChainError() = default;

EditChain::EditChain(std::vector<Edit> edits, std::int64_t frameCount, std::uint32_t channelCount)
    : edits_(std::move(edits)),
      map_(FrameMap::identity(frameCount)),
      largestFrameCount_(frameCount),
      sourceFrameCount_(frameCount) {
  for (std::size_t i = 0; i < edits_.size(); ++i) {
    adapt(edits_[i], i, map_.frameCount, channelCount);
    if (auto* const expand = std::get_if<ExpandEdit>(&edits_[i])) follow(*expand, map_);
    const FrameMap& step = steps_.emplace_back(std::visit(MapOfEdit{map_.frameCount}, edits_[i]));
    map_ = map_.then(step);
    largestFrameCount_ = std::max(largestFrameCount_, map_.frameCount);
  }
}

std::int64_t EditChain::heldBytes(std::uint32_t channelCount) const {
  // The best pass so far of a normalisation stands beside the one that is tried.
  const bool normalizes = std::ranges::any_of(
      edits_, [](const Edit& edit) { return std::holds_alternative<NormalizeEdit>(edit); });
  return AudioLoadLimits::decodedBytes(largestFrameCount_, channelCount) * (normalizes ? 2 : 1);
}

bool EditChain::fitsIntoMemory(std::uint32_t channelCount) const {
  return AudioLoadLimits::isWithinLimits(largestFrameCount_, channelCount) &&
         AudioLoadLimits::inRAMRebuildFitsLive(heldBytes(channelCount), 1);
}

std::shared_ptr<PCMBuffer> EditChain::load(AudioSource& source) const {
  if (!fitsIntoMemory(source.format().channelCount))
    throw PlatformError(source.url(), "there is not enough memory to edit so much audio");
  auto buffer = source.makeBuffer(static_cast<std::uint32_t>(largestFrameCount_));
  source.read(*buffer);
  if (buffer->frameLength() > sourceFrameCount_)
    buffer->setFrameLength(static_cast<std::uint32_t>(sourceFrameCount_));
  return buffer;
}

std::vector<Normalization> EditChain::apply(PCMBuffer& audio, const Execution& execution) const {
  precondition(
      audio.frameLength() == sourceFrameCount_ && audio.frameCapacity() >= largestFrameCount_,
      "audio is edited that has the length of the chain, and room");
  std::vector<Normalization> normalizations;
  for (std::size_t i = 0; i < edits_.size(); ++i) {
    moveMappedFrames(steps_[i], audio.frameLength(), audio.room());
    audio.setFrameLength(static_cast<std::uint32_t>(steps_[i].frameCount));
    std::visit(ChangeOfEdit{audio, execution, normalizations}, edits_[i]);
  }
  return normalizations;
}

}  // namespace orvane
