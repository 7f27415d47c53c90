#include "orvane/container/chunked/aiff_file.h"

#include <algorithm>
#include <optional>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/layout_chunk.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr FourCC kCommon = fourCCFrom("COMM");
constexpr FourCC kSoundData = fourCCFrom("SSND");
/// Identifier, size and form type.
constexpr std::uint64_t kFormHeader = 12;
/// Channels, frames, bits, rate and, in AIFF-C, the compression type.
constexpr std::uint64_t kCommonBytes = 22;
/// Offset and block size, before the samples.
constexpr std::uint64_t kSoundDataHead = 8;

/// The code of a compressed AIFF-C type; most are the types themselves.
FourCC codeOfCompression(FourCC type) {
  switch (type) {
    case fourCCFrom("ULAW"):
      return fourCCFrom("ulaw");
    case fourCCFrom("ALAW"):
      return fourCCFrom("alaw");
    case fourCCFrom("GSM "):
      return fourCCFrom("agsm");
    default:
      return type;
  }
}

/// Completes `sample` for a compression type that is linear PCM; false for every other type.
bool isLinearPCM(FourCC type, SampleEncoding& sample) {
  sample.isBigEndian = true;
  const auto forceBits = [&](std::uint32_t bits, bool isBigEndian) {
    sample.bits = bits;
    sample.isBigEndian = isBigEndian;
    return true;
  };
  const auto forceFloat = [&](std::uint32_t bits) {
    sample.kind = SampleEncoding::Kind::floatingPoint;
    return forceBits(bits, true);  // the common chunk often says 16
  };
  switch (type) {
    case fourCCFrom("NONE"):
    case fourCCFrom("none"):
    case fourCCFrom("twos"):
      return true;
    case fourCCFrom("sowt"):
      sample.isBigEndian = false;
      return true;
    case fourCCFrom("raw "):
      sample.kind = SampleEncoding::Kind::unsignedInteger;
      return forceBits(8, true);
    case fourCCFrom("in24"):
      return forceBits(24, true);
    case fourCCFrom("in32"):
      return forceBits(32, true);
    case fourCCFrom("42ni"):
    case fourCCFrom("42n1"):  // libsndfile's spelling of it
      return forceBits(24, false);
    case fourCCFrom("23ni"):
      return forceBits(32, false);
    case fourCCFrom("fl32"):
    case fourCCFrom("FL32"):
      return forceFloat(32);
    case fourCCFrom("fl64"):
    case fourCCFrom("FL64"):
      return forceFloat(64);
    default:
      return false;
  }
}

/// Layouts of files without a layout chunk. Other counts have no common order.
std::optional<ChannelLayout> defaultLayout(std::uint32_t channels) {
  switch (channels) {
    case 1:
      return ChannelLayout::fromTag(ChannelLayoutTags::mono);
    case 2:
      return ChannelLayout::fromTag(ChannelLayoutTags::stereo);
    case 3:
      return ChannelLayout::fromTag(ChannelLayoutTags::mpeg30A);
    case 4:
      return ChannelLayout::fromTag(ChannelLayoutTags::quadraphonic);
    case 6:
      return ChannelLayout::fromTag(ChannelLayoutTags::mpeg51A);
    default:
      return {};
  }
}

/// Places the samples: what the frame count, the sound chunk and the file all allow.
void applySoundData(PCMStream& stream, const InputFile& file, const Chunk& chunk,
                    std::int64_t statedFrames) {
  const HeaderFields head(file, chunk.bodyOffset, kSoundDataHead, std::endian::big);
  const std::uint64_t skip =
      head.size() < kSoundDataHead
          ? chunk.size
          : std::min<std::uint64_t>(kSoundDataHead + head.u32(0), chunk.size);
  setAudioData(stream, chunk.bodyOffset + skip, chunk.size - skip, chunk.extent);
  // 0 frames come from writers that could not go back to the header.
  if (statedFrames == 0) return;
  if (statedFrames > stream.frameCount && chunk.extent == Chunk::Extent::exact)
    addWarning(stream, AudioFileWarning::Code::truncatedAudio);
  stream.frameCount = std::min(stream.frameCount, statedFrames);
}

}  // namespace

PCMStream parseAIFF(const InputFile& file, std::uint64_t start) {
  const bool isCompressible =
      HeaderFields(file, start + 8, 4, std::endian::big).fourCC(0) == fourCCFrom("AIFC");
  const ChunkGrammar grammar{
      .header = ChunkGrammar::Header::riff, .byteOrder = std::endian::big, .audioID = kSoundData};
  ChunkList list = readChunks(file, start, kFormHeader, grammar);
  const Chunk* const common = list.find(kCommon);
  if (common == nullptr) throw PlatformError(file.path(), "The file does not describe its audio");
  const HeaderFields body(file, common->bodyOffset, std::min(common->size, kCommonBytes),
                          std::endian::big);
  StatedFormat stated{
      .sampleRate = body.float80(8), .channelCount = body.u16(0), .sample = {.bits = body.u16(6)}};
  // An AIFF-C header without its compression type is read as plain AIFF.
  const FourCC type =
      isCompressible && body.size() >= kCommonBytes ? body.fourCC(18) : fourCCFrom("NONE");

  PCMStream stream;
  stream.description.fileTypeID = fourCCFrom(isCompressible ? "AIFC" : "AIFF");
  const bool isPCM = isLinearPCM(type, stated.sample);
  if (isPCM)
    setLinearPCM(stream, stated);
  else
    setCompressed(stream, codeOfCompression(type), stated.sampleRate, stated.channelCount);
  const Chunk* const layout = list.find(fourCCFrom("CHAN"));
  if (layout != nullptr)
    stream.description.layout = readLayoutChunk(file, *layout, stated.channelCount);
  else
    stream.description.layout = defaultLayout(stated.channelCount);
  if (const Chunk* const sound = list.find(kSoundData)) {
    if (isPCM) applySoundData(stream, file, *sound, body.u32(2));
    if (list.count(kSoundData) > 1) addWarning(stream, AudioFileWarning::Code::severalDataChunks);
  }
  if (list.hasMissingPad) addWarning(stream, AudioFileWarning::Code::unusualLayout);
  stream.chunkList = std::move(list);
  return stream;
}

}  // namespace orvane
