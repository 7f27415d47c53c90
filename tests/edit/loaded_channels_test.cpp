#include "orvane/edit/loaded_channels.h"

#include <gtest/gtest.h>

#include "orvane/audio/audio_source_reader.h"
#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane::EditOperations {
namespace {

TEST(LoadChannels, GivesAllFramesOfASource) {
  const test::TemporaryDirectory folder;
  for (const std::size_t frames : {1U, 65'535U, 65'536U, 65'537U, 131'072U}) {
    const auto file = folder.write(
        "a.wav", test::waveFile({}, test::storedSamples({}, test::testValues({}, frames, 2))));
    const auto channels = loadChannels(*AudioSource::open(file));
    const auto whole = AudioSourceReader::load(file).buffer;
    ASSERT_EQ(channels.size(), 2U);
    for (std::uint32_t c = 0; c < 2; ++c)
      EXPECT_EQ(channels[c],
                std::vector<float>(whole->channel(c), whole->channel(c) + whole->frameLength()));
    EXPECT_EQ(channels[0].size(), frames);
  }
}

}  // namespace
}  // namespace orvane::EditOperations
