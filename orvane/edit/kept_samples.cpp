#include "orvane/edit/kept_samples.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "orvane/container/changed_samples.h"
#include "orvane/core/channel_order.h"

namespace orvane {
namespace {

std::int64_t lengthOf(PlanarView audio) {
  return static_cast<std::int64_t>(audio.frameCount());
}

PlanarView part(PlanarView audio, std::int64_t first, const FrameRange& range) {
  return audio.slice(static_cast<std::size_t>(range.start - first),
                     static_cast<std::size_t>(range.length()));
}

/// The channels as the file has them. One whose layout does not say the order has its own.
std::vector<std::uint32_t> fileOrder(const PCMStream& stream) {
  std::vector<std::uint32_t> order(stream.description.dataFormat.channelsPerFrame);
  std::iota(order.begin(), order.end(), 0U);
  if (const auto& layout = stream.description.layout) {
    auto stated = core::ChannelOrder::permutationToCanonical(
        core::ChannelOrder::channelLabels(*layout), static_cast<std::uint32_t>(order.size()));
    if (stated) order = *std::move(stated);
  }
  return order;
}

/// Whether integers are stored without rounding.
bool holds(const SampleEncoding& encoding, const SampleEncoding& samples) {
  constexpr std::uint32_t kFloatBits = 24;  // they go through a float
  return samples.kind != SampleEncoding::Kind::floatingPoint &&
         samples.bits <= std::min(encoding.bits, kFloatBits);
}

}  // namespace

KeptSamples::KeptSamples(const InputFile& file, const PCMStream& stream, const Storing& storing)
    : file_(file),
      stream_(stream),
      order_(fileOrder(stream)),
      encoding_(storing.encoding),
      isStoredAlike_(storing.encoding == stream.sample),
      isHeld_(isStoredAlike_ || holds(storing.encoding, stream.sample)) {
  if (storing.channel) {
    onlyChannel_ =
        static_cast<std::size_t>(std::ranges::find(order_, *storing.channel) - order_.begin());
    order_ = {0};
  }
  frameBytes_ = static_cast<std::int64_t>(order_.size() * encoding_.bytes);
  floats_.resize(order_.size());
  pointers_.resize(order_.size());
}

FrameMap KeptSamples::commonFrames(const SlicedAudio& edited) {
  const std::int64_t before = stream_.frameCount;
  const std::int64_t after = edited.frameCount;
  if (before == after) return FrameMap::identity(after);
  const std::int64_t least = std::min(before, after);
  std::int64_t firstOther = least;             // as both begin
  std::int64_t lastOther = after - least - 1;  // as both end
  std::int64_t first = 0;
  edited.deliver([&](PlanarView slice) {
    const PlanarView audio = inFileOrder(slice);
    const FrameRange held{first, first + lengthOf(slice)};
    const auto differs = [&](const FrameRange& range, std::int64_t shift, auto found) {
      if (range.isEmpty()) return;
      const PlanarView a = part(audio, first, range);
      const PlanarView b = floatsAt(range.start + shift, range.length());
      if (ChangedSamples::areSame(a, b)) return;
      for (std::size_t i = 0; i < a.frameCount(); ++i)
        if (!ChangedSamples::areSame(a.slice(i, 1), b.slice(i, 1)))
          found(range.start + static_cast<std::int64_t>(i));
    };
    differs(held.within({0, firstOther}), 0,
            [&](std::int64_t frame) { firstOther = std::min(firstOther, frame); });
    differs(held.within({after - least, after}), before - after,
            [&](std::int64_t frame) { lastOther = frame; });
    first = held.end;
  });
  const std::int64_t end = std::min(after - 1 - lastOther, least - firstOther);
  FrameMap map{.frameCount = after};
  if (firstOther > 0) map.pieces.push_back({.count = firstOther});
  if (end > 0)
    map.pieces.push_back({.sourceFirst = before - end, .count = end, .place = after - end});
  return map;
}

PlanarView KeptSamples::inFileOrder(PlanarView audio) {
  ordered_.clear();
  for (const std::uint32_t channel : order_) ordered_.push_back(audio.channel(channel));
  return {ordered_, audio.frameCount()};
}

/// As in the file, of its one channel where that is asked for.
void KeptSamples::readStored(std::int64_t sourceFrame, std::int64_t count) {
  const std::size_t frameBytes = stream_.description.dataFormat.bytesPerFrame;
  stored_.resize(static_cast<std::size_t>(count) * frameBytes);
  file_.readExactlyAt(stream_.dataOffset + static_cast<std::uint64_t>(sourceFrame) * frameBytes,
                      stored_);
  if (!onlyChannel_) return;
  const std::size_t width = stream_.sample.bytes;
  auto to = stored_.begin();
  for (std::size_t at = *onlyChannel_ * width; at < stored_.size(); at += frameBytes)
    to = std::copy_n(stored_.begin() + static_cast<std::ptrdiff_t>(at), width, to);
}

PlanarView KeptSamples::floatsAt(std::int64_t sourceFrame, std::int64_t count) {
  readStored(sourceFrame, count);
  const auto frames = static_cast<std::size_t>(count);
  for (std::size_t channel = 0; channel < floats_.size(); ++channel) {
    floats_[channel].resize(std::max(floats_[channel].size(), frames));
    pointers_[channel] = floats_[channel].data();
  }
  const MutablePlanarView floats(pointers_, frames);
  deinterleaveToFloat(stream_.sample, stored_.data(), floats);
  return floats;
}

bool KeptSamples::hasChanged(const SlicedAudio& edited) {
  bool hasChanged =
      !isStoredAlike_ || onlyChannel_ || frames_ != FrameMap::identity(stream_.frameCount);
  if (hasChanged) return true;
  std::int64_t first = 0;
  edited.deliver([&](PlanarView slice) {
    hasChanged = hasChanged ||
                 !ChangedSamples::areSame(inFileOrder(slice), floatsAt(first, lengthOf(slice)));
    first += lengthOf(slice);
  });
  return hasChanged;
}

std::span<const std::byte> KeptSamples::store(PlanarView audio,
                                              std::optional<std::uint64_t> ditherSeed) {
  const PlanarView edited = inFileOrder(audio);
  const FrameRange all{position_, position_ + lengthOf(edited)};
  bytes_.resize(static_cast<std::size_t>(all.length() * frameBytes_));
  const auto convertUpTo = [&](std::int64_t end) {
    convert(part(edited, all.start, {position_, end}), ditherSeed, all);
    position_ = end;
  };
  // Without dither samples that are held are stored so or so alike.
  const bool keeps = isStoredAlike_ || (isHeld_ && ditherSeed);
  for (const FrameMap::Piece& piece : frames_.pieces) {
    if (!keeps) break;
    // Where two pieces overlap the first one counts; what is mixed of both differs from it.
    const auto range =
        FrameRange{piece.place, piece.place + piece.count}.within({position_, all.end});
    if (range.isEmpty()) continue;
    convertUpTo(range.start);
    keep(part(edited, all.start, range), piece.sourceFirst + range.start - piece.place, ditherSeed,
         all);
    position_ = range.end;
  }
  convertUpTo(all.end);
  return bytes_;
}

std::byte* KeptSamples::bytesAt(const FrameRange& slice) {
  return bytes_.data() + (position_ - slice.start) * frameBytes_;
}

void KeptSamples::convert(PlanarView edited, std::optional<std::uint64_t> ditherSeed,
                          const FrameRange& slice) {
  losses_ += ditherSeed
                 ? interleaveDithered(encoding_, edited, {*ditherSeed, position_}, bytesAt(slice))
                 : interleaveFromFloat(encoding_, edited, bytesAt(slice));
}

/// Of frames that were moved as a whole, and perhaps changed.
void KeptSamples::keep(PlanarView edited, std::int64_t sourceFrame,
                       std::optional<std::uint64_t> ditherSeed, const FrameRange& slice) {
  const PlanarView before = floatsAt(sourceFrame, lengthOf(edited));
  stored_.resize(edited.frameCount() * static_cast<std::size_t>(frameBytes_));
  if (!isStoredAlike_) interleaveFromFloat(encoding_, before, stored_.data());
  std::byte* const bytes = bytesAt(slice);
  if (ChangedSamples::areSame(before, edited)) {
    std::ranges::copy(stored_, bytes);
    return;
  }
  const ChangedSamples changes(edited, before);
  convert(changes.changed(), ditherSeed, slice);
  changes.copyUnchanged(stored_.data(), encoding_.bytes, bytes);
}

}  // namespace orvane
