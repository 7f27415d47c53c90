#include "orvane/container/side_chunks.h"

#include <gtest/gtest.h>

#include "orvane/container/audio_container.h"
#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;

class SideChunksTest : public testing::Test {
 protected:
  std::vector<std::string> of(const Bytes& file) const {
    std::vector<std::string> names;
    for (const FourCC id : sideChunks(InputFile(folder.write("file", file))))
      names.push_back(fourCC(id));
    return names;
  }

  using Names = std::vector<std::string>;
  const test::RawChunk format{.id = "fmt ", .body = test::waveFormatBody({})};
  const test::RawChunk data{.id = "data", .body = Bytes(400)};
  test::TemporaryDirectory folder;
};

TEST_F(SideChunksTest, AreAllButTheAudioAndFilling) {
  EXPECT_EQ(of(test::formFile("RIFF", "WAVE",
                              {{.id = "bext", .body = Bytes(602)},
                               {.id = "JUNK", .body = Bytes(28)},
                               format,
                               {.id = "fact", .body = Bytes(4)},
                               data,
                               {.id = "LIST", .body = Bytes(4)},
                               {.id = "cue ", .body = Bytes(4)},
                               {.id = "LIST", .body = Bytes(4)}})),
            (Names{"bext", "LIST", "cue"}));
  EXPECT_EQ(of(test::formFile("RIFF", "WAVE", {format, data})), Names{});
}

TEST_F(SideChunksTest, AreNoneWhereThereAreNoChunks) {
  EXPECT_EQ(of(Bytes(100)), Names{});
  EXPECT_EQ(of({}), Names{});
}

}  // namespace
}  // namespace orvane
