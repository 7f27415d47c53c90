#include "orvane/text/json/encoding_error.h"

#include <utility>

namespace orvane {

EncodingError::EncodingError(std::string keyPath, const std::string& reason)
    : Error("\"" + keyPath + "\" " + reason), keyPath_(std::move(keyPath)) {}
EncodingError::~EncodingError() = default;

}  // namespace orvane
