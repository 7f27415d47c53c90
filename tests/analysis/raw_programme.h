#pragma once

#include <cmath>
#include <cstddef>
#include <cstring>
#include <numbers>
#include <string_view>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "tests/support/temporary_directory.h"

namespace orvane::test {

using Channel = std::vector<float>;

inline Channel sine(double sampleRate, double frequency, double amplitude, std::size_t frames) {
  Channel samples(frames);
  for (std::size_t i = 0; i < frames; ++i)
    samples[i] = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * frequency *
                                                         static_cast<double>(i) / sampleRate));
  return samples;
}

/// Headerless 32-bit float files, so that analysis can be tested sample by sample.
class RawProgramme {
 public:
  RawProgramme(double sampleRate, const std::vector<Channel>& channels) {
    format_ = {.sampleRate = sampleRate,
               .channelCount = static_cast<std::int64_t>(channels.size()),
               .encoding = RawPCMFormat::Encoding::float32,
               .endianness = RawPCMFormat::Endianness::little,
               .isPlanar = true};
    std::vector<std::byte> bytes;
    for (const Channel& channel : channels) {
      const auto* data = reinterpret_cast<const std::byte*>(channel.data());
      bytes.insert(bytes.end(), data, data + channel.size() * sizeof(float));
    }
    path_ = directory_.write("programme.raw", bytes);
  }

  const std::filesystem::path& path() const noexcept { return path_; }

  OfflineAnalysisPipeline::Options options(bool stereoWidth = true) const {
    return {.enableSileroVAD = false,
            .computeStereoWidth = stereoWidth,
            .vadTuning = {},
            .rawFormat = format_};
  }

  OfflineAnalysisPipeline::Result analyze(bool stereoWidth = true) const {
    return OfflineAnalysisPipeline::analyzeFile(path_, options(stereoWidth));
  }

 private:
  TemporaryDirectory directory_;
  RawPCMFormat format_;
  std::filesystem::path path_;
};

}  // namespace orvane::test
