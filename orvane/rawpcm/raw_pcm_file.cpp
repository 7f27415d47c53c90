#include "orvane/rawpcm/raw_pcm_file.h"

#include <algorithm>

#include "orvane/platform/error.h"
#include "orvane/rawpcm/raw_pcm_filling.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"

namespace orvane {
namespace {

InputFile openFile(const std::filesystem::path& url) {
  try {
    return InputFile(url);
  } catch (const PlatformError& error) {
    throw RawPCMImportError(RawPCMImportError::UnreadableFile{error.errorDescription()});
  }
}

}  // namespace

RawPCMFile::RawPCMFile(const std::filesystem::path& url, const RawPCMFormat& format,
                       const Execution& execution)
    : file_(openFile(url)),
      format_(format),
      frameLength_(requiredRawPCMFrames(format, static_cast<std::int64_t>(file_.size()))),
      threadCount_(execution.threadCount),
      progress_(execution.observer, "Reading", rawPCMWork(format, frameLength_)) {}

void RawPCMFile::read(PCMBuffer& buffer) {
  const auto count = std::min<std::int64_t>(buffer.frameCapacity(), frameLength_ - position_);
  try {
    const RawPCMPayloadInFile payload(file_, format_.headerSkipBytes);
    fillRawPCM(buffer, payload, format_, {position_, count, frameLength_}, threadCount_, progress_);
  } catch (const PlatformError& error) {
    throw RawPCMImportError(RawPCMImportError::UnreadableFile{error.errorDescription()});
  }
  buffer.setFrameLength(static_cast<std::uint32_t>(count));
  position_ += count;
}

}  // namespace orvane
