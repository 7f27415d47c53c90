#include "orvane/edit/moved_source.h"

#include <algorithm>

#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr std::uint32_t kSliceFrames = 1 << 15;

FrameMap withoutOverlaps(const FrameMap& frames) {
  FrameMap result{.frameCount = frames.frameCount};
  std::int64_t end = 0;
  for (FrameMap::Piece piece : frames.pieces) {
    const std::int64_t overlap = std::max<std::int64_t>(end - piece.place, 0);
    if (piece.count <= overlap) continue;
    piece = {piece.sourceFirst + overlap, piece.count - overlap, piece.place + overlap};
    end = piece.place + piece.count;
    result.pieces.push_back(piece);
  }
  return result;
}

}  // namespace

MovedSource::MovedSource(std::shared_ptr<AudioSource> source, const FrameMap& frames)
    : source_(std::move(source)),
      slice_(source_->makeBuffer(kSliceFrames)),
      stage_(withoutOverlaps(frames), source_->format().channelCount),
      remaining_(frames.frameCount),
      held_(source_->format().channelCount) {}

PlanarView MovedSource::next(std::size_t frameCount) {
  for (auto& channel : held_)
    channel.erase(channel.begin(), channel.begin() + static_cast<std::ptrdiff_t>(given_));
  given_ = frameCount;
  const auto hold = [this](PlanarView audio) {
    for (std::size_t c = 0; c < held_.size(); ++c)
      held_[c].insert(held_[c].end(), audio.channel(c), audio.channel(c) + audio.frameCount());
    remaining_ -= static_cast<std::int64_t>(audio.frameCount());
  };
  while (held() < frameCount && remaining_ > 0) {
    source_->read(*slice_);
    if (slice_->frameLength() == 0) {
      if (!stage_.hasAll())
        throw PlatformError(source_->url(), "the audio ends before its stated length");
      stage_.finish(hold);
    } else {
      stage_.process(slice_->room().slice(0, slice_->frameLength()), hold);
    }
  }
  pointers_.assign(held_.size(), nullptr);
  for (std::size_t c = 0; c < held_.size(); ++c) pointers_[c] = held_[c].data();
  return {pointers_, frameCount};
}

}  // namespace orvane
