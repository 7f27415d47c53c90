#pragma once

#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include "orvane/platform/export.h"

namespace orvane {

/// Base of every failure that the libraries throw. `errorDescription()` is one English sentence
/// fit to be shown to a user as it stands; `what()` gives the same text.
class ORVANE_API Error : public std::exception {
 public:
  ~Error() override;
  const std::string& errorDescription() const noexcept { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 protected:
  explicit Error(std::string description);

 private:
  std::string description_;
};

/// What the operating system or a codec reports: "<file name>: <system's text>".
class ORVANE_API PlatformError : public Error {
 public:
  PlatformError(const std::filesystem::path& file, const std::string& message,
                std::error_code code = {});
  /// The system's text for `code`.
  PlatformError(const std::filesystem::path& file, std::error_code code);
  ~PlatformError() override;

  /// The text behind the file name.
  const std::string& message() const noexcept { return message_; }
  /// Empty when the failure has no system error number.
  const std::error_code& code() const noexcept { return code_; }

 private:
  std::string message_;
  std::error_code code_;
};

/// Thrown by a long operation whose observer asked it to stop.
class ORVANE_API Cancelled : public Error {
 public:
  Cancelled();
  ~Cancelled() override;
};

}  // namespace orvane
