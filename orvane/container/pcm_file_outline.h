#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/audio_container.h"
#include "orvane/container/pcm_encoding.h"
#include "orvane/platform/audio_format.h"
#include "orvane/platform/error.h"
#include "orvane/platform/export.h"
#include "orvane/platform/sample_encoding.h"

namespace orvane {

/// A PCM file that is to be made.
struct PCMFileSpecification {
  AudioContainer container = AudioContainer::wave;
  PCMEncoding encoding = PCMEncoding::float32;
  AudioFormat format{};
  std::int64_t frameCount = 0;

  std::uint64_t frameBytes(const SampleEncoding& sample) const {
    return std::uint64_t{format.channelCount} * sample.bytes;
  }
  std::uint64_t audioBytes(const SampleEncoding& sample) const {
    return static_cast<std::uint64_t>(frameCount) * frameBytes(sample);
  }
};

/// The same as bytes: what stands before and behind the samples, and how they lie between.
struct PCMFileOutline {
  FourCC fileTypeID = 0;  ///< RF64 where a WAV outgrows its sizes
  SampleEncoding sample{};
  /// The channel of the audio that each channel of the file is.
  std::vector<std::uint32_t> channelOrder{};
  std::vector<std::byte> head{};
  std::uint64_t audioBytes = 0;
  std::vector<std::byte> tail{};  ///< padding
  /// What the file cannot say of its audio: sentences for the user.
  std::vector<std::string> warnings{};
};

/// How a container stores samples of that encoding.
constexpr SampleEncoding sampleIn(AudioContainer container, const PCMEncoding& encoding,
                                  bool isBigEndian) {
  using enum AudioContainer;
  const auto bits = static_cast<std::uint32_t>(encoding.bitDepth);
  if (encoding.isFloat) return SampleEncoding::floatingPoint(bits / 8, isBigEndian);
  // WAVE stores up to eight bits with an offset, more with a sign.
  const bool isWave = container != aiff && container != aifc && container != caf;
  const auto kind = isWave && bits <= 8 ? SampleEncoding::Kind::unsignedInteger
                                        : SampleEncoding::Kind::signedInteger;
  return {kind, bits, (bits + 7) / 8, isBigEndian && bits > 8};
}

/// What a container cannot hold, in one sentence.
class ORVANE_API UnwritableFormat : public Error {
 public:
  explicit UnwritableFormat(std::string reason);
  ~UnwritableFormat() override;
};

}  // namespace orvane
