#include "orvane/container/ffmpeg/format_codes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvane {
namespace {

struct CodecCode {
  AVCodecID codec;
  std::string_view code;
};

// Core Audio's codes where it has one; below them our own.
constexpr std::array kCodecCodes{
    CodecCode{AV_CODEC_ID_MP3, ".mp3"},
    CodecCode{AV_CODEC_ID_MP2, ".mp2"},
    CodecCode{AV_CODEC_ID_MP1, ".mp1"},
    CodecCode{AV_CODEC_ID_ALAC, "alac"},
    CodecCode{AV_CODEC_ID_FLAC, "flac"},
    CodecCode{AV_CODEC_ID_OPUS, "opus"},
    CodecCode{AV_CODEC_ID_AC3, "ac-3"},
    CodecCode{AV_CODEC_ID_EAC3, "ec-3"},
    CodecCode{AV_CODEC_ID_AMR_NB, "samr"},
    CodecCode{AV_CODEC_ID_AMR_WB, "sawb"},
    CodecCode{AV_CODEC_ID_PCM_MULAW, "ulaw"},
    CodecCode{AV_CODEC_ID_PCM_ALAW, "alaw"},
    CodecCode{AV_CODEC_ID_ADPCM_IMA_QT, "ima4"},
    CodecCode{AV_CODEC_ID_ADPCM_IMA_WAV, "ima4"},
    CodecCode{AV_CODEC_ID_ILBC, "ilbc"},
    CodecCode{AV_CODEC_ID_GSM, "agsm"},
    CodecCode{AV_CODEC_ID_GSM_MS, "agsm"},
    CodecCode{AV_CODEC_ID_QDM2, "QDM2"},
    CodecCode{AV_CODEC_ID_QDMC, "QDMC"},
    CodecCode{AV_CODEC_ID_MACE3, "MAC3"},
    CodecCode{AV_CODEC_ID_MACE6, "MAC6"},
    CodecCode{AV_CODEC_ID_QCELP, "Qclp"},
    CodecCode{AV_CODEC_ID_VORBIS, "vorb"},
    CodecCode{AV_CODEC_ID_SPEEX, "spex"},
    CodecCode{AV_CODEC_ID_WAVPACK, "wvpk"},
    CodecCode{AV_CODEC_ID_TTA, "TTA1"},
    CodecCode{AV_CODEC_ID_APE, "ape "},
    CodecCode{AV_CODEC_ID_TAK, "tak "},
    CodecCode{AV_CODEC_ID_MUSEPACK7, "mpc7"},
    CodecCode{AV_CODEC_ID_MUSEPACK8, "mpc8"},
    CodecCode{AV_CODEC_ID_WMAV1, "wma1"},
    CodecCode{AV_CODEC_ID_WMAV2, "wma2"},
    CodecCode{AV_CODEC_ID_WMAPRO, "wmap"},
    CodecCode{AV_CODEC_ID_WMALOSSLESS, "wmal"},
    CodecCode{AV_CODEC_ID_WMAVOICE, "wmav"},
    CodecCode{AV_CODEC_ID_DTS, "dts "},
    CodecCode{AV_CODEC_ID_TRUEHD, "mlpa"},
    CodecCode{AV_CODEC_ID_MLP, "mlp "},
    CodecCode{AV_CODEC_ID_ADPCM_MS, "msad"},
    CodecCode{AV_CODEC_ID_ADPCM_G722, "g722"},
    CodecCode{AV_CODEC_ID_ADPCM_G726, "g726"},
    CodecCode{AV_CODEC_ID_ADPCM_G726LE, "g726"},
    CodecCode{AV_CODEC_ID_G723_1, "g723"},
    CodecCode{AV_CODEC_ID_G729, "g729"},
    CodecCode{AV_CODEC_ID_ATRAC1, "atr1"},
    CodecCode{AV_CODEC_ID_ATRAC3, "atr3"},
    CodecCode{AV_CODEC_ID_ATRAC3P, "at3p"},
    CodecCode{AV_CODEC_ID_MP4ALS, "als "},
    CodecCode{AV_CODEC_ID_DSD_LSBF, "dsd "},
    CodecCode{AV_CODEC_ID_DSD_MSBF, "dsd "},
    CodecCode{AV_CODEC_ID_DSD_LSBF_PLANAR, "dsd "},
    CodecCode{AV_CODEC_ID_DSD_MSBF_PLANAR, "dsd "},
};

struct DemuxerCode {
  std::string_view demuxer;
  std::string_view code;
};

/// Demuxers that find their stream behind so much else that no signature does.
constexpr std::array kStreamDemuxers{
    DemuxerCode{"aac", "adts"},  DemuxerCode{"loas", "loas"},
    DemuxerCode{"ac3", "ac-3"},  DemuxerCode{"eac3", "ec-3"},
    DemuxerCode{"dts", "DTS "},  DemuxerCode{"flac", "flac"},
    DemuxerCode{"ogg", "Oggf"},  DemuxerCode{"mpegts", "MPTS"},
    DemuxerCode{"mpeg", "MPEG"}, DemuxerCode{"mov,mp4,m4a,3gp,3g2,mj2", "mp4f"},
};

/// A code made of a name's first characters, for what no table knows.
FourCC codeFromName(std::string_view name) {
  std::string code;
  for (const char c : name)
    if (std::isalnum(static_cast<unsigned char>(c)) != 0 && code.size() < 4) code += c;
  return fourCCFrom(code);
}

/// Reads bits, most significant first; zero behind the end.
class BitReader {
 public:
  explicit BitReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  unsigned read(unsigned count) {
    unsigned value = 0;
    for (; count > 0; --count, ++position_) {
      const std::size_t byte = position_ / 8;
      const unsigned bit = byte < bytes_.size() ? (bytes_[byte] >> (7 - position_ % 8)) & 1U : 0U;
      value = value << 1 | bit;
    }
    return value;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
};

unsigned readObjectType(BitReader& bits) {
  const unsigned type = bits.read(5);
  return type == 31 ? 32 + bits.read(6) : type;
}

/// Sample rate index and channel configuration; false for channels that a program config lists.
bool skipRateAndChannels(BitReader& bits) {
  constexpr unsigned kExplicitRate = 15;
  if (bits.read(4) == kExplicitRate) bits.read(24);
  return bits.read(4) != 0;
}

/// ISO/IEC 14496-3, 1.6.5.2: low-complexity AAC may tell of its extensions behind its own
/// configuration, so that older decoders still play it.
FourCC extendedLowComplexityCode(BitReader& bits) {
  constexpr unsigned kBandReplicationSync = 0x2B7;
  constexpr unsigned kParametricStereoSync = 0x548;
  if (!skipRateAndChannels(bits)) return fourCCFrom("aac ");
  bits.read(3);  // frame length, core coder, extension
  const bool hasBandReplication =
      bits.read(11) == kBandReplicationSync && bits.read(5) == 5 && bits.read(1) != 0;
  if (!hasBandReplication) return fourCCFrom("aac ");
  if (bits.read(4) == 15) bits.read(24);  // the extension's sample rate
  const bool hasParametricStereo = bits.read(11) == kParametricStereoSync && bits.read(1) != 0;
  return fourCCFrom(hasParametricStereo ? "aacp" : "aach");
}

/// Enhanced low delay says itself whether it carries band replication.
FourCC enhancedLowDelayCode(BitReader& bits) {
  skipRateAndChannels(bits);
  bits.read(4);  // frame length, three resilience flags
  return fourCCFrom(bits.read(1) != 0 ? "aacf" : "aace");
}

/// ISO/IEC 14496-3, 1.6.2.1: the audio object type comes first.
FourCC codeFromConfiguration(std::span<const std::uint8_t> configuration) {
  BitReader bits(configuration);
  switch (readObjectType(bits)) {
    case 2:
      return extendedLowComplexityCode(bits);
    case 5:
      return fourCCFrom("aach");
    case 23:
      return fourCCFrom("aacl");
    case 29:
      return fourCCFrom("aacp");
    case 30:
      return fourCCFrom("aacs");
    case 39:
      return enhancedLowDelayCode(bits);
    case 42:
      return fourCCFrom("usac");
    default:
      return fourCCFrom("aac ");
  }
}

FourCC aacCode(int profile, std::span<const std::uint8_t> configuration) {
  switch (profile) {
    case FF_PROFILE_AAC_HE:
    case FF_PROFILE_MPEG2_AAC_HE:
      return fourCCFrom("aach");
    case FF_PROFILE_AAC_HE_V2:
      return fourCCFrom("aacp");
    default:
      return codeFromConfiguration(configuration);
  }
}

}  // namespace

FourCC containerCode(const AVInputFormat& demuxer, AVCodecID codec) {
  const std::string_view name = demuxer.name;
  if (name == "mp3")
    return fourCCFrom(codec == AV_CODEC_ID_MP1   ? "MPG1"
                      : codec == AV_CODEC_ID_MP2 ? "MPG2"
                                                 : "MPG3");
  const auto known = std::find_if(kStreamDemuxers.begin(), kStreamDemuxers.end(),
                                  [&](const auto& entry) { return entry.demuxer == name; });
  return known != kStreamDemuxers.end() ? fourCCFrom(known->code) : codeFromName(name);
}

FourCC codecCode(AVCodecID codec, int profile, std::span<const std::uint8_t> configuration) {
  if (codec == AV_CODEC_ID_AAC || codec == AV_CODEC_ID_AAC_LATM)
    return aacCode(profile, configuration);
  const auto known = std::find_if(kCodecCodes.begin(), kCodecCodes.end(),
                                  [&](const auto& entry) { return entry.codec == codec; });
  return known != kCodecCodes.end() ? fourCCFrom(known->code)
                                    : codeFromName(avcodec_get_name(codec));
}

}  // namespace orvane
