// Edits in slices give the samples of the same edits in memory.

#include "orvane/edit/sliced_edit.h"

#include <cmath>
#include <numbers>

#include "orvane/container/pcm_file_writer.h"
#include "orvane/edit/pcm_write_settings.h"
#include "tests/edit/edit_samples.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using namespace EditOperations;

constexpr double kRate = 48'000;
constexpr std::int64_t kFrames = 300'007;  // several slices

struct Edited {
  ChannelArrays channels{};
  std::vector<Normalization> normalizations{};
  ProgrammeLevels before{};
  ProgrammeLevels after{};

  bool operator==(const Edited&) const = default;
};

void append(ChannelArrays& channels, PlanarView audio) {
  channels.resize(audio.channelCount());
  for (std::size_t c = 0; c < channels.size(); ++c)
    channels[c].insert(channels[c].end(), audio.channel(c), audio.channel(c) + audio.frameCount());
}

class SlicedEditTest : public testing::Test {
 protected:
  SlicedEditTest() { write(EditOperations::test::noise(2, kFrames)); }

  void write(const ChannelArrays& channels) {
    const auto buffer = buildBuffer({channels, kRate, static_cast<int>(channels.size())});
    PCMFileWriter writer(path_,
                         PCMWriteSettings::make(AudioContainer::wave, buffer->format(), {32, true}),
                         buffer->frameLength());
    writer.write(buffer->view());
    writer.commit();
    frames_ = buffer->frameLength();
  }

  std::shared_ptr<AudioSource> open() const { return AudioSource::open(path_); }

  Edited inMemory(const EditChain& chain) const {
    const auto source = open();
    const auto audio = chain.load(*source);
    Edited edited{.before = measureLevels(*audio)};
    edited.normalizations = chain.apply(*audio);
    edited.after = measureLevels(*audio);
    append(edited.channels, audio->view());
    return edited;
  }

  Edited inSlices(const EditChain& chain, std::size_t threadCount = 1) const {
    SlicedEdit edit(chain, open()->format(), [this] { return open(); },
                    {.threadCount = threadCount});
    Edited edited;
    edited.normalizations = edit.prepare(true);
    edit.audio().deliver([&](PlanarView slice) { append(edited.channels, slice); });
    edited.before = edit.levelsBefore();
    edited.after = edit.levelsAfter();
    return edited;
  }

  void expectSame(const std::vector<Edit>& edits) const {
    const EditChain chain(edits, frames_, 2);
    const Edited expected = inMemory(chain);
    const Edited result = inSlices(chain);
    EXPECT_EQ(result.channels, expected.channels);
    EXPECT_EQ(result.normalizations, expected.normalizations);
    EXPECT_EQ(result.before, expected.before);
    EXPECT_EQ(result.after, expected.after);
  }

  std::int64_t frames_ = 0;

 private:
  orvane::test::TemporaryDirectory folder_;
  const std::filesystem::path path_ = folder_ / "source.wav";
};

TEST_F(SlicedEditTest, MovesFrames) {
  for (const FrameRange range : {FrameRange{1, 299'999},
                                 {150'000, 150'001},
                                 {0, 140'000},
                                 {140'000, kFrames},
                                 {65'536, 131'072}}) {
    expectSame({TrimEdit{range}});
    for (const std::int64_t crossfade : {0, 480, 140'000}) expectSame({CutEdit{range, crossfade}});
    for (const SilenceMode mode :
         {SilenceMode::insertBefore, SilenceMode::insertAfter, SilenceMode::replace})
      expectSame({SilenceEdit{range, mode, 170'000}});
  }
}

TEST_F(SlicedEditTest, ChangesSamples) {
  const FrameRange range{5'000, 160'000};
  expectSame({});
  expectSame({FadeEdit{range, FadeDirection::fadeOut, FadeCurve::equalPower}});
  expectSame({GainEdit{range, -3.5}});
  expectSame({InvertEdit{range}});
  expectSame({DCOffsetEdit{range}});
  expectSame({SwapEdit{}});
  expectSame({PeakEdit{-6}});
  expectSame({ExpandEdit{{{5'000, 20'000}, {140'000, 141'000}}, {.reductionDB = -20}}});
}

TEST_F(SlicedEditTest, LimitsAndNormalizes) {
  expectSame({LimitEdit{-3}});  // all of it is scaled at last
  expectSame({LimitEdit{9}});
  expectSame({NormalizeEdit{-23, -1}});
  expectSame({NormalizeEdit{-6, -9}});  // several passes, and the best is not the last
  ChannelArrays bursts(2, std::vector<float>(200'000));
  for (std::size_t i = 0; i < bursts[0].size(); ++i) {
    const double phase = 2 * std::numbers::pi * 997 / kRate * static_cast<double>(i);
    bursts[0][i] = static_cast<float>((i / 20'000 % 2 == 0 ? 0.9 : 0.05) * std::sin(phase));
    bursts[1][i] = -bursts[0][i] / 3;
  }
  write(bursts);
  for (const double target : {-30.0, -12.0, -6.0}) expectSame({NormalizeEdit{target, -1}});
  write(ChannelArrays(2, std::vector<float>(100'000)));
  expectSame({NormalizeEdit{-23, -1}, PeakEdit{-1}});
}

TEST_F(SlicedEditTest, DoesOneEditAfterTheOther) {
  expectSame({SilenceEdit{{0, 0}, SilenceMode::insertBefore, 50'000}, SwapEdit{},
              TrimEdit{{40'000, 340'000}},
              FadeEdit{{0, 20'000}, FadeDirection::fadeIn, FadeCurve::logarithmic},
              CutEdit{{130'000, 160'000}, 480}, GainEdit{{0, kFrames}, 2},
              CutEdit{{129'000, 131'000}, 4'800}, DCOffsetEdit{{1'000, 200'000}}, LimitEdit{-6},
              SilenceEdit{{69'000, 70'000}, SilenceMode::insertAfter, 90'000},
              NormalizeEdit{-16, -1}, TrimEdit{{10, 20'000}}});
}

TEST_F(SlicedEditTest, IsTheSameOnMoreThreadsAndEachTime) {
  const EditChain chain({NormalizeEdit{-16, -1}, CutEdit{{1'000, 9'000}, 100}}, kFrames, 2);
  EXPECT_EQ(inSlices(chain, 2), inSlices(chain, 1));
  SlicedEdit edit(chain, open()->format(), [this] { return open(); });
  edit.prepare(false);
  ChannelArrays once;
  ChannelArrays again;
  edit.audio().deliver([&](PlanarView slice) { append(once, slice); });
  edit.audio().deliver([&](PlanarView slice) { append(again, slice); });
  EXPECT_EQ(once, again);
}

TEST_F(SlicedEditTest, RefusesACrossfadeThatIsTooLongToBeHeld) {
  constexpr std::int64_t kHour = 172'800'000;
  const EditChain chain({SwapEdit{}, CutEdit{{kHour, kHour + 1}, 10'000'000}}, 2 * kHour, 2);
  try {
    SlicedEdit::requirePossible(chain, 2);
    ADD_FAILURE() << "nothing is thrown";
  } catch (const EditChainError& error) {
    EXPECT_EQ(error, EditChainError(EditChainError::Case::longCrossfade, 1));
  }
}

TEST_F(SlicedEditTest, TellsThatTheSourceEndsEarly) {
  SlicedEdit edit(EditChain({SwapEdit{}}, kFrames + 5, 2), open()->format(),
                  [this] { return open(); });
  EXPECT_TRUE(edit.prepare(true).empty());
  try {
    edit.audio().deliver([](PlanarView) {});
    ADD_FAILURE() << "nothing is thrown";
  } catch (const AudioEndsEarly& error) {
    EXPECT_EQ(error.frameCount(), kFrames);
  }
}

}  // namespace
}  // namespace orvane
