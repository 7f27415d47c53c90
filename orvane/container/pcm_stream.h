#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/audio_file.h"
#include "orvane/container/chunked/chunk_reader.h"
#include "orvane/platform/sample_encoding.h"

namespace orvane {

/// More channels than any real file has; a header that states more is nonsense and is refused.
inline constexpr std::uint32_t kMaximumChannels = 1024;

/// Where the audio lies within what its packets decode to.
struct AudioExtent {
  std::int64_t priming = 0;  ///< frames before it
  std::int64_t frames = 0;   ///< its own

  bool operator==(const AudioExtent&) const = default;
};

/// What a container's header says about its audio. When `description.dataFormat.formatID` is not
/// `kFormatLinearPCM` the samples are compressed, and only the description and the chunks count.
struct PCMStream {
  AudioFileDescription description{};
  SampleEncoding sample{};
  std::uint64_t dataOffset = 0;         ///< of the first sample, from the file's start, bytes
  std::int64_t frameCount = 0;          ///< whole frames that the file really holds
  std::optional<AudioExtent> extent{};  ///< of compressed audio, where the container tells it
  ChunkList chunkList{};                ///< all that is there, for those who rewrite the file
  /// Why samples that are well described cannot be read, for the user; empty when they can.
  std::string refusal{};

  bool operator==(const PCMStream&) const = default;
};

/// The numbers every container states of its samples, as they stand in the header.
struct StatedFormat {
  double sampleRate = 0;
  std::uint32_t channelCount = 0;
  SampleEncoding sample{};  ///< 0 bytes: as few as the bits need
};

/// Fills the data format and the sample of a linear-PCM stream. Bits and bytes that no sample can
/// have leave `sample.bytes` 0, which `AudioFile::open` refuses.
void setLinearPCM(PCMStream& stream, const StatedFormat& stated);

/// Fills the data format of a stream of compressed audio.
void setCompressed(PCMStream& stream, FourCC formatID, double sampleRate,
                   std::uint32_t channelCount);

/// Where the samples lie: from `offset`, `size` bytes. Adds the warnings that the extent calls for.
void setAudioData(PCMStream& stream, std::uint64_t offset, std::uint64_t size,
                  Chunk::Extent extent);

/// The same for a header that states `statedSize` bytes, whatever the file holds: 0 before a rest
/// is a size left open.
void setStatedAudioData(PCMStream& stream, const InputFile& file, std::uint64_t offset,
                        std::uint64_t statedSize);

/// The layout of a file that cannot or does not state one: absent for more than two channels.
std::optional<ChannelLayout> monoOrStereoLayout(std::uint32_t channels);

/// Adds a warning with its fixed text.
void addWarning(PCMStream& stream, AudioFileWarning::Code code);

}  // namespace orvane
