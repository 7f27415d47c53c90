#include "orvane/container/audio_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <string>
#include <utility>

#include "orvane/container/audio_streams.h"
#include "orvane/container/compressed_audio_file.h"
#include "orvane/container/container_table.h"
#include "orvane/container/pcm_audio_file.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

// Beyond them a header is broken, not unusual.
constexpr double kMinimumSampleRate = 100;
constexpr double kMaximumSampleRate = 10'000'000;

/// The parser of a container that needs no decoder; null for every other container.
auto parserOf(FourCC fileTypeID) {
  const ContainerKind* const kind = containerKind(fileTypeID);
  return kind != nullptr ? kind->parse : nullptr;
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

/// Containers that hold one stream by their nature, the common ones; others are asked.
bool holdsOneStream(FourCC container) {
  constexpr std::array kOfOneStream = {fourCCFrom("MPG1"), fourCCFrom("MPG2"), fourCCFrom("MPG3"),
                                       fourCCFrom("adts"), fourCCFrom("loas"), fourCCFrom("flac"),
                                       fourCCFrom("ac-3"), fourCCFrom("ec-3"), fourCCFrom("amrf"),
                                       fourCCFrom("WV  "), fourCCFrom("TTA "), fourCCFrom("APE ")};
  // So do those that our own parsers read.
  return parserOf(container) != nullptr ||
         std::ranges::find(kOfOneStream, container) != kOfOneStream.end();
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

AudioFileDescription describeContainer(const std::shared_ptr<const InputFile>& file,
                                       const AudioFileOpenOptions& options,
                                       const SniffedContainer& container) {
  const auto parse = parserOf(container.fileTypeID);
  if (parse == nullptr) return describeCompressedAudioFile(file, options, container.fileTypeID);
  PCMStream stream = parse(*file, container.start);
  const bool isKnown = stream.description.dataFormat.formatID == kFormatLinearPCM;
  if (isKnown || !stream.refusal.empty()) return stream.description;
  // The decoder knows more (the source's depth); the header must do where it does not know.
  try {
    return describeCompressedAudioFile(file, options, container.fileTypeID);
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception&) {
    return stream.description;
  }
}

}  // namespace

AudioFile::AudioFile(std::shared_ptr<const InputFile> file) : file_(std::move(file)) {}
AudioFile::~AudioFile() = default;

std::vector<ChapterMark> AudioFile::chapters() const {
  auto marks = unsortedChapters();
  std::ranges::stable_sort(marks, {}, &ChapterMark::startSeconds);
  return marks;
}

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
  return open(std::make_shared<const InputFile>(path), options);
}

std::unique_ptr<AudioFile> AudioFile::open(std::shared_ptr<const InputFile> file,
                                           const AudioFileOpenOptions& options) {
  const std::filesystem::path& path = file->path();
  const SniffedContainer container = identify(*file);
  if (const auto parse = parserOf(container.fileTypeID)) {
    PCMStream stream = parse(*file, container.start);
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
  auto opened = openCompressedAudioFile(std::move(file), options, container.fileTypeID);
  refuseImpossibleFormat(opened->file().path(), opened->description().dataFormat);
  return opened;
}

AudioFileDescription AudioFile::describe(const std::filesystem::path& path,
                                         ProgressObserver* observer) {
  const auto file = std::make_shared<const InputFile>(path);
  AudioFileDescription description =
      describeContainer(file, {.execution = {.observer = observer}}, identify(*file));
  refuseTooManyChannels(path, description.dataFormat);
  return description;
}

AudioStreamCount countAudioStreams(const std::filesystem::path& path, ProgressObserver* observer) {
  const auto file = std::make_shared<const InputFile>(path);
  const SniffedContainer container = identify(*file);
  if (holdsOneStream(container.fileTypeID)) return {};
  return countCompressedStreams(file, {.execution = {.observer = observer}}, container.fileTypeID);
}

std::vector<AudioFileDescription> describeAudioStreams(const std::filesystem::path& path,
                                                       ProgressObserver* observer) {
  const AudioStreamCount streams = countAudioStreams(path, observer);
  if (streams.count == 1) return {AudioFile::describe(path, observer)};
  const auto file = std::make_shared<const InputFile>(path);
  const SniffedContainer container = identify(*file);
  std::vector<AudioFileDescription> descriptions;
  for (int i = 0; i < streams.count; ++i) {
    descriptions.push_back(describeContainer(
        file, {.streamIndex = i, .execution = {.observer = observer}}, container));
    refuseTooManyChannels(path, descriptions.back().dataFormat);
  }
  return descriptions;
}

std::optional<AudioFileDescription> describeAudioFile(const std::filesystem::path& path) {
  try {
    return AudioFile::describe(path);
  } catch (const std::exception&) {  // also when a forged size goes beyond the memory
    return {};
  }
}

}  // namespace orvane
