#include "orvane/audio/joined_audio_source.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "orvane/platform/error.h"
#include "orvane/platform/precondition.h"

namespace orvane {
namespace {

using Parts = std::vector<std::unique_ptr<AudioSource>>;

class JoinedAudioSource final : public AudioSource {
 public:
  JoinedAudioSource(Facts facts, Parts parts)
      : AudioSource(std::move(facts)),
        parts_(std::move(parts)),
        pieces_(parts_.size()),
        lengths_(parts_.size()) {}

  static std::unique_ptr<AudioSource> join(Parts parts, AudioFormat format) {
    const AudioSource& first = *parts.front();
    Facts facts{.url = first.url(),
                .format = std::move(format),
                .bitDepth = first.bitDepth(),
                .sourceBitDepth = first.sourceBitDepth(),
                .fileFormatLabel = first.fileFormatLabel(),
                .identity = first.identity()};
    return std::make_unique<JoinedAudioSource>(std::move(facts), std::move(parts));
  }

  const InputFile& file() const override { return parts_.front()->file(); }
  std::vector<ChapterMark> chapters() const override { return parts_.front()->chapters(); }
  std::vector<std::string> tagNames() const override { return parts_.front()->tagNames(); }

  bool knowsFrameLength() const noexcept override {
    return std::ranges::all_of(parts_, [](const auto& part) { return part->knowsFrameLength(); });
  }

  std::optional<std::int64_t> expectedFrameLength() const override {
    std::optional<std::int64_t> longest;
    for (const auto& part : parts_) longest = std::max(longest, part->expectedFrameLength());
    return longest;
  }

  std::vector<AudioFileWarning> warnings() const override {
    std::vector<AudioFileWarning> all;
    for (const auto& part : parts_)
      for (auto& warning : part->warnings())
        if (std::ranges::find(all, warning) == all.end()) all.push_back(std::move(warning));
    if (hasEnded_ &&
        std::ranges::adjacent_find(lengths_, std::ranges::not_equal_to()) != lengths_.end())
      all.push_back({AudioFileWarning::Code::truncatedAudio,
                     "The streams differ in length; the shorter ones are filled up with silence."});
    return all;
  }

 private:
  std::int64_t countFrames() override {
    std::int64_t longest = 0;
    for (const auto& part : parts_) longest = std::max(longest, part->frameLength());
    return longest;
  }

  void readNext(PCMBuffer& buffer) override {
    const std::uint32_t capacity = buffer.frameCapacity();
    std::uint32_t longest = 0;
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      if (!pieces_[i] || pieces_[i]->frameCapacity() != capacity)
        pieces_[i] = parts_[i]->makeBuffer(capacity);
      parts_[i]->read(*pieces_[i]);
      lengths_[i] += pieces_[i]->frameLength();
      longest = std::max(longest, pieces_[i]->frameLength());
    }
    std::uint32_t channel = 0;
    for (const auto& piece : pieces_)
      for (std::uint32_t i = 0; i < piece->channelCount(); ++i, ++channel) {
        float* const end =
            std::copy_n(piece->channel(i), piece->frameLength(), buffer.channel(channel));
        std::fill(end, buffer.channel(channel) + longest, 0.0F);
      }
    buffer.setFrameLength(longest);
    hasEnded_ = longest < capacity;
  }

  Parts parts_;
  std::vector<std::shared_ptr<PCMBuffer>> pieces_;  ///< of each part, what was read last
  std::vector<std::int64_t> lengths_;               ///< of each part, frames read
  bool hasEnded_ = false;
};

}  // namespace

std::unique_ptr<AudioSource> openJoinedStreams(const std::filesystem::path& url,
                                               std::span<const int> streams,
                                               const std::optional<ChannelLayout>& layout,
                                               const Execution& execution) {
  precondition(!streams.empty(), "there must be streams to join");
  Parts parts;
  for (const int stream : streams)
    parts.push_back(AudioSource::open(url, {}, {.streamIndex = stream, .execution = execution}));
  AudioFormat format = parts.front()->format();
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const AudioFormat& other = parts[i]->format();
    const auto& first = parts.front()->format();
    if (other.sampleRate != first.sampleRate || other.channelCount != first.channelCount)
      throw PlatformError(url, "Streams " + std::to_string(streams[0]) + " and " +
                                   std::to_string(streams[i]) +
                                   " cannot be joined: they differ in rate or channels");
    format.channelCount += other.channelCount;
  }
  if (layout && layout->labels.size() != format.channelCount)
    throw PlatformError(url, "The streams have " + std::to_string(format.channelCount) +
                                 " channels, not " + std::to_string(layout->labels.size()));
  const bool isPair = parts.size() == 2 && format.channelCount == 2;
  if (layout || parts.size() > 1)
    format.layout = layout   ? layout
                    : isPair ? ChannelLayout::fromTag(ChannelLayoutTags::stereo)
                             : std::nullopt;
  return JoinedAudioSource::join(std::move(parts), std::move(format));
}

}  // namespace orvane
