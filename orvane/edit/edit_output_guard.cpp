#include "orvane/edit/edit_output_guard.h"

#include <system_error>
#include <utility>

namespace orvane {
namespace {

std::string description(const std::string& inputPath, const std::string& outputPath) {
  return "Refusing to overwrite source file: input \"" + inputPath +
         "\" resolves to the same path as output \"" + outputPath + "\".";
}

/// What the system refuses to make absolute, such as an empty path, stays as it is.
std::filesystem::path madeAbsolute(const std::filesystem::path& path) {
  std::error_code failure;
  auto result = std::filesystem::absolute(path, failure);
  return failure ? path : result;
}

std::filesystem::path withoutLinks(const std::filesystem::path& path) {
  std::error_code failure;
  auto resolved = std::filesystem::weakly_canonical(path, failure);
  return failure ? path.lexically_normal() : resolved;
}

void assertDifferent(const std::filesystem::path& input, const std::filesystem::path& output) {
  const auto inputPath = withoutLinks(input).string();
  const auto outputPath = withoutLinks(output).string();
  if (inputPath == outputPath)
    throw EditOutputGuardError(EditOutputGuardError::Case::sameAsSource, inputPath, outputPath);
}

}  // namespace

EditOutputGuardError::EditOutputGuardError(Case errorCase, std::string inputPath,
                                           std::string outputPath)
    : Error(description(inputPath, outputPath)),
      case_(errorCase),
      inputPath_(std::move(inputPath)),
      outputPath_(std::move(outputPath)) {}
EditOutputGuardError::~EditOutputGuardError() = default;

bool EditOutputGuardError::operator==(const EditOutputGuardError& other) const {
  return case_ == other.case_ && inputPath_ == other.inputPath_ && outputPath_ == other.outputPath_;
}

void EditOutputGuard::assertNotInPlace(const std::filesystem::path& input,
                                       const std::filesystem::path& output) {
  const auto absoluteInput = madeAbsolute(input);
  const auto absoluteOutput = madeAbsolute(output);
  assertDifferent(absoluteInput.lexically_normal(), absoluteOutput.lexically_normal());
  // Behind a link to a folder, ".." is for the system the parent of where the link leads; that is
  // the file it would open.
  assertDifferent(absoluteInput, absoluteOutput);
}

}  // namespace orvane
