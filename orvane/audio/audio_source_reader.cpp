#include "orvane/audio/audio_source_reader.h"

#include <string_view>

#include "orvane/audio/audio_file_full_read.h"
#include "orvane/audio/audio_file_identity.h"
#include "orvane/audio/audio_load_limits.h"
#include "orvane/audio/extension_text.h"
#include "orvane/core/channel_order.h"
#include "orvane/core/pcm_buffer_allocation.h"
#include "orvane/rawpcm/raw_pcm_reader.h"

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

Loaded loadRaw(const std::filesystem::path& url, const RawPCMFormat& format,
               const LoadOptions& options) {
  return {.buffer = RawPCMReader::read(
              url, format, {}, {.threadCount = options.threadCount, .observer = options.observer}),
          .bitDepth = bitDepth(format.encoding),
          .fileFormatLabel = format.fileFormatLabel(),
          .rawFormat = format};
}

/// A container without a code cannot be told, so the extension must do.
std::string formatLabel(const AudioFileDescription& description, const std::filesystem::path& url) {
  if (description.fileTypeID == 0) return uppercased(pathExtension(url));
  return AudioFileIdentity::fromDescription(description, url).formatLabel();
}

Loaded loadAudioFile(const std::filesystem::path& url, const LoadOptions& options) {
  const auto file = AudioFile::open(url, {.streamIndex = options.streamIndex,
                                          .threadCount = options.threadCount,
                                          .observer = options.observer});
  const AudioFormat format = file->processingFormat();
  const std::int64_t length = file->frameLength();
  if (format.channelCount == 0 || length < 1) throw Failure(Failure::Case::empty, url);
  if (!AudioLoadLimits::isWithinLimits(length, format.channelCount))
    throw Failure(Failure::Case::tooLarge, url);
  auto buffer = core::PCMBufferAllocation::make(format, static_cast<std::uint32_t>(length));
  if (!buffer) throw Failure(Failure::Case::allocation, url);
  AudioFileFullRead::read(*file, *buffer);

  const AudioFileDescription& description = file->description();
  if (options.warnings != nullptr)
    options.warnings->insert(options.warnings->end(), description.warnings.begin(),
                             description.warnings.end());
  return {.buffer = core::ChannelOrder::canonicalize(std::move(buffer)),
          .bitDepth = description.dataFormat.bitsPerChannel,
          .fileFormatLabel = formatLabel(description, url),
          .rawFormat = {}};
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
  return rawFormat ? loadRaw(url, *rawFormat, options) : loadAudioFile(url, options);
}

}  // namespace orvane::AudioSourceReader
