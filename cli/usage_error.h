#pragma once

#include <stdexcept>

namespace orvane::cli {

/// Arguments that make no sense; the text is one sentence for the user.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace orvane::cli
