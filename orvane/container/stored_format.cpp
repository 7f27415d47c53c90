#include "orvane/container/stored_format.h"

#include <algorithm>
#include <limits>

#include "orvane/container/audio_container.h"
#include "orvane/container/chunked/aiff_file.h"
#include "orvane/container/chunked/caf_file.h"
#include "orvane/container/chunked/header_bytes.h"
#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/wave_file.h"
#include "orvane/container/chunked/wave_format.h"
#include "orvane/container/pcm_file_outline.h"

namespace orvane {
namespace {

constexpr std::uint64_t kMost32 = std::numeric_limits<std::uint32_t>::max();

/// The chunk that describes the audio, to be changed field by field.
class FormatChunk {
 public:
  FormatChunk(const InputFile& file, const ChunkList& list, FourCC id)
      : index_(static_cast<std::size_t>(list.find(id) - list.chunks.data())),
        order_(list.grammar.byteOrder),
        fields_(file, list.chunks[index_].bodyOffset,
                std::min(list.chunks[index_].size, kMostBytes + 1), order_),
        body_(fields_.bytes().begin(), fields_.bytes().end()) {
    if (fields_.size() > kMostBytes) throw UnwritableFormat("the file's header is too large");
  }

  const HeaderFields& fields() const noexcept { return fields_; }
  /// Numbers in the file's byte order.
  HeaderBytes bytes() const { return HeaderBytes(order_); }
  /// The body grows where it is too short.
  void put(std::size_t at, const HeaderBytes& bytes) {
    body_.resize(std::max(body_.size(), at + bytes.size()));
    std::ranges::copy(bytes.bytes(), body_.begin() + static_cast<std::ptrdiff_t>(at));
  }
  void cutFrom(std::size_t at) { body_.resize(std::min(body_.size(), at)); }

  void addTo(MetadataChanges& changes) const {
    if (!std::ranges::equal(body_, fields_.bytes()))
      changes.chunkChanges.emplace_back(index_, body_);
  }

 private:
  static constexpr std::uint64_t kMostBytes = 1 << 16;

  std::size_t index_;
  std::endian order_;
  HeaderFields fields_;
  std::vector<std::byte> body_;
};

/// What is to be stored: the same in every container.
struct Stored {
  SampleEncoding sample{};
  std::uint32_t channelCount = 0;
  bool isEncodedAnew = false;
  bool isOneChannel = false;

  bool isFloat() const { return sample.kind == SampleEncoding::Kind::floatingPoint; }
  std::uint64_t frameBytes() const { return std::uint64_t{channelCount} * sample.bytes; }
};

void changeWave(FormatChunk& format, const Stored& stored) {
  constexpr std::size_t kSubFormat = 24;
  const HeaderFields& fields = format.fields();
  format.put(2, format.bytes().u16(stored.channelCount));
  format.put(8, format.bytes()
                    .u32(std::min(fields.u32(4) * stored.frameBytes(), kMost32))
                    .u16(stored.frameBytes()));
  const bool isExtensible = isExtensibleWave(fields);
  if (isExtensible && stored.isOneChannel) format.put(20, format.bytes().u32(0));
  if (!stored.isEncodedAnew) return;
  const std::uint16_t tag = stored.isFloat() ? kWaveTagFloat : kWaveTagPCM;
  if (!isExtensible) {
    format.put(14, format.bytes().u16(stored.sample.bits));
    format.put(0, format.bytes().u16(tag));
    // The size of an extension has to stand in all formats other than PCM.
    if (stored.isFloat() && fields.size() < 18) format.put(16, format.bytes().u16(0));
    return;
  }
  format.put(14, format.bytes().u16(8 * stored.sample.bytes));
  format.put(18, format.bytes().u16(stored.sample.bits));
  // In RIFX the GUID's first number has four bytes, unless the GUID stands as in RIFF.
  if (fields.u16(kSubFormat) != 0)
    format.put(kSubFormat, format.bytes().u16(tag));
  else
    format.put(kSubFormat, format.bytes().u32(tag));
}

void changeAIFF(FormatChunk& common, bool isCompressible, const Stored& stored) {
  constexpr std::size_t kType = 18;
  common.put(0, common.bytes().u16(stored.channelCount));
  if (!stored.isEncodedAnew) return;
  if (stored.isFloat() && !isCompressible) throw UnwritableFormat(std::string(kNoFloatInAIFF));
  common.put(6, common.bytes().u16(stored.sample.bits));
  if (!isCompressible) return;
  common.cutFrom(kType);
  common.put(kType, common.bytes().append(aiffCompression(stored.sample)));
}

void changeCAF(FormatChunk& description, const Stored& stored) {
  description.put(16, description.bytes().u32(stored.frameBytes()));
  description.put(24, description.bytes().u32(stored.channelCount));
  if (!stored.isEncodedAnew) return;
  const std::uint32_t others = description.fields().u32(12) & ~CAFFlags::isFloat;
  description.put(12,
                  description.bytes().u32(others | (stored.isFloat() ? CAFFlags::isFloat : 0U)));
  description.put(28, description.bytes().u32(stored.sample.bits));
}

/// What speaks of the other channels too.
void dropChannels(const ChunkList& list, MetadataChanges& changes) {
  constexpr std::pair<FourCC, std::string_view> kChannelChunks[] = {
      {fourCCFrom("chan"), {}},
      {fourCCFrom("CHAN"), {}},
      {fourCCFrom("chna"), "The channels' assignment (chna) does not hold for one and is gone"},
      {fourCCFrom("axml"), "The channels' description (axml) does not hold for one and is gone"}};
  for (const auto& [id, note] : kChannelChunks) {
    for (std::size_t i = 0; i < list.chunks.size(); ++i)
      if (list.chunks[i].id == id) changes.chunkChanges.emplace_back(i, std::nullopt);
    if (!note.empty() && list.find(id) != nullptr) changes.notes.emplace_back(note);
  }
  if (list.find(fourCCFrom("iXML")) != nullptr)
    changes.notes.emplace_back(
        "What iXML says of tracks was kept as it is, though this is one channel");
}

}  // namespace

StoredFormat storedFormat(const InputFile& file, const PCMStream& stream,
                          const StoredFormat::Change& change, std::int64_t frameCount) {
  const StreamDescription& before = stream.description.dataFormat;
  StoredFormat format{.dataFormat = before, .sample = stream.sample, .changes = {}};
  const auto container = audioContainerFromFileTypeID(stream.description.fileTypeID);
  if (!container || (!change.encoding && !change.isOneChannel)) return format;

  const ChunkList& list = stream.chunkList;
  const bool isCAF = *container == AudioContainer::caf;
  const bool isAIFF = *container == AudioContainer::aiff || *container == AudioContainer::aifc;
  FormatChunk chunk(file, list,
                    isCAF    ? fourCCFrom("desc")
                    : isAIFF ? fourCCFrom("COMM")
                             : kWaveFormatID);
  Stored stored{.sample = stream.sample,
                .channelCount = change.isOneChannel ? 1 : before.channelsPerFrame,
                .isEncodedAnew = change.encoding.has_value(),
                .isOneChannel = change.isOneChannel};
  if (change.encoding) {
    const bool isBigEndian = isCAF ? (chunk.fields().u32(12) & CAFFlags::isLittleEndian) == 0
                                   : list.grammar.byteOrder == std::endian::big;
    stored.sample = sampleIn(*container, *change.encoding, isBigEndian);
  }
  PCMStream after;
  setLinearPCM(after, {.sampleRate = before.sampleRate,
                       .channelCount = stored.channelCount,
                       .sample = stored.sample});
  format.dataFormat = after.description.dataFormat;
  format.sample = after.sample;
  if (format.sample.bytes == 0)
    throw UnwritableFormat(change.encoding->label() + " samples cannot be written");

  if (isCAF) {
    changeCAF(chunk, stored);
  } else if (isAIFF) {
    changeAIFF(chunk, *container == AudioContainer::aifc, stored);
  } else {
    requireWaveFrame(*container, stored.frameBytes());
    changeWave(chunk, stored);
  }
  chunk.addTo(format.changes);
  if (change.isOneChannel) dropChannels(list, format.changes);
  const bool lacksCount = !isCAF && !isAIFF && change.encoding && stored.isFloat() &&
                          list.find(fourCCFrom("fact")) == nullptr;
  if (!lacksCount) return format;
  const auto frames = static_cast<std::uint64_t>(frameCount);
  format.changes.newChunks.emplace_back(fourCCFrom("fact"),
                                        *container == AudioContainer::wave64
                                            ? chunk.bytes().u64(frames).bytes()
                                            : chunk.bytes().u32(std::min(frames, kMost32)).bytes());
  return format;
}

}  // namespace orvane
