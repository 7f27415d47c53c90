// All sizes are known before the first byte, so the header is written once and as it stays: a WAV
// that will outgrow 32 bits begins as RF64, and no chunk holds a place for another.

#include "orvane/container/chunked/wave_file.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "orvane/container/chunked/chunk_bytes.h"
#include "orvane/container/chunked/header_bytes.h"
#include "orvane/container/chunked/wave_format.h"

namespace orvane {
namespace {

/// The last fourteen bytes of the sub-format XXXX-0000-0010-8000-00AA00389B71.
constexpr std::uint8_t kSubFormatTail[] = {0,    0, 0x00, 0x00, 0x10, 0x00, 0x80,
                                           0x00, 0, 0xAA, 0x00, 0x38, 0x9B, 0x71};
/// The most that all of a RIFF file may be; one more means "as long as it is" to many readers.
constexpr std::uint64_t kMostRIFFBytes = 0xFFFFFFFE;
constexpr std::uint64_t kAllOnes32 = std::numeric_limits<std::uint32_t>::max();

bool isDiscrete(const ChannelLayout& layout) {
  return std::ranges::all_of(layout.labels, [](ChannelLabel label) {
    return label == ChannelLabel::discrete || label == ChannelLabel::unknown ||
           label >= ChannelLabel::discrete0;
  });
}

/// Whether a header without a mask says all there is to say of these channels.
bool isUsualMonoOrStereo(const AudioFormat& format) {
  if (format.channelCount > 2) return false;
  if (!format.layout) return true;
  const auto mask = format.layout->waveMask();
  return mask == (format.channelCount == 1 ? 0x4U : 0x3U);
}

/// Bytes of the format chunk, and how channels and samples lie.
struct Format {
  std::vector<std::byte> body;
  SampleEncoding sample;
  std::vector<std::uint32_t> channelOrder;
  std::vector<std::string> warnings{};
};

Format formatOf(const PCMFileSpecification& specification) {
  const AudioFormat& audio = specification.format;
  Format format{.body = {},
                .sample = sampleIn(specification.container, specification.encoding, false),
                .channelOrder = {}};
  const std::uint64_t frameBytes = specification.frameBytes(format.sample);
  if (audio.sampleRate != std::floor(audio.sampleRate) || audio.sampleRate > 0xFFFFFFFFU)
    throw UnwritableFormat(std::string(displayName(specification.container)) +
                           " states whole sample rates only; a CAF file holds any");
  requireWaveFrame(specification.container, frameBytes);

  std::uint32_t mask = 0;
  if (audio.layout) {
    if (auto order = audio.layout->waveOrder()) {
      mask = order->mask;
      format.channelOrder = std::move(order->channels);
    } else if (!isDiscrete(*audio.layout)) {
      format.warnings.emplace_back("A " + std::string(displayName(specification.container)) +
                                   " file cannot name these channels; a CAF file can.");
    }
  }
  if (format.channelOrder.empty()) {
    format.channelOrder.resize(audio.channelCount);
    std::iota(format.channelOrder.begin(), format.channelOrder.end(), 0U);
  }

  const bool isFloat = specification.encoding.isFloat;
  const bool isPlain = isUsualMonoOrStereo(audio) &&
                       (isFloat || format.sample.bits == 8 || format.sample.bits == 16);
  const std::uint16_t tag = isFloat ? kWaveTagFloat : kWaveTagPCM;
  const auto rate = static_cast<std::uint64_t>(audio.sampleRate);
  HeaderBytes body;
  body.u16(isPlain ? tag : kWaveTagExtensible).u16(audio.channelCount).u32(rate);
  body.u32(std::min(rate * frameBytes, kAllOnes32)).u16(frameBytes).u16(8 * format.sample.bytes);
  if (!isPlain) {
    constexpr std::uint64_t kExtensionBytes = 22;
    body.u16(kExtensionBytes).u16(format.sample.bits).u32(mask).u16(tag);
    body.append(std::as_bytes(std::span(kSubFormatTail)));
  } else if (isFloat) {
    body.u16(0);  // no extension, but its size has to stand in all formats other than PCM
  }
  format.body = body.bytes();
  return format;
}

PCMFileOutline outlineOf(Format format, const PCMFileSpecification& specification) {
  return {.fileTypeID = fileTypeID(specification.container),
          .sample = format.sample,
          .channelOrder = std::move(format.channelOrder),
          .audioBytes = specification.audioBytes(format.sample),
          .warnings = std::move(format.warnings)};
}

}  // namespace

void requireWaveFrame(AudioContainer container, std::uint64_t frameBytes) {
  if (frameBytes > 0xFFFF)
    throw UnwritableFormat(std::string(displayName(container)) +
                           " cannot hold so many channels; a CAF file can");
}

PCMFileOutline outlineWave(const PCMFileSpecification& specification) {
  Format format = formatOf(specification);
  PCMFileOutline outline = outlineOf(format, specification);
  const auto frames = static_cast<std::uint64_t>(specification.frameCount);
  outline.tail.resize(outline.audioBytes % 2);

  HeaderBytes chunks;
  chunks.fourCC(kWaveFormatID).u32(format.body.size()).append(format.body);
  if (specification.encoding.isFloat)
    chunks.fourCC(fourCCFrom("fact")).u32(4).u32(std::min(frames, kAllOnes32));

  constexpr std::uint64_t kFormHeader = 12;
  constexpr std::uint64_t kChunkHeader = 8;
  std::uint64_t fileBytes =
      kFormHeader + chunks.size() + kChunkHeader + outline.audioBytes + outline.tail.size();
  if (specification.container == AudioContainer::wave && fileBytes > kMostRIFFBytes)
    outline.fileTypeID = fileTypeID(AudioContainer::rf64);

  HeaderBytes head;
  if (outline.fileTypeID == fileTypeID(AudioContainer::wave)) {
    head.text("RIFF").u32(fileBytes - kChunkHeader).text("WAVE").append(chunks.bytes());
    head.fourCC(kWaveDataID).u32(outline.audioBytes);
  } else {
    // Sizes of the form, the audio and the frames, and an empty table.
    constexpr std::uint64_t kLongSizes = 28;
    fileBytes += kChunkHeader + kLongSizes;
    head.fourCC(outline.fileTypeID).u32(kAllOnes32).text("WAVE");
    head.text("ds64").u32(kLongSizes).u64(fileBytes - kChunkHeader).u64(outline.audioBytes);
    head.u64(frames).u32(0).append(chunks.bytes()).fourCC(kWaveDataID).u32(kAllOnes32);
  }
  outline.head = head.bytes();
  return outline;
}

PCMFileOutline outlineWave64(const PCMFileSpecification& specification) {
  using namespace std::string_view_literals;
  constexpr auto kFormTail = "\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0"sv;
  constexpr std::uint64_t kChunkHeader = 24;
  constexpr std::uint64_t kFormHeader = 40;
  Format format = formatOf(specification);
  PCMFileOutline outline = outlineOf(format, specification);

  HeaderBytes chunks;
  const auto chunk = [&](FourCC id, std::span<const std::byte> body) {
    chunks.append(chunkBytes({.header = ChunkGrammar::Header::wave64}, id, body));
  };
  chunk(kWaveFormatID, format.body);
  if (specification.encoding.isFloat)
    chunk(fourCCFrom("fact"),
          HeaderBytes().u64(static_cast<std::uint64_t>(specification.frameCount)).bytes());
  // Nothing follows the audio, so nothing has to be aligned behind it; where padding stands there,
  // some readers take it for samples.
  const std::uint64_t fileBytes = kFormHeader + chunks.size() + kChunkHeader + outline.audioBytes;
  HeaderBytes head;
  head.text("riff").text(kFormTail).u64(fileBytes).text("wave").text(kWave64ChunkTail);
  head.append(chunks.bytes()).fourCC(kWaveDataID).text(kWave64ChunkTail);
  head.u64(kChunkHeader + outline.audioBytes);
  outline.head = head.bytes();
  return outline;
}

}  // namespace orvane
