#include "orvane/container/pcm_stream.h"

#include <algorithm>
#include <limits>

namespace orvane {
namespace {

std::string textOf(AudioFileWarning::Code code) {
  switch (code) {
    case AudioFileWarning::Code::truncatedAudio:
      return "The file ends before its audio does; what is there is used.";
    case AudioFileWarning::Code::openDataSize:
      return "The header does not say how long the audio is; everything to the end is used.";
    case AudioFileWarning::Code::severalDataChunks:
      return "The file holds several audio chunks; only the first one is used.";
    case AudioFileWarning::Code::unusualLayout:
      return "The file's chunks are laid out in an unusual way.";
    case AudioFileWarning::Code::damagedAudio:
      break;  // samples that are not coded cannot fail to decode
  }
  return {};
}

}  // namespace

void setLinearPCM(PCMStream& stream, const StatedFormat& stated) {
  using Kind = SampleEncoding::Kind;
  const SampleEncoding sample = stated.sample.normalized();
  stream.sample = sample;
  std::uint32_t flags =
      sample.bytes * 8 == sample.bits ? kFormatFlagIsPacked : kFormatFlagIsAlignedHigh;
  if (sample.kind == Kind::floatingPoint) flags |= kFormatFlagIsFloat;
  if (sample.kind == Kind::signedInteger) flags |= kFormatFlagIsSignedInteger;
  if (sample.isBigEndian) flags |= kFormatFlagIsBigEndian;
  const std::uint32_t frameBytes = sample.bytes * stated.channelCount;
  stream.description.dataFormat = {.sampleRate = stated.sampleRate,
                                   .formatID = kFormatLinearPCM,
                                   .formatFlags = flags,
                                   .bytesPerPacket = frameBytes,
                                   .framesPerPacket = 1,
                                   .bytesPerFrame = frameBytes,
                                   .channelsPerFrame = stated.channelCount,
                                   .bitsPerChannel = sample.bits};
}

void setCompressed(PCMStream& stream, FourCC formatID, double sampleRate,
                   std::uint32_t channelCount) {
  stream.description.dataFormat = {
      .sampleRate = sampleRate, .formatID = formatID, .channelsPerFrame = channelCount};
}

void setAudioData(PCMStream& stream, std::uint64_t offset, std::uint64_t size,
                  Chunk::Extent extent) {
  const std::uint32_t frameBytes = stream.description.dataFormat.bytesPerFrame;
  stream.dataOffset = offset;
  stream.frameCount = frameBytes == 0 ? 0 : static_cast<std::int64_t>(size / frameBytes);
  if (extent == Chunk::Extent::open) addWarning(stream, AudioFileWarning::Code::openDataSize);
  if (extent == Chunk::Extent::cutShort) addWarning(stream, AudioFileWarning::Code::truncatedAudio);
}

void setStatedAudioData(PCMStream& stream, const InputFile& file, std::uint64_t offset,
                        std::uint64_t statedSize) {
  const std::uint64_t rest = file.size() - std::min(offset, file.size());
  auto extent = Chunk::Extent::exact;
  if (statedSize == 0 && rest > 0) extent = Chunk::Extent::open;
  if (statedSize > rest) extent = Chunk::Extent::cutShort;
  setAudioData(stream, offset, statedSize == 0 ? rest : std::min(statedSize, rest), extent);
}

std::optional<ChannelLayout> monoOrStereoLayout(std::uint32_t channels) {
  if (channels == 1) return ChannelLayout::fromTag(ChannelLayoutTags::mono);
  if (channels == 2) return ChannelLayout::fromTag(ChannelLayoutTags::stereo);
  return {};
}

void addWarning(PCMStream& stream, AudioFileWarning::Code code) {
  auto& warnings = stream.description.warnings;
  if (std::ranges::find(warnings, code, &AudioFileWarning::code) == warnings.end())
    warnings.push_back({.code = code, .text = textOf(code)});
}

}  // namespace orvane
