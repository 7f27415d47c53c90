#include "orvane/audio/audio_source.h"

#include <algorithm>
#include <utility>

#include "orvane/audio/audio_file_full_read.h"
#include "orvane/audio/audio_source_reader.h"
#include "orvane/core/channel_order.h"
#include "orvane/core/pcm_buffer_allocation.h"
#include "orvane/platform/audio_load_limits.h"
#include "orvane/rawpcm/raw_pcm_file.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"
#include "orvane/rawpcm/raw_pcm_reader.h"

namespace orvane {
namespace {

using AudioSourceReader::Failure;

/// Longer ones are no recordings, and what grows with the time of a programme, as its curves do,
/// would fill the memory.
constexpr double kLongestSeconds = 3'600'000;

/// A container without a code cannot be told.
std::optional<AudioFileIdentity> identityOf(const AudioFileDescription& description,
                                            const std::filesystem::path& url) {
  if (description.fileTypeID == 0) return {};
  return AudioFileIdentity::fromDescription(description, url);
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

class AudioFileSource final : public AudioSource {
 public:
  AudioFileSource(std::unique_ptr<AudioFile> file, Facts facts, Reordering reordering)
      : AudioSource(std::move(facts)), file_(std::move(file)), reordering_(std::move(reordering)) {}

  static std::unique_ptr<AudioSource> open(const std::filesystem::path& url,
                                           const AudioFileOpenOptions& options) {
    auto file = AudioFile::open(url, options);
    AudioFormat format = file->processingFormat();
    if (format.channelCount == 0 || (file->knowsFrameLength() && file->frameLength() < 1))
      throw Failure(Failure::Case::empty, url);
    auto reordering = Reordering::of(format);
    format.layout = reordering.canonicalLayout;
    const AudioFileDescription& description = file->description();
    auto identity = identityOf(description, url);
    Facts facts{.url = url,
                .format = std::move(format),
                .bitDepth = description.dataFormat.bitsPerChannel,
                .sourceBitDepth = description.sourceBitDepth,
                .fileFormatLabel = AudioFileIdentity::formatLabelOf(identity, url),
                .identity = std::move(identity)};
    return std::make_unique<AudioFileSource>(std::move(file), std::move(facts),
                                             std::move(reordering));
  }

  const InputFile& file() const override { return file_->file(); }
  std::vector<ChapterMark> chapters() const override { return file_->chapters(); }
  std::vector<std::string> tagNames() const override { return file_->tagNames(); }
  bool knowsFrameLength() const noexcept override { return file_->knowsFrameLength(); }
  std::optional<std::int64_t> expectedFrameLength() const override {
    return file_->expectedFrameLength();
  }
  std::vector<AudioFileWarning> warnings() const override { return file_->description().warnings; }

 private:
  std::int64_t countFrames() override { return file_->frameLength(); }

  void readNext(PCMBuffer& buffer) override {
    const bool isReordered = !reordering_.canonicalPlaces.empty();
    // The decoder writes channels as they are stored.
    if (isReordered) buffer.permuteChannels(reordering_.canonicalPlaces, reordering_.storedLayout);
    AudioFileFullRead::read(*file_, buffer);
    if (isReordered)
      buffer.permuteChannels(reordering_.storedChannels, reordering_.canonicalLayout);
  }

  std::unique_ptr<AudioFile> file_;
  Reordering reordering_;
};

class RawPCMSource final : public AudioSource {
 public:
  RawPCMSource(std::unique_ptr<RawPCMFile> file, Facts facts)
      : AudioSource(std::move(facts)), file_(std::move(file)) {}

  static std::unique_ptr<AudioSource> open(const std::filesystem::path& url,
                                           const RawPCMFormat& rawFormat,
                                           const AudioFileOpenOptions& options) {
    auto file = std::make_unique<RawPCMFile>(url, rawFormat, options.execution);
    const auto format =
        RawPCMReader::processingFormat(rawFormat.sampleRate, rawFormat.channelCount);
    if (!format) throw RawPCMImportError(RawPCMImportError::BufferAllocationFailed{});
    Facts facts{.url = url,
                .format = *format,
                .bitDepth = orvane::bitDepth(rawFormat.encoding),
                .fileFormatLabel = rawFormat.fileFormatLabel(),
                .rawFormat = rawFormat};
    return std::make_unique<RawPCMSource>(std::move(file), std::move(facts));
  }

  const InputFile& file() const override { return file_->file(); }
  std::vector<ChapterMark> chapters() const override { return {}; }
  bool knowsFrameLength() const noexcept override { return true; }
  std::optional<std::int64_t> expectedFrameLength() const override { return file_->frameLength(); }
  std::vector<AudioFileWarning> warnings() const override { return {}; }

 private:
  std::int64_t countFrames() override { return file_->frameLength(); }
  void readNext(PCMBuffer& buffer) override { file_->read(buffer); }

  std::unique_ptr<RawPCMFile> file_;
};

}  // namespace

AudioSource::AudioSource(Facts facts) : facts_(std::move(facts)) {}
AudioSource::~AudioSource() = default;

std::unique_ptr<AudioSource> AudioSource::open(const std::filesystem::path& url,
                                               const std::optional<RawPCMFormat>& rawFormat,
                                               const AudioFileOpenOptions& options) {
  auto source = rawFormat ? RawPCMSource::open(url, *rawFormat, options)
                          : AudioFileSource::open(url, options);
  if (source->knowsFrameLength()) source->frameLength();  // refuses what is empty or too long
  return source;
}

void AudioSource::failAsTooLarge() const {
  if (facts_.rawFormat) throw RawPCMImportError(RawPCMImportError::TooLarge{});
  throw Failure(Failure::Case::tooLarge, facts_.url);
}

void AudioSource::requireMeasurable(std::int64_t frames) const {
  if (static_cast<double>(frames) > std::max(1.0, facts_.format.sampleRate) * kLongestSeconds)
    failAsTooLarge();
}

void AudioSource::requireLoadable() {
  if (!AudioLoadLimits::isWithinLimits(frameLength(), facts_.format.channelCount)) failAsTooLarge();
}

std::int64_t AudioSource::frameLength() {
  const std::int64_t frames = countFrames();
  if (frames < 1) throw Failure(Failure::Case::empty, facts_.url);
  requireMeasurable(frames);
  return frames;
}

std::shared_ptr<PCMBuffer> AudioSource::makeBuffer(std::uint32_t frames,
                                                   PCMBufferPool* pool) const {
  auto buffer = pool != nullptr ? pool->make(facts_.format, frames)
                                : core::PCMBufferAllocation::make(facts_.format, frames);
  if (buffer) return buffer;
  if (facts_.rawFormat) throw RawPCMImportError(RawPCMImportError::BufferAllocationFailed{});
  throw Failure(Failure::Case::allocation, facts_.url);
}

std::shared_ptr<PCMBuffer> AudioSource::load() {
  requireLoadable();
  auto buffer = makeBuffer(static_cast<std::uint32_t>(frameLength()));
  read(*buffer);
  return buffer;
}

void AudioSource::read(PCMBuffer& buffer) {
  readNext(buffer);
  position_ += buffer.frameLength();
  requireMeasurable(position_);
}

}  // namespace orvane
