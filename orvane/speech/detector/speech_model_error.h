#pragma once

#include <filesystem>
#include <string>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// A model file that is missing, damaged or does not hold the supported network:
/// "<file name>: <reason>".
class ORVANE_API SpeechModelError : public Error {
 public:
  SpeechModelError(const std::filesystem::path& file, const std::string& reason);
  ~SpeechModelError() override;
};

}  // namespace orvane
