#include <gtest/gtest.h>

#include "cli/output/report_outputs.h"
#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

using Names = std::vector<std::string>;

Names namesOf(const Names& files) {
  std::vector<InputName> inputs;
  for (const auto& file : files) inputs.push_back({file == "-" ? "/proc/self/fd/5" : file, file});
  return reportNames(inputs);
}

TEST(ReportNames, AreTheFilesOwn) {
  EXPECT_EQ(namesOf({"a/song.wav", "b/other.wav", "song.flac"}),
            (Names{"song.wav", "other.wav", "song.flac"}));
  EXPECT_EQ(namesOf({"-"}), (Names{"stdin"}));
  EXPECT_EQ(namesOf({}), Names{});
}

TEST(ReportNames, TakeFoldersInFrontToTellEqualOnesApart) {
  EXPECT_EQ(namesOf({"/x/CD1/01.wav", "/x/CD2/01.wav", "/x/CD2/02.wav"}),
            (Names{"CD1-01.wav", "CD2-01.wav", "02.wav"}));
  EXPECT_EQ(namesOf({"/x/1/cd/01.wav", "/x/2/cd/01.wav"}), (Names{"1-cd-01.wav", "2-cd-01.wav"}));
}

TEST(ReportNames, GoOnWhenAFolderMakesANewClash) {
  EXPECT_EQ(namesOf({"/x/a/b.wav", "/x/c/b.wav", "/y/a-b.wav"}),
            (Names{"x-a-b.wav", "c-b.wav", "y-a-b.wav"}));
}

TEST(ReportNames, CannotTellOneFileFromItself) {
  EXPECT_THROW(namesOf({"/x/a.wav", "/x/a.wav"}), UsageError);
  EXPECT_THROW(namesOf({"/x/a.wav", "/x/./y/../a.wav"}), UsageError);
}

}  // namespace
}  // namespace orvane::cli
