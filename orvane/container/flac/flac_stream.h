#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orvane/container/flac/flac_decoder.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// The audio of a FLAC stream as planar floats, any number of frames at a time.
class FLACStream {
 public:
  /// As `FLACDecoder`.
  FLACStream(std::shared_ptr<const InputFile> file, ProgressObserver* observer, bool verifies);

  /// Reads up to the first block; false when there is none. To be called first. Throws what
  /// decoding throws, like everything here.
  bool begin();

  const FLACStreamInfo& info() const noexcept { return info_; }

  /// Goes on with that frame, counted from the start. False when it cannot be found; the stream is
  /// then of no more use.
  bool seek(std::int64_t frame);

  /// The next frames, as many as there is room for; fewer only at the end.
  std::size_t read(MutablePlanarView room);

  /// Whether audio is to come, and nothing but sound blocks was met.
  bool isSound() const noexcept { return !hasEnded_ && !decoder_.hasMetFaults(); }

  /// Whether the stream goes on with the very block that `next` had sought, which began with these
  /// frames. A file that is there twice has two blocks of every number.
  bool isFollowedBy(const FLACStream& next, PlanarView audio, PlanarView nextAudio) const;

  bool hasEnded() const noexcept { return hasEnded_; }
  FLACDecoder& decoder() noexcept { return decoder_; }
  const FLACDecoder& decoder() const noexcept { return decoder_; }

 private:
  void take(const FLACDecoder::Block& block);
  void nextBlock();

  bool goesOnWith(PlanarView audio) const;

  FLACDecoder decoder_;
  FLACStreamInfo info_{};
  std::uint64_t soughtBlockEnd_ = 0;         ///< in the file
  std::vector<std::vector<float>> block_{};  ///< the present one, a vector per channel
  std::size_t blockFrames_ = 0;
  std::size_t offset_ = 0;  ///< in the block
  bool hasEnded_ = false;
};

}  // namespace orvane
