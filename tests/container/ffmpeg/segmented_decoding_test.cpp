#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "tests/container/ffmpeg/one_reading.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::Arguments;

constexpr double kSeconds = 16;
constexpr std::uint32_t kRate = 48000;
constexpr std::size_t kChannels = 6;

/// Noise that swells and pauses, another in every channel: raw 32-bit floats.
std::string programme() {
  constexpr auto kFrames = static_cast<std::size_t>(kSeconds * kRate);
  std::vector<float> samples(kFrames * kChannels);
  for (std::size_t c = 0; c < kChannels; ++c) {
    const auto noise = test::pinkNoise(11 + c, kFrames, 0.3F);
    for (std::size_t i = 0; i < kFrames; ++i) {
      const double seconds = static_cast<double>(i) / kRate;
      const double level = std::pow(std::abs(std::sin(1.3 * seconds)), 3.0);
      const bool isPause = std::fmod(seconds, 4.7) < 0.3;
      samples[i * kChannels + c] = isPause ? 0 : noise[i] * static_cast<float>(level);
    }
  }
  std::string bytes(samples.size() * sizeof(float), '\0');
  std::memcpy(bytes.data(), samples.data(), bytes.size());
  return bytes;
}

/// AAC in ADTS with another bit in every packet's fixed header (ISO/IEC 14496-3, 1.A.2.2).
std::string asMPEG2(std::string packets) {
  const auto byte = [&](std::size_t at) -> unsigned {
    return static_cast<unsigned char>(packets.at(at));
  };
  for (std::size_t at = 0; at < packets.size();
       at += (byte(at + 3) & 3U) << 11 | byte(at + 4) << 3 | byte(at + 5) >> 5)
    packets[at + 1] = static_cast<char>(byte(at + 1) | 0x08);
  return packets;
}

double processorSeconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// The share of the processor time of reading that other threads than the caller's have had.
double shareOfOthers(const std::filesystem::path& file) {
  const double all = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
  const double own = processorSeconds(CLOCK_THREAD_CPUTIME_ID);
  test::readThrough(2, file, 1 << 16);
  const double allSpent = processorSeconds(CLOCK_PROCESS_CPUTIME_ID) - all;
  return 1 - (processorSeconds(CLOCK_THREAD_CPUTIME_ID) - own) / allSpent;
}

/// Whether others have more than this share; once is enough, because on a busy machine they may get
/// no processor while there is something to do.
bool othersTakePart(const std::filesystem::path& file, double share) {
  for (int tries = 0; tries < 8; ++tries)
    if (shareOfOthers(file) > share) return true;
  return false;
}

struct Encoding {
  std::string name;  ///< of the file
  Arguments arguments;
};

Encoding encodingOf(const std::string& name, int channels, Arguments arguments) {
  const char* const forms[] = {"mono|c0=c0",
                               "stereo|c0=c0|c1=c1",
                               "3.0|c0=c0|c1=c1|c2=c2",
                               "quad|c0=c0|c1=c1|c2=c2|c3=c3",
                               "5.0|c0=c0|c1=c1|c2=c2|c3=c3|c4=c4",
                               "5.1|c0=c0|c1=c1|c2=c2|c3=c3|c4=c4|c5=c5"};
  arguments.insert(arguments.begin(), {"-af", std::string("pan=") + forms[channels - 1]});
  return {name, arguments};
}

std::string describe(const Encoding& encoding) {
  std::string text = encoding.name;
  for (const std::string& argument : encoding.arguments) text += " " + argument;
  return text;
}

std::vector<Encoding> layerIII() {
  std::vector<Encoding> all;
  const auto add = [&](const std::string& name, int channels, const std::string& rate,
                       Arguments arguments) {
    arguments.insert(arguments.begin(), {"-c:a", "libmp3lame", "-ar", rate});
    all.push_back(encodingOf(name, channels, arguments));
  };
  for (const char* rate : {"32000", "44100", "48000"})
    for (const char* bits : {"32k", "64k", "96k", "128k", "192k", "256k", "320k"})
      for (const int channels : {1, 2}) add("a.mp3", channels, rate, {"-b:a", bits});
  for (const char* rate : {"8000", "11025", "12000", "16000", "22050", "24000"})
    for (const char* bits : {"8k", "16k", "24k", "48k", "64k"})
      add("a.mp3", std::strcmp(bits, "24k") == 0 ? 2 : 1, rate, {"-b:a", bits});
  for (const char* quality : {"0", "2", "4", "6", "9"})
    for (const char* rate : {"22050", "44100", "48000"}) add("a.mp3", 2, rate, {"-q:a", quality});
  for (const char* bits : {"56k", "112k", "224k"})
    add("a.mp3", 2, "44100", {"-abr", "1", "-b:a", bits});
  add("a.mp3", 2, "44100", {"-b:a", "128k", "-reservoir", "0"});
  add("a.mp3", 2, "44100", {"-b:a", "128k", "-joint_stereo", "0"});
  for (const char* name : {"a.mka", "a.mp4", "a.ts", "a.avi", "a.nut", "a.wav", "a.caf"})
    add(name, 2, "48000", {"-b:a", "160k"});
  return all;
}

std::vector<Encoding> layerII() {
  std::vector<Encoding> all;
  for (const char* encoder : {"mp2", "libtwolame"})
    for (const char* bits : {"64k", "96k", "128k", "192k"})
      for (const int channels : {1, 2})
        all.push_back(encodingOf("a.mp2", channels, {"-c:a", encoder, "-b:a", bits}));
  all.push_back(encodingOf("a.ts", 2, {"-c:a", "mp2", "-b:a", "256k"}));
  all.push_back(encodingOf("a.mp2", 2, {"-c:a", "mp2", "-b:a", "384k", "-ar", "44100"}));
  all.push_back(encodingOf("a.mp2", 1, {"-c:a", "mp2", "-b:a", "32k", "-ar", "16000"}));
  return all;
}

std::vector<Encoding> vorbis() {
  std::vector<Encoding> all;
  for (const char* quality : {"-1", "0", "2", "4", "6", "8", "10"})
    for (const int channels : {1, 2, 6})
      all.push_back(encodingOf("a.ogg", channels, {"-c:a", "libvorbis", "-q:a", quality}));
  for (const char* rate : {"8000", "11025", "16000", "22050", "32000", "44100", "96000", "192000"})
    all.push_back(encodingOf("a.ogg", 2, {"-c:a", "libvorbis", "-q:a", "5", "-ar", rate}));
  for (const char* bits : {"64k", "128k", "256k"})
    all.push_back(encodingOf("a.ogg", 2, {"-c:a", "vorbis", "-strict", "-2", "-b:a", bits}));
  for (const char* name : {"a.mka", "a.webm", "a.mp4", "a.nut"})
    all.push_back(encodingOf(name, 2, {"-c:a", "libvorbis", "-q:a", "4"}));
  return all;
}

std::vector<Encoding> opus() {
  std::vector<Encoding> all;
  for (const char* bits :
       {"6k", "12k", "16k", "24k", "32k", "48k", "64k", "96k", "128k", "192k", "256k"})
    for (const char* use : {"voip", "audio", "lowdelay"})
      all.push_back(encodingOf("a.opus", 1 + (bits[0] > '4'),
                               {"-c:a", "libopus", "-b:a", bits, "-application", use}));
  for (const char* length : {"2.5", "5", "10", "40", "60", "120"})
    for (const char* bits : {"24k", "160k"})
      all.push_back(encodingOf(
          "a.opus", 2,
          {"-c:a", "libopus", "-b:a", bits, "-application", "audio", "-frame_duration", length}));
  for (const char* name : {"a.mka", "a.webm", "a.mp4", "a.ts", "a.ogg"})
    all.push_back(encodingOf(name, 2, {"-c:a", "libopus", "-b:a", "128k"}));
  for (const char* bits : {"96k", "320k"})
    all.push_back(encodingOf("a.opus", 6, {"-c:a", "libopus", "-b:a", bits}));
  all.push_back(encodingOf("a.opus", 2, {"-c:a", "libopus", "-b:a", "128k", "-vbr", "off"}));
  for (const char* bits : {"64k", "128k", "256k"})
    all.push_back(encodingOf("a.opus", 2, {"-c:a", "opus", "-strict", "-2", "-b:a", bits}));
  return all;
}

std::vector<Encoding> lossless() {
  std::vector<Encoding> all;
  for (const char* name : {"a.m4a", "a.caf", "a.mka"})
    for (const char* form : {"s16p", "s32p"})
      for (const int channels : {1, 2, 6})
        all.push_back(encodingOf(name, channels, {"-c:a", "alac", "-sample_fmt", form}));
  for (const char* name : {"a.wv", "a.mka"})
    for (const char* form : {"u8p", "s16p", "s32p", "fltp"})
      for (const int channels : {1, 2, 6})
        all.push_back(encodingOf(name, channels, {"-c:a", "wavpack", "-sample_fmt", form}));
  for (const char* name : {"a.oga", "a.mka", "a.mp4", "a.flac"})
    for (const char* form : {"s16", "s32"})
      for (const int channels : {1, 2, 6})
        all.push_back(
            encodingOf(name, channels, {"-c:a", "flac", "-sample_fmt", form, "-strict", "-2"}));
  for (const char* form : {"u8", "s16", "s32"})
    all.push_back(encodingOf("a.tta", 2, {"-c:a", "tta", "-sample_fmt", form}));
  all.push_back(encodingOf("a.mlp", 2, {"-c:a", "mlp", "-strict", "-2"}));
  all.push_back(encodingOf("a.thd", 6, {"-c:a", "truehd", "-strict", "-2"}));
  return all;
}

/// What is split, and what other profiles, more channels or noise keep from it.
std::vector<Encoding> aac() {
  std::vector<Encoding> all;
  const auto add = [&](const std::string& name, int channels, Arguments arguments) {
    arguments.insert(arguments.begin(), {"-c:a", "aac"});
    all.push_back(encodingOf(name, channels, arguments));
  };
  for (const char* name : {"a.m4a", "a.aac", "a.mka", "a.ts", "a.flv", "a.mov", "a.nut"})
    for (const int channels : {2, 1}) add(name, channels, {"-aac_pns", "0", "-ar", "44100"});
  for (const char* name : {"a.m4a", "a.aac"})
    for (const char* rate : {"8000", "11025", "12000", "16000", "22050", "24000", "32000", "44100",
                             "48000", "64000", "88200", "96000"})
      add(name, 2, {"-aac_pns", "0", "-b:a", "64k", "-ar", rate});
  for (const char* bits : {"16k", "32k", "96k", "192k", "320k"})
    for (const char* noise : {"0", "1"})
      for (const char* name : {"a.m4a", "a.aac"})
        add(name, 1 + (bits[0] != '1'), {"-aac_pns", noise, "-b:a", bits});
  for (const char* coder : {"fast", "twoloop"})
    add("a.m4a", 2, {"-aac_pns", "0", "-aac_coder", coder, "-q:a", "2"});
  for (const char* tool : {"-aac_tns", "-aac_ms", "-aac_is"})
    for (const char* use : {"0", "1"}) add("a.m4a", 2, {"-aac_pns", "0", tool, use, "-b:a", "64k"});
  for (const char* profile : {"aac_main", "aac_ltp", "mpeg2_aac_low"})
    for (const char* name : {"a.m4a", "a.aac"})
      add(name, 2, {"-aac_pns", "0", "-profile:a", profile, "-strict", "-2"});
  for (const char* name : {"a.m4a", "a.aac"})
    for (const int channels : {3, 6}) add(name, channels, {"-aac_pns", "0"});
  add("a.latm", 2, {"-aac_pns", "0"});
  return all;
}

/// What is never split, or decoded so quickly that it does not matter.
std::vector<Encoding> others() {
  std::vector<Encoding> all;
  for (const char* name : {"a.ac3", "a.mp4", "a.mka"})
    for (const int channels : {1, 2, 6}) all.push_back(encodingOf(name, channels, {"-c:a", "ac3"}));
  for (const int channels : {2, 6}) all.push_back(encodingOf("a.eac3", channels, {"-c:a", "eac3"}));
  all.push_back(encodingOf("a.dts", 6, {"-c:a", "dca", "-strict", "-2"}));
  for (const char* codec : {"wmav1", "wmav2"})
    for (const char* bits : {"64k", "128k"})
      all.push_back(encodingOf("a.wma", 2, {"-c:a", codec, "-b:a", bits, "-ar", "44100"}));
  for (const char* codec : {"adpcm_ms", "adpcm_ima_wav", "adpcm_g722", "pcm_mulaw", "pcm_alaw"})
    all.push_back(encodingOf("a.wav", 1, {"-c:a", codec, "-ar", "16000"}));
  all.push_back(encodingOf("a.spx", 1, {"-c:a", "libspeex", "-ar", "16000"}));
  all.push_back(encodingOf("a.gsm", 1, {"-c:a", "libgsm", "-ar", "8000"}));
  all.push_back(encodingOf("a.flv", 1, {"-c:a", "nellymoser", "-ar", "16000"}));
  all.push_back(encodingOf("a.ra", 1, {"-c:a", "real_144", "-ar", "8000"}));
  return all;
}

struct Family {
  const char* name;
  std::vector<Encoding> (*encodings)();
};

class EncodedProgramme : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new test::TemporaryDirectory();
    test::writeFile(*folder_ / "programme.f32", programme());
  }
  static void TearDownTestSuite() { delete folder_; }

  static std::filesystem::path encode(const Encoding& encoding, int repetitions = 0) {
    const auto file = *folder_ / encoding.name;
    Arguments words{"-stream_loop",
                    std::to_string(repetitions),
                    "-v",
                    "error",
                    "-y",
                    "-f",
                    "f32le",
                    "-ar",
                    std::to_string(kRate),
                    "-ac",
                    std::to_string(kChannels),
                    "-i",
                    (*folder_ / "programme.f32").string()};
    words.insert(words.end(), encoding.arguments.begin(), encoding.arguments.end());
    words.push_back(file.string());
    test::runTool("ffmpeg", words);
    return file;
  }

  inline static test::TemporaryDirectory* folder_ = nullptr;
};

class SegmentedDecoding : public EncodedProgramme, public testing::WithParamInterface<Family> {};

/// A seeded share of the encodings, all of them with ORVANE_ALL_CASES, each also with some bytes
/// overwritten in mid-file.
TEST_P(SegmentedDecoding, GivesWhatOneDecoderGives) {
  const auto all = GetParam().encodings();
  const bool isFull = std::getenv("ORVANE_ALL_CASES") != nullptr;
  test::Random random(7);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!isFull && i % 6 != 0) continue;
    SCOPED_TRACE(describe(all[i]));
    const auto file = encode(all[i]);
    test::expectOneReading(file);
    std::string bytes = test::readFile(file);
    const std::size_t place = bytes.size() / 4 + random.below(bytes.size() / 2);
    for (std::size_t k = 0; k < 40 && place + k < bytes.size(); ++k)
      bytes[place + k] = static_cast<char>(random.below(256));
    test::writeFile(file, bytes);
    SCOPED_TRACE("damaged");
    test::expectOneReading(file);
  }
}

INSTANTIATE_TEST_SUITE_P(Families, SegmentedDecoding,
                         testing::Values(Family{"LayerIII", layerIII}, Family{"LayerII", layerII},
                                         Family{"Vorbis", vorbis}, Family{"Opus", opus},
                                         Family{"AAC", aac}, Family{"Lossless", lossless},
                                         Family{"Others", others}),
                         [](const auto& family) { return family.param.name; });

TEST_F(EncodedProgramme, IsDecodedByTwoWhereADecoderMayBeginInMidStream) {
  for (const Encoding& each :
       {encodingOf("a.mp3", 2, {"-c:a", "libmp3lame", "-b:a", "192k"}),
        encodingOf("a.mp3", 1, {"-c:a", "libmp3lame", "-q:a", "6", "-ar", "22050"}),
        encodingOf("a.ogg", 2, {"-c:a", "libvorbis", "-q:a", "6"}),
        encodingOf("a.opus", 2, {"-c:a", "libopus", "-b:a", "128k"}),
        encodingOf("a.m4a", 2, {"-c:a", "aac", "-aac_pns", "0"}),
        encodingOf("a.aac", 1, {"-c:a", "aac", "-aac_pns", "0"}),
        encodingOf("a.ts", 2, {"-c:a", "libmp3lame"}),
        encodingOf("a.ts", 2, {"-c:a", "aac", "-aac_pns", "0"}),
        encodingOf("a.m4a", 2, {"-c:a", "alac"}), encodingOf("a.wv", 2, {"-c:a", "wavpack"}),
        encodingOf("a.flac", 2, {"-c:a", "flac"}), encodingOf("a.oga", 6, {"-c:a", "flac"})}) {
    SCOPED_TRACE(describe(each));
    EXPECT_TRUE(othersTakePart(encode(each, 3), 0.1));
  }
}

/// AAC's random numbers go on where the noise before has left them, however long ago that was.
TEST_F(EncodedProgramme, KeepsTheRandomNumbersBetweenPiecesOfNoise) {
  for (const int channels : {1, 2}) {
    const auto encoded = [&](const char* noise, const char* seconds) {
      return test::readFile(encode(encodingOf(
          "part.aac", channels,
          {"-c:a", "aac", "-aac_pns", noise, "-b:a", "96k", "-ss", "1", "-t", seconds})));
    };
    const std::string plain = encoded("0", "15");
    const std::string noise = encoded("1", "0.4");
    const auto stream = *folder_ / "a.aac";
    const auto track = *folder_ / "a.m4a";
    // Packets with another header than the first are decoded between two stretches, and behind
    // the last of several.
    test::writeFile(stream, plain + asMPEG2(noise) + plain + noise + plain);
    test::expectOneReading(stream);
    std::string stretches;
    while (stretches.size() < 7 * plain.size()) stretches += plain;
    test::writeFile(stream, stretches + asMPEG2(noise));
    test::expectOneReading(stream);
    test::writeFile(stream, plain + noise + plain + noise + plain);
    test::runTool("ffmpeg", {"-v", "error", "-y", "-i", stream, "-c", "copy", track});
    for (const auto& file : {stream, track}) {
      SCOPED_TRACE(file.extension().string() + " of " + std::to_string(channels));
      test::expectOneReading(file);
      EXPECT_TRUE(othersTakePart(file, 0.05)) << "what comes before the noise";
    }
  }
}

TEST_F(EncodedProgramme, IsDecodedByOneWhereNot) {
  for (const Encoding& each :
       {encodingOf("a.m4a", 2, {"-c:a", "aac", "-b:a", "64k"}),
        encodingOf("a.ac3", 2, {"-c:a", "ac3"}),
        encodingOf("a.opus", 1,
                   {"-c:a", "libopus", "-b:a", "16k", "-application", "voip", "-ar", "16000"})}) {
    SCOPED_TRACE(describe(each));
    EXPECT_LT(shareOfOthers(encode(each, 3)), 0.05);
  }
}

}  // namespace
}  // namespace orvane
