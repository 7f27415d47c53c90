// A chain in one buffer gives what its edits give one after the other in memory.

#include "orvane/edit/edit_chain.h"

#include "orvane/edit/edit_operations.h"
#include "tests/edit/edit_samples.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using namespace EditOperations;
using Case = EditChainError::Case;

constexpr double kRate = 48'000;
constexpr std::int64_t kFrames = 100'003;  // several blocks of those in which frames are moved

/// The same by the edits of whole channels in memory.
struct InMemory {
  ChannelArrays channels;

  void operator()(const TrimEdit& edit) {
    take(trim(channels, kRate, edit.range.start, edit.range.end));
  }
  void operator()(const CutEdit& edit) {
    take(cutRange(channels, kRate, edit.range.start, edit.range.end, edit.crossfadeFrames));
  }
  void operator()(const SilenceEdit& edit) {
    take(addSilence(channels, kRate, edit.range.start, edit.range.end, edit.mode,
                    edit.durationFrames));
  }
  void operator()(const FadeEdit& edit) {
    take(fade(channels, kRate, edit.range.start, edit.range.end, edit.direction, edit.curve));
  }
  void operator()(const GainEdit& edit) {
    take(changeLevel(channels, kRate, edit.gainDB, edit.range.start, edit.range.end));
  }
  void operator()(const InvertEdit& edit) {
    take(invertPhase(channels, kRate, edit.range.start, edit.range.end));
  }
  void operator()(const DCOffsetEdit& edit) {
    take(removeDCOffset(channels, kRate, edit.range.start, edit.range.end));
  }
  void operator()(const ExpandEdit& edit) {
    const auto frames = static_cast<std::int64_t>(channels[0].size());
    take(expandNonSpeech(channels, kRate, speechBlocks(edit.speech, frames, 4'800), 4'800,
                         edit.expansion));
  }
  void operator()(const SwapEdit&) { take(swapChannels(channels, kRate)); }
  void operator()(const PeakEdit& edit) { take(normalizePeak(channels, kRate, edit.targetDB)); }
  void operator()(const LimitEdit& edit) { take(limitTruePeak(channels, kRate, edit.ceilingDBTP)); }
  void operator()(const NormalizeEdit& edit) {
    take(normalizeLUFS(channels, kRate, edit.targetLUFS, edit.ceilingDBTP));
  }

  void take(EditResult result) { channels = std::move(result.channelData); }
};

class EditChainTest : public testing::Test {
 protected:
  ChannelArrays applied(const EditChain& chain) const {
    const orvane::test::TemporaryDirectory folder;
    const auto path = folder / "source.wav";
    writeLimitedWAV(*buildBuffer({channels, kRate, 2}), 100, path, 4096);
    const auto source = AudioSource::open(path);
    const auto audio = chain.load(*source);
    chain.apply(*audio);
    ChannelArrays result;
    for (std::uint32_t c = 0; c < audio->channelCount(); ++c) {
      const auto samples = audio->view().samples(c);
      result.emplace_back(samples.begin(), samples.end());
    }
    return result;
  }

  void expectInTurn(const std::vector<Edit>& edits) const {
    InMemory inMemory{channels};
    for (const Edit& edit : edits) std::visit(inMemory, edit);
    const EditChain chain(edits, kFrames, 2);
    const auto result = applied(chain);
    EXPECT_EQ(result, inMemory.channels);
    EXPECT_EQ(chain.frameMap().frameCount, static_cast<std::int64_t>(result[0].size()));
  }

  static std::optional<EditChainError> refusal(const std::vector<Edit>& edits,
                                               std::uint32_t channelCount = 2) {
    try {
      const EditChain chain(edits, kFrames, channelCount);
      return std::nullopt;
    } catch (const EditChainError& error) {
      return error;
    }
  }

  const ChannelArrays channels = EditOperations::test::noise(2, kFrames);
};

TEST_F(EditChainTest, MovesFramesInPlace) {
  for (const FrameRange range : {FrameRange{1, 99'999},
                                 {70'000, 70'001},
                                 {0, 40'000},
                                 {40'000, kFrames},
                                 {32'768, 65'536}}) {
    expectInTurn({TrimEdit{range}});
    for (const std::int64_t crossfade : {0, 20'000}) expectInTurn({CutEdit{range, crossfade}});
    for (const SilenceMode mode :
         {SilenceMode::insertBefore, SilenceMode::insertAfter, SilenceMode::replace})
      expectInTurn({SilenceEdit{range, mode, 70'000}});
  }
}

TEST_F(EditChainTest, ChangesSamples) {
  const FrameRange range{5'000, 60'000};
  expectInTurn({FadeEdit{range, FadeDirection::fadeOut, FadeCurve::equalPower}});
  expectInTurn({GainEdit{range, -3.5}});
  expectInTurn({InvertEdit{range}});
  expectInTurn({DCOffsetEdit{range}});
  expectInTurn({ExpandEdit{{{5'000, 20'000}, {40'000, 41'000}}, {.reductionDB = -20}}});
  expectInTurn({SwapEdit{}});
  expectInTurn({PeakEdit{-6}});
  expectInTurn({LimitEdit{-3}});
  expectInTurn({NormalizeEdit{-23, -1}});
  expectInTurn({});
}

TEST_F(EditChainTest, DoesOneEditAfterTheOther) {
  expectInTurn({SilenceEdit{{0, 0}, SilenceMode::insertBefore, 50'000}, SwapEdit{},
                TrimEdit{{40'000, 140'000}},
                FadeEdit{{0, 20'000}, FadeDirection::fadeIn, FadeCurve::logarithmic},
                CutEdit{{30'000, 60'000}, 480}, GainEdit{{0, kFrames}, 2},
                SilenceEdit{{69'000, 70'000}, SilenceMode::insertAfter, 90'000}});
}

TEST_F(EditChainTest, TellsWhatNormalisingCameTo) {
  const auto audio = buildBuffer({channels, kRate, 2});
  const NormalizeEdit possible{-23, -1};
  const NormalizeEdit impossible{0, -20};
  const auto results =
      EditChain({possible, SwapEdit{}, impossible}, kFrames, 2).apply(*audio, {.threadCount = 2});
  ASSERT_EQ(results.size(), 2U);
  EXPECT_EQ(results[0].edit, possible);
  EXPECT_NEAR(results[0].outcome.loudnessAfter, -23, 0.1);
  EXPECT_EQ(results[1].edit, impossible);
  EXPECT_LT(results[1].outcome.loudnessAfter, -15);
}

TEST_F(EditChainTest, TellsWhereFramesWent) {
  const EditChain chain(
      {TrimEdit{{1'000, 90'000}}, SilenceEdit{{0, 0}, SilenceMode::insertBefore, 7}}, kFrames, 2);
  EXPECT_EQ(chain.frameMap().placeOf(999), std::nullopt);
  EXPECT_EQ(chain.frameMap().placeOf(1'000), 7);
}

TEST_F(EditChainTest, SpeechFollowsTheEditsBefore) {
  const EditChain chain(
      {CutEdit{{10'000, 20'000}, 0}, SilenceEdit{{0, 0}, SilenceMode::insertBefore, 500},
       ExpandEdit{{{9'000, 11'000}, {12'000, 13'000}, {30'000, 31'000}}, {.reductionDB = -6}}},
      kFrames, 2);
  EXPECT_EQ(std::get<ExpandEdit>(chain.edits()[2]).speech,
            (std::vector<FrameRange>{{9'500, 10'500}, {20'500, 21'500}}));
}

TEST_F(EditChainTest, CutsEditsToWhatIsThere) {
  const EditChain chain(
      {TrimEdit{{-5, 50'000}}, GainEdit{{49'000, kFrames}, 1}, CutEdit{{10, 20}, 480},
       SilenceEdit{{70'000, 80'000}, SilenceMode::insertBefore, 3}},
      kFrames, 2);
  EXPECT_EQ(chain.edits(),
            (std::vector<Edit>{TrimEdit{{0, 50'000}}, GainEdit{{49'000, 50'000}, 1},
                               CutEdit{{10, 20}, 10},
                               SilenceEdit{{49'980, 49'980}, SilenceMode::insertBefore, 3}}));
}

TEST_F(EditChainTest, RefusesWhatWouldDoOrLeaveNothing) {
  const FrameRange nothing{kFrames, kFrames + 10};
  const Edit ofNothing[] = {
      TrimEdit{nothing},    CutEdit{nothing},  SilenceEdit{nothing, SilenceMode::replace},
      FadeEdit{nothing},    GainEdit{nothing}, InvertEdit{nothing},
      DCOffsetEdit{nothing}};
  for (const Edit& edit : ofNothing) {
    EXPECT_EQ(refusal({edit}), EditChainError(Case::emptyRange, 0));
    EXPECT_EQ(refusal({SwapEdit{}, edit}), EditChainError(Case::emptyRange, 1));
  }
  EXPECT_EQ(refusal({CutEdit{{0, kFrames}}}), EditChainError(Case::nothingLeft, 0));
  EXPECT_EQ(refusal({TrimEdit{{0, 10}}, CutEdit{{0, 10}}}), EditChainError(Case::nothingLeft, 1));
  for (const std::uint32_t count : {1U, 3U})
    EXPECT_EQ(refusal({SwapEdit{}}, count), EditChainError(Case::notStereo, 0));
  EXPECT_FALSE(refusal({SilenceEdit{nothing, SilenceMode::insertAfter, 0}}));
}

TEST_F(EditChainTest, RefusesMoreThanTheMemoryHolds) {
  const EditChain chain({SilenceEdit{{0, 0}, SilenceMode::insertBefore, std::int64_t{1} << 40}},
                        kFrames, 2);
  try {
    applied(chain);
    ADD_FAILURE() << "nothing is thrown";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.errorDescription(),
              "source.wav: there is not enough memory to edit so much audio");
  }
}

}  // namespace
}  // namespace orvane
