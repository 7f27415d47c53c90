#include "orvane/audio/audio_source_reader.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "orvane/audio/audio_source.h"

namespace orvane::AudioSourceReader {
namespace {

std::string_view textOf(Failure::Case failureCase) {
  switch (failureCase) {
    case Failure::Case::empty:
      return "Empty or unreadable file: ";
    case Failure::Case::tooLarge:
      return "Audio file is too large or its header is invalid: ";
    case Failure::Case::allocation:
      return "Could not allocate buffer for ";
  }
  return {};
}

}  // namespace

Failure::Failure(Case failureCase, const std::filesystem::path& url)
    : Error(std::string(textOf(failureCase)) + url.filename().string()),
      case_(failureCase),
      url_(url) {}

Failure::~Failure() = default;

Loaded load(const std::filesystem::path& url, const std::optional<RawPCMFormat>& rawFormat) {
  return load(url, rawFormat, {});
}

Loaded load(const std::filesystem::path& url, const std::optional<RawPCMFormat>& rawFormat,
            const LoadOptions& options) {
  const auto source = AudioSource::open(
      url, rawFormat, {.streamIndex = options.streamIndex, .execution = options.execution});
  auto buffer = source->load();
  if (options.warnings != nullptr)
    std::ranges::move(source->warnings(), std::back_inserter(*options.warnings));
  return {.buffer = std::move(buffer),
          .bitDepth = source->bitDepth(),
          .fileFormatLabel = source->fileFormatLabel(),
          .rawFormat = source->rawFormat()};
}

}  // namespace orvane::AudioSourceReader
