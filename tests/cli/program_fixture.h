#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/program_run.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_places.h"

namespace orvane::cli::test {

using Json = nlohmann::json;
using orvane::test::ProgramEnd;
using orvane::test::ProgramSetup;

/// A little-endian number of that many bytes.
inline std::string littleEndian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>((value >> (8 * i)) & 0xFFU);
  return text;
}

/// The 16-bit samples of a sine of 1 kHz at 48 kHz, alike in all channels.
inline std::string sineSamples(std::size_t frames, double amplitude, int channels = 2) {
  constexpr std::size_t kPeriod = 48;
  std::string period;
  for (std::size_t i = 0; i < kPeriod; ++i) {
    const double phase = 2 * std::numbers::pi * static_cast<double>(i) / kPeriod;
    const auto value = static_cast<std::int16_t>(std::lround(32767 * amplitude * std::sin(phase)));
    for (int channel = 0; channel < channels; ++channel)
      period += littleEndian(static_cast<std::uint16_t>(value), 2);
  }
  std::string samples;
  samples.reserve((frames + kPeriod) / kPeriod * period.size());
  for (std::size_t i = 0; i < frames; i += kPeriod) samples += period;
  samples.resize(frames * static_cast<std::size_t>(channels) * 2);
  return samples;
}

/// A WAVE file of 16-bit samples.
inline std::string waveFile(const std::string& samples, int channels = 2,
                            std::uint32_t sampleRate = 48000) {
  const auto frameBytes = static_cast<std::uint32_t>(2 * channels);
  const std::string format = littleEndian(1, 2) + littleEndian(static_cast<unsigned>(channels), 2) +
                             littleEndian(sampleRate, 4) +
                             littleEndian(std::uint64_t{sampleRate} * frameBytes, 4) +
                             littleEndian(frameBytes, 2) + littleEndian(16, 2);
  return "RIFF" + littleEndian(36 + samples.size(), 4) + "WAVEfmt " + littleEndian(16, 4) + format +
         "data" + littleEndian(samples.size(), 4) + samples;
}

/// A folder with a good file, and the program run in it.
class ProgramTest : public ::testing::Test {
 protected:
  ProgramTest() { folder_.write("good.wav", waveFile(sineSamples(48'000, 0.5))); }

  ProgramEnd run(ProgramSetup setup) const {
    if (setup.folder.empty()) setup.folder = folder_.path();
    return orvane::test::runProgram(orvane::test::places::program, setup);
  }
  ProgramEnd run(const std::vector<std::string>& arguments) const {
    ProgramSetup setup;
    setup.arguments = arguments;
    return run(setup);
  }

  const orvane::test::TemporaryDirectory& folder() const { return folder_; }

 private:
  orvane::test::TemporaryDirectory folder_{};
};

/// Each line as a document of its own; a test fails at a line that is none.
inline std::vector<Json> jsonLines(const std::string& text) {
  std::vector<Json> documents;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) documents.push_back(Json::parse(line));
  return documents;
}

}  // namespace orvane::cli::test
