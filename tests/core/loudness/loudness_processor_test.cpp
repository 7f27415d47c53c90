#include "orvane/core/loudness/loudness_processor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "tests/core/loudness/metering.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

using metering::Figures;
using test::Programme;

constexpr float kMinusInfinity = -std::numeric_limits<float>::infinity();

// A step of a float at these levels.
constexpr double kFloatStep = 4e-6;

std::vector<float> sound(std::size_t frames, double levelDBFS = -20) {
  return test::tone(
      48000, 1000,
      std::vector<test::ToneSegment>{{static_cast<double>(frames) / 48000.0, levelDBFS}});
}

LoudnessProcessor measured(const Programme& programme,
                           std::optional<std::vector<bool>> speech = std::nullopt) {
  LoudnessProcessor meter(programme.sampleRate,
                          static_cast<std::uint32_t>(programme.channels.size()), std::move(speech));
  meter.isRecording = true;
  meter.process(programme.pointers(), programme.frameCount());
  meter.updateTruePeak(programme.pointers(), programme.frameCount());
  meter.flushPartialBlock();
  return meter;
}

/// Steps of 100 ms at these levels.
Programme stepsAt(const std::vector<double>& levels) {
  std::vector<test::ToneSegment> segments;
  for (const double level : levels) segments.push_back({0.1, level});
  return {48000, {test::tone(48000, 1000, segments)}};
}

TEST(LoudnessProcessor, ReadsTheCalibrationTone) {
  // BS.1770-5, Annex 1: 997 Hz at full scale on one of L, R, C reads −3.01.
  const Programme programme{48000, {test::lockedSine(48000 * 5, 997, 48000, 0.0, 1.0)}};
  EXPECT_NEAR(measured(programme).integratedLUFS(), -3.01, 0.005);
}

TEST(LoudnessProcessor, AddsThePowersOfChannels) {
  const auto channel = sound(96000);
  const float mono = measured({48000, {channel}}).integratedLUFS();
  EXPECT_NEAR(measured({48000, {channel, channel}}).integratedLUFS(), mono + 3.0103F, 1e-4);
  auto inverted = channel;
  for (float& x : inverted) x = -x;
  EXPECT_NEAR(measured({48000, {channel, inverted}}).integratedLUFS(), mono + 3.0103F, 1e-4);
}

TEST(LoudnessProcessor, WeighsChannelsByTheirNumberUnlessTold) {
  const auto levelOfOnly = [](std::size_t channel, std::size_t count) {
    Programme programme{48000, {}};
    programme.channels.assign(count, std::vector<float>(48000));
    programme.channels[channel] = sound(48000);
    return static_cast<double>(measured(programme).integratedLUFS());
  };
  const double plain = levelOfOnly(0, 1);
  const double surround = plain + 10 * std::log10(1.41);
  EXPECT_NEAR(levelOfOnly(1, 2), plain, kFloatStep);
  EXPECT_NEAR(levelOfOnly(2, 3), plain, kFloatStep);
  EXPECT_NEAR(levelOfOnly(3, 4), surround, 1e-5);
  EXPECT_NEAR(levelOfOnly(3, 5), surround, 1e-5);
  EXPECT_EQ(levelOfOnly(3, 6), -std::numeric_limits<double>::infinity());  // LFE
  EXPECT_NEAR(levelOfOnly(4, 6), surround, 1e-5);
  EXPECT_NEAR(levelOfOnly(5, 8), surround, 1e-5);
  EXPECT_NEAR(levelOfOnly(7, 8), plain, kFloatStep);
  EXPECT_NEAR(levelOfOnly(16, 17), plain, kFloatStep);
}

TEST(LoudnessProcessor, LeavesOutChannelsWithoutAWeight) {
  const Programme programme{48000, {sound(48000, -30), sound(48000, -3)}};
  const auto alone = metering::measure({48000, {programme.channels[0]}});
  const auto both = metering::measure(programme, std::vector<float>{1.0F, 0.0F});
  metering::expectSamePowers(both.blockPowers, alone.blockPowers, 1e-9);
}

TEST(LoudnessProcessor, KeepsHistoryOnlyWhenRecording) {
  const auto programme = stepsAt({-20, -20, -20, -20, -20, -20});
  LoudnessProcessor meter(48000, 1);
  EXPECT_FALSE(meter.isRecording);
  meter.process(programme.pointers(), programme.frameCount());
  meter.flushPartialBlock();
  EXPECT_TRUE(meter.history().empty());
  EXPECT_EQ(meter.blockPowers().size(), 3U);
  EXPECT_EQ(meter.integratedLUFS(), measured(programme).integratedLUFS());
}

TEST(LoudnessProcessor, EntersAPartialStepIntoTheHistory) {
  EXPECT_EQ(measured({48000, {sound(4800 * 7)}}).history().size(), 7U);
  EXPECT_EQ(measured({48000, {sound(4800 * 7 + 1)}}).history().size(), 8U);
  EXPECT_EQ(measured({48000, {sound(1)}}).history().size(), 1U);
}

TEST(LoudnessProcessor, CountsTimeBeforeTheStartAsSilence) {
  const auto history = measured({48000, {sound(4800 * 40)}}).history();
  const float full = history.back().momentary;
  EXPECT_NEAR(history[0].momentary, full - 6.0206F, 0.1);   // one step of four
  EXPECT_NEAR(history[9].shortTerm, full - 4.7712F, 0.02);  // ten of thirty
  EXPECT_EQ(history[2].integrated, kMinusInfinity);
  EXPECT_NEAR(history[3].integrated, full, 0.02);
}

TEST(LoudnessProcessor, DropsAnIncompleteLastGatingBlock) {
  // The loud end fills no whole step.
  const Programme programme{
      48000, {test::tone(48000, 1000, std::vector<test::ToneSegment>{{1, -40}, {0.09, 0}})}};
  const auto meter = measured(programme);
  EXPECT_EQ(meter.blockPowers().size(), 7U);
  EXPECT_LT(meter.integratedLUFS(), -39);
  EXPECT_GT(meter.history().back().momentary, -12);
}

TEST(LoudnessProcessor, MeasuresAProgrammeBelow400MsAsOneBlock) {
  const float whole = measured({48000, {sound(48000)}}).integratedLUFS();
  for (const std::size_t frames : {2400U, 4800U, 9600U, 19199U}) {
    const auto meter = measured({48000, {sound(frames)}});
    EXPECT_EQ(meter.blockPowers().size(), 1U) << frames;
    EXPECT_NEAR(meter.integratedLUFS(), whole, 0.2) << frames;
    EXPECT_EQ(meter.history().back().integrated, meter.integratedLUFS()) << frames;
  }
  EXPECT_EQ(measured({48000, {sound(19200)}}).blockPowers().size(), 1U);
}

TEST(LoudnessProcessor, HasNoFiguresForNothing) {
  auto meter = measured({48000, {std::vector<float>{}}});
  EXPECT_EQ(meter.integratedLUFS(), kMinusInfinity);
  EXPECT_EQ(meter.loudnessRange(), 0.0F);
  EXPECT_EQ(meter.truePeakDB(), kMinusInfinity);
  EXPECT_TRUE(meter.history().empty());
  EXPECT_TRUE(meter.blockPowers().empty());
  meter.flushPartialBlock();  // again: harmless
  EXPECT_TRUE(meter.history().empty());
}

TEST(LoudnessProcessor, HasNoChannelsNoFigures) {
  LoudnessProcessor meter(48000, 0);
  meter.process({}, 48000);
  meter.updateTruePeak({}, 48000);
  meter.flushPartialBlock();
  EXPECT_EQ(meter.integratedLUFS(), kMinusInfinity);
  EXPECT_EQ(meter.truePeakDB(), kMinusInfinity);
  EXPECT_TRUE(meter.channelTruePeaksDB().empty());
}

TEST(LoudnessProcessor, HasNoRangeBelowThreeSeconds) {
  EXPECT_EQ(measured({48000, {test::noiseBursts(91, 48000, 143999)}}).loudnessRange(), 0.0F);
  EXPECT_GT(measured({48000, {test::noiseBursts(91, 48000, 48000 * 6)}}).loudnessRange(), 0.0F);
}

TEST(LoudnessProcessor, MetersRatesFrom8To768kHz) {
  for (const double rate : {8000.0, 768000.0})
    EXPECT_TRUE(std::isfinite(measured({rate, {sound(400000)}}).integratedLUFS())) << rate;
  for (const double rate :
       {0.0, -48000.0, 100.0, 7999.9, 768000.1, 1e7, std::numeric_limits<double>::quiet_NaN(),
        std::numeric_limits<double>::infinity()}) {
    const auto meter = measured({rate, {sound(48000)}}, std::vector<bool>{true, true});
    EXPECT_EQ(meter.integratedLUFS(), kMinusInfinity) << rate;
    EXPECT_EQ(meter.loudnessRange(), 0.0F) << rate;
    EXPECT_EQ(meter.speechGatedLUFS(), kMinusInfinity) << rate;
    EXPECT_TRUE(meter.history().empty()) << rate;
    EXPECT_TRUE(meter.blockPowers().empty()) << rate;
    EXPECT_NEAR(meter.truePeakDB(), -20, 1e-4) << rate;
  }
}

TEST(LoudnessProcessor, StaysWhatItIsWhenMoved) {
  auto meter = measured(stepsAt({-20, -22, -24, -26, -28, -30}));
  const Figures before = metering::figuresOf(meter);
  LoudnessProcessor moved = std::move(meter);
  EXPECT_EQ(metering::figuresOf(moved), before);
  LoudnessProcessor assigned(8000, 1);
  assigned = std::move(moved);
  EXPECT_EQ(metering::figuresOf(assigned), before);
}

TEST(LoudnessProcessorDeath, StopsOnMisuse) {
  const auto channel = sound(480);
  const std::vector<const float*> two{channel.data(), channel.data()};
  EXPECT_DEATH(LoudnessProcessor(48000, 2, std::nullopt, std::vector<float>{1.0F}), "weight");
  LoudnessProcessor meter(48000, 1);
  EXPECT_DEATH(meter.process(two, 480), "channel");
  EXPECT_DEATH(meter.updateTruePeak(two, 480), "channel");
  meter.flushPartialBlock();
  EXPECT_DEATH(meter.process(std::span(two).first(1), 480), "flushed");
}

// Speech.

std::vector<bool> flags(std::size_t count, std::initializer_list<std::size_t> speech) {
  std::vector<bool> result(count);
  for (const std::size_t block : speech) result[block] = true;
  return result;
}

TEST(SpeechGatedLoudness, IsTheEnergyMeanOfSpeechBlocks) {
  const auto programme = stepsAt({-20, -20, -20, -20, -20, -40, -40, -40, -40, -40, -40});
  const auto meter = measured(programme, flags(11, {0, 6, 7}));
  const auto& powers = meter.blockPowers();
  EXPECT_NEAR(meter.speechGatedLUFS(), loudnessOfPower((powers[0] + powers[6] + powers[7]) / 3),
              kFloatStep);
  // No relative gate: blocks 20 LU below the programme count.
  EXPECT_NEAR(measured(programme, flags(11, {6, 7})).speechGatedLUFS(),
              loudnessOfPower((powers[6] + powers[7]) / 2), 2 * kFloatStep);
}

TEST(SpeechGatedLoudness, LeavesOutBlocksBelowTheAbsoluteGate) {
  const auto programme = stepsAt({-20, -20, -20, -20, -90, -90, -90, -90, -90, -90, -90});
  const auto meter = measured(programme, flags(11, {0, 6, 7}));
  EXPECT_NEAR(meter.speechGatedLUFS(), loudnessOfPower(meter.blockPowers()[0]), kFloatStep);
  EXPECT_EQ(measured(programme, flags(11, {6, 7})).speechGatedLUFS(), kMinusInfinity);
}

TEST(SpeechGatedLoudness, TakesMissingFlagsForFalseAndIgnoresThoseWithoutABlock) {
  const auto programme = stepsAt({-20, -20, -20, -20, -20, -40, -40, -40, -40, -40, -40});
  const auto full = measured(programme, flags(11, {0, 1}));
  EXPECT_EQ(measured(programme, flags(2, {0, 1})).speechGatedLUFS(), full.speechGatedLUFS());
  // Flags 8 … 10 belong to blocks that would end behind the programme.
  EXPECT_EQ(measured(programme, flags(30, {0, 1, 8, 9, 29})).speechGatedLUFS(),
            full.speechGatedLUFS());
}

TEST(SpeechGatedLoudness, HasNoFigureWithoutSpeech) {
  const auto programme = stepsAt(std::vector<double>(11, -20));
  EXPECT_EQ(measured(programme).speechGatedLUFS(), kMinusInfinity);
  EXPECT_EQ(measured(programme, std::vector<bool>{}).speechGatedLUFS(), kMinusInfinity);
  EXPECT_EQ(measured(programme, flags(11, {})).speechGatedLUFS(), kMinusInfinity);
}

TEST(SpeechShare, IsTheShareOfTrueFlags) {
  const auto programme = stepsAt(std::vector<double>(11, -20));
  EXPECT_EQ(measured(programme).speechPercentage(), 0.0F);
  EXPECT_EQ(measured(programme, std::vector<bool>{}).speechPercentage(), 0.0F);
  EXPECT_FLOAT_EQ(measured(programme, flags(11, {0, 3, 10})).speechPercentage(), 300.0F / 11);
  EXPECT_EQ(measured(programme, std::vector<bool>(4, true)).speechPercentage(), 100.0F);
  EXPECT_EQ(measured(programme, flags(20, {15, 16})).speechPercentage(), 10.0F);
}

TEST(SpeechHistory, MayComeAfterTheAudio) {
  const auto programme = stepsAt({-20, -20, -20, -20, -20, -40, -40, -40, -40, -40, -40});
  const auto before = measured(programme, flags(11, {6, 7}));
  auto after = measured(programme, flags(11, {0}));
  after.setSpeechHistory(flags(11, {6, 7}));
  EXPECT_EQ(after.speechGatedLUFS(), before.speechGatedLUFS());
  EXPECT_EQ(after.speechPercentage(), before.speechPercentage());
  after.setSpeechHistory(std::nullopt);
  EXPECT_EQ(after.speechGatedLUFS(), kMinusInfinity);
}

}  // namespace
}  // namespace orvane::core
