#pragma once

#include <cstdint>
#include <string>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Why a file could not be saved in place. The texts are for the user as they stand.
class ORVANE_API InPlaceSaveError : public Error {
 public:
  enum class Case {
    unsupportedContainer,
    notAPCMContainer,
    notLinearPCM,
    formatMismatch,
    channelOrderUnknown,
    notWritable,
    unreadable,
    writeFailed
  };

  static InPlaceSaveError unsupportedContainer(const std::string& extension);
  static InPlaceSaveError notAPCMContainer(const std::string& name);
  static InPlaceSaveError notLinearPCM(const std::string& name);
  static InPlaceSaveError formatMismatch(double fileRate, std::int64_t fileChannels,
                                         double editedRate, std::int64_t editedChannels);
  static InPlaceSaveError channelOrderUnknown(const std::string& description);
  static InPlaceSaveError notWritable(const std::string& path);
  static InPlaceSaveError unreadable(const std::string& message);
  static InPlaceSaveError writeFailed(const std::string& message);
  ~InPlaceSaveError() override;

  Case errorCase() const noexcept { return case_; }
  /// The extension, name, description, path or message of the case; empty for `formatMismatch`.
  const std::string& payload() const noexcept { return payload_; }

  /// Equal texts come of equal payloads.
  bool operator==(const InPlaceSaveError& other) const {
    return case_ == other.case_ && errorDescription() == other.errorDescription();
  }

 private:
  InPlaceSaveError(Case errorCase, std::string payload, std::string description);

  Case case_;
  std::string payload_;
};

}  // namespace orvane
