// Linear PCM of old samplers and laboratories decodes to what the writing program reads back.

#include <gtest/gtest.h>

#include "tests/container/peer_decoding.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using Arguments = std::vector<std::string>;

class DecodingOldFormats : public testing::Test {
 protected:
  void expectLibsndfile(int container, const std::vector<int>& encodings,
                        const std::vector<int>& channelCounts) {
    const auto path = folder_ / "a.wav";
    for (const int encoding : encodings)
      for (const int order : {SF_ENDIAN_FILE, SF_ENDIAN_LITTLE, SF_ENDIAN_BIG})
        for (const int channels : channelCounts) {
          if (!test::writeWithLibsndfile(path, container | encoding | order, channels)) continue;
          SCOPED_TRACE(std::to_string(encoding) + " " + std::to_string(order >> 28) + " " +
                       std::to_string(channels));
          test::expectEqualToLibsndfile(path);
          ++count_;
        }
  }

  void expectSoX(const std::string& kind, const std::string& rate, const std::string& bits) {
    const auto path = folder_ / "a.flac";
    test::runTool("sox", {"-R", "-D", "-n", "-r", rate, "-b", bits, "-c", "1", "-t", kind,
                          path.string(), "synth", "997s", "whitenoise"});
    test::expectEqualToSoX(path, {"-t", kind});
    EXPECT_EQ(AudioFile::open(path)->processingFormat().sampleRate, std::stod(rate));
  }

  test::TemporaryDirectory folder_;
  int count_ = 0;
};

TEST_F(DecodingOldFormats, MATLAB4) {
  expectLibsndfile(SF_FORMAT_MAT4,
                   {SF_FORMAT_PCM_16, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_DOUBLE},
                   {1, 2, 6});
  EXPECT_GE(count_, 24);
}

TEST_F(DecodingOldFormats, MATLAB5) {
  expectLibsndfile(
      SF_FORMAT_MAT5,
      {SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_DOUBLE},
      {1, 2, 6});
  EXPECT_GE(count_, 30);
}

TEST_F(DecodingOldFormats, PARIS) {
  expectLibsndfile(SF_FORMAT_PAF, {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_16}, {1, 2, 6});
  EXPECT_GE(count_, 12);
}

TEST_F(DecodingOldFormats, MPC2000AndHTK) {
  expectLibsndfile(SF_FORMAT_MPC2K, {SF_FORMAT_PCM_16}, {1});
  expectLibsndfile(SF_FORMAT_HTK, {SF_FORMAT_PCM_16}, {1});
  EXPECT_GE(count_, 4);
}

TEST_F(DecodingOldFormats, SampleVisionAndSndtool) {
  expectSoX("smp", "44100", "16");
  expectSoX("smp", "11025", "16");
  expectSoX("sndt", "22050", "8");
}

}  // namespace
}  // namespace orvane
