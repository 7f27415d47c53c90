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

  /// Reads up to the first block; absent when there is none. To be called first. Throws what
  /// decoding throws, like everything here.
  std::optional<FLACStreamInfo> begin();

  /// Goes on with that frame, counted from the start. False when it cannot be found; the stream is
  /// then of no more use.
  bool seek(std::int64_t frame);

  /// The next frames, as many as there is room for; fewer only at the end.
  std::size_t read(MutablePlanarView room);

  /// Whether these are the frames that come next, as far as the present block tells.
  bool goesOnWith(PlanarView audio) const;

  bool hasEnded() const noexcept { return hasEnded_; }
  FLACDecoder& decoder() noexcept { return decoder_; }
  const FLACDecoder& decoder() const noexcept { return decoder_; }

 private:
  void take(const FLACDecoder::Block& block);
  void nextBlock();

  FLACDecoder decoder_;
  std::vector<std::vector<float>> block_{};  ///< the present one, a vector per channel
  std::size_t blockFrames_ = 0;
  std::size_t offset_ = 0;  ///< in the block
  bool hasEnded_ = false;
};

}  // namespace orvane
