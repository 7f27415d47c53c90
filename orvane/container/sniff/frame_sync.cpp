#include "orvane/container/sniff/frame_sync.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "orvane/container/sniff/mpeg_frame.h"

namespace orvane {
namespace {

using Bytes = std::span<const std::byte>;

/// Frames in a row that leave no doubt.
constexpr std::size_t kSureFrames = 3;
/// Behind leading junk more are asked for, without a gap to the end, and junk may be this long.
constexpr std::size_t kSureFramesBehindJunk = 4;
constexpr std::size_t kMaximumJunk = 16'384;
/// More than any of the headers takes.
constexpr std::size_t kHeaderBytes = 8;

/// One frame's header: its length in bytes, and what must be the same in all frames of a stream.
struct Frame {
  std::size_t length = 0;
  std::uint32_t signature = 0;
};

std::uint32_t at(Bytes bytes, std::size_t index) {
  return std::to_integer<std::uint32_t>(bytes[index]);
}

std::optional<Frame> mpegFrame(Bytes b) {
  const auto header = readMPEGFrameHeader(b);
  if (!header) return {};
  // Version, layer and rate are fixed; the bit rate may change from frame to frame.
  return Frame{.length = header->byteCount,
               .signature = (at(b, 1) & 0x1E) << 8 | (at(b, 2) & 0x0C)};
}

/// AAC in ADTS (ISO/IEC 14496-3, 1.A.2.2).
std::optional<Frame> adtsFrame(Bytes b) {
  if (b.size() < 7 || at(b, 0) != 0xFF || (at(b, 1) & 0xF6) != 0xF0) return {};
  if (((at(b, 2) >> 2) & 15) >= 13) return {};
  const std::size_t length = (at(b, 3) & 3) << 11 | at(b, 4) << 3 | at(b, 5) >> 5;
  if (length < 7) return {};
  return Frame{.length = length, .signature = (at(b, 2) & 0xFD) << 8 | (at(b, 3) & 0xC0)};
}

/// AAC in LOAS (ISO/IEC 14496-3, 1.7.2).
std::optional<Frame> loasFrame(Bytes b) {
  if (b.size() < 3 || at(b, 0) != 0x56 || (at(b, 1) & 0xE0) != 0xE0) return {};
  const std::size_t length = (at(b, 1) & 0x1F) << 8 | at(b, 2);
  if (length == 0) return {};
  return Frame{.length = length + 3, .signature = 0};
}

/// AC-3 and E-AC-3 (ETSI TS 102 366, 4.4.1 and E.1.3.1), also with swapped bytes.
std::optional<Frame> dolbyFrame(Bytes b) {
  if (b.size() < 6) return {};
  const bool isSwapped = at(b, 0) == 0x77 && at(b, 1) == 0x0B;
  if (!isSwapped && (at(b, 0) != 0x0B || at(b, 1) != 0x77)) return {};
  const auto byte = [&](std::size_t i) { return at(b, isSwapped ? i ^ 1U : i); };
  const std::uint32_t identification = byte(5) >> 3;
  if (identification > 16) return {};
  if (identification > 10) {
    const std::size_t words = ((byte(2) & 7) << 8 | byte(3)) + 1;
    return Frame{.length = words * 2, .signature = 2};
  }
  constexpr std::array<std::uint32_t, 19> kKilobits = {
      32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 448, 512, 576, 640};
  const std::uint32_t frequency = byte(4) >> 6;
  const std::uint32_t sizeCode = byte(4) & 63;
  if (frequency == 3 || sizeCode / 2 >= kKilobits.size()) return {};
  const std::uint32_t kilobits = kKilobits[sizeCode / 2];
  // 1536 samples a frame; at 44.1 kHz the odd codes carry one word more.
  std::size_t words = kilobits * 2;
  if (frequency == 1) words = kilobits * 96'000 / 44'100 + (sizeCode & 1);
  if (frequency == 2) words = kilobits * 3;
  return Frame{.length = words * 2, .signature = 1};
}

/// DTS core frames (ETSI TS 102 114, 5.3.1), also with swapped bytes: behind the sync word follow
/// 14 bits of type, deficit, check and block count, then 14 bits of the frame's size. Plain frames
/// of at least 96 bytes only.
std::optional<Frame> dtsFrame(Bytes b) {
  if (b.size() < 8) return {};
  const bool isSwapped = at(b, 0) == 0xFE;
  const auto byte = [&](std::size_t i) { return at(b, isSwapped ? i ^ 1U : i); };
  if (byte(0) != 0x7F || byte(1) != 0xFE || byte(2) != 0x80 || byte(3) != 0x01) return {};
  const std::size_t length = ((byte(5) & 3) << 12 | byte(6) << 4 | byte(7) >> 4) + 1;
  if (length < 96) return {};
  return Frame{.length = length, .signature = isSwapped ? 2U : 1U};
}

/// SBC of Bluetooth audio (A2DP 1.3, appendix B, 12.4). Its sync word has only eight bits, but
/// rate, blocks, channels, bands and bit pool are the same in every frame.
std::optional<Frame> sbcFrame(Bytes b) {
  if (b.size() < 4 || at(b, 0) != 0x9C) return {};
  const std::uint32_t setup = at(b, 1);
  const std::uint32_t pool = at(b, 2);
  const std::uint32_t blocks = ((setup >> 4 & 3) + 1) * 4;
  const std::uint32_t mode = setup >> 2 & 3;  // mono, dual, stereo, joint stereo
  const std::uint32_t channels = mode == 0 ? 1 : 2;
  const std::uint32_t bands = (setup & 1) != 0 ? 8 : 4;
  if (pool < 2 || pool > (mode < 2 ? 16 : 32) * bands) return {};
  const std::uint32_t bits = blocks * pool * (mode == 1 ? 2 : 1) + (mode == 3 ? bands : 0);
  return Frame{.length = 4 + bands * channels / 2 + (bits + 7) / 8, .signature = setup << 8 | pool};
}

using FrameReader = std::optional<Frame> (*)(Bytes);

/// What may follow the last frame: nothing, or a tag.
bool isTail(Bytes rest) {
  constexpr std::array<std::array<char, 3>, 4> kTags = {
      {{'T', 'A', 'G'}, {'A', 'P', 'E'}, {'L', 'Y', 'R'}, {'I', 'D', '3'}}};
  if (rest.empty()) return true;
  return std::ranges::any_of(kTags, [&](const auto& tag) {
    return rest.size() >= tag.size() &&
           std::equal(tag.begin(), tag.end(), rest.begin(),
                      [](char c, std::byte b) { return static_cast<std::byte>(c) == b; });
  });
}

/// Whether frames follow one another from the start on: `sureFrames` of them, or fewer that fill
/// the file. A last frame may be cut short.
bool isChain(Bytes bytes, FrameReader read, std::size_t sureFrames, bool isWhole) {
  const auto first = read(bytes);
  if (!first) return false;
  std::size_t offset = 0;
  for (std::size_t count = 0; count < sureFrames; ++count) {
    if (count > 0 && isWhole && isTail(bytes.subspan(offset))) return true;
    const auto frame = read(bytes.subspan(offset));
    if (!frame || frame->signature != first->signature) return false;
    if (frame->length > bytes.size() - offset) return count > 0 && isWhole;
    offset += frame->length;
  }
  return true;
}

/// Whether frames follow one another to the end of all these bytes, behind which only a tag may
/// come. Tables in programs and pictures hold short chains of what looks like headers.
bool isUnbrokenChain(Bytes bytes, FrameReader read, bool isWhole) {
  const auto first = read(bytes);
  if (!first) return false;
  std::size_t count = 0;
  for (;; ++count) {
    const bool isEnd = bytes.size() < kHeaderBytes || (isWhole && isTail(bytes));
    if (isEnd) return count >= kSureFramesBehindJunk;
    const auto frame = read(bytes);
    if (!frame || frame->signature != first->signature) return false;
    bytes = bytes.subspan(std::min(frame->length, bytes.size()));
  }
}

FourCC codeOfMPEG(Bytes frame) {
  constexpr std::array kCodes = {fourCCFrom("MPG1"), fourCCFrom("MPG2"), fourCCFrom("MPG3")};
  return kCodes[readMPEGFrameHeader(frame)->layer - 1];
}

FourCC codeOfDolby(Bytes frame) {
  return fourCCFrom(dolbyFrame(frame)->signature == 1 ? "ac-3" : "ec-3");
}

/// A kind of stream, and its code by one of its frames.
struct Stream {
  FrameReader read;
  FourCC (*code)(Bytes frame);
};

/// Those with the stronger sync words first.
constexpr std::array kStreams = {
    Stream{dtsFrame, [](Bytes) { return fourCCFrom("DTS "); }},
    Stream{dolbyFrame, codeOfDolby},
    Stream{adtsFrame, [](Bytes) { return fourCCFrom("adts"); }},
    Stream{loasFrame, [](Bytes) { return fourCCFrom("loas"); }},
    Stream{mpegFrame, codeOfMPEG},
};

}  // namespace

std::optional<FourCC> sniffFrames(std::span<const std::byte> head, bool isWhole) {
  for (const Stream& stream : kStreams)
    if (isChain(head, stream.read, kSureFrames, isWhole)) return stream.code(head);
  // Too weak a sync word to be looked for behind junk.
  if (isUnbrokenChain(head, sbcFrame, isWhole)) return fourCCFrom("SBC ");
  // A stream may have been cut from a running one, or have padding before its first frame.
  for (std::size_t offset = 1; offset < std::min(head.size(), kMaximumJunk); ++offset) {
    const Bytes rest = head.subspan(offset);
    for (const Stream& stream : kStreams)
      if (isUnbrokenChain(rest, stream.read, isWhole)) return stream.code(rest);
  }
  return {};
}

}  // namespace orvane
