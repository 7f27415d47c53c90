// Sample conversion, with every instruction set, against memcpy as the floor. Rates count the bytes
// read and the bytes written; the copy moves as many as the conversion of 24-bit samples does.
#include "orvane/platform/sample_conversion.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "orvane/platform/instruction_sets.h"
#include "tests/reference/sample_conversion_reference.h"

namespace orvane {
namespace {

struct Case {
  SampleEncoding encoding;
  std::size_t channels;
  std::size_t frames;
};

std::vector<std::byte> noise(std::size_t size) {
  std::mt19937 random(7);
  std::vector<std::byte> bytes(size);
  for (auto& byte : bytes) byte = static_cast<std::byte>(random());
  return bytes;
}

bool isRight(const Case& c, const std::vector<std::byte>& source,
             const std::vector<std::vector<float>>& results) {
  const std::size_t width = c.encoding.bytes;
  for (std::size_t i = 0; i < c.frames; i += 97)
    for (std::size_t channel = 0; channel < c.channels; ++channel) {
      const float expected =
          reference::sampleToFloat(c.encoding, source.data() + (i * c.channels + channel) * width);
      if (std::memcmp(&expected, &results[channel][i], sizeof expected) != 0) return false;
    }
  return true;
}

void deinterleave(benchmark::State& state, const Case& c, const InstructionSet& set) {
  forceInstructionSet(set);
  const auto source = noise(c.frames * c.channels * c.encoding.bytes);
  std::vector<std::vector<float>> results(c.channels, std::vector<float>(c.frames));
  std::vector<float*> destinations;
  for (auto& result : results) destinations.push_back(result.data());
  deinterleaveToFloat(c.encoding, source.data(), {destinations, c.frames});
  if (!isRight(c, source, results)) {
    state.SkipWithError("wrong samples");
    return;
  }
  for (auto _ : state) {
    deinterleaveToFloat(c.encoding, source.data(), {destinations, c.frames});
    benchmark::ClobberMemory();
  }
  const auto moved = source.size() + c.frames * c.channels * sizeof(float);
  state.SetBytesProcessed(static_cast<std::int64_t>(moved) * state.iterations());
  useBestInstructionSet();
}

/// Moves as many bytes, read and written, as `bytes` says.
void copy(benchmark::State& state, std::size_t bytes) {
  const auto source = noise(bytes / 2);
  std::vector<std::byte> destination(bytes / 2);
  for (auto _ : state) {
    std::memcpy(destination.data(), source.data(), source.size());
    benchmark::ClobberMemory();
  }
  if (destination != source) state.SkipWithError("wrong copy");
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes / 2 * 2) * state.iterations());
}

struct Name {
  SampleEncoding encoding;
  const char* text;
};

constexpr Name kNames[] = {
    {SampleEncoding::unsignedInteger(1), "u8"},        {SampleEncoding::signedInteger(2), "s16le"},
    {SampleEncoding::signedInteger(2, true), "s16be"}, {SampleEncoding::signedInteger(3), "s24le"},
    {SampleEncoding::signedInteger(3, true), "s24be"}, {SampleEncoding::low24In32(), "s24_32le"},
    {SampleEncoding::signedInteger(4), "s32le"},       {SampleEncoding::floatingPoint(4), "f32le"},
    {SampleEncoding::floatingPoint(4, true), "f32be"}, {SampleEncoding::floatingPoint(8), "f64le"},
};

/// Samples that stay in the second-level cache, and ten minutes of stereo that do not.
constexpr std::pair<std::size_t, const char*> kSizes[] = {{std::size_t{1} << 16, "cached"},
                                                          {std::size_t{57'600'000}, "memory"}};

const bool kRegistered = [] {
  for (const auto& [samples, size] : kSizes)
    benchmark::RegisterBenchmark(
        (std::string("memcpy/") + size).c_str(),
        [bytes = samples * 7](benchmark::State& state) { copy(state, bytes); });
  for (const auto& set : availableInstructionSets())
    for (const auto& [samples, size] : kSizes)
      for (const Name& name : kNames)
        for (const std::size_t channels : {1U, 2U, 6U}) {
          const Case c{name.encoding, channels, samples / channels};
          const std::string label = std::string(size) + "/" + name.text + "/" +
                                    std::to_string(channels) + "ch/" + set.name;
          benchmark::RegisterBenchmark(
              label.c_str(), [c, set](benchmark::State& state) { deinterleave(state, c, set); });
        }
  return true;
}();

}  // namespace
}  // namespace orvane
