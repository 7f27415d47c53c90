#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <numbers>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/speech/detector/onnx_weights.h"
#include "tests/support/test_places.h"

namespace orvane::test {

/// A published model that set-up fetches for the tests; a missing one is a failure that tells how
/// to get it.
inline std::filesystem::path publishedModel(const std::string& name) {
  const auto path = std::filesystem::path(places::models) / name;
  if (!std::filesystem::exists(path))
    throw std::runtime_error("The speech model " + path.string() +
                             " is missing. Install it: scripts/install-model FOLDER");
  return path;
}

inline std::filesystem::path currentModel() {
  return publishedModel("silero_vad_v6.onnx");
}
inline std::filesystem::path olderModel() {
  return publishedModel("silero_vad_v5.onnx");
}

/// Four seconds at 16 kHz: silence, noise, then two amplitude-modulated tones.
inline std::vector<float> syntheticProgramme() {
  std::vector<float> samples(64000);
  std::uint32_t state = 1;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    state = state * 1664525U + 1013904223U;
    const float noise = static_cast<float>((state >> 8U) & 0xFFFFU) / 65536.0F - 0.5F;
    const double t = static_cast<double>(i) / 16000;
    const double level = 0.5 + 0.5 * std::sin(2 * std::numbers::pi * 4 * t);
    if (i >= 32000) {
      samples[i] = static_cast<float>(0.3 * level * std::sin(2 * std::numbers::pi * 150 * t) +
                                      0.15 * level * std::sin(2 * std::numbers::pi * 700 * t));
    } else if (i >= 16000) {
      samples[i] = 0.1F * noise;
    }
  }
  return samples;
}

/// Seeded white noise whose level changes every tenth of a second.
inline std::vector<float> burstyNoise(std::size_t count, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<float> samples(count);
  float level = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 1600 == 0) level = std::pow(10.0F, -4.0F * static_cast<float>(random() % 1000) / 1000);
    samples[i] = level * (static_cast<float>(random()) / 2147483648.0F - 1);
  }
  return samples;
}

/// Weights of the right shapes and a plausible size that no training made; the basis is no Fourier
/// transform.
inline SileroWeights randomWeights(std::uint32_t seed) {
  std::mt19937 random(seed);
  SileroWeights weights;
  for (std::size_t i = 0; i < kSileroTensorCount; ++i) {
    const auto& shape = sileroTensorShapes()[i];
    const std::size_t inputs = shape.elementCount() / shape.dimensions[0];
    const double scale = 2 / std::sqrt(static_cast<double>(inputs));
    weights.tensors[i].resize(shape.elementCount());
    for (float& value : weights.tensors[i])
      value = static_cast<float>(scale * (static_cast<double>(random()) / 2147483648.0 - 1));
  }
  return weights;
}

}  // namespace orvane::test
