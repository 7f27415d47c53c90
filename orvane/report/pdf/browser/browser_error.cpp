#include "orvane/report/pdf/browser/browser_error.h"

namespace orvane {

BrowserError::BrowserError(Case kind, const std::string& description)
    : Error(description), kind_(kind) {}

BrowserError::~BrowserError() = default;

bool BrowserError::operator==(const BrowserError& other) const noexcept {
  return kind_ == other.kind_ && errorDescription() == other.errorDescription();
}

}  // namespace orvane
