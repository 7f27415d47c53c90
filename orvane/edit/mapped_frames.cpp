#include "orvane/edit/mapped_frames.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "orvane/edit/fade_gain_kernel.h"
#include "orvane/edit/frame_range.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/sample_arithmetic.h"

namespace orvane {
namespace {

using Piece = FrameMap::Piece;

std::size_t sizeOf(std::int64_t frames) {
  return static_cast<std::size_t>(frames);
}

FrameRange placesOf(const Piece& piece) {
  return {piece.place, piece.place + piece.count};
}

/// The samples of `piece` that come to `place`.
const float* samplesAt(const Piece& piece, std::int64_t place, const float* source) {
  return source + (piece.sourceFirst + place - piece.place);
}

void crossfade(const Piece& outgoing, const Piece& incoming, const FrameRange& wanted,
               PlanarView source, std::int64_t first, MutablePlanarView destination) {
  using namespace EditOperations;
  constexpr std::int64_t kBlock = 1024;
  std::array<float, kBlock> fallingGains;
  std::array<float, kBlock> risingGains;
  const FrameRange common = placesOf(outgoing).within(placesOf(incoming));
  const auto divisor = static_cast<float>(common.length());
  const FrameRange range = common.within(wanted);
  for (std::int64_t at = range.start; at < range.end; at += kBlock) {
    const std::size_t count = sizeOf(std::min(kBlock, range.end - at));
    const std::int64_t index = at - common.start;
    fillFadeGains(FadeCurve::equalPower, FadeDirection::fadeOut, index, divisor,
                  std::span(fallingGains).first(count));
    fillFadeGains(FadeCurve::equalPower, FadeDirection::fadeIn, index, divisor,
                  std::span(risingGains).first(count));
    for (std::size_t c = 0; c < destination.channelCount(); ++c)
      SampleArithmetic::mix(samplesAt(outgoing, at, source.channel(c)), fallingGains.data(),
                            samplesAt(incoming, at, source.channel(c)), risingGains.data(),
                            destination.channel(c) + (at - first), count);
  }
}

}  // namespace

void renderMappedFrames(const FrameMap& map, PlanarView source, std::int64_t first,
                        MutablePlanarView destination) {
  const FrameRange wanted{first, first + static_cast<std::int64_t>(destination.frameCount())};
  std::int64_t done = wanted.start;  // everything before it is written
  const auto fillWithSilence = [&](std::int64_t end) {
    for (std::size_t c = 0; end > done && c < destination.channelCount(); ++c)
      std::fill_n(destination.channel(c) + (done - first), end - done, 0.0F);
    done = std::max(done, end);
  };
  const Piece* before = nullptr;
  for (const Piece& piece : map.pieces) {
    const FrameRange range = placesOf(piece).within(wanted);
    if (before != nullptr) crossfade(*before, piece, wanted, source, first, destination);
    const std::int64_t begin =
        before == nullptr ? range.start : std::max(range.start, before->place + before->count);
    before = &piece;
    if (range.isEmpty()) continue;
    fillWithSilence(std::min(begin, range.end));
    for (std::size_t c = 0; begin < range.end && c < destination.channelCount(); ++c)
      std::copy_n(samplesAt(piece, begin, source.channel(c)), range.end - begin,
                  destination.channel(c) + (begin - first));
    done = std::max(done, range.end);
  }
  fillWithSilence(wanted.end);
}

void moveMappedFrames(const FrameMap& map, std::int64_t frameCount, MutablePlanarView room) {
  if (map == FrameMap::identity(frameCount)) return;
  const auto staysOrGoesBack = [](const Piece& piece) { return piece.place >= piece.sourceFirst; };
  const auto staysOrGoesForward = [](const Piece& piece) {
    return piece.place <= piece.sourceFirst;
  };
  const bool isForward = std::ranges::all_of(map.pieces, staysOrGoesForward);
  precondition(isForward || std::ranges::all_of(map.pieces, staysOrGoesBack),
               "frames are moved one way");
  // No frame that a later block is made of lies where an earlier one was put.
  constexpr std::int64_t kBlock = std::int64_t{1} << 15;
  const std::int64_t blocks = (map.frameCount + kBlock - 1) / kBlock;
  std::vector<float> block(sizeOf(std::min(kBlock, map.frameCount)));
  for (std::size_t c = 0; c < room.channelCount(); ++c) {
    const auto channel = room.channels(c, 1);
    for (std::int64_t i = 0; i < blocks; ++i) {
      const std::int64_t first = (isForward ? i : blocks - 1 - i) * kBlock;
      const std::size_t count = sizeOf(std::min(kBlock, map.frameCount - first));
      float* const result = block.data();
      renderMappedFrames(map, channel, first, MutablePlanarView({&result, 1}, count));
      std::copy_n(result, count, channel.channel(0) + first);
    }
  }
}

}  // namespace orvane
