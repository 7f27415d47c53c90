#include "orvane/audio/audio_file_identity.h"

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;

AudioFileIdentity identity(std::string_view container, const std::string& extension,
                           std::string_view codec = "lpcm",
                           std::optional<PCMEncoding> encoding = PCMEncoding{16, false}) {
  return {.containerTypeID = fourCCFrom(container),
          .containerName = AudioFileIdentity::containerNameForCode(fourCCFrom(container)),
          .pathExtension = extension,
          .formatID = fourCCFrom(codec),
          .pcmEncoding = encoding};
}

TEST(AudioFileIdentity, NamesEveryContainer) {
  const std::vector<std::pair<std::string_view, std::string_view>> names = {
      {"WAVE", "WAV"},
      {"RF64", "RF64"},
      {"BW64", "BW64"},
      {"W64f", "Wave64"},
      {"AIFF", "AIFF"},
      {"AIFC", "AIFF-C"},
      {"caff", "CAF"},
      {"m4af", "MPEG-4 (M4A)"},
      {"m4bf", "MPEG-4 (M4B)"},
      {"mp4f", "MPEG-4"},
      {"adts", "AAC (ADTS)"},
      {"MPG3", "MP3"},
      {"MPG1", "MPEG-1 audio"},
      {"flac", "FLAC"},
      {"Oggf", "Ogg"},
      {"ac-3", "AC-3"},
      {"ec-3", "E-AC-3"},
      {"NeXT", "NeXT/Sun (AU)"},
      {"Sd2f", "Sound Designer II"},
      {"amrf", "AMR"},
      {"3gpp", "3GPP"},
      {"3gp2", "3GPP2"},
      {"loas", "LOAS/LATM"},
      {"MPG2", "MPEG-2 audio"}};
  ASSERT_EQ(names.size(), 24U);
  for (const auto& [code, name] : names)
    EXPECT_EQ(AudioFileIdentity::containerNameForCode(fourCCFrom(code)), name);
  EXPECT_EQ(AudioFileIdentity::containerNameForCode(fourCCFrom("MKV ")), "MKV");
  EXPECT_EQ(AudioFileIdentity::containerNameForCode(7), "7");
}

TEST(AudioFileIdentity, NamesEveryCodec) {
  const std::vector<std::pair<std::string_view, std::string_view>> names = {
      {"lpcm", "PCM"},         {"aac ", "AAC"},
      {"aach", "HE-AAC"},      {"aacp", "HE-AAC v2"},
      {"aacl", "AAC-LD"},      {"aace", "AAC-ELD"},
      {"aacf", "AAC-ELD SBR"}, {"aacg", "AAC-ELD v2"},
      {"aacs", "AAC Spatial"}, {"usac", "xHE-AAC"},
      {".mp3", "MP3"},         {".mp2", "MP2"},
      {".mp1", "MP1"},         {"alac", "Apple Lossless"},
      {"flac", "FLAC"},        {"opus", "Opus"},
      {"ac-3", "AC-3"},        {"ec-3", "E-AC-3"},
      {"QDMC", "QDesign"},     {"QDM2", "QDesign 2"},
      {"ulaw", "µ-law"},       {"alaw", "A-law"},
      {"ima4", "IMA ADPCM"},   {"samr", "AMR"},
      {"sawb", "AMR-WB"},      {"ilbc", "iLBC"},
      {"agsm", "GSM"},         {"MAC3", "MACE 3:1"},
      {"MAC6", "MACE 6:1"},    {"Qclp", "Qualcomm PureVoice"}};
  ASSERT_EQ(names.size(), 30U);
  for (const auto& [code, name] : names)
    EXPECT_EQ(AudioFileIdentity::codecNameForCode(fourCCFrom(code)), name);
  EXPECT_EQ(AudioFileIdentity::codecNameForCode(fourCCFrom("vorb")), "vorb");
}

TEST(AudioFileIdentity, KnowsWhatExtensionsPromise) {
  using Codes = std::set<std::string>;
  const std::vector<std::pair<std::vector<std::string_view>, Codes>> rows = {
      {{"wav", "wave", "bwf", "WAV"}, {"WAVE", "RF64", "BW64"}},
      {{"rf64"}, {"RF64", "WAVE"}},
      {{"bw64"}, {"BW64", "WAVE"}},
      {{"w64"}, {"W64f"}},
      {{"aif", "aiff", "aifc"}, {"AIFF", "AIFC"}},
      {{"caf", "caff"}, {"caff"}},
      {{"m4a", "m4b", "m4r", "m4p", "mp4"}, {"m4af", "m4bf", "mp4f"}},
      {{"aac"}, {"adts", "m4af", "mp4f"}},
      {{"mp3"}, {"MPG3"}},
      {{"mp2"}, {"MPG2"}},
      {{"mp1"}, {"MPG1"}},
      {{"flac"}, {"flac"}},
      {{"ogg", "oga", "opus"}, {"Oggf"}},
      {{"ac3"}, {"ac-3"}},
      {{"ec3", "eac3"}, {"ec-3"}},
      {{"au", "snd"}, {"NeXT"}},
      {{"sd2"}, {"Sd2f"}},
      {{"amr"}, {"amrf"}},
      {{"3gp"}, {"3gpp"}},
      {{"3g2"}, {"3gp2"}}};
  for (const auto& [extensions, codes] : rows)
    for (const std::string_view extension : extensions)
      EXPECT_EQ(AudioFileIdentity::expectedContainers(extension), codes) << extension;
  EXPECT_FALSE(AudioFileIdentity::expectedContainers("xyz"));
  EXPECT_FALSE(AudioFileIdentity::expectedContainers(""));
}

TEST(AudioFileIdentity, WaveAndItsLongFormsAnswerToEachOthersExtensions) {
  EXPECT_FALSE(identity("WAVE", "rf64").isMisnamed());
  EXPECT_FALSE(identity("RF64", "wav").isMisnamed());
  EXPECT_FALSE(identity("BW64", "WAV").isMisnamed());
  EXPECT_TRUE(identity("BW64", "rf64").isMisnamed());
}

TEST(AudioFileIdentity, LabelsAMisnamedFileWithBothNames) {
  EXPECT_TRUE(identity("caff", "wav").isMisnamed());
  EXPECT_EQ(identity("caff", "wav").formatLabel(), "CAF, named .wav");
  EXPECT_EQ(identity("MPG3", "WAV").formatLabel(), "MP3, named .WAV");
  EXPECT_EQ(identity("WAVE", "wav").formatLabel(), "WAV");
}

TEST(AudioFileIdentity, AnUnknownExtensionPromisesNothing) {
  EXPECT_FALSE(identity("caff", "xyz").isMisnamed());
  EXPECT_EQ(identity("caff", "xyz").formatLabel(), "CAF");
  EXPECT_EQ(identity("caff", "").formatLabel(), "CAF");
}

TEST(AudioFileIdentity, CanBeRewrittenWhenItIsPCMInAWritableContainer) {
  EXPECT_TRUE(identity("AIFF", "aiff", "lpcm", PCMEncoding::float32).isRewritableInPlace());
  EXPECT_FALSE(identity("m4af", "m4a", "aac ", {}).isRewritableInPlace());
  EXPECT_FALSE(identity("WAVE", "wav", "ulaw", {}).isRewritableInPlace());
  EXPECT_FALSE(identity("NeXT", "au").isRewritableInPlace());
}

TEST(AudioFileIdentity, NamesItsEncodingByDepthOrCodec) {
  EXPECT_EQ(identity("WAVE", "wav").encodingName(), "16-bit integer");
  EXPECT_EQ(identity("m4af", "m4a", "alac", {}).encodingName(), "Apple Lossless");
  EXPECT_EQ(identity("m4af", "m4a", "aach", {}).encodingName(), "HE-AAC");
  EXPECT_EQ(identity("Oggf", "ogg", "vorb", {}).encodingName(), "vorb");
}

TEST(AudioFileIdentity, ComparesByAllItsFields) {
  EXPECT_EQ(identity("WAVE", "wav", "ulaw", {}), identity("WAVE", "wav", "ulaw", {}));
  EXPECT_NE(identity("WAVE", "wav"), identity("WAVE", "wav", "lpcm", {}));
  EXPECT_NE(identity("WAVE", "wav"), identity("WAVE", "WAV"));
}

TEST(AudioFileIdentity, IsInspectedFromTheBytes) {
  const test::TemporaryDirectory folder;
  const auto path = folder.write("take.aif", test::waveFile({.bits = 24}, Bytes(12)));
  EXPECT_EQ(AudioFileIdentity::inspect(path),
            (AudioFileIdentity{.containerTypeID = fourCCFrom("WAVE"),
                               .containerName = "WAV",
                               .pathExtension = "aif",
                               .formatID = fourCCFrom("lpcm"),
                               .pcmEncoding = PCMEncoding{24, false}}));
}

TEST(AudioFileIdentity, FloatsInAIFFAreFloats) {
  const test::TemporaryDirectory folder;
  const auto path = folder.write(
      "a.aifc", test::formFile("FORM", "AIFC",
                               {{.id = "COMM", .body = test::commonBody(1, 2, 16, 48000, "fl32")},
                                {.id = "SSND", .body = test::soundBody(Bytes(8))}}));
  const auto found = AudioFileIdentity::inspect(path);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->pcmEncoding, PCMEncoding::float32);
  EXPECT_TRUE(found->isRewritableInPlace());
}

TEST(AudioFileIdentity, OfACompressedWaveHasNoEncoding) {
  const test::TemporaryDirectory folder;
  const auto path = folder.write(
      "u.wav",
      test::waveFile({.tag = 7, .channels = 1, .sampleRate = 8000, .bits = 8}, Bytes(800)));
  const auto found = AudioFileIdentity::inspect(path);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->containerName, "WAV");
  EXPECT_FALSE(found->pcmEncoding);
  EXPECT_EQ(found->encodingName(), "µ-law");
  EXPECT_FALSE(found->isRewritableInPlace());
}

TEST(AudioFileIdentity, AFileWithoutOneIsLabelledByItsExtensionInUpperCase) {
  const auto labelOf = [](const std::filesystem::path& path) {
    return AudioFileIdentity::formatLabelOf(AudioFileIdentity::inspect(path), path);
  };
  const test::TemporaryDirectory folder;
  EXPECT_EQ(labelOf(folder.write("noise.wav", "\x01\x02")), "WAV");
  EXPECT_EQ(labelOf(folder / "missing.Flac"), "FLAC");
  EXPECT_EQ(labelOf(folder / "missing"), "");
  EXPECT_EQ(labelOf(folder.write("take.xyz", test::waveFile({}, Bytes(8)))), "WAV");
}

TEST(AudioFileIdentity, IsAbsentForWhatCannotBeRead) {
  const test::TemporaryDirectory folder;
  EXPECT_FALSE(AudioFileIdentity::inspect(folder / "missing.wav"));
  EXPECT_FALSE(AudioFileIdentity::inspect(folder.path()));
  EXPECT_FALSE(AudioFileIdentity::inspect(folder.write("empty.wav", "")));
  EXPECT_FALSE(AudioFileIdentity::inspect(folder.write("text.wav", "only text")));
}

}  // namespace
}  // namespace orvane
