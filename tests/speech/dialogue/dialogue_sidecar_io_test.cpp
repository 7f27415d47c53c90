#include "orvane/speech/dialogue/dialogue_sidecar_io.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "orvane/speech/dialogue/dialogue_json.h"
#include "orvane/text/json/decoding_error.h"
#include "orvane/text/json/encoding_error.h"
#include "tests/speech/dialogue/dialogue_samples.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::readFile;
using test::sampleSidecar;
using test::writeFile;

class DialogueSidecarIOTest : public testing::Test {
 protected:
  /// What loading throws.
  template <typename Failure>
  std::string failure() const {
    try {
      (void)DialogueSidecarIO::loadForAudio(audio);
    } catch (const Failure& error) {
      return error.errorDescription();
    }
    return "loaded";
  }
  void writeVersion(std::int64_t version) const {
    auto sidecar = sampleSidecar();
    sidecar.schemaVersion = version;
    DialogueSidecarIO::saveForAudio(sidecar, audio);
  }

  test::TemporaryDirectory folder;
  std::filesystem::path audio = folder / "take1.wav";
  std::filesystem::path beside = folder / "take1.wav.dlg.json";
};

TEST_F(DialogueSidecarIOTest, LiesBesideTheAudioUnderItsFullName) {
  EXPECT_EQ(DialogueSidecarIO::sidecarURL("/x/take1.wav"), "/x/take1.wav.dlg.json");
  EXPECT_EQ(DialogueSidecarIO::sidecarURL("noextension"), "noextension.dlg.json");
  DialogueSidecarIO::saveForAudio(sampleSidecar(), audio);
  EXPECT_TRUE(std::filesystem::exists(beside));
  EXPECT_EQ(DialogueSidecarIO::loadForAudio(audio), sampleSidecar());
  EXPECT_EQ(DialogueSidecarIO::load(beside), sampleSidecar());
}

TEST_F(DialogueSidecarIOTest, IsAbsentWhereThereIsNoFile) {
  EXPECT_EQ(DialogueSidecarIO::loadForAudio(audio), std::nullopt);
  EXPECT_EQ(DialogueSidecarIO::loadForAudio(folder / "no/such/folder.wav"), std::nullopt);
  std::filesystem::create_symlink("nowhere", beside);
  EXPECT_EQ(DialogueSidecarIO::loadForAudio(audio), std::nullopt);
}

TEST_F(DialogueSidecarIOTest, ReplacesAnExistingSidecar) {
  DialogueSidecarIO::saveForAudio(sampleSidecar(), audio);
  DialogueSidecarIO::saveForAudio(test::sidecarWith({}), audio);
  EXPECT_EQ(DialogueSidecarIO::loadForAudio(audio), test::sidecarWith({}));
}

TEST_F(DialogueSidecarIOTest, ReadsOlderAndEqualSchemas) {
  for (const std::int64_t version : {-1, 0, 1}) {
    writeVersion(version);
    EXPECT_EQ(DialogueSidecarIO::loadForAudio(audio)->schemaVersion, version);
  }
}

TEST_F(DialogueSidecarIOTest, RefusesANewerSchemaInItsFixedWords) {
  writeVersion(2);
  try {
    (void)DialogueSidecarIO::loadForAudio(audio);
    FAIL();
  } catch (const DialogueSidecarSchemaError& error) {
    EXPECT_EQ(error.domain(), "DialogueSidecar");
    EXPECT_EQ(error.code(), 1);
    EXPECT_EQ(error.schemaVersion(), 2);
    EXPECT_EQ(error.errorDescription(),
              "Dialogue sidecar at take1.wav.dlg.json is schema v2, this version of Orvane reads "
              "up to v1.");
  }
  writeVersion(INT64_MAX);
  EXPECT_NE(failure<DialogueSidecarSchemaError>().find("v9223372036854775807"), std::string::npos);
}

TEST_F(DialogueSidecarIOTest, NamesTheFileAndTheKeyOfWhatIsNoSidecar) {
  auto json = DialogueJSON::text(sampleSidecar());
  writeFile(beside, json.replace(json.find("user-edited"), 11, "manual"));
  EXPECT_EQ(failure<DecodingError>(),
            "take1.wav.dlg.json: \"source\" is none of \"silero\", \"user-edited\" and "
            "\"imported\".");
  writeFile(beside, "{}");
  EXPECT_EQ(failure<DecodingError>(), "take1.wav.dlg.json: The key \"schemaVersion\" is missing.");
  writeFile(beside, "");
  EXPECT_EQ(failure<DecodingError>(), "take1.wav.dlg.json: The JSON ends too early.");
}

TEST_F(DialogueSidecarIOTest, PassesOnWhatKeepsItFromReading) {
  std::filesystem::create_directory(beside);
  EXPECT_EQ(failure<PlatformError>(), "take1.wav.dlg.json: Is a directory");
  std::filesystem::remove(beside);
  ASSERT_EQ(mkfifo(beside.c_str(), 0600), 0);
  EXPECT_EQ(failure<PlatformError>(), "take1.wav.dlg.json: Not a regular file");
}

TEST_F(DialogueSidecarIOTest, TakesNoMemoryForAFileThatCannotBeASidecar) {
  writeFile(beside, "");
  std::filesystem::resize_file(beside, std::uintmax_t{1} << 40U);
  EXPECT_EQ(failure<PlatformError>(), "take1.wav.dlg.json: File too large");
}

TEST_F(DialogueSidecarIOTest, AFailedSaveLeavesThePreviousSidecar) {
  DialogueSidecarIO::saveForAudio(sampleSidecar(), audio);
  const auto before = readFile(beside);
  auto broken = sampleSidecar();
  broken.regions[0].end = std::numeric_limits<double>::infinity();
  EXPECT_THROW(DialogueSidecarIO::saveForAudio(broken, audio), EncodingError);
  EXPECT_EQ(readFile(beside), before);
  EXPECT_THROW(DialogueSidecarIO::saveForAudio(sampleSidecar(), folder / "no/take1.wav"),
               PlatformError);
}

TEST_F(DialogueSidecarIOTest, DeletesOnlyWhatIsThere) {
  EXPECT_NO_THROW(DialogueSidecarIO::deleteForAudio(audio));
  writeFile(audio, "audio");
  DialogueSidecarIO::saveForAudio(sampleSidecar(), audio);
  DialogueSidecarIO::deleteForAudio(audio);
  EXPECT_FALSE(std::filesystem::exists(beside));
  EXPECT_EQ(readFile(audio), "audio");
}

TEST_F(DialogueSidecarIOTest, PassesOnWhatKeepsItFromDeleting) {
  writeFile(beside / "inside", "kept");
  EXPECT_THROW(DialogueSidecarIO::deleteForAudio(audio), PlatformError);
  EXPECT_EQ(readFile(beside / "inside"), "kept");
}

}  // namespace
}  // namespace orvane
