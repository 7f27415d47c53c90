#include "orvane/container/ffmpeg/aac_noise_probe.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>
#include <vector>

#include "orvane/container/ffmpeg/format_codes.h"

namespace orvane {
namespace {

constexpr std::size_t kADTSHeaderBytes = 7;
/// A bit that tells of a checksum behind the header, in the header's second byte.
constexpr std::uint8_t kADTSHasNoChecksum = 0x01;

class BitWriter {
 public:
  void write(unsigned value, unsigned count) {
    for (; count > 0; --count, ++written_) {
      if (written_ % 8 == 0) bytes_.push_back(0);
      const unsigned bit = value >> (count - 1) & 1U;
      bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | bit << (7 - written_ % 8));
    }
  }
  const std::vector<std::uint8_t>& bytes() const noexcept { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_{};
  std::size_t written_ = 0;
};

/// ISO/IEC 14496-3, 4.4.2: a long block of which the first band alone is coded.
void writeChannelInfo(BitWriter& bits) {
  bits.write(0, 1 + 2 + 1);  // reserved, a long window, of sines
  bits.write(1, 6);          // bands
  bits.write(0, 1);          // no prediction
}

/// What `writeChannelInfo` writes goes before, for a pair, and else behind the gain.
void writeNoiseChannel(BitWriter& bits, bool hasOwnInfo) {
  constexpr unsigned kGain = 140;
  constexpr unsigned kNoiseCodebook = 13;
  constexpr unsigned kNoChangeOfEnergy = 256;
  bits.write(kGain, 8);
  if (hasOwnInfo) writeChannelInfo(bits);
  bits.write(kNoiseCodebook, 4);
  bits.write(1, 5);  // bands in the section
  bits.write(kNoChangeOfEnergy, 9);
  bits.write(0, 3);  // no pulses, noise shaping, gain control
}

/// A packet without header. The element's tag is one that encoders do not use: decoders know a
/// lone element by its place, unless a packet has told them of others since they were opened.
std::vector<std::uint8_t> noiseBlock(int channelCount) {
  constexpr unsigned kSingleChannel = 0;
  constexpr unsigned kChannelPair = 1;
  constexpr unsigned kEnd = 7;
  constexpr unsigned kUnusualTag = 15;
  BitWriter bits;
  const bool isPair = channelCount == 2;
  bits.write(isPair ? kChannelPair : kSingleChannel, 3);
  bits.write(kUnusualTag, 4);
  if (isPair) {
    bits.write(1, 1);  // both have the following
    writeChannelInfo(bits);
    bits.write(0, 2);  // no mid and side
    writeNoiseChannel(bits, false);
  }
  writeNoiseChannel(bits, !isPair);
  bits.write(kEnd, 3);
  return bits.bytes();
}

/// The syncword; a packet without header would end before its first element.
bool hasADTSHeader(std::span<const std::uint8_t> packet) {
  return packet.size() >= kADTSHeaderBytes && packet[0] == 0xFF && (packet[1] & 0xF0) == 0xF0;
}

/// ISO/IEC 14496-3, 1.A.2.2: the fixed part of a stream's header, and lengths of the packet's own.
void putADTSHeader(std::vector<std::uint8_t>& packet, std::span<const std::uint8_t> streams) {
  const std::size_t length = kADTSHeaderBytes + packet.size();
  const auto byte = [](std::size_t value) { return static_cast<std::uint8_t>(value); };
  packet.insert(packet.begin(),
                {streams[0], byte(streams[1] | kADTSHasNoChecksum), streams[2],
                 byte((streams[3] & 0xF0U) | length >> 11), byte(length >> 3 & 0xFF),
                 byte((length & 7) << 5 | 0x1F), 0xFC});  // of unknown fullness; one block
}

/// Whether the configuration tells of LC alone, as far as it stands apart from the packets.
bool isPlainByConfiguration(const AVCodecParameters& parameters) {
  const std::span configuration(parameters.extradata,
                                static_cast<std::size_t>(parameters.extradata_size));
  return codecCode(parameters.codec_id, parameters.profile, configuration) == fourCCFrom("aac ");
}

bool areSame(const FrameRun& a, const FrameRun& b) {
  return a.endsWith(b) && b.endsWith(a);
}

}  // namespace

std::unique_ptr<AACNoiseProbe> AACNoiseProbe::of(const Demuxer& demuxer,
                                                 const AVCodecParameters& parameters,
                                                 const AVPacket& packet, int channelCount) {
  if (channelCount > 2 || !isPlainByConfiguration(parameters)) return nullptr;
  std::vector<std::uint8_t> bytes = noiseBlock(channelCount);
  if (hasADTSHeader(bytesOf(packet))) putADTSHeader(bytes, bytesOf(packet));
  PacketPointer made = makePacket();
  if (av_new_packet(made.get(), static_cast<int>(bytes.size())) < 0) throw std::bad_alloc();
  std::copy(bytes.begin(), bytes.end(), made->data);
  std::unique_ptr<AACNoiseProbe> probe(new AACNoiseProbe(std::move(made)));

  const CodecContextPointer codec = openCodec(demuxer, parameters);
  for (std::size_t i = 0; i < kMostProbings; ++i)
    probe->answers_.push_back(probe->answerOf(*codec));
  const bool hears =
      !probe->answers_[1].pieces().empty() && !areSame(probe->answers_[0], probe->answers_[1]);
  return hears && codec->profile == FF_PROFILE_AAC_LOW ? std::move(probe) : nullptr;
}

bool AACNoiseProbe::suits(const AVPacket& packet) const {
  const auto own = bytesOf(*packet_);
  const auto other = bytesOf(packet);
  if (!hasADTSHeader(own)) return !hasADTSHeader(other);
  return hasADTSHeader(other) && (other[1] | kADTSHasNoChecksum) == own[1] && other[2] == own[2] &&
         other[3] >> 4 == own[3] >> 4;
}

bool AACNoiseProbe::findsNoNoise(AVCodecContext& codec, std::size_t earlierProbings) const {
  return areSame(answerOf(codec), answers_[earlierProbings]);
}

/// What the decoder makes of the packet when it is given it again; empty where it fails.
FrameRun AACNoiseProbe::answerOf(AVCodecContext& codec) const {
  FrameRun answer;
  const FramePointer frame = makeFrame();
  decodePacket(codec, *packet_, *frame, nullptr);
  decodePacket(codec, *packet_, *frame, &answer);
  return answer;
}

}  // namespace orvane
