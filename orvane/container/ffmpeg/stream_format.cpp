#include "orvane/container/ffmpeg/stream_format.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "orvane/container/ffmpeg/channel_labels.h"
#include "orvane/container/ffmpeg/format_codes.h"

namespace orvane {
namespace {

constexpr std::uint32_t kLittleEndianInteger = kFormatFlagIsSignedInteger;
constexpr std::uint32_t kBigEndianInteger = kFormatFlagIsSignedInteger | kFormatFlagIsBigEndian;

/// Format flags of linear PCM; absent for every other codec.
std::optional<std::uint32_t> linearPCMFlags(AVCodecID codec) {
  switch (codec) {
    case AV_CODEC_ID_PCM_U8:
    case AV_CODEC_ID_PCM_U16LE:
    case AV_CODEC_ID_PCM_U24LE:
    case AV_CODEC_ID_PCM_U32LE:
      return 0;
    case AV_CODEC_ID_PCM_U16BE:
    case AV_CODEC_ID_PCM_U24BE:
    case AV_CODEC_ID_PCM_U32BE:
      return kFormatFlagIsBigEndian;
    case AV_CODEC_ID_PCM_S8:
    case AV_CODEC_ID_PCM_S16LE:
    case AV_CODEC_ID_PCM_S24LE:
    case AV_CODEC_ID_PCM_S32LE:
    case AV_CODEC_ID_PCM_S64LE:
      return kLittleEndianInteger;
    case AV_CODEC_ID_PCM_S8_PLANAR:
    case AV_CODEC_ID_PCM_S16LE_PLANAR:
    case AV_CODEC_ID_PCM_S24LE_PLANAR:
    case AV_CODEC_ID_PCM_S32LE_PLANAR:
      return kLittleEndianInteger | kFormatFlagIsNonInterleaved;
    case AV_CODEC_ID_PCM_S16BE_PLANAR:
      return kBigEndianInteger | kFormatFlagIsNonInterleaved;
    case AV_CODEC_ID_PCM_S16BE:
    case AV_CODEC_ID_PCM_S24BE:
    case AV_CODEC_ID_PCM_S32BE:
    case AV_CODEC_ID_PCM_S64BE:
    case AV_CODEC_ID_PCM_BLURAY:
    case AV_CODEC_ID_PCM_DVD:
      return kBigEndianInteger;
    case AV_CODEC_ID_PCM_F32LE:
    case AV_CODEC_ID_PCM_F64LE:
      return kFormatFlagIsFloat;
    case AV_CODEC_ID_PCM_F32BE:
    case AV_CODEC_ID_PCM_F64BE:
      return kFormatFlagIsFloat | kFormatFlagIsBigEndian;
    default:
      return std::nullopt;
  }
}

/// WavPack counts although it has a lossy mode; DTS does not, although it has a lossless one.
bool isLossless(AVCodecID codec) {
  if (codec == AV_CODEC_ID_WAVPACK) return true;
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
  return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
         (descriptor->props & AV_CODEC_PROP_LOSSY) == 0;
}

/// The configuration that an AAC stream carries apart from its packets.
std::span<const std::uint8_t> configurationOf(const AVCodecParameters& parameters) {
  if (parameters.extradata == nullptr || parameters.extradata_size <= 0) return {};
  return {parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)};
}

std::uint32_t readBigEndian32(const std::uint8_t* bytes) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | bytes[i];
  return value;
}

/// A codec that FFmpeg does not know has at least the container's own code.
FourCC codeOfUnknownCodec(const AVCodecParameters& parameters) {
  constexpr std::uint32_t kNMSADPCM = 0x38;  // format tag of WAVE
  const std::uint32_t tag = parameters.codec_tag;
  if (tag == kNMSADPCM) return fourCCFrom("nms ");
  return tag <= 0xFFFF ? tag : __builtin_bswap32(tag);  // its characters begin at the low end
}

void describeLinearPCM(StreamDescription& format, std::uint32_t flags, int bits) {
  const auto bitCount = static_cast<std::uint32_t>(bits);
  format.formatID = kFormatLinearPCM;
  format.bitsPerChannel = bitCount;
  format.formatFlags = flags | (bitCount % 8 == 0 ? kFormatFlagIsPacked : 0);
  const bool isInterleaved = (flags & kFormatFlagIsNonInterleaved) == 0;
  format.bytesPerFrame = (bitCount + 7) / 8 * (isInterleaved ? format.channelsPerFrame : 1);
  format.bytesPerPacket = format.bytesPerFrame;
  format.framesPerPacket = 1;
}

/// Bits of a sample of linear PCM. FFmpeg unpacks MIDI sample dumps to 32 bits; what they really
/// have stands in byte 6 of their header (MIDI 1.0, Sample Dump Standard).
int storedBits(const Demuxer& demuxer) {
  const int bits = demuxer.stream().codecpar->bits_per_coded_sample;
  if (std::string_view(demuxer.format().iformat->name) != "sds") return bits;
  std::array<std::byte, 1> stored{};
  demuxer.file().readExactlyAt(6, stored);
  return std::clamp(std::to_integer<int>(stored[0]), 1, bits);
}

/// Frames and bytes of every packet; 0 where packets differ or nothing is known.
struct PacketShape {
  std::uint32_t frames = 0;
  std::uint32_t bytes = 0;
};

bool isBlockCodec(AVCodecID codec) {
  const bool isADPCM = codec >= AV_CODEC_ID_ADPCM_IMA_QT && codec < AV_CODEC_ID_AMR_NB;
  return isADPCM || codec == AV_CODEC_ID_GSM || codec == AV_CODEC_ID_GSM_MS ||
         codec == AV_CODEC_ID_ILBC;
}

PacketShape packetShape(AVCodecParameters& parameters, FourCC formatID) {
  const auto positive = [](int value) { return static_cast<std::uint32_t>(std::max(value, 0)); };
  if (isBlockCodec(parameters.codec_id))
    return {.frames = positive(av_get_audio_frame_duration2(&parameters, parameters.block_align)),
            .bytes = positive(parameters.block_align)};
  switch (parameters.codec_id) {
    case AV_CODEC_ID_PCM_ALAW:
    case AV_CODEC_ID_PCM_MULAW:
      return {.frames = 1, .bytes = positive(parameters.ch_layout.nb_channels)};
    case AV_CODEC_ID_ALAC:
      // Four bytes of the configuration, behind its twelve-byte atom header.
      if (parameters.extradata_size < 16) return {};
      return {.frames = readBigEndian32(parameters.extradata + 12)};
    case AV_CODEC_ID_AAC:
    case AV_CODEC_ID_AAC_LATM: {
      // Spectral band replication doubles the rate, and with it the frames of a packet.
      const bool isDoubled = formatID == fourCCFrom("aach") || formatID == fourCCFrom("aacp");
      const std::uint32_t frames = positive(parameters.frame_size);
      return {.frames = isDoubled && frames <= 1024 ? 2 * frames : frames};
    }
    case AV_CODEC_ID_MP3:
    case AV_CODEC_ID_MP2:
    case AV_CODEC_ID_MP1:
    case AV_CODEC_ID_AC3:
    case AV_CODEC_ID_AMR_NB:
    case AV_CODEC_ID_AMR_WB:
      return {.frames = positive(parameters.frame_size > 0
                                     ? parameters.frame_size
                                     : av_get_audio_frame_duration2(&parameters, 0))};
    default:
      return {};
  }
}

/// Bits of the audio that a lossless codec was given; 0 for a lossy one.
int sourceBitDepth(const AVCodecParameters& parameters, const AVCodecContext* codec) {
  if (!isLossless(parameters.codec_id)) return 0;
  if (codec != nullptr && codec->bits_per_raw_sample > 0) return codec->bits_per_raw_sample;
  if (parameters.bits_per_raw_sample > 0) return parameters.bits_per_raw_sample;
  if (parameters.bits_per_coded_sample > 0) return parameters.bits_per_coded_sample;
  return codec != nullptr ? 8 * av_get_bytes_per_sample(codec->sample_fmt) : 0;
}

}  // namespace

AudioFileDescription describeStream(const Demuxer& demuxer, FourCC containerHint,
                                    const AVCodecContext* codec, const AVFrame* decoded) {
  AVCodecParameters& parameters = *demuxer.stream().codecpar;
  AudioFileDescription description;
  description.fileTypeID = containerHint != 0
                               ? containerHint
                               : containerCode(*demuxer.format().iformat, parameters.codec_id);
  const AVChannelLayout& layout = decoded != nullptr ? decoded->ch_layout : parameters.ch_layout;
  const StatedAudio& stated = demuxer.stated();
  description.layout = stated.decidesLayout ? stated.layout : channelLayoutFrom(layout);

  StreamDescription& format = description.dataFormat;
  format.sampleRate = decoded != nullptr ? decoded->sample_rate : parameters.sample_rate;
  format.channelsPerFrame = static_cast<std::uint32_t>(layout.nb_channels);
  if (const auto flags = linearPCMFlags(parameters.codec_id)) {
    describeLinearPCM(format, *flags, storedBits(demuxer));
    return description;
  }
  const int profile = codec != nullptr ? codec->profile : parameters.profile;
  format.formatID = parameters.codec_id == AV_CODEC_ID_NONE
                        ? codeOfUnknownCodec(parameters)
                        : codecCode(parameters.codec_id, profile, configurationOf(parameters));
  const PacketShape shape = packetShape(parameters, format.formatID);
  format.framesPerPacket = shape.frames;
  format.bytesPerPacket = shape.bytes;
  description.sourceBitDepth = sourceBitDepth(parameters, codec);
  return description;
}

}  // namespace orvane
