#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "orvane/platform/parallel.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// Reads a file's audio by several decoders at once, each in a part of its own of what is to be
/// read, and gives what one decoder would give.
///
/// Parts are joined only where the stream that has just come to the end of one shows that the next
/// one's has the state that decoding from the start would have brought it to; else the stream of
/// the last part that counts reads the rest, and all that follows.
///
/// A `Stream` has `seek(frame)`, false when it cannot go on there; `read(room)`, which fills the
/// room but at the end; `isSound()`, false at the end or when it has met what another stream, which
/// begins later, would not know of; and `isFollowedBy(next, audio, nextAudio)`: whether the stream,
/// having read `audio`, would go on with the `nextAudio` that `next` has read.
template <typename Stream>
class PartedReading {
 public:
  /// Makes a stream at the file's start; null when it cannot.
  using Make = std::function<std::unique_ptr<Stream>()>;

  PartedReading(std::size_t threadCount, Make make)
      : threadCount_(threadCount), make_(std::move(make)) {
    streams_.push_back(make_());
  }

  /// False where none could be made at the file's start; nothing can be read then.
  bool hasStream() const noexcept { return streams_.front() != nullptr; }

  /// The stream that has come to where the next frames are.
  Stream& stream() noexcept { return *streams_.front(); }
  const Stream& stream() const noexcept { return *streams_.front(); }

  /// Whether nothing is to come.
  bool hasEnded() const noexcept { return stream().hasEnded() && isAheadEmpty(); }

  /// The next frames, which begin at `position`; fewer than there is room for only at the end.
  /// Frames behind `shareable` are read by one stream. Each stretch is told to `take(count)`.
  template <typename Take>
  std::size_t read(MutablePlanarView room, std::int64_t position, std::int64_t shareable,
                   const Take& take) {
    std::size_t filled = 0;
    for (std::size_t count = 1; count > 0 && filled < room.frameCount(); filled += count) {
      const std::int64_t start = position + static_cast<std::int64_t>(filled);
      if (isAheadEmpty()) readAhead(room, filled, start, shareable);
      count = isAheadEmpty() ? readNow(room.from(filled), start, shareable)
                             : takeAhead(room.from(filled));
      take(count);
    }
    return filled;
  }

 private:
  static constexpr std::size_t kFramesOfStretch = 65536;
  /// Frames that are worth a decoder of their own, which has to find its place.
  static constexpr std::size_t kFewestFramesOfPart = std::size_t{1} << 17;
  /// That are kept in memory, for each thread, until they are asked for.
  static constexpr std::size_t kSamplesAhead = std::size_t{1} << 21;
  /// Several parts for each thread end together even though others, like those that measure, take
  /// their time from the same processors.
  static constexpr std::size_t kMostPartsPerThread = 2;

  std::size_t partsOf(std::size_t frames, std::int64_t position, std::int64_t shareable) const {
    if (threadCount_ < 2 || position + static_cast<std::int64_t>(frames) > shareable) return 1;
    return std::clamp<std::size_t>(frames / kFewestFramesOfPart, 1,
                                   kMostPartsPerThread * threadCount_);
  }

  std::size_t readNow(MutablePlanarView room, std::int64_t position, std::int64_t shareable) {
    const std::size_t parts = partsOf(room.frameCount(), position, shareable);
    if (parts > 1) return readParts(room, position, parts);
    return stream().read(room.slice(0, std::min(kFramesOfStretch, room.frameCount())));
  }

  /// Who reads in small pieces, and more than the file's start, is given them out of a larger one.
  void readAhead(const MutablePlanarView& room, std::size_t filled, std::int64_t position,
                 std::int64_t shareable) {
    const auto most = static_cast<std::int64_t>(kSamplesAhead / room.channelCount() * threadCount_);
    const auto frames =
        static_cast<std::size_t>(std::clamp<std::int64_t>(shareable - position, 0, most));
    const std::size_t parts = partsOf(frames, position, shareable);
    if (parts < 2 || partsOf(room.frameCount() - filled, position, shareable) > 1 ||
        position < static_cast<std::int64_t>(kFewestFramesOfPart))
      return;
    ahead_.resize(room.channelCount() * frames);
    aheadChannels_.resize(room.channelCount());
    for (std::size_t c = 0; c < aheadChannels_.size(); ++c)
      aheadChannels_[c] = ahead_.data() + c * frames;
    const MutablePlanarView stretch(aheadChannels_, frames);
    aheadLeft_ = stretch.slice(0, readParts(stretch, position, parts));
  }

  bool isAheadEmpty() const noexcept { return aheadLeft_.frameCount() == 0; }

  std::size_t takeAhead(const MutablePlanarView& room) {
    const std::size_t count = std::min(room.frameCount(), aheadLeft_.frameCount());
    for (std::size_t c = 0; c < room.channelCount(); ++c)
      std::copy_n(aheadLeft_.channel(c), count, room.channel(c));
    aheadLeft_ = aheadLeft_.from(count);
    return count;
  }

  std::size_t readParts(MutablePlanarView room, std::int64_t position, std::size_t partCount) {
    const std::size_t length = room.frameCount() / partCount;
    std::vector<MutablePlanarView> rooms(partCount);
    std::vector<std::size_t> filled(partCount);
    if (streams_.size() < partCount) streams_.resize(partCount);
    parallelFor(threadCount_, partCount, [&](std::size_t i) {
      const std::size_t start = i * length;
      rooms[i] = i + 1 < partCount ? room.slice(start, length) : room.from(start);
      auto& stream = streams_[i];
      if (!stream) stream = make_();
      if (!stream || (i > 0 && !stream->seek(position + static_cast<std::int64_t>(start)))) return;
      filled[i] = stream->read(rooms[i]);
    });
    const auto isSound = [&](std::size_t i) {
      return filled[i] == rooms[i].frameCount() && streams_[i]->isSound();
    };
    std::size_t valid = 1;
    while (valid < partCount && isSound(valid - 1) && isSound(valid) &&
           streams_[valid - 1]->isFollowedBy(*streams_[valid], rooms[valid - 1], rooms[valid]))
      ++valid;
    std::size_t frames = (valid - 1) * length + filled[valid - 1];
    std::swap(streams_.front(), streams_[valid - 1]);
    if (valid < partCount) {
      threadCount_ = 1;
      streams_.resize(1);
      frames += stream().read(room.from(frames));
    }
    return frames;
  }

  std::size_t threadCount_;
  Make make_;
  std::vector<std::unique_ptr<Stream>> streams_{};
  std::vector<float> ahead_{};
  std::vector<float*> aheadChannels_{};
  MutablePlanarView aheadLeft_{};  ///< of it
};

}  // namespace orvane
