// speech_bench MODEL [LIBONNXRUNTIME]
// Times the speech detector and, where the runtime's library is given, the runtime on the same
// network in alternation. The library comes with the npm package onnxruntime-node (npm pack, then
// bin/napi-v6/linux/x64/libonnxruntime.so.1 in it). The two must agree within 1e-4 first.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <exception>
#include <limits>
#include <numbers>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/speech/onnx_runtime.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/speech/detector/silero_network.h"
#include "orvane/speech/detector/silero_vad_analyser.h"

namespace {

using namespace orvane;

constexpr std::size_t kSeconds = 300;
constexpr int kRounds = 7;
constexpr double kAgreement = 1e-4;

/// Syllable-like bursts of harmonics over noise of changing level.
std::vector<float> programme() {
  std::mt19937 random(1);
  std::vector<float> samples(kSeconds * 16000 / 512 * 512);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double t = static_cast<double>(i) / 16000;
    const double gate =
        std::max(0.0, std::sin(2 * std::numbers::pi * 3 * t)) * (std::fmod(t, 6) < 4 ? 1 : 0);
    const double pitch = 120 + 20 * std::sin(2 * std::numbers::pi * 0.7 * t);
    double voice = 0;
    for (int k = 1; k <= 12; ++k) voice += std::sin(2 * std::numbers::pi * pitch * k * t) / k;
    const double noise = static_cast<double>(random()) / 4294967296.0 - 0.5;
    samples[i] = static_cast<float>(0.15 * gate * voice + 0.02 * (1 + std::sin(0.3 * t)) * noise);
  }
  return samples;
}

/// What a piece of work takes; the processor's time tells more than the clock on a busy machine.
struct Cost {
  double seconds = std::numeric_limits<double>::infinity();
  double processorSeconds = std::numeric_limits<double>::infinity();

  /// Keeps the least of this and another round.
  template <class Work>
  void measure(Work work) {
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t processorStart = std::clock();
    work();
    processorSeconds = std::min(
        processorSeconds, static_cast<double>(std::clock() - processorStart) / CLOCKS_PER_SEC);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    seconds = std::min(seconds, elapsed.count());
  }
};

void print(const char* what, const Cost& cost, const Cost& reference) {
  std::printf("%-34s %7.1f ms, %7.1f ms of processors, %5.0f times real time", what,
              cost.seconds * 1e3, cost.processorSeconds * 1e3, kSeconds / cost.seconds);
  if (std::isfinite(reference.seconds))
    std::printf(", %6.2f (processors %6.2f) times the runtime", reference.seconds / cost.seconds,
                reference.processorSeconds / cost.processorSeconds);
  std::printf("\n");
}

bool agree(const std::vector<float>& a, const std::vector<float>& b) {
  double worst = a.size() == b.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    worst = std::max(worst, std::abs(static_cast<double>(a[i]) - b[i]));
  std::printf("largest difference between the two: %.2g\n", worst);
  return worst < kAgreement;
}

Cost inputCost(std::size_t threads) {
  constexpr std::uint32_t kFrames = kSeconds * 48000;
  const auto buffer = PCMBuffer::make({.sampleRate = 48000, .channelCount = 2}, kFrames);
  if (!buffer) throw std::runtime_error("no memory");
  buffer->setFrameLength(kFrames);
  for (std::uint32_t c = 0; c < 2; ++c)
    for (std::uint32_t i = 0; i < kFrames; ++i)
      buffer->channel(c)[i] = static_cast<float>((i * 7 + c) % 2000) / 1000 - 1;
  Cost cost;
  for (int round = 0; round < kRounds; ++round)
    cost.measure([&] { SileroVADAnalyser::prepareInput(*buffer, threads); });
  return cost;
}

int run(const std::string& model, const char* library) {
  const SileroNetwork network(loadSileroWeights(model));
  const auto samples = programme();
  const std::size_t steps = samples.size() / 512;
  std::optional<bench::OnnxRuntimeVad> runtime;
  if (library != nullptr) {
    runtime.emplace(library, model);
    std::printf("ONNX Runtime %s\n", runtime->version().c_str());
    if (!agree(runtime->run(samples), network.stepProbabilities(samples, steps))) return 1;
  }
  Cost reference;
  Cost one;
  Cost two;
  for (int round = 0; round < kRounds; ++round) {
    if (runtime) reference.measure([&] { runtime->run(samples); });
    one.measure([&] { network.stepProbabilities(samples, steps, {1}); });
    two.measure([&] { network.stepProbabilities(samples, steps, {2}); });
  }
  if (runtime) print("runtime, one call per step", reference, reference);
  print("network, 1 thread", one, reference);
  print("network, 2 threads", two, reference);
  print("input from 48 kHz stereo, 1 thread", inputCost(1), reference);
  print("input from 48 kHz stereo, 2 threads", inputCost(2), reference);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: speech_bench MODEL [LIBONNXRUNTIME]\n");
    return 2;
  }
  try {
    return run(argv[1], argc == 3 ? argv[2] : nullptr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "speech_bench: %s\n", error.what());
    return 1;
  }
}
