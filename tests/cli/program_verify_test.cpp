// `orvane identify --verify`: what reading a file to its end shows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/program_fixture.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using testing::HasSubstr;

class ProgramVerify : public ProgramTest {
 protected:
  void encode(const std::string& name) {
    orvane::test::runTool(
        "ffmpeg", {"-v", "error", "-y", "-f", "lavfi", "-i", "anoisesrc=d=2:seed=1:a=0.3", "-ac",
                   "2", (folder() / name).string()});
  }

  std::string bytesOf(const std::string& name) { return orvane::test::readFile(folder() / name); }
};

TEST_F(ProgramVerify, ChecksTheAudioAgainstTheMD5OfAFLAC) {
  encode("a.flac");
  const auto end = run({"identify", "--verify", "a.flac"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, HasSubstr("as encoded"));
  const auto document = jsonLines(run({"identify", "--verify", "--json", "a.flac"}).output).at(0);
  EXPECT_EQ(document.at("checksumHolds"), true);
  EXPECT_EQ(document.at("isComplete"), true);
  EXPECT_EQ(document.at("frameCount"), 96000);
  EXPECT_FALSE(
      jsonLines(run({"identify", "--json", "a.flac"}).output).at(0).contains("isComplete"));
}

TEST_F(ProgramVerify, NamesAudioThatIsNotWhatWasEncoded) {
  encode("a.flac");
  std::string bytes = bytesOf("a.flac");
  bytes[30] ^= 1;  // of the MD5, which ends the stream's first block
  orvane::test::writeFile(folder() / "b.flac", bytes);
  const auto end = run({"identify", "--verify", "b.flac", "a.flac"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors,
            "orvane: b.flac: the audio is not what was encoded: it does not have the stated MD5\n");
  EXPECT_THAT(end.output, HasSubstr("changed"));
  EXPECT_THAT(end.output, HasSubstr("as encoded"));
}

TEST_F(ProgramVerify, FindsDamageInWhatHasNoChecksum) {
  for (const char* name : {"a.flac", "a.wv", "a.wav", "a.mp3"}) {
    encode(name);
    const std::string bytes = bytesOf(name);
    orvane::test::writeFile(folder() / name, bytes.substr(0, bytes.size() / 2));
    const auto end = run({"identify", "--verify", name});
    EXPECT_EQ(end.exitCode, 1) << name;
    EXPECT_THAT(end.errors, HasSubstr("The file ends before its audio does"));
    EXPECT_THAT(end.output, HasSubstr("damaged"));
    const auto document = jsonLines(run({"identify", "--verify", "--json", name}).output).at(0);
    EXPECT_EQ(document.at("isComplete"), false);
    EXPECT_FALSE(document.at("warnings").empty());
  }
  encode("b.mp3");
  EXPECT_THAT(run({"identify", "--verify", "b.mp3"}).output, HasSubstr("complete"));
}

}  // namespace
}  // namespace orvane::cli::test
