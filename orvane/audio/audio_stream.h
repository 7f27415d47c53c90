#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/platform/audio_format.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/rawpcm/raw_pcm_format.h"

namespace orvane {

/// An opened source whose audio is taken in order, piece by piece, for work that does not need all
/// of it at once.
class ORVANE_API AudioStream {
 public:
  /// Opens the source at `url`: an audio file, or headerless PCM in `rawFormat` when that is given,
  /// whatever the extension. Refuses what `AudioSourceReader::load` refuses, with the same errors.
  static std::unique_ptr<AudioStream> open(const std::filesystem::path& url,
                                           const std::optional<RawPCMFormat>& rawFormat,
                                           const AudioSourceReader::LoadOptions& options);
  virtual ~AudioStream();

  /// Planar float at the source's rate, channels in canonical order (raw sources: stored order).
  const AudioFormat& format() const noexcept { return facts_.format; }
  /// In frames; at least 1. Reading a damaged file may end before.
  std::int64_t frameLength() const noexcept { return facts_.frameLength; }
  std::int64_t bitDepth() const noexcept { return facts_.bitDepth; }
  const std::string& fileFormatLabel() const noexcept { return facts_.fileFormatLabel; }
  const std::optional<RawPCMFormat>& rawFormat() const noexcept { return facts_.rawFormat; }

  /// A buffer of the stream's format for that many frames. Throws the source's allocation error.
  std::shared_ptr<PCMBuffer> makeBuffer(std::uint32_t frames) const;

  /// Reads the next frames into `buffer`, from its start, up to its capacity, and sets its frame
  /// length; fewer than its capacity only at the end. The buffer has the stream's format. Throws
  /// what loading throws.
  virtual void read(PCMBuffer& buffer) = 0;

  /// Findings so far; reading may add some.
  virtual std::vector<AudioFileWarning> warnings() const = 0;

 protected:
  /// What a kind of source knows of itself.
  struct Facts {
    std::filesystem::path url{};
    AudioFormat format{};
    std::int64_t frameLength = 0;
    std::int64_t bitDepth = 0;
    std::string fileFormatLabel{};
    std::optional<RawPCMFormat> rawFormat{};
  };
  explicit AudioStream(Facts facts);

 private:
  static std::unique_ptr<AudioStream> openRaw(const std::filesystem::path& url,
                                              const RawPCMFormat& rawFormat,
                                              const AudioSourceReader::LoadOptions& options);
  static std::unique_ptr<AudioStream> openAudioFile(const std::filesystem::path& url,
                                                    const AudioSourceReader::LoadOptions& options);

  Facts facts_;
};

}  // namespace orvane
