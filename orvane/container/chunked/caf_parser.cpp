#include "orvane/container/chunked/caf_file.h"

#include <algorithm>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/layout_chunk.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr FourCC kDescription = fourCCFrom("desc");
constexpr FourCC kData = fourCCFrom("data");
/// Identifier, version and flags.
constexpr std::uint64_t kFileHeader = 8;
constexpr std::uint64_t kDescriptionBytes = 32;
/// The edit count, before the samples.
constexpr std::uint64_t kEditCountBytes = 4;

void applyDescription(PCMStream& stream, const HeaderFields& body) {
  const double sampleRate = body.float64(0);
  const FourCC formatID = body.fourCC(8);
  const std::uint32_t flags = body.u32(12);
  const std::uint32_t bytesPerPacket = body.u32(16);
  const std::uint32_t channels = body.u32(24);
  const std::uint32_t bits = body.u32(28);
  if (formatID != kFormatLinearPCM) {
    setCompressed(stream, formatID, sampleRate, channels);
    stream.description.dataFormat.formatFlags = flags;
    stream.description.dataFormat.bytesPerPacket = bytesPerPacket;
    stream.description.dataFormat.framesPerPacket = body.u32(20);
    return;
  }
  StatedFormat stated{.sampleRate = sampleRate, .channelCount = channels};
  SampleEncoding& sample = stated.sample;
  sample.bits = bits;
  if (channels != 0 && bytesPerPacket % channels == 0) sample.bytes = bytesPerPacket / channels;
  if (sample.bits == 0 && sample.bytes <= 8) sample.bits = sample.bytes * 8;
  if ((flags & CAFFlags::isFloat) != 0) sample.kind = SampleEncoding::Kind::floatingPoint;
  sample.isBigEndian = (flags & CAFFlags::isLittleEndian) == 0;
  setLinearPCM(stream, stated);
}

/// What the packet table says; absent when it promises more than its packets hold.
std::optional<AudioExtent> readExtent(const InputFile& file, const Chunk& table,
                                      std::uint32_t framesPerPacket) {
  constexpr std::uint64_t kHeadBytes = 24;
  const HeaderFields body(file, table.bodyOffset, std::min(table.size, kHeadBytes),
                          std::endian::big);
  if (body.size() < kHeadBytes) return {};
  const std::uint64_t packets = body.u64(0);
  const std::uint64_t frames = body.u64(8);
  const std::uint64_t priming = body.u32(16);
  if (frames == 0 || frames >> 62 != 0 || priming > INT32_MAX) return {};
  // Packets may also differ in length.
  const bool isTooMuch =
      framesPerPacket != 0 && (packets >> 30 != 0 || frames + priming > packets * framesPerPacket);
  if (isTooMuch) return {};
  return AudioExtent{.priming = static_cast<std::int64_t>(priming),
                     .frames = static_cast<std::int64_t>(frames)};
}

}  // namespace

PCMStream parseCAF(const InputFile& file, std::uint64_t start) {
  const ChunkGrammar grammar{
      .header = ChunkGrammar::Header::caf, .byteOrder = std::endian::big, .audioID = kData};
  ChunkList list = readChunks(file, start, kFileHeader, grammar);
  const Chunk* const description = list.find(kDescription);
  if (description == nullptr)
    throw PlatformError(file.path(), "The file does not describe its audio");

  PCMStream stream;
  stream.description.fileTypeID = fourCCFrom("caff");
  applyDescription(stream,
                   HeaderFields(file, description->bodyOffset,
                                std::min(description->size, kDescriptionBytes), std::endian::big));
  const std::uint32_t channels = stream.description.dataFormat.channelsPerFrame;
  const Chunk* const layout = list.find(fourCCFrom("chan"));
  stream.description.layout =
      layout != nullptr ? readLayoutChunk(file, *layout, channels) : monoOrStereoLayout(channels);
  const StreamDescription& format = stream.description.dataFormat;
  const Chunk* const table = list.find(fourCCFrom("pakt"));
  if (table != nullptr && format.formatID != kFormatLinearPCM)
    stream.extent = readExtent(file, *table, format.framesPerPacket);
  if (const Chunk* const data = list.find(kData)) {
    const std::uint64_t skip = std::min(kEditCountBytes, data->size);
    // "To the end" is a proper size in this format, so it needs no warning.
    const bool isProperlyOpen =
        HeaderFields(file, data->headerOffset + 4, 8, std::endian::big).u64(0) == UINT64_MAX;
    setAudioData(stream, data->bodyOffset + skip, data->size - skip,
                 isProperlyOpen ? Chunk::Extent::exact : data->extent);
    if (list.count(kData) > 1) addWarning(stream, AudioFileWarning::Code::severalDataChunks);
    if (data->headerOffset < description->headerOffset)
      addWarning(stream, AudioFileWarning::Code::unusualLayout);
  }
  stream.chunkList = std::move(list);
  return stream;
}

}  // namespace orvane
