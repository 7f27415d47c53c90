#pragma once

#include <filesystem>
#include <string>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Thrown by `EditOutputGuard`.
class ORVANE_API EditOutputGuardError : public Error {
 public:
  enum class Case {
    sameAsSource,  ///< the output would be written onto the file it is made from
  };

  EditOutputGuardError(Case errorCase, std::string inputPath, std::string outputPath);
  ~EditOutputGuardError() override;

  Case errorCase() const noexcept { return case_; }
  // The paths as they resolve, not as they were given.
  const std::string& inputPath() const noexcept { return inputPath_; }
  const std::string& outputPath() const noexcept { return outputPath_; }

  bool operator==(const EditOutputGuardError& other) const;

 private:
  Case case_;
  std::string inputPath_;
  std::string outputPath_;
};

/// Keeps what is written as a new file from landing on the file that it is made from.
namespace EditOutputGuard {

/// Throws `EditOutputGuardError` when both paths lead to the same place: made absolute, without "."
/// and "..", and with symbolic links resolved as far as they lead to something. Then the paths are
/// compared byte by byte, so names that differ in case pass, and so does a hard link to the input.
/// Neither file needs to exist; nothing on disk is touched.
ORVANE_API void assertNotInPlace(const std::filesystem::path& input,
                                 const std::filesystem::path& output);

}  // namespace EditOutputGuard
}  // namespace orvane
