#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <set>
#include <string>
#include <string_view>

#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using test::Arguments;

/// A file that the ffmpeg program can write, and what it must be found to be.
struct Format {
  std::string file;       ///< its ending chooses the container
  Arguments arguments;    ///< of the encoder
  std::string container;  ///< container code
  std::string codec;      ///< format code
  int sourceBitDepth = 0;
};

std::ostream& operator<<(std::ostream& out, const Format& format) {
  return out << format.file;
}

/// Decoders of float transforms may differ in the last bits from run to run of the oracle.
constexpr double kTolerance = 1e-6;

const Arguments kStereo = {"-af", "aformat=channel_layouts=stereo"};
const Arguments kFiveOne = {"-af", "aformat=channel_layouts=5.1"};

Arguments codec(const std::string& name, const Arguments& more = {}) {
  Arguments words = {"-c:a", name, "-strict", "-2"};
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

Arguments with(Arguments words, const Arguments& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

/// MP4, 3GP and QuickTime say how much of a track is to be heard.
bool hasEditList(const Format& format) {
  return std::set<std::string>{"m4af", "mp4f", "3gpp", "3gp2", "MOV "}.contains(format.container);
}

class FFmpegDecode : public testing::TestWithParam<Format> {
 protected:
  test::TemporaryDirectory folder_;
};

TEST_P(FFmpegDecode, GivesWhatTheProgramGivesAndIsIdentifiedUnderAWrongName) {
  const auto file = test::encodeNoise(folder_, GetParam().file, GetParam().arguments);
  auto expected = test::decodeWithFFmpeg(file);
  ASSERT_FALSE(expected.empty());

  const auto misnamed = folder_ / "misnamed.wav";
  std::filesystem::rename(file, misnamed);
  const auto found = test::readWholeFile(misnamed);
  EXPECT_EQ(found.promisedFrames, found.frames());
  if (hasEditList(GetParam())) {
    // The program plays the padding of the last packet too.
    ASSERT_LE(found.samples.size(), expected.size());
    EXPECT_LT(expected.size() - found.samples.size(),
              2048U * found.description.dataFormat.channelsPerFrame);
    expected.resize(found.samples.size());
  }
  ASSERT_EQ(found.samples.size(), expected.size());
  EXPECT_LE(test::largestDifference(found.samples, expected), kTolerance);
  EXPECT_THAT(found.description.warnings, testing::IsEmpty());

  const auto description = describeAudioFile(misnamed);
  ASSERT_TRUE(description);
  EXPECT_EQ(*description, found.description);
  EXPECT_EQ(test::textOf(description->fileTypeID), GetParam().container);
  EXPECT_EQ(test::textOf(description->dataFormat.formatID), GetParam().codec);
  EXPECT_EQ(description->sourceBitDepth, GetParam().sourceBitDepth);
  EXPECT_EQ(description->dataFormat.bitsPerChannel > 0, GetParam().codec == "lpcm");
}

std::string testName(const testing::TestParamInfo<Format>& info) {
  return test::wordOf(info.param.file);
}

INSTANTIATE_TEST_SUITE_P(
    Lossless, FFmpegDecode,
    testing::Values(
        Format{"s16.flac", with(kStereo, {"-sample_fmt", "s16"}), "flac", "flac", 16},
        Format{"s24.flac", with(kStereo, {"-sample_fmt", "s32"}), "flac", "flac", 24},
        Format{"six.flac", kFiveOne, "flac", "flac", 24},
        Format{"flac.ogg", codec("flac"), "Oggf", "flac", 24},
        Format{"flac.mp4", codec("flac"), "mp4f", "flac", 24},
        Format{"flac.mka", codec("flac"), "MKV ", "flac", 24},
        Format{"alac16.m4a", codec("alac", with(kStereo, {"-sample_fmt", "s16p"})), "m4af", "alac",
               16},
        Format{"alac24.m4a", codec("alac", {"-sample_fmt", "s32p"}), "m4af", "alac", 24},
        Format{"alac.caf", codec("alac", {"-sample_fmt", "s16p"}), "caff", "alac", 16},
        Format{"alac.mov", codec("alac", {"-sample_fmt", "s16p"}), "MOV ", "alac", 16},
        Format{"s16.wv", codec("wavpack", {"-sample_fmt", "s16p"}), "WV  ", "wvpk", 16},
        Format{"float.wv", codec("wavpack", {"-sample_fmt", "fltp"}), "WV  ", "wvpk", 32},
        Format{"six.wv", codec("wavpack", with(kFiveOne, {"-sample_fmt", "s16p"})), "WV  ", "wvpk",
               16},
        Format{"wavpack.mka", codec("wavpack", {"-sample_fmt", "s16p"}), "MKV ", "wvpk", 16},
        Format{"s16.tta", codec("tta", {"-sample_fmt", "s16"}), "TTA ", "TTA1", 16},
        Format{"s16.mlp", codec("mlp", with(kStereo, {"-sample_fmt", "s16"})), "MLP ", "mlp ", 16},
        Format{"s24.thd", codec("truehd", with(kStereo, {"-sample_fmt", "s32"})), "THD ", "mlpa",
               24}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    Lossy, FFmpegDecode,
    testing::Values(
        Format{"stereo.mp3", kStereo, "MPG3", ".mp3"},
        Format{"low.mp3", {"-ar", "22050"}, "MPG3", ".mp3"},
        Format{"lowest.mp3", {"-ar", "8000"}, "MPG3", ".mp3"},
        Format{"bare.mp3", {"-write_xing", "0", "-id3v2_version", "0"}, "MPG3", ".mp3"},
        Format{"stereo.mp2", codec("mp2", kStereo), "MPG2", ".mp2"},
        Format{"stereo.aac", codec("aac", kStereo), "adts", "aac "},
        Format{"stereo.m4a", codec("aac", kStereo), "m4af", "aac "},
        Format{"six.m4a", codec("aac", kFiveOne), "m4af", "aac "},
        Format{"book.m4b", codec("aac", {"-f", "ipod"}), "m4af", "aac "},
        Format{"plain.mp4", codec("aac"), "mp4f", "aac "},
        Format{"phone.3gp", codec("aac"), "3gpp", "aac "},
        Format{"phone.3g2", codec("aac"), "3gp2", "aac "},
        Format{"aac.latm", codec("aac", {"-f", "latm"}), "loas", "aac "},
        Format{"mp3.mp4", codec("libmp3lame"), "mp4f", ".mp3"},
        Format{"opus.mp4", codec("libopus"), "mp4f", "opus"},
        Format{"ac3.mp4", codec("ac3"), "mp4f", "ac-3"},
        Format{"stereo.opus", codec("libopus", kStereo), "Oggf", "opus"},
        Format{"six.opus", codec("libopus", kFiveOne), "Oggf", "opus"},
        Format{"short.opus", codec("libopus", {"-frame_duration", "2.5"}), "Oggf", "opus"},
        Format{"long.opus", codec("libopus", {"-frame_duration", "60"}), "Oggf", "opus"},
        Format{"vorbis.ogg", codec("libvorbis", kStereo), "Oggf", "vorb"},
        Format{"speex.ogg", codec("libspeex", {"-ar", "16000"}), "Oggf", "spex"},
        Format{"stereo.ac3", codec("ac3", kStereo), "ac-3", "ac-3"},
        Format{"six.ac3", codec("ac3", kFiveOne), "ac-3", "ac-3"},
        Format{"stereo.eac3", codec("eac3", kStereo), "ec-3", "ec-3"},
        Format{"stereo.dts", codec("dca", kStereo), "DTS ", "dts "},
        Format{"stereo.wma", codec("wmav2", kStereo), "ASF ", "wma2"},
        Format{"old.wma", codec("wmav1", kStereo), "ASF ", "wma1"}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    Compressed, FFmpegDecode,
    testing::Values(Format{"ms.wav", codec("adpcm_ms", kStereo), "WAVE", "msad"},
                    Format{"ima.wav", codec("adpcm_ima_wav", kStereo), "WAVE", "ima4"},
                    Format{"yamaha.wav", codec("adpcm_yamaha"), "WAVE", "adpc"},
                    Format{"ulaw.wav", codec("pcm_mulaw", kStereo), "WAVE", "ulaw"},
                    Format{"alaw.wav", codec("pcm_alaw"), "WAVE", "alaw"},
                    Format{"gsm.wav", codec("libgsm_ms", {"-ar", "8000"}), "WAVE", "agsm"},
                    Format{"mp3.wav", codec("libmp3lame", kStereo), "WAVE", ".mp3"},
                    Format{"mp2.wav", codec("mp2"), "WAVE", ".mp2"},
                    Format{"ac3.wav", codec("ac3"), "WAVE", "ac-3"},
                    Format{"g722.wav", codec("g722", {"-ar", "16000"}), "WAVE", "g722"},
                    Format{"ulaw.w64", codec("pcm_mulaw"), "W64f", "ulaw"},
                    Format{"ulaw.au", codec("pcm_mulaw", kStereo), "NeXT", "ulaw"},
                    Format{"alaw.au", codec("pcm_alaw"), "NeXT", "alaw"},
                    Format{"ulaw.aifc", codec("pcm_mulaw", {"-f", "aiff"}), "AIFC", "ulaw"},
                    Format{"alaw.aifc", codec("pcm_alaw", {"-f", "aiff"}), "AIFC", "alaw"},
                    Format{"ima.aifc", codec("adpcm_ima_qt", with(kStereo, {"-f", "aiff"})), "AIFC",
                           "ima4"},
                    Format{"ulaw.caf", codec("pcm_mulaw"), "caff", "ulaw"},
                    Format{"alaw.caf", codec("pcm_alaw"), "caff", "alaw"},
                    Format{"ima.caf", codec("adpcm_ima_qt", kStereo), "caff", "ima4"},
                    Format{"opus.caf", codec("libopus"), "caff", "opus"},
                    Format{"mp3.caf", codec("libmp3lame"), "caff", ".mp3"},
                    Format{"ac3.caf", codec("ac3"), "caff", "ac-3"},
                    Format{"gsm.gsm", codec("libgsm", {"-ar", "8000"}), "gsm ", "agsm"}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    InVideoContainers, FFmpegDecode,
    testing::Values(Format{"s16.mov", codec("pcm_s16le", kStereo), "MOV ", "lpcm"},
                    Format{"s24.mov", codec("pcm_s24be"), "MOV ", "lpcm"},
                    Format{"f32.mov", codec("pcm_f32le"), "MOV ", "lpcm"},
                    Format{"f64.mov", codec("pcm_f64le"), "MOV ", "lpcm"},
                    Format{"s32.mov", codec("pcm_s32be"), "MOV ", "lpcm"},
                    Format{"ima.mov", codec("adpcm_ima_qt", kStereo), "MOV ", "ima4"},
                    Format{"ulaw.mov", codec("pcm_mulaw"), "MOV ", "ulaw"},
                    Format{"s16.mkv", codec("pcm_s16le"), "MKV ", "lpcm"},
                    Format{"aac.mkv", codec("aac"), "MKV ", "aac "},
                    Format{"mp3.mkv", codec("libmp3lame"), "MKV ", ".mp3"},
                    Format{"opus.mkv", codec("libopus"), "MKV ", "opus"},
                    Format{"eac3.mkv", codec("eac3"), "MKV ", "ec-3"},
                    Format{"opus.webm", codec("libopus", kStereo), "WebM", "opus"},
                    Format{"vorbis.webm", codec("libvorbis"), "WebM", "vorb"},
                    Format{"u8.avi", codec("pcm_u8"), "AVI ", "lpcm"},
                    Format{"mp3.avi", codec("libmp3lame"), "AVI ", ".mp3"},
                    Format{"ac3.avi", codec("ac3"), "AVI ", "ac-3"},
                    Format{"aac.ts", codec("aac"), "MPTS", "aac "},
                    Format{"aac.m2ts", codec("aac"), "MPTS", "aac "},
                    Format{"bluray.m2ts", codec("pcm_bluray", kStereo), "MPTS", "lpcm"},
                    Format{"mp2.ts", codec("mp2", kStereo), "MPTS", ".mp2"},
                    Format{"ac3.ts", codec("ac3"), "MPTS", "ac-3"},
                    Format{"opus.ts", codec("libopus"), "MPTS", "opus"},
                    Format{"mp2.mpg", codec("mp2"), "MPEG", ".mp2"},
                    Format{"mp3.flv", codec("libmp3lame", {"-ar", "44100"}), "FLV ", ".mp3"},
                    Format{"aac.flv", codec("aac", {"-ar", "44100"}), "FLV ", "aac "}),
    testName);

/// Integers must come out as their value divided by full scale, to the last bit.
TEST(FFmpegDecode, GivesLosslessSamplesBitForBit) {
  const test::TemporaryDirectory folder;
  for (const char* name : {"a.flac", "a.wv", "a.tta", "a.mka", "a.mov"}) {
    const bool isPCM =
        std::string_view(name).ends_with("mka") || std::string_view(name).ends_with("mov");
    const auto file = test::encodeNoise(
        folder, name, isPCM ? Arguments{"-c:a", "pcm_s32le"} : Arguments{"-sample_rate", "48000"});
    EXPECT_EQ(test::readWholeFile(file).samples, test::decodeWithFFmpeg(file)) << name;
  }
}

TEST(FFmpegDecode, ReadsWhatSoXWrites) {
  const test::TemporaryDirectory folder;
  const auto source = test::encodeNoise(folder, "source.wav", kStereo);
  const struct {
    const char* name;
    Arguments output;
    const char* container;
    const char* codec;
  } files[] = {
      {"a.amr-nb", {"-r", "8000", "-c", "1"}, "amrf", "samr"},
      {"a.wav", {"-e", "ms-adpcm"}, "WAVE", "msad"},
      {"b.wav", {"-e", "ima-adpcm"}, "WAVE", "ima4"},
      {"c.wav", {"-e", "gsm-full-rate", "-r", "8000", "-c", "1"}, "WAVE", "agsm"},
      {"d.wav", {"-e", "mu-law"}, "WAVE", "ulaw"},
      {"a.ogg", {}, "Oggf", "vorb"},
      {"a.flac", {"-b", "16"}, "flac", "flac"},
      {"a.mp3", {}, "MPG3", ".mp3"},
      {"a.sph", {}, "NIST", "lpcm"},
      {"a.voc", {"-c", "1", "-b", "16"}, "VOC ", "lpcm"},
      {"a.sox", {}, "SoX ", "lpcm"},
      {"a.8svx", {"-c", "1"}, "8SVX", "lpcm"},
      {"a.au", {"-e", "a-law"}, "NeXT", "alaw"},
  };
  for (const auto& [name, output, container, codec] : files) {
    const auto file = folder / name;
    Arguments words = {"-D", source.string()};
    words.insert(words.end(), output.begin(), output.end());
    words.push_back(file.string());
    test::runTool("sox", words);
    const auto found = test::readWholeFile(file);
    EXPECT_EQ(test::textOf(found.description.fileTypeID), container) << name;
    EXPECT_EQ(test::textOf(found.description.dataFormat.formatID), codec) << name;
    EXPECT_LE(test::largestDifference(found.samples, test::decodeWithFFmpeg(file)), kTolerance)
        << name;
  }
}

TEST(FFmpegDecode, ReadsWhatTheFLACProgramWrites) {
  const test::TemporaryDirectory folder;
  const auto source = test::encodeNoise(folder, "source.wav", with(kStereo, {"-c:a", "pcm_s24le"}));
  const auto expected = test::decodeWithFFmpeg(source);
  int index = 0;
  for (const Arguments& form :
       {Arguments{"-8"}, Arguments{"-0", "--blocksize=16"}, Arguments{"--blocksize=4608"},
        Arguments{"--ogg"}, Arguments{"--no-md5-sum", "--no-seektable"}}) {
    const auto file = folder / (std::to_string(index++) + ".flac");
    Arguments words = {"--silent", "--lax", "-o", file.string()};
    words.insert(words.end(), form.begin(), form.end());
    words.push_back(source.string());
    test::runTool("flac", words);
    const auto found = test::readWholeFile(file);
    EXPECT_EQ(found.samples, expected) << form.front();
    EXPECT_EQ(found.description.sourceBitDepth, 24);
    EXPECT_TRUE(found.description.warnings.empty());
  }
}

}  // namespace
}  // namespace orvane
