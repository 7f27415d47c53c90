#include "orvane/container/audio_file.h"

#include <cmath>
#include <exception>
#include <string>

#include "orvane/container/chunked/aiff_parser.h"
#include "orvane/container/chunked/au_parser.h"
#include "orvane/container/chunked/caf_parser.h"
#include "orvane/container/chunked/matlab_parser.h"
#include "orvane/container/chunked/old_format_parser.h"
#include "orvane/container/chunked/riff_parser.h"
#include "orvane/container/chunked/wave64_parser.h"
#include "orvane/container/compressed_audio_file.h"
#include "orvane/container/pcm_audio_file.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr double kMinimumSampleRate = 100;
constexpr double kMaximumSampleRate = 10'000'000;

using Parser = PCMStream (*)(const InputFile&, std::uint64_t start);

/// The parser of a container that needs no decoder; null for every other container.
Parser parserOf(FourCC fileTypeID) {
  switch (fileTypeID) {
    case fourCCFrom("WAVE"):
    case fourCCFrom("RF64"):
    case fourCCFrom("BW64"):
      return parseRIFF;
    case fourCCFrom("W64f"):
      return parseWave64;
    case fourCCFrom("AIFF"):
    case fourCCFrom("AIFC"):
      return parseAIFF;
    case fourCCFrom("caff"):
      return parseCAF;
    case fourCCFrom("NeXT"):
      return parseAU;
    case fourCCFrom("MAT4"):
      return parseMATLAB4;
    case fourCCFrom("MAT5"):
      return parseMATLAB5;
    default:
      return oldFormatParser(fileTypeID);
  }
}

/// Identifies the container; what is certainly no audio is refused.
SniffedContainer identify(const InputFile& file) {
  if (file.size() == 0) throw PlatformError(file.path(), "The file is empty");
  const SniffedContainer container = sniffContainer(file);
  if (container.kind == SniffedContainer::Kind::playlist)
    throw PlatformError(file.path(), "The file is a playlist, not audio");
  if (container.kind == SniffedContainer::Kind::text)
    throw PlatformError(file.path(), "The file holds text, not audio");
  return container;
}

/// "48000", "0.5", "not a number".
std::string hertz(double rate) {
  if (!std::isfinite(rate)) return "without a finite value";
  std::string text = std::to_string(rate);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return "of " + text + " Hz";
}

/// Before anything is made for each of the channels, whose number a file can state as it likes.
void refuseTooManyChannels(const std::filesystem::path& path, const StreamDescription& format) {
  if (format.channelsPerFrame > kMaximumChannels)
    throw PlatformError(path, "The file states " + std::to_string(format.channelsPerFrame) +
                                  " channels; at most " + std::to_string(kMaximumChannels) +
                                  " can be read");
}

void refuseImpossibleFormat(const std::filesystem::path& path, const StreamDescription& format) {
  refuseTooManyChannels(path, format);
  // Written so that a rate that is not a number is refused, too.
  if (!(format.sampleRate >= kMinimumSampleRate && format.sampleRate <= kMaximumSampleRate))
    throw PlatformError(
        path, "The sample rate " + hertz(format.sampleRate) + " lies outside 100 Hz to 10 MHz");
}

AudioFileDescription describeContainer(const InputFile& file, const SniffedContainer& container) {
  const Parser parse = parserOf(container.fileTypeID);
  if (parse == nullptr) return describeCompressedAudioFile(file.path(), container.fileTypeID);
  PCMStream stream = parse(file, container.start);
  const bool isKnown = stream.description.dataFormat.formatID == kFormatLinearPCM;
  if (isKnown || !stream.refusal.empty()) return stream.description;
  // The decoder knows more (the source's depth); the header must do where it does not know.
  try {
    return describeCompressedAudioFile(file.path(), container.fileTypeID);
  } catch (const std::exception&) {
    return stream.description;
  }
}

}  // namespace

AudioFile::~AudioFile() = default;

AudioFormat AudioFile::processingFormat() const {
  const AudioFileDescription& found = description();
  return {.sampleRate = found.dataFormat.sampleRate,
          .channelCount = found.dataFormat.channelsPerFrame,
          .layout = found.layout};
}

AudioFormatSettings AudioFile::fileFormat() const {
  const StreamDescription& format = description().dataFormat;
  AudioFormatSettings settings{.formatID = format.formatID,
                               .sampleRate = format.sampleRate,
                               .channelCount = format.channelsPerFrame};
  if (format.formatID == kFormatLinearPCM) {
    settings.linearPCMBitDepth = format.bitsPerChannel;
    settings.linearPCMIsFloat = (format.formatFlags & kFormatFlagIsFloat) != 0;
    settings.linearPCMIsBigEndian = (format.formatFlags & kFormatFlagIsBigEndian) != 0;
  }
  return settings;
}

std::unique_ptr<AudioFile> AudioFile::open(const std::filesystem::path& path,
                                           const AudioFileOpenOptions& options) {
  InputFile file(path);
  const SniffedContainer container = identify(file);
  if (const Parser parse = parserOf(container.fileTypeID)) {
    PCMStream stream = parse(file, container.start);
    const StreamDescription& format = stream.description.dataFormat;
    if (!stream.refusal.empty()) throw PlatformError(path, stream.refusal);
    if (format.formatID == kFormatLinearPCM) {
      refuseImpossibleFormat(path, format);
      if (stream.sample.bytes == 0)
        throw PlatformError(path, "Samples of " + std::to_string(format.bitsPerChannel) +
                                      " bits are not supported");
      if (options.streamIndex.value_or(0) != 0)
        throw PlatformError(path, "The file has only one audio stream");
      return std::make_unique<PCMAudioFile>(std::move(file), std::move(stream), options);
    }
  }
  auto opened = openCompressedAudioFile(path, options, container.fileTypeID);
  refuseImpossibleFormat(path, opened->description().dataFormat);
  return opened;
}

AudioFileDescription AudioFile::describe(const std::filesystem::path& path) {
  const InputFile file(path);
  const SniffedContainer container = identify(file);
  AudioFileDescription description = describeContainer(file, container);
  refuseTooManyChannels(path, description.dataFormat);
  return description;
}

std::optional<AudioFileDescription> describeAudioFile(const std::filesystem::path& path) {
  try {
    return AudioFile::describe(path);
  } catch (const std::exception&) {  // also when a forged size goes beyond the memory
    return {};
  }
}

}  // namespace orvane
