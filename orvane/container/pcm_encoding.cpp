#include "orvane/container/pcm_encoding.h"

namespace orvane {

constinit const PCMEncoding PCMEncoding::float32{.bitDepth = 32, .isFloat = true};

std::optional<PCMEncoding> PCMEncoding::fromFileFormat(const AudioFormatSettings& format) {
  if (format.formatID != kFormatLinearPCM) return {};
  if (format.linearPCMBitDepth.value_or(0) < 1) return {};
  return PCMEncoding{.bitDepth = *format.linearPCMBitDepth,
                     .isFloat = format.linearPCMIsFloat.value_or(false)};
}

std::string PCMEncoding::label() const {
  return std::to_string(bitDepth) + "-bit " + (isFloat ? "float" : "integer");
}

}  // namespace orvane
