#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/file_reading.h"
#include "tests/support/tool_runner.h"

/// Files written by libsndfile, and decoded by it and by SoX.
namespace orvane::test {

/// Writes noise of full scale with libsndfile; false where it has no such encoding.
inline bool writeWithLibsndfile(const std::filesystem::path& path, int format, int channels) {
  SF_INFO info{};
  info.samplerate = 48000;
  info.channels = channels;
  info.format = format;
  if (sf_format_check(&info) == 0) return false;
  const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(sf_open(path.c_str(), SFM_WRITE, &info),
                                                           &sf_close);
  if (!file) return false;
  std::vector<double> samples(static_cast<std::size_t>(997 * channels));
  std::uint64_t state = 1;
  for (double& sample : samples) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    sample = static_cast<double>(static_cast<std::int64_t>(state)) * 0x1p-63;
  }
  return sf_writef_double(file.get(), samples.data(), 997) == 997;
}

/// Expects a whole file to be what libsndfile makes of it.
inline void expectEqualToLibsndfile(const std::filesystem::path& path) {
  SCOPED_TRACE(path.filename().string());
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(sf_open(path.c_str(), SFM_READ, &info),
                                                           &sf_close);
  ASSERT_TRUE(file);
  std::vector<double> samples(static_cast<std::size_t>(info.frames * info.channels));
  ASSERT_EQ(sf_readf_double(file.get(), samples.data(), info.frames), info.frames);
  const auto buffer = readWhole(path);
  ASSERT_TRUE(buffer);
  expectSamples(*buffer, samples);
}

/// The same by SoX, which is told `options` about the file.
inline void expectEqualToSoX(const std::filesystem::path& path,
                             std::vector<std::string> options = {}) {
  SCOPED_TRACE(path.filename().string());
  for (const char* argument :
       {path.c_str(), "-t", "raw", "-e", "floating-point", "-b", "64", "-L", "-"})
    options.emplace_back(argument);
  const std::string raw = runTool("sox", options);
  std::vector<double> samples(raw.size() / sizeof(double));
  std::memcpy(samples.data(), raw.data(), samples.size() * sizeof(double));
  const auto buffer = readWhole(path);
  ASSERT_TRUE(buffer);
  expectSamples(*buffer, samples);
}

}  // namespace orvane::test
