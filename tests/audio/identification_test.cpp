// Files of every kind that the usual programs write are known by their bytes, whatever their names.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <string>
#include <vector>

#include "orvane/audio/audio_file_identity.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using Arguments = std::vector<std::string>;

/// How a program is asked for a file, and what the file is.
struct Kind {
  std::string name;
  Arguments options;
  std::string container;
  std::string encoding;
};

const std::vector<Kind>& kindsOfFFmpeg() {
  static const std::vector<Kind> kKinds = {
      {"wav", {}, "WAV", "16-bit integer"},
      {"wav", {"-c:a", "pcm_f32le"}, "WAV", "32-bit float"},
      {"wav", {"-c:a", "pcm_mulaw"}, "WAV", "µ-law"},
      {"wav", {"-c:a", "pcm_alaw"}, "WAV", "A-law"},
      {"wav", {"-c:a", "adpcm_ima_wav"}, "WAV", "IMA ADPCM"},
      {"wav", {"-c:a", "adpcm_ms"}, "WAV", "msad"},
      {"wav", {"-c:a", "libmp3lame"}, "WAV", "MP3"},
      {"wav", {"-c:a", "mp2"}, "WAV", "MP2"},
      {"wav", {"-c:a", "ac3"}, "WAV", "AC-3"},
      {"wav", {"-rf64", "always"}, "RF64", "16-bit integer"},
      {"w64", {}, "Wave64", "16-bit integer"},
      {"aiff", {}, "AIFF", "16-bit integer"},
      {"aiff", {"-c:a", "pcm_s16le"}, "AIFF-C", "16-bit integer"},
      {"aiff", {"-c:a", "pcm_mulaw"}, "AIFF-C", "µ-law"},
      {"aiff", {"-c:a", "adpcm_ima_qt"}, "AIFF-C", "IMA ADPCM"},
      {"caf", {}, "CAF", "16-bit integer"},
      {"caf", {"-c:a", "alac"}, "CAF", "Apple Lossless"},
      {"caf", {"-c:a", "adpcm_ima_qt"}, "CAF", "IMA ADPCM"},
      {"caf", {"-c:a", "pcm_alaw"}, "CAF", "A-law"},
      {"au", {}, "NeXT/Sun (AU)", "16-bit integer"},
      {"au", {"-c:a", "pcm_mulaw"}, "NeXT/Sun (AU)", "µ-law"},
      {"ipod", {}, "MPEG-4 (M4A)", "AAC"},
      {"ipod", {"-c:a", "alac"}, "MPEG-4 (M4A)", "Apple Lossless"},
      {"ipod", {"-brand", "M4B "}, "MPEG-4 (M4B)", "AAC"},
      {"mp4", {}, "MPEG-4", "AAC"},
      {"mp4", {"-strict", "-2", "-c:a", "flac"}, "MPEG-4", "FLAC"},
      {"mp4", {"-c:a", "ac3"}, "MPEG-4", "AC-3"},
      {"mov", {}, "MOV", "AAC"},
      {"3gp", {"-c:a", "aac"}, "3GPP", "AAC"},
      {"3g2", {"-c:a", "aac"}, "3GPP2", "AAC"},
      {"adts", {}, "AAC (ADTS)", "AAC"},
      {"latm", {"-c:a", "aac"}, "LOAS/LATM", "AAC"},
      {"mp3", {}, "MP3", "MP3"},
      {"mp2", {}, "MPEG-2 audio", "MP2"},
      {"flac", {}, "FLAC", "FLAC"},
      {"ogg", {"-c:a", "libvorbis"}, "Ogg", "vorb"},
      {"ogg", {"-c:a", "flac"}, "Ogg", "FLAC"},
      {"opus", {"-c:a", "libopus"}, "Ogg", "Opus"},
      {"ac3", {}, "AC-3", "AC-3"},
      {"eac3", {}, "E-AC-3", "E-AC-3"},
      {"matroska", {"-c:a", "flac"}, "MKV", "FLAC"},
      {"webm", {"-c:a", "libopus"}, "WebM", "Opus"},
      {"avi", {"-c:a", "mp3"}, "AVI", "MP3"},
      {"asf", {"-c:a", "wmav2"}, "ASF", "wma2"},
      {"flv", {"-c:a", "aac"}, "FLV", "AAC"},
      {"mpegts", {"-c:a", "aac"}, "MPTS", "AAC"},
      {"mpeg", {"-c:a", "mp2"}, "MPEG", "MP2"},
      {"wv", {}, "WV", "wvpk"},
      {"tta", {}, "TTA", "TTA1"},
      {"voc", {}, "VOC", "16-bit integer"},
      {"dts", {"-strict", "-2"}, "DTS", "dts"},
      {"sbc", {}, "SBC", "sbc"},
      {"asf_stream", {"-c:a", "wmav2"}, "ASFS", "wma2"},
      {"rso", {}, "RSO", "8-bit integer"},
      {"smjpeg", {}, "smjp", "16-bit integer"},
      {"argo_asf", {}, "argo", "adpc"},
      {"alp", {"-ar", "22050"}, "alp", "adpc"},
  };
  return kKinds;
}

const std::vector<Kind>& kindsOfSoX() {
  static const std::vector<Kind> kKinds = {
      {"wav", {"-e", "gsm-full-rate"}, "WAV", "GSM"},
      {"wav", {"-e", "a-law"}, "WAV", "A-law"},
      {"aifc", {}, "AIFF-C", "16-bit integer"},
      {"aiff", {"-b", "24"}, "AIFF", "24-bit integer"},
      {"caf", {"-b", "24"}, "CAF", "24-bit integer"},
      {"au", {"-e", "u-law"}, "NeXT/Sun (AU)", "µ-law"},
      {"w64", {}, "Wave64", "16-bit integer"},
      {"ogg", {}, "Ogg", "vorb"},
      {"flac", {}, "FLAC", "FLAC"},
      {"mp3", {}, "MP3", "MP3"},
      {"amr-nb", {"-r", "8000"}, "AMR", "AMR"},
      {"avr", {}, "AVR", "16-bit integer"},
      {"8svx", {"-b", "8"}, "8SVX", "8-bit integer"},
      {"maud", {}, "MAUD", "16-bit integer"},
      {"ircam", {}, "IRCM", "16-bit integer"},
      {"pvf", {}, "PVF", "16-bit integer"},
      {"sds", {}, "SDS", "16-bit integer"},
      {"hcom", {"-r", "22050", "-b", "8"}, "HCOM", "hcom"},
      {"wve", {"-r", "8000"}, "WVE", "A-law"},
      {"sox", {}, "SoX", "32-bit integer"},
      {"sph", {}, "NIST", "16-bit integer"},
      {"voc", {}, "VOC", "16-bit integer"},
      {"wv", {}, "WV", "wvpk"},
  };
  return kKinds;
}

/// A file that libsndfile writes.
struct SoundFile {
  int format;
  std::string container;
  std::string encoding;
};

const std::vector<SoundFile>& kindsOfLibsndfile() {
  static const std::vector<SoundFile> kKinds = {
      {SF_FORMAT_WAV | SF_FORMAT_G721_32, "WAV", "g726"},
      {SF_FORMAT_WAV | SF_FORMAT_NMS_ADPCM_16, "WAV", "nms"},
      {SF_FORMAT_WAV | SF_FORMAT_NMS_ADPCM_32, "WAV", "nms"},
      {SF_FORMAT_WAVEX | SF_FORMAT_ULAW, "WAV", "µ-law"},
      {SF_FORMAT_WAVEX | SF_FORMAT_PCM_U8, "WAV", "8-bit integer"},
      {SF_FORMAT_RF64 | SF_FORMAT_DOUBLE, "RF64", "64-bit float"},
      {SF_FORMAT_RF64 | SF_FORMAT_ALAW, "RF64", "A-law"},
      {SF_FORMAT_W64 | SF_FORMAT_MS_ADPCM, "Wave64", "msad"},
      {SF_FORMAT_W64 | SF_FORMAT_GSM610, "Wave64", "GSM"},
      {SF_FORMAT_AIFF | SF_FORMAT_FLOAT, "AIFF-C", "32-bit float"},
      {SF_FORMAT_AIFF | SF_FORMAT_PCM_U8, "AIFF-C", "8-bit integer"},
      {SF_FORMAT_AIFF | SF_FORMAT_GSM610, "AIFF-C", "GSM"},
      {SF_FORMAT_AIFF | SF_FORMAT_DWVW_16, "AIFF-C", "DWVW"},
      {SF_FORMAT_CAF | SF_FORMAT_ALAC_20, "CAF", "Apple Lossless"},
      {SF_FORMAT_AU | SF_FORMAT_G723_24, "NeXT/Sun (AU)", "g726"},
      {SF_FORMAT_FLAC | SF_FORMAT_PCM_S8, "FLAC", "FLAC"},
      {SF_FORMAT_OGG | SF_FORMAT_OPUS, "Ogg", "Opus"},
      {SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, "MP3", "MP3"},
      {SF_FORMAT_SVX | SF_FORMAT_PCM_16, "16SV", "16-bit integer"},
      {SF_FORMAT_AVR | SF_FORMAT_PCM_U8, "AVR", "8-bit integer"},
      {SF_FORMAT_SDS | SF_FORMAT_PCM_24, "SDS", "24-bit integer"},
      {SF_FORMAT_IRCAM | SF_FORMAT_FLOAT, "IRCM", "32-bit float"},
      {SF_FORMAT_NIST | SF_FORMAT_PCM_24, "NIST", "24-bit integer"},
      {SF_FORMAT_PVF | SF_FORMAT_PCM_32, "PVF", "32-bit integer"},
      {SF_FORMAT_VOC | SF_FORMAT_ALAW, "VOC", "A-law"},
      {SF_FORMAT_WVE | SF_FORMAT_ALAW, "WVE", "A-law"},
      {SF_FORMAT_WAV | SF_ENDIAN_BIG | SF_FORMAT_G721_32, "WAV", "g726"},
      {SF_FORMAT_AU | SF_ENDIAN_LITTLE | SF_FORMAT_G721_32, "NeXT/Sun (AU)", "g726"},
      {SF_FORMAT_AU | SF_ENDIAN_LITTLE | SF_FORMAT_G723_24, "NeXT/Sun (AU)", "g726"},
  };
  return kKinds;
}

class Identification : public testing::Test {
 protected:
  void expectKind(const std::filesystem::path& path, const Kind& kind) {
    SCOPED_TRACE(kind.name + " " + (kind.options.empty() ? "" : kind.options.back()));
    const auto found = AudioFileIdentity::inspect(path);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->containerName, kind.container);
    EXPECT_EQ(found->encodingName(), kind.encoding);
  }

  test::TemporaryDirectory folder_;
};

TEST_F(Identification, OfFilesOfFFmpegThatAreAllNamedWav) {
  Arguments arguments = {"-v", "error", "-f", "lavfi", "-i", "sine=d=0.5:r=48000"};
  std::size_t count = 0;
  for (const Kind& kind : kindsOfFFmpeg()) {
    arguments.insert(arguments.end(), kind.options.begin(), kind.options.end());
    const auto path = folder_ / (std::to_string(count++) + ".wav");
    arguments.insert(arguments.end(), {"-f", kind.name, path.string()});
  }
  test::runTool("ffmpeg", arguments);
  for (std::size_t i = 0; i < count; ++i)
    expectKind(folder_ / (std::to_string(i) + ".wav"), kindsOfFFmpeg()[i]);
}

TEST_F(Identification, OfFilesOfLibsndfileThatAreAllNamedFlac) {
  const auto path = folder_ / "a.flac";
  const std::vector<float> samples(24'000, 0.25F);
  for (const auto& [format, container, encoding] : kindsOfLibsndfile()) {
    SF_INFO info{};
    info.samplerate = 48'000;
    info.channels = 1;
    info.format = format;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << container << " " << encoding;
    sf_writef_float(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
    expectKind(path,
               {.name = container, .options = {}, .container = container, .encoding = encoding});
  }
}

TEST_F(Identification, OfFilesOfSoXThatAreAllNamedMp3) {
  const auto path = folder_ / "a.mp3";
  for (const Kind& kind : kindsOfSoX()) {
    Arguments arguments = {"-n", "-r", "44100", "-b", "16", "-c", "1"};
    arguments.insert(arguments.end(), kind.options.begin(), kind.options.end());
    arguments.insert(arguments.end(), {"-t", kind.name, path.string(), "synth", "0.5", "sine"});
    test::runTool("sox", arguments);
    expectKind(path, kind);
  }
}

}  // namespace
}  // namespace orvane
