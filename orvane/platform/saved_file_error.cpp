#include "orvane/platform/saved_file_error.h"

namespace orvane {

SavedFileError::SavedFileError(const std::filesystem::path& file, const std::string& drawback,
                               std::error_code code)
    : PlatformError(file,
                    "Saved, but " + drawback + (code ? " (" + code.message() + ")" : std::string()),
                    code) {}

SavedFileError::~SavedFileError() = default;

}  // namespace orvane
