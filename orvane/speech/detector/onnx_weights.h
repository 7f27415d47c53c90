#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/speech/detector/speech_model_error.h"

namespace orvane {

/// The tensors of the Silero voice-activity network for 16 kHz, versions 5 and 6. Shapes are
/// row-major, as stored; LSTM rows come in the order input, forget, candidate, output gate.
enum class SileroTensor : std::size_t {
  stftBasis,        ///< 258 × 1 × 256: 129 real rows, then 129 imaginary ones
  encoder0Weight,   ///< 128 × 129 × 3 (output, input, tap)
  encoder0Bias,     ///< 128
  encoder1Weight,   ///< 64 × 128 × 3
  encoder1Bias,     ///< 64
  encoder2Weight,   ///< 64 × 64 × 3
  encoder2Bias,     ///< 64
  encoder3Weight,   ///< 128 × 64 × 3
  encoder3Bias,     ///< 128
  inputWeight,      ///< 512 × 128
  recurrentWeight,  ///< 512 × 128
  inputBias,        ///< 512
  recurrentBias,    ///< 512
  headWeight,       ///< 1 × 128 × 1
  headBias,         ///< 1
};

inline constexpr std::size_t kSileroTensorCount = 15;

/// A larger file is no such model.
inline constexpr std::uint64_t kMaximumModelBytes = 64U << 20U;

/// All weights of one model, each tensor with exactly the size of its shape and finite values.
struct SileroWeights {
  std::array<std::vector<float>, kSileroTensorCount> tensors{};

  std::vector<float>& operator[](SileroTensor tensor) {
    return tensors[static_cast<std::size_t>(tensor)];
  }
  const std::vector<float>& operator[](SileroTensor tensor) const {
    return tensors[static_cast<std::size_t>(tensor)];
  }

  bool operator==(const SileroWeights&) const = default;
};

/// Name of a tensor in the published files, without their prefixes, and its shape.
struct SileroTensorShape {
  const char* name = "";
  std::array<std::size_t, 3> dimensions{};
  std::size_t rank = 0;

  std::size_t elementCount() const noexcept {
    std::size_t count = 1;
    for (std::size_t i = 0; i < rank; ++i) count *= dimensions[i];
    return count;
  }
};

/// In the order of `SileroTensor`.
ORVANE_TESTING_API const std::array<SileroTensorShape, kSileroTensorCount>&
sileroTensorShapes() noexcept;

/// Finds the weights in the bytes of an ONNX file, in any of the published layouts: constants
/// inside the 16 kHz branch ("then_branch"), constants of the main graph whose names carry that
/// branch's prefix, or initializers named "model.…". Other operators are not looked at. `file` only
/// names the source in errors. Takes no memory beyond what the tensors found take.
/// Throws `SpeechModelError`.
ORVANE_TESTING_API SileroWeights parseSileroWeights(std::span<const std::byte> bytes,
                                                    const std::filesystem::path& file);

/// The same from a file of at most 64 MiB. Throws `SpeechModelError` and `PlatformError`.
ORVANE_TESTING_API SileroWeights loadSileroWeights(const std::filesystem::path& file);

}  // namespace orvane
