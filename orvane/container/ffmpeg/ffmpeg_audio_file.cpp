#include "orvane/container/ffmpeg/ffmpeg_audio_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

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
  FFmpegAudioFile(const std::shared_ptr<const InputFile>& file, const AudioFileOpenOptions& options,
                  FourCC containerHint);

  const AudioFileDescription& description() const noexcept override { return description_; }
  std::int64_t frameLength() const noexcept override { return frameLength_; }
  void read(PCMBuffer& buffer) override;

 private:
  void nextFrame();
  void reportProgress();
  void warnOfTruncation();
  void warn(AudioFileWarning::Code code, const char* text);

  Demuxer demuxer_;
  Decoder decoder_;
  /// The decoded frame that is being handed out, and how much of it has been.
  const AVFrame* frame_ = nullptr;
  std::size_t frameOffset_ = 0;
  AudioFileDescription description_;
  std::int64_t frameLength_ = 0;
  std::int64_t position_ = 0;
  ProgressObserver* observer_;
  std::int64_t nextReport_ = 0;
};

FFmpegAudioFile::FFmpegAudioFile(const std::shared_ptr<const InputFile>& file,
                                 const AudioFileOpenOptions& options, FourCC containerHint)
    : demuxer_(file, options.streamIndex, containerHint),
      decoder_(demuxer_, options.threadCount),
      frame_(decoder_.next()),
      description_(describeStream(demuxer_, containerHint, &decoder_.codec(), frame_)),
      observer_(options.observer) {
  if (frame_ == nullptr) {
    if (decoder_.hasMetPackets())
      throw PlatformError(file->path(), "None of its audio can be decoded");
    return;
  }
  const StreamLength length = countFrames(file, options, containerHint);
  frameLength_ = length.frames;
  if (length.isTruncated) warnOfTruncation();
}

void FFmpegAudioFile::read(PCMBuffer& buffer) {
  precondition(buffer.channelCount() == description_.dataFormat.channelsPerFrame,
               "a buffer to read into must have the file's channel count");
  const auto wanted = static_cast<std::size_t>(
      std::min<std::int64_t>(buffer.frameCapacity(), frameLength_ - position_));
  std::vector<float*> destinations = buffer.channels();
  std::size_t filled = 0;
  while (filled < wanted && frame_ != nullptr) {
    const std::size_t left = static_cast<std::size_t>(frame_->nb_samples) - frameOffset_;
    const std::size_t count = std::min(wanted - filled, left);
    if (!convertFrame(*frame_, frameOffset_, count, destinations.data()))
      throw PlatformError(demuxer_.path(), "Its decoder gives samples of an unknown form");
    for (float*& destination : destinations) destination += count;
    filled += count;
    frameOffset_ += count;
    position_ += static_cast<std::int64_t>(count);
    reportProgress();
    if (count == left) nextFrame();
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
  if (decoder_.hasJustFailed() && position_ < frameLength_) warnOfTruncation();
}

void FFmpegAudioFile::reportProgress() {
  constexpr std::int64_t kFramesBetweenReports = 65536;
  if (observer_ == nullptr || position_ < nextReport_) return;
  if (observer_->isCancelled()) throw Cancelled();
  observer_->onProgress("Reading",
                        static_cast<double>(position_) / static_cast<double>(frameLength_));
  nextReport_ = std::min(position_ + kFramesBetweenReports, frameLength_);
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

std::unique_ptr<AudioFile> openFFmpegAudioFile(const std::filesystem::path& path,
                                               const AudioFileOpenOptions& options,
                                               FourCC containerHint) {
  return std::make_unique<FFmpegAudioFile>(std::make_shared<const InputFile>(path), options,
                                           containerHint);
}

AudioFileDescription describeFFmpegAudioFile(const std::filesystem::path& path,
                                             FourCC containerHint) {
  Demuxer demuxer(std::make_shared<const InputFile>(path), std::nullopt, containerHint);
  try {
    Decoder decoder(demuxer, 1);
    const AVFrame* frame = decoder.next();
    return describeStream(demuxer, containerHint, &decoder.codec(), frame);
  } catch (const PlatformError&) {
    // Where no decoder can help, the container still tells the codec.
    return describeStream(demuxer, containerHint, nullptr, nullptr);
  }
}

}  // namespace orvane
