#pragma once

#include <cstddef>
#include <string>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// A list in a text file that cannot be read: "Line 3: …".
class ORVANE_API TextListError : public Error {
 public:
  TextListError(std::size_t line, const std::string& problem);
  ~TextListError() override;

  /// Counted from 1; of a record over several lines, the first.
  std::size_t line() const noexcept { return line_; }

 private:
  std::size_t line_;
};

}  // namespace orvane
