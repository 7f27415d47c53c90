#include "orvane/container/ffmpeg/ffmpeg_audio_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/ffmpeg/container_chapters.h"
#include "orvane/container/ffmpeg/container_tags.h"
#include "orvane/container/ffmpeg/decoder.h"
#include "orvane/container/ffmpeg/demuxer.h"
#include "orvane/container/ffmpeg/frame_conversion.h"
#include "orvane/container/ffmpeg/frame_count.h"
#include "orvane/container/ffmpeg/stream_format.h"
#include "orvane/platform/error.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/progress.h"

namespace orvane {
namespace {

class FFmpegAudioFile final : public AudioFile {
 public:
  FFmpegAudioFile(std::shared_ptr<const InputFile> file, const AudioFileOpenOptions& options,
                  FourCC containerHint);

  const AudioFileDescription& description() const noexcept override { return description_; }
  std::int64_t frameLength() override;
  bool knowsFrameLength() const noexcept override { return countedFrames_.has_value(); }
  std::optional<std::int64_t> expectedFrameLength() const override;
  std::vector<std::string> tagNames() const override {
    return tagNamesOf(demuxer_.format(), demuxer_.stream());
  }
  void read(PCMBuffer& buffer) override;

 private:
  std::vector<ChapterMark> unsortedChapters() const override {
    return chaptersOf(demuxer_.format());
  }
  void nextFrame();
  void reportProgress();
  void warnOfTruncation();
  void warn(AudioFileWarning::Code code, const char* text);

  AudioFileOpenOptions options_;
  FourCC containerHint_;
  Demuxer demuxer_;
  Decoder decoder_;
  /// The decoded frame that is being handed out, and how much of it has been.
  const AVFrame* frame_ = nullptr;
  std::size_t frameOffset_ = 0;
  AudioFileDescription description_;
  std::optional<std::int64_t> countedFrames_{};  ///< once somebody has asked for the length
  std::int64_t position_ = 0;
  std::int64_t nextReport_ = 0;
};

FFmpegAudioFile::FFmpegAudioFile(std::shared_ptr<const InputFile> file,
                                 const AudioFileOpenOptions& options, FourCC containerHint)
    : AudioFile(std::move(file)),
      options_(options),
      containerHint_(containerHint),
      demuxer_(sharedFile(), options, containerHint),
      decoder_(demuxer_, options.execution.threadCount),
      frame_(decoder_.next()),
      description_(describeStream(demuxer_, containerHint, &decoder_.codec(), frame_)) {
  if (frame_ != nullptr) return;
  if (decoder_.hasMetPackets())
    throw PlatformError(sharedFile()->path(), "None of its audio can be decoded");
  countedFrames_ = 0;
}

std::int64_t FFmpegAudioFile::frameLength() {
  if (!countedFrames_) {
    const StreamLength length = countFrames(sharedFile(), options_, containerHint_);
    countedFrames_ = length.frames;
    if (length.isTruncated) warnOfTruncation();
  }
  return *countedFrames_;
}

std::optional<std::int64_t> FFmpegAudioFile::expectedFrameLength() const {
  return countedFrames_ ? countedFrames_ : statedFrames(demuxer_);
}

void FFmpegAudioFile::read(PCMBuffer& buffer) {
  precondition(buffer.channelCount() == description_.dataFormat.channelsPerFrame,
               "a buffer to read into must have the file's channel count");
  std::size_t wanted = buffer.frameCapacity();
  if (countedFrames_)
    wanted = std::min(wanted, static_cast<std::size_t>(*countedFrames_ - position_));
  const MutablePlanarView room = buffer.room();
  std::size_t filled = 0;
  while (filled < wanted && frame_ != nullptr) {
    const std::size_t left = static_cast<std::size_t>(frame_->nb_samples) - frameOffset_;
    const std::size_t count = std::min(wanted - filled, left);
    if (!convertFrame(*frame_, frameOffset_, count, room.from(filled)))
      throw PlatformError(demuxer_.path(), "Its decoder gives samples of an unknown form");
    filled += count;
    frameOffset_ += count;
    position_ += static_cast<std::int64_t>(count);
    if (count == left) nextFrame();
    reportProgress();
  }
  buffer.setFrameLength(static_cast<std::uint32_t>(filled));
}

void FFmpegAudioFile::nextFrame() {
  frame_ = decoder_.next();
  frameOffset_ = 0;
  if (frame_ != nullptr) return;
  if (decoder_.hasMetDamage())
    warn(AudioFileWarning::Code::damagedAudio,
         "Parts of the audio are damaged and could not be decoded; they are left out.");
  if (countedFrames_ ? decoder_.hasJustFailed() && position_ < *countedFrames_
                     : decoder_.hasJustFailed() || breaksOff(demuxer_, position_))
    warnOfTruncation();
}

void FFmpegAudioFile::reportProgress() {
  constexpr std::int64_t kFramesBetweenReports = 65536;
  ProgressObserver* const observer = options_.execution.observer;
  if (observer == nullptr || (position_ < nextReport_ && frame_ != nullptr)) return;
  if (observer->isCancelled()) throw Cancelled();
  observer->onProgress("Reading", frame_ == nullptr ? 1.0 : demuxer_.shareRead());
  nextReport_ = position_ + kFramesBetweenReports;
}

void FFmpegAudioFile::warnOfTruncation() {
  warn(AudioFileWarning::Code::truncatedAudio,
       "The file ends before its audio does; what is there is used.");
}

void FFmpegAudioFile::warn(AudioFileWarning::Code code, const char* text) {
  const auto isSame = [&](const AudioFileWarning& warning) { return warning.code == code; };
  std::vector<AudioFileWarning>& warnings = description_.warnings;
  if (std::none_of(warnings.begin(), warnings.end(), isSame)) warnings.push_back({code, text});
}

}  // namespace

std::unique_ptr<AudioFile> openFFmpegAudioFile(std::shared_ptr<const InputFile> file,
                                               const AudioFileOpenOptions& options,
                                               FourCC containerHint) {
  return std::make_unique<FFmpegAudioFile>(std::move(file), options, containerHint);
}

AudioFileDescription describeFFmpegAudioFile(std::shared_ptr<const InputFile> file,
                                             const AudioFileOpenOptions& options,
                                             FourCC containerHint) {
  Demuxer demuxer(std::move(file), options, containerHint);
  try {
    Decoder decoder(demuxer, 1);
    const AVFrame* frame = decoder.next();
    return describeStream(demuxer, containerHint, &decoder.codec(), frame);
  } catch (const PlatformError&) {
    // Where no decoder can help, the container still tells the codec.
    return describeStream(demuxer, containerHint, nullptr, nullptr);
  }
}

AudioStreamCount countFFmpegStreams(std::shared_ptr<const InputFile> file,
                                    const AudioFileOpenOptions& options, FourCC containerHint) {
  const Demuxer demuxer(std::move(file), options, containerHint);
  AudioStreamCount streams{.count = 0};
  for (unsigned i = 0; i < demuxer.format().nb_streams; ++i) {
    const AVStream* stream = demuxer.format().streams[i];
    if (stream == &demuxer.stream()) streams.defaultIndex = streams.count;
    if (stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) ++streams.count;
  }
  return streams;
}

}  // namespace orvane
