// Streams that become another kind of stream on their way, and decoders that remember more than is
// heard: what several decoders make of them in segments is what one makes.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tests/container/ffmpeg/one_reading.h"
#include "tests/support/in_child.h"
#include "tests/support/random.h"
#include "tests/support/sanitized.h"
#include "tests/support/signals.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::Arguments;

constexpr std::uint32_t kRate = 48000;

/// The checksum of a page, RFC 3533, 6: polynomial 04C11DB7, over the page with zeros in its place.
std::uint32_t oggChecksum(const std::string& page) {
  std::uint32_t sum = 0;
  for (const char each : page) {
    sum ^= std::uint32_t{static_cast<unsigned char>(each)} << 24;
    for (int bit = 0; bit < 8; ++bit)
      sum = (sum & 0x80000000U) != 0 ? sum << 1 ^ 0x04C11DB7U : sum << 1;
  }
  return sum;
}

void putLittleEndian(std::string& bytes, std::size_t at, std::uint32_t value, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) bytes[at + i] = static_cast<char>(value >> 8 * i);
}

/// A link of a chain of Opus files: with a serial number of its own, and an output gain in steps of
/// 1/256 dB (RFC 7845, 5.1).
std::string opusLink(const std::string& file, std::uint32_t serial, int gain) {
  constexpr std::size_t kSerial = 14;
  constexpr std::size_t kChecksum = 22;
  constexpr std::size_t kSegments = 26;
  constexpr std::size_t kGain = 16;
  std::string link;
  while (link.size() < file.size()) {
    std::string page = file.substr(link.size());
    const auto byte = [&](std::size_t at) -> std::size_t {
      return static_cast<unsigned char>(page[at]);
    };
    std::size_t size = kSegments + 1 + byte(kSegments);
    for (std::size_t i = 0; i < byte(kSegments); ++i) size += byte(kSegments + 1 + i);
    page.resize(size);
    if (link.empty())
      putLittleEndian(page, page.find("OpusHead") + kGain, static_cast<std::uint32_t>(gain), 2);
    putLittleEndian(page, kSerial, serial, 4);
    putLittleEndian(page, kChecksum, 0, 4);
    putLittleEndian(page, kChecksum, oggChecksum(page), 4);
    link += page;
  }
  return link;
}

class ChangingStream : public testing::Test {
 protected:
  /// What FFmpeg encodes of those samples at 48 kHz, mono.
  std::string encode(const std::vector<float>& samples, const std::string& name,
                     const Arguments& arguments) const {
    std::string bytes(samples.size() * sizeof(float), '\0');
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    const auto raw = folder_.write("samples.f32", bytes);
    Arguments words{"-v",  "error", "-y", "-f", "f32le",     "-ar", std::to_string(kRate),
                    "-ac", "1",     "-i", raw,  "-bitexact", "-vn"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.push_back(folder_ / name);
    test::runTool("ffmpeg", words);
    return test::readFile(folder_ / name);
  }

  /// Of bursts with pauses between them, in which decoders of any kind agree.
  std::string encodeBursts(double seconds, const std::string& name,
                           const Arguments& arguments) const {
    return encode(test::noiseBursts(7, kRate, static_cast<std::size_t>(seconds * kRate)), name,
                  arguments);
  }

  void expectOneReadingOf(const std::string& name, const std::string& bytes) const {
    test::expectOneReading(folder_.write(name, bytes));
  }

  test::TemporaryDirectory folder_{};
};

TEST_F(ChangingStream, IsAChainOfVorbisFiles) {
  const std::string low = encodeBursts(20, "a.ogg", {"-c:a", "libvorbis", "-q:a", "0"});
  const std::string high = encodeBursts(20, "a.ogg", {"-c:a", "libvorbis", "-q:a", "8"});
  expectOneReadingOf("chain.ogg", low + high + low + high);
}

TEST_F(ChangingStream, IsAChainOfOpusFiles) {
  const auto file = [&](double seconds) {
    return encodeBursts(seconds, "a.opus", {"-c:a", "libopus", "-b:a", "64k"});
  };
  constexpr int kDecibel = 256;
  const std::string last = opusLink(file(3), 3, -20 * kDecibel);
  for (const double seconds : {3.0, 12.0})
    expectOneReadingOf("chain.opus",
                       opusLink(file(20), 1, 0) + opusLink(file(seconds), 2, 0) + last);
}

TEST_F(ChangingStream, IsOneLayerOfMPEGAudioBehindAnother) {
  const auto encoded = [&](const char* codec, double seconds, const std::string& name) {
    return encodeBursts(seconds, name, {"-c:a", codec, "-b:a", "128k"});
  };
  const std::string third = encoded("libmp3lame", 10, "a.mp3");
  const std::string second = encoded("mp2", 5, "a.mp2");
  expectOneReadingOf("a.mp3", third + second);
  expectOneReadingOf("a.mp3", third + second + third + third);
  expectOneReadingOf("a.ts", encoded("libmp3lame", 10, "b.ts") + encoded("mp2", 10, "b.ts"));
}

/// CELT uses the energies of earlier frames where a transient follows on others; a decoder that has
/// met nothing but transients since it began has none.
TEST_F(ChangingStream, IsAClickInEveryFrameOfOpus) {
  constexpr std::size_t kFrame = 960;
  constexpr std::size_t kFrames = 2'000;
  const std::string_view kAfterARun = "NTNNTN";  // transients, and frames without
  test::Random random(5);
  std::string frames;
  while (frames.size() < kFrames) frames.append(70 + random.below(26), 'T').append(kAfterARun);
  std::vector<float> samples(frames.size() * kFrame);
  for (std::size_t frame = 0; frame < frames.size(); ++frame)
    for (std::size_t i = 0; i < 3 && frames[frame] == 'T'; ++i)
      samples[frame * kFrame + kFrame / 2 + i] = i % 2 == 0 ? 0.8F : -0.8F;
  for (float& sample : samples)
    sample += static_cast<float>(static_cast<int>(random.below(51)) - 25) / 32768.0F;
  for (const char* bits : {"12k", "16k", "32k", "64k"})
    expectOneReadingOf(
        "clicks.opus",
        encode(samples, "a.opus", {"-c:a", "libopus", "-application", "lowdelay", "-b:a", bits}));
}

/// Some bytes of FLAC may stand for 65,535 frames.
TEST_F(ChangingStream, TakesNoMemoryForFramesThatBecomeLong) {
  if (test::isSanitized()) GTEST_SKIP() << "the memory is not the program's alone";
  const auto part = [&](const char* name, const char* source, const char* frameSize) {
    test::runTool("ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", source, "-c:a", "flac",
                             "-frame_size", frameSize, folder_ / name});
  };
  // The header of the first one tells of long frames, of which it has none.
  part("first.flac", "anullsrc=r=48000:cl=stereo:d=0.004", "65535");
  part("short.flac",
       "anoisesrc=d=4:r=48000:a=0.1:seed=1,aformat=channel_layouts=stereo:sample_fmts=s16", "192");
  part("long.flac", "anullsrc=r=48000:cl=stereo:d=1500", "65535");
  folder_.write("list", "file first.flac\nfile short.flac\nfile long.flac\n");
  const auto file = folder_ / "a.mka";
  test::runTool("ffmpeg", {"-v", "error", "-y", "-f", "concat", "-safe", "0", "-i",
                           folder_ / "list", "-c", "copy", file});
  const auto end = test::runInChild([&] {
    const long before = test::peakMemoryKiB();
    test::readThrough(2, file, 1 << 16);
    return test::peakMemoryKiB() - before < 120 * 1024 ? 0 : 1;
  });
  EXPECT_EQ(end.exitCode, 0);
}

}  // namespace
}  // namespace orvane
