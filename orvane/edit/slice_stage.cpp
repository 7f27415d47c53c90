#include "orvane/edit/slice_stage.h"

#include <algorithm>

#include "orvane/edit/mapped_frames.h"
#include "orvane/platform/sample_arithmetic.h"

namespace orvane {
namespace {

using Piece = FrameMap::Piece;

/// Frames that are handed on at a time.
constexpr std::int64_t kMostFrames = std::int64_t{1} << 15;

std::int64_t lengthOf(PlanarView audio) {
  return static_cast<std::int64_t>(audio.frameCount());
}

template <class Sample>
std::vector<Sample*> pointersTo(std::vector<std::vector<float>>& channels) {
  std::vector<Sample*> pointers;
  for (auto& channel : channels) pointers.push_back(channel.data());
  return pointers;
}

}  // namespace

void ChangeStage::process(MutablePlanarView slice, const Next& next) {
  change_({slice, position_});
  position_ += lengthOf(slice);
  next(slice);
}

MoveStage::MoveStage(FrameMap map, std::size_t channelCount)
    : map_(std::move(map)), window_(channelCount), result_(channelCount) {
  std::int64_t kept = 0;
  for (Piece& piece : map_.pieces) {
    sources_.push_back({piece.sourceFirst, piece.sourceFirst + piece.count});
    piece.sourceFirst = kept;
    kept += piece.count;
  }
}

void MoveStage::process(MutablePlanarView slice, const Next& next) {
  const ProgrammeSlice programme{slice, position_};
  for (const FrameRange& source : sources_) {
    const auto part = programme.within(source).audio;
    for (std::size_t c = 0; c < part.channelCount(); ++c)
      window_[c].insert(window_[c].end(), part.channel(c), part.channel(c) + part.frameCount());
    kept_ += lengthOf(part);
  }
  position_ += lengthOf(slice);
  render(knownPlaces(), next);
  release();
}

void MoveStage::finish(const Next& next) {
  render(map_.frameCount, next);
}

/// The frames of the result that no piece which is still to come touches.
std::int64_t MoveStage::knownPlaces() const {
  for (const Piece& piece : map_.pieces)
    if (kept_ < piece.sourceFirst + piece.count) {
      // A piece that has not begun may reach into the one before.
      const std::int64_t place = piece.place + kept_ - piece.sourceFirst;
      const auto* const following = &piece + 1;
      const bool isLast = following == map_.pieces.data() + map_.pieces.size();
      return isLast ? place : std::min(place, following->place);
    }
  return map_.pieces.empty() ? 0 : map_.pieces.back().place + map_.pieces.back().count;
}

void MoveStage::render(std::int64_t end, const Next& next) {
  FrameMap inWindow = map_;
  for (Piece& piece : inWindow.pieces) piece.sourceFirst -= windowFirst_;
  const auto window = pointersTo<const float>(window_);
  const PlanarView source(window, window_.empty() ? 0 : window_.front().size());
  while (rendered_ < end) {
    const std::int64_t count = std::min(kMostFrames, end - rendered_);
    for (auto& channel : result_) channel.resize(static_cast<std::size_t>(count));
    const auto result = pointersTo<float>(result_);
    const MutablePlanarView frames(result, static_cast<std::size_t>(count));
    renderMappedFrames(inWindow, source, rendered_, frames);
    rendered_ += count;
    next(frames);
  }
}

/// Lets go of the frames that only what is rendered is made of.
void MoveStage::release() {
  std::int64_t needed = kept_;
  for (const Piece& piece : map_.pieces)
    if (piece.place + piece.count > rendered_) {
      const std::int64_t done = std::max<std::int64_t>(rendered_ - piece.place, 0);
      needed = std::min(needed, piece.sourceFirst + done);
      break;
    }
  for (auto& channel : window_)
    channel.erase(channel.begin(), channel.begin() + (needed - windowFirst_));
  windowFirst_ = needed;
}

void ExpandStage::process(MutablePlanarView slice, const Next& next) {
  expander_.process(slice);
  next(slice);
}

void LimitStage::process(MutablePlanarView slice, const Next& next) {
  give(limiter_.process(slice), next);
}

void LimitStage::finish(const Next& next) {
  give(limiter_.finish(), next);
}

void LimitStage::give(MutablePlanarView limited, const Next& next) const {
  if (limited.frameCount() == 0) return;
  if (lastScale_ != 1)
    for (std::size_t c = 0; c < limited.channelCount(); ++c)
      SampleArithmetic::scale(limited.samples(c), lastScale_);
  next(limited);
}

}  // namespace orvane
