#include "orvane/edit/kept_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace orvane {
namespace {

constexpr std::int64_t kPieceBytes = 1 << 19;

/// To the bit, so that payloads of NaN count and zeros keep their sign.
bool isSame(float a, float b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool areSame(PlanarView a, PlanarView b) {
  for (std::size_t channel = 0; channel < a.channelCount(); ++channel)
    if (std::memcmp(a.channel(channel), b.channel(channel), a.frameCount() * sizeof(float)) != 0)
      return false;
  return true;
}

bool isSameFrame(PlanarView a, PlanarView b, std::size_t frame) {
  for (std::size_t channel = 0; channel < a.channelCount(); ++channel)
    if (!isSame(a.channel(channel)[frame], b.channel(channel)[frame])) return false;
  return true;
}

}  // namespace

KeptSamples::KeptSamples(const InputFile& file, const PCMStream& stream, PlanarView edited)
    : file_(file),
      stream_(stream),
      edited_(edited),
      frameBytes_(stream.description.dataFormat.bytesPerFrame),
      newCount_(static_cast<std::int64_t>(edited.frameCount())),
      floats_(edited.channelCount()),
      pointers_(edited.channelCount()) {
  beginning_ = findBeginning();
  const std::int64_t least = std::min(newCount_, stream_.frameCount);
  hasChanged_ = newCount_ != stream_.frameCount || beginning_ != newCount_;
  if (newCount_ != stream_.frameCount) end_ = findEnd(least - beginning_);
}

std::span<const std::byte> KeptSamples::storedAt(std::int64_t first, std::int64_t count) {
  stored_.resize(static_cast<std::size_t>(count * frameBytes_));
  file_.readExactlyAt(stream_.dataOffset + static_cast<std::uint64_t>(first * frameBytes_),
                      stored_);
  return stored_;
}

PlanarView KeptSamples::floatsOf(std::span<const std::byte> stored, std::int64_t count) {
  const auto frames = static_cast<std::size_t>(count);
  for (std::size_t channel = 0; channel < floats_.size(); ++channel) {
    floats_[channel].resize(std::max(floats_[channel].size(), frames));
    pointers_[channel] = floats_[channel].data();
  }
  const MutablePlanarView floats(pointers_, frames);
  deinterleaveToFloat(stream_.sample, stored.data(), floats);
  return floats;
}

std::int64_t KeptSamples::findBeginning() {
  const std::int64_t most = std::min(newCount_, stream_.frameCount);
  const std::int64_t piece = std::max<std::int64_t>(kPieceBytes / frameBytes_, 1);
  for (std::int64_t first = 0; first < most; first += piece) {
    const std::int64_t count = std::min(piece, most - first);
    const PlanarView before = floatsOf(storedAt(first, count), count);
    const PlanarView after = edited_.slice(static_cast<std::size_t>(first), before.frameCount());
    if (areSame(before, after)) continue;
    std::size_t frame = 0;
    while (isSameFrame(before, after, frame)) ++frame;
    return first + static_cast<std::int64_t>(frame);
  }
  return most;
}

std::int64_t KeptSamples::findEnd(std::int64_t most) {
  const std::int64_t piece = std::max<std::int64_t>(kPieceBytes / frameBytes_, 1);
  for (std::int64_t done = 0; done < most; done += piece) {
    const std::int64_t count = std::min(piece, most - done);
    const PlanarView before = floatsOf(storedAt(stream_.frameCount - done - count, count), count);
    const PlanarView after =
        edited_.slice(static_cast<std::size_t>(newCount_ - done - count), before.frameCount());
    if (areSame(before, after)) continue;
    std::size_t same = 0;
    while (isSameFrame(before, after, before.frameCount() - 1 - same)) ++same;
    return done + static_cast<std::int64_t>(same);
  }
  return most;
}

void KeptSamples::write(std::optional<std::uint64_t> ditherSeed,
                        const std::function<void(std::span<const std::byte>)>& write) {
  const std::int64_t piece = std::max<std::int64_t>(kPieceBytes / frameBytes_, 1);
  const std::int64_t edges[] = {0, beginning_, newCount_ - end_, newCount_};
  for (int part = 0; part < 3; ++part)
    for (std::int64_t first = edges[part]; first < edges[part + 1]; first += piece) {
      const std::int64_t count = std::min(piece, edges[part + 1] - first);
      if (part == 1)
        convert(first, count, ditherSeed, write);
      else
        write(storedAt(part == 0 ? first : first + stream_.frameCount - newCount_, count));
    }
}

void KeptSamples::convert(std::int64_t first, std::int64_t count,
                          std::optional<std::uint64_t> ditherSeed,
                          const std::function<void(std::span<const std::byte>)>& write) {
  const PlanarView edited =
      edited_.slice(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
  converted_.resize(static_cast<std::size_t>(count * frameBytes_));
  losses_ += ditherSeed ? interleaveDithered(stream_.sample, edited, {*ditherSeed, first},
                                             converted_.data())
                        : interleaveFromFloat(stream_.sample, edited, converted_.data());
  if (newCount_ == stream_.frameCount) keepUnchanged(edited, storedAt(first, count));
  write(converted_);
}

void KeptSamples::keepUnchanged(PlanarView edited, std::span<const std::byte> stored) {
  const PlanarView before = floatsOf(stored, static_cast<std::int64_t>(edited.frameCount()));
  const std::size_t width = stream_.sample.bytes;
  for (std::size_t channel = 0; channel < edited.channelCount(); ++channel)
    for (std::size_t frame = 0; frame < edited.frameCount(); ++frame)
      if (isSame(before.channel(channel)[frame], edited.channel(channel)[frame])) {
        const std::size_t at = (frame * edited.channelCount() + channel) * width;
        std::memcpy(&converted_[at], &stored[at], width);
        // It was counted when all were converted, but is not lost.
        if (!std::isfinite(edited.channel(channel)[frame])) --losses_.nonFinite;
      }
}

}  // namespace orvane
