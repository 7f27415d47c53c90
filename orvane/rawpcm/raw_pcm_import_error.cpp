#include "orvane/rawpcm/raw_pcm_import_error.h"

#include <utility>

namespace orvane {
namespace {

struct Describe {
  std::string operator()(const RawPCMImportError::UnreadableFile& failure) const {
    return "The file could not be read: " + failure.message;
  }
  std::string operator()(const RawPCMImportError::NonDivisibleSize& failure) const {
    return "The file size doesn't fit the declared format: " +
           std::to_string(failure.leftoverBytes) +
           " byte(s) remain beyond the last whole frame of " +
           std::to_string(failure.bytesPerFrame) +
           " bytes. Check the channel count, sample format, and header skip.";
  }
  std::string operator()(const RawPCMImportError::InvalidFormat&) const {
    return "The declared raw format is invalid.";
  }
  std::string operator()(const RawPCMImportError::EmptyPayload&) const {
    return "The file has no audio payload after the declared header skip.";
  }
  std::string operator()(const RawPCMImportError::TooLarge&) const {
    return "The declared format describes more audio than can be loaded into memory.";
  }
  std::string operator()(const RawPCMImportError::BufferAllocationFailed&) const {
    return "Failed to allocate the audio buffer.";
  }
};

}  // namespace

RawPCMImportError::RawPCMImportError(Case failureCase)
    : Error(std::visit(Describe{}, failureCase)), case_(std::move(failureCase)) {}

RawPCMImportError::~RawPCMImportError() = default;

}  // namespace orvane
