#pragma once

#include <FLAC/stream_decoder.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "orvane/platform/input_file.h"
#include "orvane/platform/progress.h"

namespace orvane {

/// What a FLAC stream says of itself.
struct FLACStreamInfo {
  std::uint32_t sampleRate = 0;
  std::uint32_t channelCount = 0;
  std::uint32_t bitsPerSample = 0;
  std::int64_t frameCount = 0;  ///< 0 when it is not stated
  bool statesMD5 = false;       ///< of the audio
  /// Of the loudspeakers, in the form of a WAVE file's.
  std::optional<std::uint32_t> channelMask{};
};

/// A native FLAC stream (RFC 9639), decoded by libFLAC block after block.
class FLACDecoder {
 public:
  /// Blocks are given to this: integers of `bitsPerSample` bits, one pointer per channel.
  struct Block {
    std::span<const FLAC__int32* const> channels{};
    std::size_t frameCount = 0;
    std::uint32_t bitsPerSample = 0;
  };
  using Take = std::function<void(const Block&)>;

  /// With `verifies` the audio's MD5 is made. The observer, which may be null, is only asked
  /// whether to go on.
  FLACDecoder(std::shared_ptr<const InputFile> file, ProgressObserver* observer,
              bool verifies = false);
  FLACDecoder(const FLACDecoder&) = delete;
  FLACDecoder& operator=(const FLACDecoder&) = delete;

  /// What comes before the audio; absent when it is not what libFLAC reads. To be called first.
  /// Throws `PlatformError` and `Cancelled`, like everything here that reads.
  std::optional<FLACStreamInfo> readInfo();

  /// Decodes a block; false at the end. Damaged blocks are passed over. Throws also what `take`
  /// throws, and for a stream whose rate or number of channels changes.
  bool next(const Take& take);

  /// Goes on with that frame, counted from the start, and gives the rest of its block. False when
  /// it cannot be found; nothing more can be decoded then.
  bool seek(std::int64_t frame, const Take& take);

  /// Where in the file the last block ended.
  std::uint64_t blockEnd() const noexcept { return blockEnd_; }

  /// Whether blocks were passed over, with others behind them.
  bool hasMetDamage() const noexcept { return hasMetDamage_; }

  /// Whether anything was met that does not belong to a sound stream.
  bool hasMetFaults() const noexcept { return hasMetDamage_ || isDamagePending_; }

  /// Whether the file ends, or goes on with something else, in the middle of a block.
  bool breaksOff() const;

  /// Ends the decoding: whether the audio, read to its end, has the stated MD5.
  bool finishMD5();

  /// How far into the file the reading has come, 0 … 1.
  double shareRead() const noexcept;

 private:
  struct Delete {
    void operator()(FLAC__StreamDecoder* decoder) const noexcept {
      FLAC__stream_decoder_delete(decoder);
    }
  };
  struct Callbacks;

  std::size_t read(std::span<std::byte> destination);
  bool write(const FLAC__Frame& frame, const FLAC__int32* const* channels);
  void describe(const FLAC__StreamMetadata& metadata);
  void rethrowFailure();
  bool process(FLAC__bool (*step)(FLAC__StreamDecoder*));

  std::shared_ptr<const InputFile> file_;
  ProgressObserver* observer_;
  bool verifies_;
  std::unique_ptr<FLAC__StreamDecoder, Delete> decoder_;
  FLACStreamInfo info_{};
  bool hasInfo_ = false;
  const Take* take_ = nullptr;    ///< while a block is decoded
  bool hasTaken_ = false;         ///< since it was set
  std::uint64_t position_;        ///< in the file
  FLAC__uint64 blockEnd_ = 0;     ///< of the last one, in the file
  std::uint64_t sinceBlock_ = 0;  ///< bytes read since the last block
  bool isInAudio_ = false;
  bool isFilling_ = false;        ///< libFLAC was about to put silence in
  bool isSearching_ = false;      ///< for the block behind the damage
  bool isDamagePending_ = false;  ///< damage behind which no block has come yet
  bool hasMetDamage_ = false;
  std::exception_ptr failure_{};
};

}  // namespace orvane
