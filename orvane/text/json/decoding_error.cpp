#include "orvane/text/json/decoding_error.h"

#include <utility>

namespace orvane {

DecodingError::DecodingError(Case kind, std::string keyPath, const std::string& description)
    : Error(description), kind_(kind), keyPath_(std::move(keyPath)) {}
DecodingError::~DecodingError() = default;

bool DecodingError::operator==(const DecodingError& other) const noexcept {
  return kind_ == other.kind_ && keyPath_ == other.keyPath_ &&
         errorDescription() == other.errorDescription();
}

}  // namespace orvane
