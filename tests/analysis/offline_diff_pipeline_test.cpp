#include "orvane/analysis/offline_diff_pipeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <random>
#include <set>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/platform/audio_load_limits.h"
#include "tests/analysis/raw_programme.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using OfflineDiffPipeline::computeDiff;
using OfflineDiffPipeline::Failure;
using test::Channel;
using test::RawProgramme;
using test::sine;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

OfflineDiffPipeline::Options optionsOf(const RawProgramme& a, const RawProgramme& b,
                                       bool matchLoudness = false) {
  return {.matchLoudness = matchLoudness,
          .rawFormatA = a.options().rawFormat,
          .rawFormatB = b.options().rawFormat};
}

OfflineDiffPipeline::Result diff(const RawProgramme& a, const RawProgramme& b,
                                 bool matchLoudness = false) {
  return computeDiff(a.path(), b.path(), optionsOf(a, b, matchLoudness));
}

Channel noise(unsigned seed, std::size_t frames, float amplitude = 0.25F) {
  std::mt19937 random(seed);
  Channel samples(frames);
  for (float& x : samples)
    x = amplitude * (static_cast<float>(random()) / static_cast<float>(std::mt19937::max()) - 0.5F);
  return samples;
}

Channel scaled(Channel samples, float gain) {
  for (float& x : samples) x *= gain;
  return samples;
}

Channel samplesOf(const PCMBuffer& buffer, std::size_t channel) {
  const auto samples = buffer.view().samples(channel);
  return {samples.begin(), samples.end()};
}

std::string failureText(const RawProgramme& a, const RawProgramme& b) {
  try {
    diff(a, b, true);
  } catch (const Error& error) {
    return error.errorDescription();
  }
  return "none";
}

TEST(OfflineDiffPipeline, NullsAFileWithItself) {
  const RawProgramme a(48000, {noise(1, 48000), noise(2, 48000)});
  for (const bool matchLoudness : {false, true}) {
    const auto result = diff(a, a, matchLoudness);
    EXPECT_EQ(result.residualPeakDB, -kInfinity);
    EXPECT_EQ(result.residualRMSDB, -200.0F);
    EXPECT_EQ(result.appliedGainB, 1.0F);
    EXPECT_EQ(result.sampleRate, 48000);
    EXPECT_EQ(result.channelCount, 2);
    EXPECT_EQ(result.durationSeconds, 1.0);
    EXPECT_EQ(result.buffer->frameLength(), 48000U);
    EXPECT_EQ(samplesOf(*result.buffer, 1), Channel(48000));
  }
}

TEST(OfflineDiffPipeline, SubtractsBFromA) {
  const Channel l = noise(3, 40000), r = noise(4, 40000), m = noise(5, 40000), n = noise(6, 40000);
  const auto result = diff(RawProgramme(44100, {l, r}), RawProgramme(44100, {m, n}));
  Channel expectedL(l.size()), expectedR(l.size());
  double squares = 0;
  float peak = 0;
  for (std::size_t i = 0; i < l.size(); ++i) {
    expectedL[i] = l[i] - m[i];
    expectedR[i] = r[i] - n[i];
    for (const float x : {expectedL[i], expectedR[i]}) {
      squares += static_cast<double>(x) * static_cast<double>(x);
      peak = std::max(peak, std::abs(x));
    }
  }
  EXPECT_EQ(samplesOf(*result.buffer, 0), expectedL);
  EXPECT_EQ(samplesOf(*result.buffer, 1), expectedR);
  EXPECT_FLOAT_EQ(result.residualPeakDB, 20 * std::log10(peak));
  EXPECT_NEAR(result.residualRMSDB, 10 * std::log10(squares / (2.0 * 40000)), 1e-5);
}

TEST(OfflineDiffPipeline, MatchesTheLoudnessOfAnAttenuatedCopy) {
  const Channel l = noise(7, 480000), r = noise(8, 480000);
  const RawProgramme a(48000, {l, r}), b(48000, {scaled(l, 0.5F), scaled(r, 0.5F)});
  const auto matched = diff(a, b, true);
  EXPECT_NEAR(matched.appliedGainB, 2, 1e-6);  // the loudness is a single-precision figure
  EXPECT_LT(matched.residualPeakDB, -130);
  const auto plain = diff(a, b);
  EXPECT_EQ(plain.appliedGainB, 1.0F);
  EXPECT_EQ(samplesOf(*plain.buffer, 0), scaled(l, 0.5F));
  const auto whole = diff(a, RawProgramme(48000, {Channel(480000), Channel(480000)}));
  EXPECT_NEAR(plain.residualRMSDB - whole.residualRMSDB, -6.0206, 1e-4);
}

TEST(OfflineDiffPipeline, MeasuresTheWholeFilesWithTheCustomaryWeights) {
  // B's quiet end counts though it is not compared.
  Channel a = sine(48000, 997, 0.1, 96000), b = a;
  b.resize(960000);
  std::fill(b.begin() + 96000, b.end(), 0.0F);
  const Channel tail = sine(48000, 997, 0.4, 480000);
  std::copy(tail.begin(), tail.end(), b.begin() + 480000);
  const auto result = diff(RawProgramme(48000, {a}), RawProgramme(48000, {b}), true);
  EXPECT_LT(result.appliedGainB, 0.4F);
}

TEST(OfflineDiffPipeline, LeavesTheGainWhereASideIsSilent) {
  const RawProgramme silence(48000, {Channel(48000)}), sound(48000, {noise(9, 48000)});
  EXPECT_EQ(diff(silence, sound, true).appliedGainB, 1.0F);
  EXPECT_EQ(diff(sound, silence, true).appliedGainB, 1.0F);
  const auto nothing = diff(silence, silence, true);
  EXPECT_EQ(nothing.appliedGainB, 1.0F);
  EXPECT_EQ(nothing.residualRMSDB, -200.0F);
}

TEST(OfflineDiffPipeline, ComparesAsFarAsTheShorterFile) {
  const Channel shorter = noise(10, 80000);
  Channel longer = shorter;
  longer.resize(96000, 0.5F);
  const RawProgramme ten(8000, {shorter}), twelve(8000, {longer});
  for (const auto& result : {diff(ten, twelve), diff(twelve, ten)}) {
    EXPECT_EQ(result.durationSeconds, 10.0);
    EXPECT_EQ(result.buffer->frameLength(), 80000U);
    EXPECT_EQ(result.residualPeakDB, -kInfinity);
  }
}

TEST(OfflineDiffPipeline, RefusesWhatCannotBeCompared) {
  const RawProgramme mono(48000, {Channel(100)}), stereo(48000, {Channel(100), Channel(100)});
  EXPECT_EQ(failureText(RawProgramme(44100, {Channel(100)}), stereo),
            "Sample rate mismatch: A is 44100.0 Hz, B is 48000.0 Hz. Resample to match before "
            "diffing.");
  EXPECT_EQ(failureText(mono, stereo),
            "Channel count mismatch: A has 1 channels, B has 2. Downmix to match before diffing.");
  EXPECT_EQ(failureText(RawProgramme(44100.5, {Channel(100)}), mono),
            "Sample rate mismatch: A is 44100.5 Hz, B is 48000.0 Hz. Resample to match before "
            "diffing.");
}

TEST(OfflineDiffPipeline, HasItsSentences) {
  EXPECT_STREQ(Failure::emptyFile("/a/b.wav").what(), "Empty or unreadable file: b.wav.");
  EXPECT_STREQ(Failure::fileTooLarge("/a/b.wav").what(),
               "Audio file is too large or its header is invalid: b.wav.");
  EXPECT_EQ(Failure::sampleRateMismatch(1, 2), Failure::sampleRateMismatch(1, 2));
  EXPECT_NE(Failure::sampleRateMismatch(1, 2), Failure::sampleRateMismatch(1, 3));
  EXPECT_EQ(Failure::channelCountMismatch(1, 2).failureCase(), Failure::Case::channelCountMismatch);
}

TEST(OfflineDiffPipeline, PassesLoadErrorsOnTheFirstOneOfA) {
  const RawProgramme good(48000, {Channel(100)});
  EXPECT_THROW(computeDiff("/nowhere/a.wav", good.path(), {}), PlatformError);
  try {
    computeDiff("/nowhere/a.wav", "/nowhere/b.wav", {});
    FAIL() << "there are no such files";
  } catch (const PlatformError& error) {
    EXPECT_THAT(error.errorDescription(), ::testing::StartsWith("a.wav: "));
  }
  const RawProgramme empty(48000, {Channel()});
  auto options = optionsOf(good, empty);
  EXPECT_THROW(computeDiff(good.path(), empty.path(), options), Error);
}

TEST(OfflineDiffPipeline, RefusesBWhenBothAreTooMuchForTheMemory) {
  const test::TemporaryDirectory folder;
  const RawPCMFormat format{.sampleRate = 48000,
                            .channelCount = 64,
                            .encoding = RawPCMFormat::Encoding::uint8,
                            .endianness = RawPCMFormat::Endianness::little};
  const auto frames = AudioLoadLimits::maxDecodedBytes() / 4 / 64 * 3 / 5;
  for (const char* name : {"a.raw", "b.raw"}) {
    folder.write(name, "");
    std::filesystem::resize_file(folder / name, static_cast<std::uintmax_t>(frames * 64));
  }
  try {
    computeDiff(folder / "a.raw", folder / "b.raw", {.rawFormatA = format, .rawFormatB = format});
    FAIL() << "more than the memory was loaded";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure, Failure::fileTooLarge(folder / "b.raw"));
  }
}

TEST(OfflineDiffPipeline, NeverTakesWhatIsNoNumberForANull) {
  Channel broken = noise(11, 1000);
  broken[500] = kNaN;
  const RawProgramme a(48000, {broken});
  EXPECT_TRUE(std::isnan(diff(a, a).residualRMSDB));
  broken[500] = kInfinity;
  const RawProgramme b(48000, {broken});
  EXPECT_FALSE(std::isfinite(diff(b, b).residualRMSDB));
}

class Watcher : public ProgressObserver {
 public:
  void onProgress(std::string_view stage, double fraction) override {
    stages.emplace(stage);
    if (stage == "Comparing") last = fraction;
  }
  bool isCancelled() override { return stages.contains(cancelAt); }
  std::set<std::string> stages{};
  std::string cancelAt{};
  double last = 0;
};

TEST(OfflineDiffPipeline, TellsItsStagesAndCanBeCancelled) {
  const RawProgramme a(48000, {noise(12, 100000), noise(13, 100000)});
  for (const std::size_t threads : {1U, 4U}) {
    Watcher watcher;
    const OfflineDiffPipeline::Choices choices{
        .execution = {.threadCount = threads, .observer = &watcher}};
    const auto result = computeDiff(a.path(), a.path(), optionsOf(a, a, true), choices);
    EXPECT_THAT(watcher.stages, ElementsAre("Comparing", "Measuring", "Reading"));
    EXPECT_EQ(watcher.last, 1.0);
    EXPECT_EQ(result.residualRMSDB, -200.0F);
    for (const char* stage : {"Reading", "Measuring", "Comparing"}) {
      watcher.stages.clear();
      watcher.cancelAt = stage;
      EXPECT_THROW(computeDiff(a.path(), a.path(), optionsOf(a, a, true), choices), Cancelled);
    }
  }
}

TEST(OfflineDiffPipeline, TellsWhatItFindsBesideTheResult) {
  const Channel sound = noise(14, 48000);
  Channel late(480);
  late.insert(late.end(), sound.begin(), sound.end());
  const RawProgramme a(48000, {sound}), b(48000, {late});
  OfflineDiffPipeline::Detail detail;
  const auto result = computeDiff(a.path(), b.path(), optionsOf(a, b), {}, &detail);
  EXPECT_EQ(detail.a.frameLength, 48000);
  EXPECT_EQ(detail.b.frameLength, 48480);
  EXPECT_THAT(detail.a.warnings, IsEmpty());
  ASSERT_TRUE(detail.offset);
  EXPECT_EQ(detail.offset->frames, 480);
  const auto silent = diff(a, RawProgramme(48000, {Channel(48000)}));
  EXPECT_EQ(detail.rmsDBOfA, silent.residualRMSDB);
  EXPECT_GT(result.residualRMSDB, detail.rmsDBOfA);
}

class WrittenResidual : public ::testing::Test {
 protected:
  WrittenResidual() {
    if (const char* const setting = getenv("TMPDIR")) before_ = setting;
    setenv("TMPDIR", folder_.path().c_str(), 1);
  }
  ~WrittenResidual() override {
    if (before_.empty())
      unsetenv("TMPDIR");
    else
      setenv("TMPDIR", before_.c_str(), 1);
  }
  bool isFolderEmpty() const { return std::filesystem::is_empty(folder_.path()); }

  std::shared_ptr<PCMBuffer> residual() const {
    const Channel l = noise(15, 1000), r = noise(16, 1000);
    return diff(RawProgramme(48000, {l, r}), RawProgramme(48000, {r, l})).buffer;
  }
  test::TemporaryDirectory target_{};

 private:
  test::TemporaryDirectory folder_{};
  std::string before_{};
};

TEST_F(WrittenResidual, IsAFloatWAVWithTheSameSamples) {
  const auto buffer = residual();
  OfflineDiffPipeline::writeWAV(*buffer, target_ / "residual.wav");
  const auto loaded = AudioSourceReader::load(target_ / "residual.wav");
  EXPECT_EQ(loaded.fileFormatLabel, "WAV");
  EXPECT_EQ(loaded.bitDepth, 32);
  EXPECT_EQ(loaded.buffer->sampleRate(), 48000);
  for (const std::size_t channel : {0U, 1U})
    EXPECT_EQ(samplesOf(*loaded.buffer, channel), samplesOf(*buffer, channel));
  EXPECT_THROW(OfflineDiffPipeline::writeWAV(*buffer, "/nowhere/residual.wav"), PlatformError);
}

TEST_F(WrittenResidual, ComesAsBytesAndLeavesNothingBehind) {
  const auto buffer = residual();
  OfflineDiffPipeline::writeWAV(*buffer, target_ / "residual.wav");
  const auto bytes = OfflineDiffPipeline::wavData(*buffer);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
            test::readFile(target_ / "residual.wav"));
  EXPECT_TRUE(isFolderEmpty());
}

TEST_F(WrittenResidual, LeavesNothingBehindWhenWritingFails) {
  const auto tooManyChannels = PCMBuffer::make({.sampleRate = 48000, .channelCount = 70000}, 1);
  tooManyChannels->setFrameLength(1);
  EXPECT_THROW(OfflineDiffPipeline::wavData(*tooManyChannels), PlatformError);
  EXPECT_TRUE(isFolderEmpty());
  const auto buffer = residual();
  setenv("TMPDIR", "/nowhere/at/all", 1);
  EXPECT_THROW(OfflineDiffPipeline::wavData(*buffer), PlatformError);
}

}  // namespace
}  // namespace orvane
