#include "orvane/container/flac/flac_audio_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/flac/flac_stream.h"
#include "orvane/platform/error.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/progress.h"

namespace orvane {
namespace {

constexpr FourCC kFLAC = fourCCFrom("flac");

/// As RFC 9639, 9.1.3, orders one to eight channels: the masks of a WAVE file.
constexpr std::uint32_t kMaskOfCount[] = {0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};

constexpr std::size_t kFramesBetweenReports = 65536;

/// Frames from which on halves of a piece are worth a second decoder, which has to find its place.
constexpr std::size_t kFewestFramesToShare = std::size_t{1} << 18;

class FLACAudioFile final : public AudioFile {
 public:
  FLACAudioFile(std::shared_ptr<const InputFile> file, const AudioFileOpenOptions& options,
                FLACModule::OpenByFFmpeg openByFFmpeg)
      : AudioFile(std::move(file)),
        options_(options),
        openByFFmpeg_(openByFFmpeg),
        stream_(makeStream()),
        isShared_(options.execution.threadCount > 1 && !options.verifiesChecksum) {}

  /// Reads up to the first block; false when there is none.
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
  std::unique_ptr<FLACStream> makeStream() const {
    return std::make_unique<FLACStream>(sharedFile(), options_.execution.observer,
                                        options_.verifiesChecksum);
  }
  std::size_t readShared(MutablePlanarView room);
  void tellOfEnd();
  void reportProgress();
  void warn(AudioFileWarning::Code code, const char* text);

  AudioFileOpenOptions options_;
  FLACModule::OpenByFFmpeg openByFFmpeg_;
  std::unique_ptr<FLACStream> stream_;
  std::unique_ptr<FLACStream> ahead_{};  ///< another one, for second halves
  bool isShared_;                        ///< among two threads
  FLACStreamInfo info_{};
  AudioFileDescription description_{};
  std::optional<std::int64_t> countedFrames_{};
  std::optional<bool> checksumHolds_{};
  std::int64_t position_ = 0;
  bool hasToldOfEnd_ = false;
};

bool FLACAudioFile::begin() {
  const auto info = stream_->begin();
  if (!info) return false;
  info_ = *info;
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
  const MutablePlanarView room = buffer.room();
  const auto wanted = static_cast<std::int64_t>(room.frameCount());
  const bool isShared = isShared_ && room.frameCount() >= kFewestFramesToShare &&
                        position_ + wanted < info_.frameCount;
  std::size_t filled = 0;
  if (isShared) {
    filled = readShared(room);
  } else {
    for (std::size_t count = 1; count > 0 && filled < room.frameCount(); filled += count) {
      count = stream_->read(
          room.from(filled).slice(0, std::min(kFramesBetweenReports, room.frameCount() - filled)));
      position_ += static_cast<std::int64_t>(count);
      reportProgress();
    }
  }
  buffer.setFrameLength(static_cast<std::uint32_t>(filled));
  if (stream_->hasEnded() && !std::exchange(hasToldOfEnd_, true)) tellOfEnd();
}

/// Both halves at once. They are joined only where the first one's decoder, which has just come to
/// the middle, goes on as the second half begins, and nothing but sound blocks was met; else the
/// first one decodes the second half, and all that follows.
std::size_t FLACAudioFile::readShared(MutablePlanarView room) {
  const std::size_t half = room.frameCount() / 2;
  const MutablePlanarView second = room.from(half);
  std::size_t filled = 0;
  bool isSecondDone = false;
  parallelFor(2, 2, [&](std::size_t task) {
    if (task == 0) {
      filled = stream_->read(room.slice(0, half));
      return;
    }
    if (!ahead_) {
      ahead_ = makeStream();
      if (!ahead_->begin()) return;
    }
    isSecondDone = ahead_->seek(position_ + static_cast<std::int64_t>(half)) &&
                   ahead_->read(second) == second.frameCount();
  });
  isShared_ = filled == half && isSecondDone && stream_->goesOnWith(second) &&
              !stream_->hasEnded() && !stream_->decoder().hasMetFaults() &&
              !ahead_->decoder().hasMetFaults();
  if (isShared_) {
    std::swap(stream_, ahead_);
    filled = room.frameCount();
  } else if (filled == half) {
    ahead_.reset();
    filled += stream_->read(second);
  }
  position_ += static_cast<std::int64_t>(filled);
  reportProgress();
  return filled;
}

void FLACAudioFile::tellOfEnd() {
  FLACDecoder& decoder = stream_->decoder();
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
  observer->onProgress("Reading", stream_->hasEnded() ? 1.0 : stream_->decoder().shareRead());
}

void FLACAudioFile::warn(AudioFileWarning::Code code, const char* text) {
  description_.warnings.push_back({code, text});
}

}  // namespace

std::unique_ptr<AudioFile> openFLACFile(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options,
                                        FLACModule::OpenByFFmpeg openByFFmpeg) {
  auto opened = std::make_unique<FLACAudioFile>(std::move(file), options, openByFFmpeg);
  return opened->begin() ? std::move(opened) : nullptr;
}

}  // namespace orvane
