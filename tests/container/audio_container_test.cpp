#include "orvane/container/audio_container.h"

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using enum AudioContainer;

TEST(AudioContainer, HasItsCodesAndNamesInOrder) {
  struct Row {
    AudioContainer container;
    FourCC code;
    std::string_view name;
    bool isBigEndian;
  };
  const std::vector<Row> rows = {
      {wave, 0x57415645, "WAV", false},  {rf64, 0x52463634, "RF64", false},
      {bw64, 0x42573634, "BW64", false}, {wave64, 0x57363466, "Wave64", false},
      {aiff, 0x41494646, "AIFF", true},  {aifc, 0x41494643, "AIFF-C", true},
      {caf, 0x63616666, "CAF", false},
  };
  ASSERT_EQ(kAllAudioContainers.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(kAllAudioContainers[i], rows[i].container);
    EXPECT_EQ(fileTypeID(rows[i].container), rows[i].code);
    EXPECT_EQ(audioContainerFromFileTypeID(rows[i].code), rows[i].container);
    EXPECT_EQ(displayName(rows[i].container), rows[i].name);
    EXPECT_EQ(isBigEndian(rows[i].container), rows[i].isBigEndian);
  }
  EXPECT_FALSE(audioContainerFromFileTypeID(fourCCFrom("MPG3")));
}

TEST(AudioContainer, FollowsFromTheExtensionInAnyCase) {
  const std::vector<std::pair<std::string_view, AudioContainer>> extensions = {
      {"wav", wave},   {"wave", wave}, {"bwf", wave},  {"rf64", rf64}, {"bw64", bw64},
      {"w64", wave64}, {"aif", aiff},  {"aiff", aiff}, {"aifc", aifc}, {"caf", caf},
      {"caff", caf},   {"WAV", wave},  {"Aifc", aifc}};
  for (const auto& [text, container] : extensions)
    EXPECT_EQ(audioContainerFromExtension(text), container) << text;
  for (const char* text : {"mp3", "", ".wav", "au", "wav "})
    EXPECT_FALSE(audioContainerFromExtension(text)) << text;
}

TEST(AudioContainer, MakesRoomForFloatsInAIFFOnly) {
  EXPECT_EQ(accommodating(aiff, true), aifc);
  EXPECT_EQ(accommodating(aiff, false), aiff);
  EXPECT_EQ(accommodating(wave, true), wave);
  EXPECT_EQ(accommodating(aifc, false), aifc);
}

TEST(AudioContainer, IsFoundInTheFileWhateverItsName) {
  const test::TemporaryDirectory folder;
  const auto path = folder.write(
      "song.wav", test::cafFile({{.id = "desc", .body = test::cafDescriptionBody(48000, 2, {})},
                                 {.id = "data", .body = test::cafDataBody(test::Bytes(8))}}));
  EXPECT_EQ(fileTypeIDOfFile(path), fourCCFrom("caff"));
  EXPECT_EQ(audioContainerOfFile(path), caf);
  const auto au = folder.write("song.caf", test::auFile(3, 48000, 2, test::Bytes(8)));
  EXPECT_EQ(fileTypeIDOfFile(au), fourCCFrom("NeXT"));
  EXPECT_FALSE(audioContainerOfFile(au));
  EXPECT_FALSE(fileTypeIDOfFile(folder / "missing.wav"));
  EXPECT_FALSE(audioContainerOfFile(folder / "missing.wav"));
}

TEST(AudioContainer, WritesCodesAsTextWherePrintable) {
  EXPECT_EQ(fourCC(0x61616320), "aac");
  EXPECT_EQ(fourCC(0x57415645), "WAVE");
  EXPECT_EQ(fourCC(0x00000001), "1");
  EXPECT_EQ(fourCC(0x6161637F), "1633772415");
  EXPECT_EQ(fourCC(0x20616120), "aa");
  EXPECT_EQ(fourCC(0x61206120), "a a");
  EXPECT_EQ(fourCC(0x20202020), "");
  EXPECT_EQ(fourCC(0xFFFFFFFF), "4294967295");
}

}  // namespace
}  // namespace orvane
