// Fades and gain on a minute of stereo at 48 kHz, against writing the same memory, which is the
// floor.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "orvane/edit/edit_operations.h"
#include "tests/reference/edit_reference.h"

namespace orvane::EditOperations {
namespace {

constexpr std::int64_t kFrames = 60 * 48'000;
constexpr float kEnvelopeTolerance = 2.4e-7F;

using Edit = std::function<void(MutablePlanarView)>;

void time(benchmark::State& state, const Edit& edit, const reference::Channel& expected) {
  ChannelArrays channels(2, std::vector<float>(kFrames, 1.0F));
  std::vector<float*> pointers = {channels[0].data(), channels[1].data()};
  const MutablePlanarView audio(pointers, kFrames);
  edit(audio);
  for (const auto& channel : channels)
    for (std::size_t i = 0; i < channel.size(); ++i)
      if (std::fabs(channel[i] - expected[i]) > kEnvelopeTolerance)
        return state.SkipWithError("wrong sample");
  for (auto _ : state) edit(audio);
  state.SetItemsProcessed(state.iterations() * kFrames);
}

const bool kRegistered = [] {
  const reference::Channel ones(kFrames, 1.0F);
  const auto add = [](const std::string& name, const Edit& edit,
                      const reference::Channel& expected) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) { time(state, edit, expected); });
  };
  add(
      "write only",
      [](MutablePlanarView audio) {
        for (std::size_t c = 0; c < audio.channelCount(); ++c)
          std::ranges::fill(audio.samples(c), 1.0F);
      },
      ones);
  add(
      "gain", [](MutablePlanarView audio) { changeLevelInPlace(audio, -3, 0, kFrames); },
      reference::changeLevel(ones, -3, 0, kFrames));
  for (const FadeCurve curve : kFadeCurves)
    add(
        "fade/" + std::string(rawValue(curve)),
        [curve](MutablePlanarView audio) {
          fadeInPlace(audio, 0, kFrames, FadeDirection::fadeOut, curve);
        },
        reference::fade(ones, 0, kFrames, FadeDirection::fadeOut, curve));
  return true;
}();

}  // namespace
}  // namespace orvane::EditOperations
