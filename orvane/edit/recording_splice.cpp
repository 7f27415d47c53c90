#include "orvane/edit/recording_splice.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/channel_arrays.h"
#include "orvane/edit/frame_range.h"
#include "orvane/edit/loaded_channels.h"
#include "orvane/edit/sample_rate_conversion.h"
#include "orvane/platform/sample_arithmetic.h"

namespace orvane::RecordingSplice {
namespace {

using EditOperations::frameCountOf;
using EditOperations::rearranged;
using EditOperations::requireEqualLengths;
using EditOperations::resultOf;
using Piece = FrameMap::Piece;

/// What a splice is made of, each piece where it lies in the result. The frames of the take are
/// counted on behind those of the base.
struct Splice {
  Piece head{};
  Piece take{};
  Piece tail{};

  Splice(std::int64_t frameCount, const FrameRange& replaced, std::int64_t takeFrames,
         std::int64_t crossfadeFrames) {
    const std::int64_t behind = frameCount - replaced.end;
    const std::int64_t longest = std::max<std::int64_t>(crossfadeFrames, 0);
    const std::int64_t lead = std::min({replaced.start, longest, takeFrames});
    const std::int64_t trail = std::min({behind, longest, takeFrames - lead});
    head = {.count = replaced.start};
    take = {.sourceFirst = frameCount, .count = takeFrames, .place = replaced.start - lead};
    tail = {.sourceFirst = replaced.end, .count = behind, .place = take.place + takeFrames - trail};
  }

  /// Of the result made of these of the pieces. With an empty tail, it ends where the take does.
  FrameMap mapOf(std::initializer_list<Piece> pieces) const {
    FrameMap map{.frameCount = tail.place + tail.count};
    std::ranges::copy_if(pieces, std::back_inserter(map.pieces),
                         [](const Piece& piece) { return piece.count > 0; });
    return map;
  }
};

FrameMap baseMap(std::int64_t frameCount, const FrameRange& replaced, std::int64_t takeFrames,
                 std::int64_t crossfadeFrames) {
  if (takeFrames < 1) return FrameMap::identity(frameCount);
  const Splice splice(frameCount, replaced, takeFrames, crossfadeFrames);
  return splice.mapOf({splice.head, splice.tail});
}

EditResult spliced(ChannelArrays base, const FrameRange& replaced, const ChannelArrays& take,
                   std::int64_t crossfadeFrames, double sampleRate) {
  requireEqualLengths(base, sampleRate);
  requireEqualLengths(take, sampleRate);
  if (take.size() != base.size() || frameCountOf(take) == 0)
    return resultOf(std::move(base), sampleRate);
  const Splice splice(frameCountOf(base), replaced, frameCountOf(take), crossfadeFrames);
  for (std::size_t c = 0; c < base.size(); ++c)
    base[c].insert(base[c].end(), take[c].begin(), take[c].end());
  return rearranged(std::move(base), sampleRate,
                    splice.mapOf({splice.head, splice.take, splice.tail}));
}

FrameRange placeAt(std::int64_t atFrame, std::int64_t frameCount) {
  const std::int64_t place = std::clamp<std::int64_t>(atFrame, 0, frameCount);
  return {place, place};
}

/// Whether the take has channels, all of equal length.
bool isRegular(const ChannelArrays& take) {
  return !take.empty() && std::ranges::all_of(take, [&](const auto& channel) {
    return channel.size() == take.front().size();
  });
}

bool isRate(double rate) {
  return std::isfinite(rate) && rate > 0;
}

}  // namespace

EditResult appendSplice(ChannelArrays base, const ChannelArrays& take, std::int64_t crossfadeFrames,
                        double sampleRate) {
  const std::int64_t end = frameCountOf(base);
  return spliced(std::move(base), {end, end}, take, crossfadeFrames, sampleRate);
}

EditResult insertSplice(ChannelArrays base, std::int64_t atFrame, const ChannelArrays& take,
                        std::int64_t crossfadeFrames, double sampleRate) {
  const FrameRange place = placeAt(atFrame, frameCountOf(base));
  return spliced(std::move(base), place, take, crossfadeFrames, sampleRate);
}

EditResult replaceSplice(ChannelArrays base, std::int64_t startFrame, std::int64_t endFrame,
                         const ChannelArrays& take, std::int64_t crossfadeFrames,
                         double sampleRate) {
  const auto range = FrameRange{startFrame, endFrame}.clamped(frameCountOf(base));
  if (range.isEmpty()) return resultOf(std::move(base), sampleRate);
  return spliced(std::move(base), range, take, crossfadeFrames, sampleRate);
}

FrameMap appendMap(std::int64_t frameCount, std::int64_t takeFrames, std::int64_t crossfadeFrames) {
  return baseMap(frameCount, {frameCount, frameCount}, takeFrames, crossfadeFrames);
}

FrameMap insertMap(std::int64_t frameCount, std::int64_t atFrame, std::int64_t takeFrames,
                   std::int64_t crossfadeFrames) {
  return baseMap(frameCount, placeAt(atFrame, frameCount), takeFrames, crossfadeFrames);
}

FrameMap replaceMap(std::int64_t frameCount, std::int64_t startFrame, std::int64_t endFrame,
                    std::int64_t takeFrames, std::int64_t crossfadeFrames) {
  const auto range = FrameRange{startFrame, endFrame}.clamped(frameCount);
  if (range.isEmpty()) return FrameMap::identity(frameCount);
  return baseMap(frameCount, range, takeFrames, crossfadeFrames);
}

std::optional<Take> readTake(const std::filesystem::path& url) {
  try {
    const auto source = AudioSource::open(url);
    return Take{EditOperations::loadChannels(*source), source->format().sampleRate};
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::optional<ChannelArrays> conformChannels(ChannelArrays take, int channelCount) {
  if (!isRegular(take) || channelCount < 1) return std::nullopt;
  const auto wanted = static_cast<std::size_t>(channelCount);
  if (take.size() == 2 && wanted == 1) {
    std::ranges::transform(take[0], take[1], take[0].begin(), std::plus());
    SampleArithmetic::scale(take[0], 0.5F);
    take.pop_back();
  }
  if (take.size() != 1 && take.size() != wanted) return std::nullopt;
  for (auto& channel : take) SampleArithmetic::silenceNonFinite(channel);
  if (take.size() < wanted) take.resize(wanted, std::vector(take.front()));
  return take;
}

std::optional<ChannelArrays> resampleTake(ChannelArrays take, double fromRate, double toRate) {
  if (!isRegular(take) || take.front().empty() || !isRate(fromRate) || !isRate(toRate))
    return std::nullopt;
  if (fromRate == toRate) return take;
  for (auto& channel : take) {
    auto converted = atSampleRate(channel, fromRate, toRate);
    if (!converted) return std::nullopt;
    channel = std::move(*converted);
  }
  return take;
}

bool TakeRetention::isStale(std::chrono::system_clock::time_point modified,
                            std::chrono::system_clock::time_point now) noexcept {
  return modified < now - std::chrono::days(7);
}

}  // namespace orvane::RecordingSplice
