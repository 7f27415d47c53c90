#pragma once

#include <string>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// A record holds a value that has no place in its file: "<key path> <reason>".
class ORVANE_API EncodingError : public Error {
 public:
  /// `reason` completes the sentence that begins with the place.
  EncodingError(std::string keyPath, const std::string& reason);
  ~EncodingError() override;

  /// Where in the record: "regions[3].start".
  const std::string& keyPath() const noexcept { return keyPath_; }

 private:
  std::string keyPath_;
};

}  // namespace orvane
