#include "orvane/container/mp3/mp3_audio_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/mp3/mp3_map.h"
#include "orvane/container/mp3/mp3_stream.h"
#include "orvane/container/parted_reading.h"
#include "orvane/platform/error.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/progress.h"

namespace orvane {
namespace {

constexpr FourCC kMPEGLayer3File = fourCCFrom("MPG3");

AudioFileDescription descriptionOf(const MP3Head& head) {
  AudioFileDescription description;
  description.fileTypeID = kMPEGLayer3File;
  StreamDescription& format = description.dataFormat;
  format.formatID = fourCCFrom(".mp3");
  format.sampleRate = head.format.sampleRate;
  format.channelsPerFrame = head.format.channelCount;
  format.framesPerPacket = head.framesPerPacket;
  const bool isMono = head.format.channelCount == 1;
  description.layout =
      ChannelLayout::fromLabels(isMono ? std::vector{ChannelLabel::center}
                                       : std::vector{ChannelLabel::left, ChannelLabel::right});
  return description;
}

class MP3AudioFile final : public AudioFile {
 public:
  MP3AudioFile(std::shared_ptr<const InputFile> file, MP3Map map,
               const AudioFileOpenOptions& options, DecoderModule::OpenByFFmpeg openByFFmpeg)
      : AudioFile(std::move(file)),
        observer_(options.execution.observer),
        openByFFmpeg_(openByFFmpeg),
        map_(std::make_shared<const MP3Map>(std::move(map))),
        description_(descriptionOf(map_->head)),
        reading_(options.execution.threadCount,
                 [this] { return std::make_unique<MP3Stream>(sharedFile(), map_); }) {}

  const AudioFileDescription& description() const noexcept override { return description_; }
  std::int64_t frameLength() override { return map_->frameCount; }
  bool knowsFrameLength() const noexcept override { return true; }
  std::optional<std::int64_t> expectedFrameLength() const override { return map_->frameCount; }
  std::vector<std::string> tagNames() const override { return byFFmpeg()->tagNames(); }
  void read(PCMBuffer& buffer) override;

 private:
  std::vector<ChapterMark> unsortedChapters() const override { return byFFmpeg()->chapters(); }

  /// The same file for what stands beside the audio, which is seldom asked for.
  std::unique_ptr<AudioFile> byFFmpeg() const {
    return openByFFmpeg_(sharedFile(), {}, kMPEGLayer3File);
  }
  void reportProgress();

  ProgressObserver* observer_;
  DecoderModule::OpenByFFmpeg openByFFmpeg_;
  std::shared_ptr<const MP3Map> map_;
  AudioFileDescription description_;
  PartedReading<MP3Stream> reading_;
  std::int64_t position_ = 0;
};

void MP3AudioFile::read(PCMBuffer& buffer) {
  precondition(buffer.channelCount() == description_.dataFormat.channelsPerFrame,
               "a buffer to read into must have the file's channel count");
  const std::size_t wanted = std::min<std::size_t>(
      buffer.frameCapacity(), static_cast<std::size_t>(map_->frameCount - position_));
  const auto take = [this](std::size_t count) {
    position_ += static_cast<std::int64_t>(count);
    reportProgress();
  };
  reading_.read(buffer.room().slice(0, wanted), position_, map_->reachableFrames(), take);
  buffer.setFrameLength(static_cast<std::uint32_t>(wanted));
}

void MP3AudioFile::reportProgress() {
  if (observer_ == nullptr) return;
  if (observer_->isCancelled()) throw Cancelled();
  observer_->onProgress("Reading",
                        static_cast<double>(position_) / static_cast<double>(map_->frameCount));
}

}  // namespace

std::unique_ptr<AudioFile> openMP3File(std::shared_ptr<const InputFile> file,
                                       const AudioFileOpenOptions& options,
                                       DecoderModule::OpenByFFmpeg openByFFmpeg) {
  auto map = mapMP3(file, options.execution.observer);
  if (!map) return nullptr;
  return std::make_unique<MP3AudioFile>(std::move(file), std::move(*map), options, openByFFmpeg);
}

std::optional<AudioFileDescription> describeMP3File(std::shared_ptr<const InputFile> file,
                                                    const AudioFileOpenOptions& /*options*/) {
  const auto head = readMP3Head(file);
  return head ? std::optional(descriptionOf(*head)) : std::nullopt;
}

}  // namespace orvane
