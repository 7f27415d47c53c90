#include "orvane/platform/audio_file/ffmpeg/stream_format.h"

#include <bit>
#include <cstdint>
#include <optional>
#include <span>

#include "orvane/platform/audio_file/ffmpeg/channel_labels.h"
#include "orvane/platform/audio_file/ffmpeg/format_codes.h"

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

bool isLossless(AVCodecID codec) {
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
  return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
         (descriptor->props & AV_CODEC_PROP_LOSSY) == 0;
}

/// The configuration that an AAC stream carries apart from its packets.
std::span<const std::uint8_t> configurationOf(const AVCodecParameters& parameters) {
  if (parameters.extradata == nullptr || parameters.extradata_size <= 0) return {};
  return {parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)};
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

/// Frames of every packet; 0 when they differ or are not known.
std::uint32_t framesPerPacket(const AVCodecParameters& parameters, const AVCodecContext* codec) {
  switch (parameters.codec_id) {
    case AV_CODEC_ID_PCM_ALAW:
    case AV_CODEC_ID_PCM_MULAW:
      return 1;
    case AV_CODEC_ID_VORBIS:
      return 0;
    default:
      break;
  }
  const int frames =
      codec != nullptr && codec->frame_size > 0 ? codec->frame_size : parameters.frame_size;
  return frames > 0 ? static_cast<std::uint32_t>(frames) : 0;
}

}  // namespace

AudioFileDescription describeStream(const Demuxer& demuxer, FourCC containerHint,
                                    const AVCodecContext* codec, const AVFrame* decoded) {
  const AVCodecParameters& parameters = *demuxer.stream().codecpar;
  AudioFileDescription description;
  description.fileTypeID =
      containerHint != 0 ? containerHint : containerCode(demuxer.format(), parameters.codec_id);
  const AVChannelLayout& layout = decoded != nullptr ? decoded->ch_layout : parameters.ch_layout;
  description.layout = channelLayoutFrom(layout);

  StreamDescription& format = description.dataFormat;
  format.sampleRate = decoded != nullptr ? decoded->sample_rate : parameters.sample_rate;
  format.channelsPerFrame = static_cast<std::uint32_t>(layout.nb_channels);
  if (const auto flags = linearPCMFlags(parameters.codec_id)) {
    describeLinearPCM(format, *flags, parameters.bits_per_coded_sample);
    return description;
  }
  const int profile = codec != nullptr ? codec->profile : parameters.profile;
  format.formatID = codecCode(parameters.codec_id, profile, configurationOf(parameters));
  format.framesPerPacket = framesPerPacket(parameters, codec);
  const bool isConstantPacket =
      parameters.block_align > 0 && format.framesPerPacket > 0 && !isLossless(parameters.codec_id);
  if (isConstantPacket) format.bytesPerPacket = static_cast<std::uint32_t>(parameters.block_align);
  if (isLossless(parameters.codec_id))
    description.sourceBitDepth = parameters.bits_per_raw_sample > 0
                                     ? parameters.bits_per_raw_sample
                                     : parameters.bits_per_coded_sample;
  return description;
}

}  // namespace orvane
