// Which libraries a file's audio calls for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/program_fixture.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class ProgramDecoders : public ProgramTest {
 protected:
  void encode(const std::string& name) {
    orvane::test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "anoisesrc=d=1:seed=1",
                                     "-y", (folder() / name).string()});
  }

  /// What the linker has to say about loading libraries.
  std::string loadedFor(const std::vector<std::string>& arguments) {
    ProgramSetup setup;
    setup.arguments = arguments;
    setup.environment = {"LD_DEBUG=files"};
    const ProgramEnd end = run(setup);
    EXPECT_EQ(end.exitCode, 0);
    return end.errors;
  }
};

TEST_F(ProgramDecoders, AreTheFormatsOwnForFLACAndMP3) {
  for (const auto& [name, library] : {std::pair{"a.flac", "libFLAC"}, {"a.mp3", "libmpg123"}}) {
    encode(name);
    for (const char* command : {"identify", "analyze"}) {
      const std::string loaded = loadedFor({command, name});
      EXPECT_THAT(loaded, HasSubstr(library));
      EXPECT_THAT(loaded, Not(HasSubstr("libavformat"))) << command << " " << name;
    }
  }
}

TEST_F(ProgramDecoders, AreFFmpegsForAnMP3WithAGap) {
  encode("a.mp3");
  std::string bytes = orvane::test::readFile(folder() / "a.mp3");
  orvane::test::writeFile(folder() / "a.mp3", bytes.erase(bytes.size() / 2, 1000));
  EXPECT_THAT(loadedFor({"analyze", "a.mp3"}), HasSubstr("libavformat"));
}

}  // namespace
}  // namespace orvane::cli::test
