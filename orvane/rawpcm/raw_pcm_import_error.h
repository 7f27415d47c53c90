#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Why a declared raw format and a file do not go together.
class ORVANE_API RawPCMImportError : public Error {
 public:
  struct UnreadableFile {
    std::string message{};  ///< the platform's text
    bool operator==(const UnreadableFile&) const = default;
  };
  struct NonDivisibleSize {
    std::int64_t leftoverBytes = 0;  ///< behind the last whole frame
    std::int64_t bytesPerFrame = 0;
    bool operator==(const NonDivisibleSize&) const = default;
  };
  struct InvalidFormat {
    bool operator==(const InvalidFormat&) const = default;
  };
  struct EmptyPayload {
    bool operator==(const EmptyPayload&) const = default;
  };
  struct TooLarge {
    bool operator==(const TooLarge&) const = default;
  };
  struct BufferAllocationFailed {
    bool operator==(const BufferAllocationFailed&) const = default;
  };
  using Case = std::variant<UnreadableFile, NonDivisibleSize, InvalidFormat, EmptyPayload, TooLarge,
                            BufferAllocationFailed>;

  explicit RawPCMImportError(Case failureCase);
  ~RawPCMImportError() override;

  const Case& failureCase() const noexcept { return case_; }

  bool operator==(const RawPCMImportError& other) const { return case_ == other.case_; }

 private:
  Case case_;
};

}  // namespace orvane
