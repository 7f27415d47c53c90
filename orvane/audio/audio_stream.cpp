#include "orvane/audio/audio_stream.h"

#include <algorithm>
#include <utility>

#include "orvane/audio/audio_file_full_read.h"
#include "orvane/audio/audio_file_identity.h"
#include "orvane/core/channel_order.h"
#include "orvane/core/pcm_buffer_allocation.h"
#include "orvane/platform/audio_load_limits.h"
#include "orvane/rawpcm/raw_pcm_file.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"
#include "orvane/rawpcm/raw_pcm_reader.h"

namespace orvane {
namespace {

using AudioSourceReader::Failure;
using AudioSourceReader::LoadOptions;

/// A container without a code cannot be told, so the extension must do.
std::string formatLabel(const AudioFileDescription& description, const std::filesystem::path& url) {
  std::optional<AudioFileIdentity> identity;
  if (description.fileTypeID != 0) identity = AudioFileIdentity::fromDescription(description, url);
  return AudioFileIdentity::formatLabelOf(identity, url);
}

/// How stored channels come to stand in canonical order.
struct Reordering {
  std::vector<std::uint32_t>
      canonicalPlaces{};                        ///< of each stored channel; empty: all are in place
  std::vector<std::uint32_t> storedChannels{};  ///< of each canonical place
  std::optional<ChannelLayout> storedLayout{};
  std::optional<ChannelLayout> canonicalLayout{};

  static Reordering of(const AudioFormat& stored) {
    Reordering result{.storedLayout = stored.layout, .canonicalLayout = stored.layout};
    if (!stored.layout) return result;
    const auto labels = core::ChannelOrder::channelLabels(*stored.layout);
    auto places = core::ChannelOrder::permutationToCanonical(labels, stored.channelCount);
    if (!places || std::ranges::is_sorted(*places)) return result;
    result.storedChannels.resize(places->size());
    std::vector<ChannelLabel> ordered(places->size());
    for (std::uint32_t channel = 0; channel < places->size(); ++channel) {
      result.storedChannels[(*places)[channel]] = channel;
      ordered[(*places)[channel]] = labels[channel];
    }
    result.canonicalPlaces = std::move(*places);
    result.canonicalLayout = ChannelLayout::fromLabels(std::move(ordered));
    return result;
  }
};

class AudioFileStream final : public AudioStream {
 public:
  AudioFileStream(std::unique_ptr<AudioFile> file, Facts facts, Reordering reordering)
      : AudioStream(std::move(facts)), file_(std::move(file)), reordering_(std::move(reordering)) {}

  void read(PCMBuffer& buffer) override {
    const bool isReordered = !reordering_.canonicalPlaces.empty();
    // The decoder writes channels as they are stored.
    if (isReordered) buffer.permuteChannels(reordering_.canonicalPlaces, reordering_.storedLayout);
    AudioFileFullRead::read(*file_, buffer);
    if (isReordered)
      buffer.permuteChannels(reordering_.storedChannels, reordering_.canonicalLayout);
  }

  std::vector<AudioFileWarning> warnings() const override { return file_->description().warnings; }

 private:
  std::unique_ptr<AudioFile> file_;
  Reordering reordering_;
};

class RawPCMStream final : public AudioStream {
 public:
  RawPCMStream(std::unique_ptr<RawPCMFile> file, Facts facts)
      : AudioStream(std::move(facts)), file_(std::move(file)) {}

  void read(PCMBuffer& buffer) override { file_->read(buffer); }
  std::vector<AudioFileWarning> warnings() const override { return {}; }

 private:
  std::unique_ptr<RawPCMFile> file_;
};

}  // namespace

AudioStream::AudioStream(Facts facts) : facts_(std::move(facts)) {}
AudioStream::~AudioStream() = default;

std::shared_ptr<PCMBuffer> AudioStream::makeBuffer(std::uint32_t frames) const {
  auto buffer = core::PCMBufferAllocation::make(facts_.format, frames);
  if (buffer) return buffer;
  if (facts_.rawFormat) throw RawPCMImportError(RawPCMImportError::BufferAllocationFailed{});
  throw Failure(Failure::Case::allocation, facts_.url);
}

std::unique_ptr<AudioStream> AudioStream::open(const std::filesystem::path& url,
                                               const std::optional<RawPCMFormat>& rawFormat,
                                               const LoadOptions& options) {
  return rawFormat ? openRaw(url, *rawFormat, options) : openAudioFile(url, options);
}

std::unique_ptr<AudioStream> AudioStream::openRaw(const std::filesystem::path& url,
                                                  const RawPCMFormat& rawFormat,
                                                  const LoadOptions& options) {
  auto file = std::make_unique<RawPCMFile>(
      url, rawFormat,
      RawPCMReader::Execution{.threadCount = options.threadCount, .observer = options.observer});
  if (!AudioLoadLimits::isWithinLimits(file->frameLength(), rawFormat.channelCount))
    throw RawPCMImportError(RawPCMImportError::TooLarge{});
  const auto format = RawPCMReader::processingFormat(rawFormat.sampleRate, rawFormat.channelCount);
  if (!format) throw RawPCMImportError(RawPCMImportError::BufferAllocationFailed{});
  Facts facts{.url = url,
              .format = *format,
              .frameLength = file->frameLength(),
              .bitDepth = orvane::bitDepth(rawFormat.encoding),
              .fileFormatLabel = rawFormat.fileFormatLabel(),
              .rawFormat = rawFormat};
  return std::make_unique<RawPCMStream>(std::move(file), std::move(facts));
}

std::unique_ptr<AudioStream> AudioStream::openAudioFile(const std::filesystem::path& url,
                                                        const LoadOptions& options) {
  auto file = AudioFile::open(url, {.streamIndex = options.streamIndex,
                                    .threadCount = options.threadCount,
                                    .observer = options.observer});
  AudioFormat format = file->processingFormat();
  const std::int64_t length = file->frameLength();
  if (format.channelCount == 0 || length < 1) throw Failure(Failure::Case::empty, url);
  if (!AudioLoadLimits::isWithinLimits(length, format.channelCount))
    throw Failure(Failure::Case::tooLarge, url);
  auto reordering = Reordering::of(format);
  format.layout = reordering.canonicalLayout;
  const AudioFileDescription& description = file->description();
  Facts facts{.url = url,
              .format = std::move(format),
              .frameLength = length,
              .bitDepth = description.dataFormat.bitsPerChannel,
              .fileFormatLabel = formatLabel(description, url)};
  return std::make_unique<AudioFileStream>(std::move(file), std::move(facts),
                                           std::move(reordering));
}

}  // namespace orvane
