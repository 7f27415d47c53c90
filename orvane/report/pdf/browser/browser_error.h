#pragma once

#include <string>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// The browser that lays out and prints pages did not do its work. What the operating system says
/// about its program or its folder is a `PlatformError` instead.
class ORVANE_API BrowserError : public Error {
 public:
  enum class Case {
    notFound,      ///< no browser is installed
    ended,         ///< its process ended or its page crashed; the text says what it said last
    timedOut,      ///< the caller's deadline has passed
    refused,       ///< it answered a command with an error, which the text quotes
    invalidReply,  ///< what it sent is no answer, or is too long
    pageTooLarge,  ///< the page is longer than what it accepts
    invalidPDF,    ///< what it printed is not the one page that was asked for
  };

  BrowserError(Case kind, const std::string& description);
  ~BrowserError() override;

  Case kind() const noexcept { return kind_; }

  bool operator==(const BrowserError& other) const noexcept;

 private:
  Case kind_;
};

}  // namespace orvane
