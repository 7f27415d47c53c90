#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/audio/audio_file_identity.h"
#include "orvane/container/audio_file.h"
#include "orvane/platform/audio_format.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/rawpcm/raw_pcm_format.h"

namespace orvane {

/// A source of audio, an audio file or headerless PCM, opened once: what it is, and its audio in
/// order, piece by piece or whole.
class ORVANE_API AudioSource {
 public:
  /// Opens the source at `url`: an audio file, or headerless PCM in `rawFormat` when that is given,
  /// whatever the extension. Throws what `AudioSourceReader::load` throws, for being too large only
  /// beyond a thousand hours; that compressed audio is may only show later.
  static std::unique_ptr<AudioSource> open(const std::filesystem::path& url,
                                           const std::optional<RawPCMFormat>& rawFormat = {},
                                           const AudioFileOpenOptions& options = {});
  virtual ~AudioSource();

  const std::filesystem::path& url() const noexcept { return facts_.url; }
  /// Planar float at the source's rate, channels in canonical order (raw sources: stored order).
  const AudioFormat& format() const noexcept { return facts_.format; }
  /// Bits per sample as stored; 0 for compressed codecs.
  std::int64_t bitDepth() const noexcept { return facts_.bitDepth; }
  /// Bits of the original audio for lossless codecs that carry it, else 0.
  int sourceBitDepth() const noexcept { return facts_.sourceBitDepth; }
  /// "WAV", "MP3, named .wav", "RAW s16le".
  const std::string& fileFormatLabel() const noexcept { return facts_.fileFormatLabel; }
  /// Present exactly for a raw source.
  const std::optional<RawPCMFormat>& rawFormat() const noexcept { return facts_.rawFormat; }
  /// Absent for a raw source and for a container that has no code.
  const std::optional<AudioFileIdentity>& identity() const noexcept { return facts_.identity; }

  /// The open file behind it.
  virtual const InputFile& file() const = 0;

  /// The chapters that the file itself holds, see `AudioFile::chapters`; none for a raw source.
  virtual std::vector<ChapterMark> chapters() const = 0;

  /// See `AudioFile::tagNames`; none for a raw source.
  virtual std::vector<std::string> tagNames() const { return {}; }

  /// Exact, in frames; at least 1. Of compressed audio the first call walks through the whole file.
  /// Reading a damaged file may end before. Throws like `open`.
  std::int64_t frameLength();

  /// Throws what loading throws for audio that may not be held in memory as a whole, see
  /// `AudioLoadLimits::isWithinLimits`.
  void requireLoadable();

  /// Whether `frameLength` has its answer at hand.
  virtual bool knowsFrameLength() const noexcept = 0;

  /// What the header makes expect, right or wrong; absent when it says nothing.
  virtual std::optional<std::int64_t> expectedFrameLength() const = 0;

  /// A buffer of the source's format for that many frames, from the pool if there is one. Throws
  /// the source's allocation error.
  std::shared_ptr<PCMBuffer> makeBuffer(std::uint32_t frames, PCMBufferPool* pool = nullptr) const;

  /// The whole source, of which nothing has been read. Throws what loading throws.
  std::shared_ptr<PCMBuffer> load();

  /// Reads the next frames into `buffer`, from its start, up to its capacity, and sets its frame
  /// length; fewer than its capacity only at the end. The buffer has the source's format. Throws
  /// what loading throws.
  void read(PCMBuffer& buffer);

  /// Findings so far; reading may add some.
  virtual std::vector<AudioFileWarning> warnings() const = 0;

 protected:
  /// What a kind of source knows of itself.
  struct Facts {
    std::filesystem::path url{};
    AudioFormat format{};
    std::int64_t bitDepth = 0;
    int sourceBitDepth = 0;
    std::string fileFormatLabel{};
    std::optional<RawPCMFormat> rawFormat{};
    std::optional<AudioFileIdentity> identity{};
  };
  explicit AudioSource(Facts facts);

 private:
  virtual std::int64_t countFrames() = 0;
  virtual void readNext(PCMBuffer& buffer) = 0;
  void requireMeasurable(std::int64_t frames) const;
  [[noreturn]] void failAsTooLarge() const;

  Facts facts_;
  std::int64_t position_ = 0;  ///< next frame
};

}  // namespace orvane
