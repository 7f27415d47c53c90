#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include "orvane/platform/error.h"

namespace orvane {

/// The new content has the file's name, but not all went well: it is perhaps not safe against a
/// power failure, or something was left beside it. The text begins with "Saved, but".
class ORVANE_API SavedFileError : public PlatformError {
 public:
  SavedFileError(const std::filesystem::path& file, const std::string& drawback,
                 std::error_code code = {});
  ~SavedFileError() override;
};

}  // namespace orvane
