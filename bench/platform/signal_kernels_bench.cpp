// Whole-run statistics against reading the same memory, which is the floor.
#include "orvane/platform/signal_kernels.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "orvane/platform/instruction_sets.h"
#include "tests/reference/signal_kernels_reference.h"

namespace orvane {
namespace {

std::vector<float> noise(std::size_t count, unsigned seed) {
  std::minstd_rand random(seed);
  std::vector<float> samples(count);
  for (float& x : samples) x = static_cast<float>(random()) / 1e9F - 1.0F;
  return samples;
}

void setBytes(benchmark::State& state, std::size_t samples) {
  state.SetBytesProcessed(static_cast<std::int64_t>(samples * sizeof(float)) * state.iterations());
}

/// A search for a byte that is not there reads all memory and does next to nothing else.
void readOnly(benchmark::State& state, std::size_t count) {
  const std::vector<char> bytes(count * sizeof(float), 'x');
  for (auto _ : state) benchmark::DoNotOptimize(std::memchr(bytes.data(), 'y', bytes.size()));
  setBytes(state, count);
}

void peak(benchmark::State& state, std::size_t count) {
  const auto samples = noise(count, 1);
  if (SignalKernels::maximumMagnitude(samples.data(), count) !=
      reference::sums(samples.data(), count).peak)
    return state.SkipWithError("wrong peak");
  for (auto _ : state)
    benchmark::DoNotOptimize(SignalKernels::maximumMagnitude(samples.data(), count));
  setBytes(state, count);
}

void run(benchmark::State& state, std::size_t count) {
  const auto samples = noise(count, 1);
  const auto expected = static_cast<double>(reference::sums(samples.data(), count).sumOfSquares);
  const double got = SignalKernels::runStatistics(samples.data(), count).sumOfSquares;
  if (std::fabs(got - expected) > 1e-12 * expected) return state.SkipWithError("wrong sum");
  for (auto _ : state)
    benchmark::DoNotOptimize(SignalKernels::runStatistics(samples.data(), count));
  setBytes(state, count);
}

void pair(benchmark::State& state, std::size_t count) {
  const auto left = noise(count / 2, 1);
  const auto right = noise(count / 2, 2);
  const auto expected = static_cast<double>(reference::dot(left.data(), right.data(), count / 2));
  const double got = SignalKernels::pairStatistics(left.data(), right.data(), count / 2).dot;
  if (std::fabs(got - expected) > 1e-12 * static_cast<double>(count))
    return state.SkipWithError("wrong dot product");
  for (auto _ : state)
    benchmark::DoNotOptimize(SignalKernels::pairStatistics(left.data(), right.data(), count / 2));
  setBytes(state, count);
}

const bool kRegistered = [] {
  using Body = void (*)(benchmark::State&, std::size_t);
  constexpr std::pair<const char*, Body> kBodies[] = {
      {"peak", peak}, {"runStatistics", run}, {"pairStatistics", pair}};
  constexpr std::pair<const char*, std::size_t> kSizes[] = {{"cached", std::size_t{1} << 16},
                                                            {"memory", std::size_t{57'600'000}}};
  for (const auto& [size, count] : kSizes) {
    benchmark::RegisterBenchmark(
        (std::string("memchr/") + size).c_str(),
        [samples = count](benchmark::State& state) { readOnly(state, samples); });
    for (const auto& [name, body] : kBodies)
      for (const auto& set : availableInstructionSets())
        benchmark::RegisterBenchmark((std::string(size) + "/" + name + "/" + set.name).c_str(),
                                     [set, work = body, samples = count](benchmark::State& state) {
                                       forceInstructionSet(set);
                                       work(state, samples);
                                       useBestInstructionSet();
                                     });
  }
  return true;
}();

}  // namespace
}  // namespace orvane
