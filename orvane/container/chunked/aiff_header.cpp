#include "orvane/container/chunked/aiff_file.h"

#include <numeric>

#include "orvane/container/chunked/header_bytes.h"
#include "orvane/container/chunked/layout_chunk.h"

namespace orvane {
namespace {

/// Sizes are signed numbers of 32 bits.
constexpr std::uint64_t kMostBytes = 0x7FFFFFFF;
/// The channel count is a signed number of 16 bits.
constexpr std::uint32_t kMostChannels = 0x7FFF;
/// The version of AIFF-C of 23 May 1990, in seconds since 1904.
constexpr std::uint32_t kVersion = 0xA2805140;

/// The layout chunk's body; empty where nothing needs to be said.
std::vector<std::byte> layoutBodyOf(const AudioFormat& format) {
  if (format.layout) {
    const ChannelLayout usual = *ChannelLayout::fromTag(
        format.channelCount == 1 ? ChannelLayoutTags::mono : ChannelLayoutTags::stereo);
    return *format.layout == usual ? std::vector<std::byte>{} : layoutChunkBody(*format.layout);
  }
  // Readers take three, four and six channels without a layout for 3.0, quadraphonic and 5.1.
  if (format.channelCount <= 2) return {};
  return layoutChunkBody({.tag = ChannelLayoutTags::unknown | format.channelCount});
}

}  // namespace

std::vector<std::byte> aiffCompression(const SampleEncoding& sample) {
  HeaderBytes compression(std::endian::big);
  // The name is a Pascal string: its length in a byte, the whole of even length.
  if (sample.kind != SampleEncoding::Kind::floatingPoint)
    compression.text("NONE").text("\x0Enot compressed");
  else if (sample.bits == 32)
    compression.text("fl32").text(
        "\x15"
        "32-bit floating point");
  else
    compression.text("fl64").text(
        "\x15"
        "64-bit floating point");
  return compression.padTo(2).bytes();
}

PCMFileOutline outlineAIFF(const PCMFileSpecification& specification) {
  const AudioFormat& audio = specification.format;
  const std::string name(displayName(specification.container));
  const bool isCompressible = specification.container == AudioContainer::aifc;
  if (specification.encoding.isFloat && !isCompressible)
    throw UnwritableFormat(std::string(kNoFloatInAIFF));
  if (audio.channelCount > kMostChannels)
    throw UnwritableFormat(name + " cannot hold so many channels; a CAF file can");

  PCMFileOutline outline{.fileTypeID = fileTypeID(specification.container)};
  outline.sample = sampleIn(specification.container, specification.encoding, true);
  outline.channelOrder.resize(audio.channelCount);
  std::iota(outline.channelOrder.begin(), outline.channelOrder.end(), 0U);
  outline.audioBytes = specification.audioBytes(outline.sample);
  outline.tail.resize(outline.audioBytes % 2);

  HeaderBytes chunks(std::endian::big);
  HeaderBytes common(std::endian::big);
  common.u16(audio.channelCount).u32(static_cast<std::uint64_t>(specification.frameCount));
  common.u16(outline.sample.bits).float80(audio.sampleRate);
  if (isCompressible) {
    chunks.text("FVER").u32(4).u32(kVersion);
    common.append(aiffCompression(outline.sample));
  }
  chunks.text("COMM").u32(common.size()).append(common.bytes());
  if (const auto layout = layoutBodyOf(audio); !layout.empty())
    chunks.text("CHAN").u32(layout.size()).append(layout);

  constexpr std::uint64_t kSoundHead = 8;  // offset and block size
  constexpr std::uint64_t kChunkHeader = 8;
  const std::uint64_t formBytes =
      4 + chunks.size() + kChunkHeader + kSoundHead + outline.audioBytes + outline.tail.size();
  if (formBytes > kMostBytes)
    throw UnwritableFormat("the audio is longer than " + name +
                           " can be (2 GiB); a CAF file can hold it");
  HeaderBytes head(std::endian::big);
  head.text("FORM").u32(formBytes).fourCC(outline.fileTypeID).append(chunks.bytes());
  head.text("SSND").u32(kSoundHead + outline.audioBytes).u32(0).u32(0);
  outline.head = head.bytes();
  return outline;
}

}  // namespace orvane
