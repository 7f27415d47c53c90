#include "orvane/container/flac/flac_audio_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/flac/flac_stream.h"
#include "orvane/container/parted_reading.h"
#include "orvane/platform/error.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/progress.h"

namespace orvane {
namespace {

constexpr FourCC kFLAC = fourCCFrom("flac");

/// As RFC 9639, 9.1.3, orders one to eight channels: the masks of a WAVE file.
constexpr std::uint32_t kMaskOfCount[] = {0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};

class FLACAudioFile final : public AudioFile {
 public:
  FLACAudioFile(std::shared_ptr<const InputFile> file, const AudioFileOpenOptions& options,
                DecoderModule::OpenByFFmpeg openByFFmpeg)
      : AudioFile(std::move(file)),
        options_(options),
        openByFFmpeg_(openByFFmpeg),
        reading_(options.verifiesChecksum ? 1 : options.execution.threadCount,
                 [this] { return makeStream(); }) {}

  /// False when there is no block.
  bool begin();

  const AudioFileDescription& description() const noexcept override { return description_; }
  std::int64_t frameLength() override;
  bool knowsFrameLength() const noexcept override { return countedFrames_.has_value(); }
  std::optional<std::int64_t> expectedFrameLength() const override;
  std::vector<std::string> tagNames() const override { return byFFmpeg()->tagNames(); }
  void read(PCMBuffer& buffer) override;
  std::optional<bool> checksumHolds() const noexcept override { return checksumHolds_; }

 private:
  std::vector<ChapterMark> unsortedChapters() const override { return byFFmpeg()->chapters(); }

  /// The same file for what stands beside the audio, which is seldom asked for.
  std::unique_ptr<AudioFile> byFFmpeg() const { return openByFFmpeg_(sharedFile(), {}, kFLAC); }
  std::unique_ptr<FLACStream> makeStream() const;
  void tellOfEnd();
  void reportProgress();
  void warn(AudioFileWarning::Code code, const char* text);

  AudioFileOpenOptions options_;
  DecoderModule::OpenByFFmpeg openByFFmpeg_;
  PartedReading<FLACStream> reading_;
  FLACStreamInfo info_{};
  AudioFileDescription description_{};
  std::optional<std::int64_t> countedFrames_{};
  std::optional<bool> checksumHolds_{};
  std::int64_t position_ = 0;
  bool hasToldOfEnd_ = false;
};

bool FLACAudioFile::begin() {
  if (!reading_.hasStream()) return false;
  info_ = reading_.stream().info();
  const std::uint32_t channels = info_.channelCount;
  StreamDescription& format = description_.dataFormat;
  format.formatID = kFLAC;
  format.sampleRate = info_.sampleRate;
  format.channelsPerFrame = channels;
  const auto stated =
      info_.channelMask ? ChannelLayout::fromWaveMask(*info_.channelMask, channels) : std::nullopt;
  const bool isStated =
      stated && std::ranges::find(stated->labels, ChannelLabel::unknown) == stated->labels.end();
  description_.layout =
      isStated ? stated : ChannelLayout::fromWaveMask(kMaskOfCount[channels - 1], channels);
  description_.fileTypeID = kFLAC;
  description_.sourceBitDepth = static_cast<int>(info_.bitsPerSample);
  return true;
}

std::unique_ptr<FLACStream> FLACAudioFile::makeStream() const {
  // Of several streams none asks the observer, which is asked by one thread at a time.
  ProgressObserver* const observer =
      options_.execution.threadCount > 1 ? nullptr : options_.execution.observer;
  auto stream = std::make_unique<FLACStream>(sharedFile(), observer, options_.verifiesChecksum);
  return stream->begin() ? std::move(stream) : nullptr;
}

std::int64_t FLACAudioFile::frameLength() {
  if (!countedFrames_) {
    // What a header states may be wrong, and lost blocks are not to be seen from outside.
    FLACDecoder decoder(sharedFile(), options_.execution.observer);
    std::int64_t frames = 0;
    if (decoder.readInfo())
      while (decoder.next([&](const FLACDecoder::Block& block) {
        frames += static_cast<std::int64_t>(block.frameCount);
      })) {
      }
    countedFrames_ = frames;
  }
  return *countedFrames_;
}

std::optional<std::int64_t> FLACAudioFile::expectedFrameLength() const {
  if (countedFrames_) return countedFrames_;
  return info_.frameCount > 0 ? std::optional(info_.frameCount) : std::nullopt;
}

void FLACAudioFile::read(PCMBuffer& buffer) {
  precondition(buffer.channelCount() == info_.channelCount,
               "a buffer to read into must have the file's channel count");
  // What a header promises may be too much: the end is read by one.
  const std::size_t filled =
      reading_.read(buffer.room(), position_, info_.frameCount - 1, [this](std::size_t count) {
        position_ += static_cast<std::int64_t>(count);
        reportProgress();
      });
  buffer.setFrameLength(static_cast<std::uint32_t>(filled));
  if (reading_.hasEnded() && !std::exchange(hasToldOfEnd_, true)) tellOfEnd();
}

void FLACAudioFile::tellOfEnd() {
  FLACDecoder& decoder = reading_.stream().decoder();
  if (decoder.hasMetDamage())
    warn(AudioFileWarning::Code::damagedAudio,
         "Parts of the audio are damaged and could not be decoded; they are left out.");
  if (decoder.breaksOff() || (!decoder.hasMetDamage() && position_ < info_.frameCount))
    warn(AudioFileWarning::Code::truncatedAudio,
         "The file ends before its audio does; what is there is used.");
  if (options_.verifiesChecksum && info_.statesMD5) checksumHolds_ = decoder.finishMD5();
}

void FLACAudioFile::reportProgress() {
  ProgressObserver* const observer = options_.execution.observer;
  if (observer == nullptr) return;
  if (observer->isCancelled()) throw Cancelled();
  observer->onProgress("Reading",
                       reading_.hasEnded() ? 1.0 : reading_.stream().decoder().shareRead());
}

void FLACAudioFile::warn(AudioFileWarning::Code code, const char* text) {
  description_.warnings.push_back({code, text});
}

}  // namespace

std::unique_ptr<AudioFile> openFLACFile(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options,
                                        DecoderModule::OpenByFFmpeg openByFFmpeg) {
  auto opened = std::make_unique<FLACAudioFile>(std::move(file), options, openByFFmpeg);
  return opened->begin() ? std::move(opened) : nullptr;
}

std::optional<AudioFileDescription> describeFLACFile(std::shared_ptr<const InputFile> file,
                                                     const AudioFileOpenOptions& options) {
  const auto opened = openFLACFile(std::move(file), options, nullptr);
  return opened ? std::optional(opened->description()) : std::nullopt;
}

}  // namespace orvane
