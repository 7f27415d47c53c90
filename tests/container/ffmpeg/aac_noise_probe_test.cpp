#include "orvane/container/ffmpeg/aac_noise_probe.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

extern "C" {
#include <libavutil/log.h>
}

#include "orvane/platform/input_file.h"
#include "tests/container/ffmpeg/compressed_files.h"

namespace orvane {
namespace {

using test::Arguments;

constexpr double kSeconds = 3;

/// What is made of a file's stream: its packets, given to one decoder.
class AACNoise : public testing::Test {
 protected:
  static void SetUpTestSuite() { av_log_set_level(AV_LOG_QUIET); }

  std::filesystem::path encode(const std::string& name, Arguments arguments) {
    arguments.insert(arguments.begin(), {"-c:a", "aac"});
    return test::encodeNoise(folder_, name, arguments, kSeconds);
  }

  void decode(const std::filesystem::path& file) {
    demuxer_ =
        std::make_unique<Demuxer>(std::make_shared<InputFile>(file), AudioFileOpenOptions{}, 0);
    codec_ = openCodec(*demuxer_);
    while (demuxer_->read(*packet_)) {
      decodePacket(*codec_, *packet_, *frame_, nullptr);
      if (!last_) last_ = makePacket();
      av_packet_unref(last_.get());
      ASSERT_GE(av_packet_ref(last_.get(), packet_.get()), 0);
    }
    ASSERT_TRUE(last_);
    probe_ = AACNoiseProbe::of(*demuxer_, *demuxer_->stream().codecpar, *last_,
                               codec_->ch_layout.nb_channels);
  }

  test::TemporaryDirectory folder_{};
  PacketPointer packet_ = makePacket();
  FramePointer frame_ = makeFrame();
  PacketPointer last_{};
  std::unique_ptr<Demuxer> demuxer_{};
  CodecContextPointer codec_{};
  std::unique_ptr<AACNoiseProbe> probe_{};
};

/// Containers whose packets carry headers, and others.
class AACNoiseIn : public AACNoise, public testing::WithParamInterface<const char*> {};

TEST_P(AACNoiseIn, IsNotFoundWhereThereIsNone) {
  for (const char* channels : {"1", "2"}) {
    SCOPED_TRACE(channels);
    decode(encode(GetParam(), {"-ac", channels, "-aac_pns", "0", "-b:a", "64k"}));
    ASSERT_TRUE(probe_);
    EXPECT_TRUE(probe_->findsNoNoise(*codec_, 0));
    EXPECT_FALSE(probe_->findsNoNoise(*codec_, 0)) << "the probe itself is noise";
    avcodec_flush_buffers(codec_.get());
    EXPECT_TRUE(probe_->findsNoNoise(*codec_, 2));
  }
}

TEST_P(AACNoiseIn, IsFoundWhereThereIsSome) {
  for (const char* channels : {"1", "2"}) {
    SCOPED_TRACE(channels);
    decode(encode(GetParam(), {"-ac", channels, "-aac_pns", "1", "-b:a", "64k"}));
    ASSERT_TRUE(probe_);
    EXPECT_FALSE(probe_->findsNoNoise(*codec_, 0));
  }
}

INSTANTIATE_TEST_SUITE_P(Containers, AACNoiseIn,
                         testing::Values("a.m4a", "a.aac", "a.mka", "a.flv", "a.ts"),
                         [](const auto& name) { return test::wordOf(name.param); });

/// Their decoders remember more than random numbers, or have more channels than the probe.
TEST_F(AACNoise, IsNotLookedForInOtherKindsOfAAC) {
  for (const char* name : {"a.m4a", "a.aac"})
    for (const Arguments& arguments :
         {Arguments{"-profile:a", "aac_main"}, Arguments{"-profile:a", "aac_ltp", "-strict", "-2"},
          Arguments{"-ac", "6"}}) {
      SCOPED_TRACE(name + arguments.at(1));
      decode(encode(name, arguments));
      EXPECT_FALSE(probe_);
    }
}

TEST_F(AACNoise, IsOnlyLookedForAmongPacketsOfOneHeader) {
  decode(encode("a.aac", {"-ac", "2"}));
  ASSERT_TRUE(probe_);
  EXPECT_TRUE(probe_->suits(*last_));
  for (const auto& [place, bits] :
       {std::pair(1, 0x08), {2, 0x40}, {2, 0x04}, {3, 0x40}, {0, 0x80}}) {
    ASSERT_GE(av_packet_make_writable(last_.get()), 0);
    last_->data[place] ^= static_cast<std::uint8_t>(bits);
    EXPECT_FALSE(probe_->suits(*last_)) << place;
    last_->data[place] ^= static_cast<std::uint8_t>(bits);
  }
  last_->data[4] ^= 0x10;
  EXPECT_TRUE(probe_->suits(*last_)) << "of another length";
}

}  // namespace
}  // namespace orvane
