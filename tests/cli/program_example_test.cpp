#include "tests/cli/program_fixture.h"
#include "tests/support/test_places.h"

namespace orvane::cli::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class Example : public ProgramTest {
 protected:
  Example() {
    folder().write("long.wav", waveFile(sineSamples(40 * 48'000, 0.5)));
    folder().write("chapters.csv", "name,start\nOne,0\nTwo,20\n");
  }
  ProgramEnd report(const std::string& file) const {
    ProgramSetup setup;
    setup.folder = folder().path();
    setup.arguments = {file, "chapters.csv"};
    return orvane::test::runProgram(orvane::test::places::example, setup);
  }
};

TEST_F(Example, WritesAReportWithAllItsParts) {
  const auto end = report("long.wav");
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output,
              AllOf(HasSubstr("<!DOCTYPE html>"), HasSubstr("long.wav"), HasSubstr("Selection"),
                    HasSubstr("Violations"), HasSubstr("Two"), HasSubstr("imported (CSV)")));
}

TEST_F(Example, TellsWhatIsWrong) {
  const auto end = report("missing.wav");
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "missing.wav: No such file or directory\n");
}

}  // namespace
}  // namespace orvane::cli::test
