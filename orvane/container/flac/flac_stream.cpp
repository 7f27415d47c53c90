#include "orvane/container/flac/flac_stream.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {
namespace {

/// Integers of that many bits to floats, with full scale at 1.
void convert(const FLAC__int32* samples, std::size_t count, std::uint32_t bits, float* output) {
  const float scale = std::ldexp(1.0F, 1 - static_cast<int>(bits));
  constexpr std::size_t kRun = 16;  // of a fixed length, which becomes vectors
  std::size_t i = 0;
  for (; i + kRun <= count; i += kRun)
    for (std::size_t j = 0; j < kRun; ++j)
      output[i + j] = static_cast<float>(samples[i + j]) * scale;
  for (; i < count; ++i) output[i] = static_cast<float>(samples[i]) * scale;
}

}  // namespace

FLACStream::FLACStream(std::shared_ptr<const InputFile> file, ProgressObserver* observer,
                       bool verifies)
    : decoder_(std::move(file), observer, verifies) {}

bool FLACStream::begin() {
  const auto info = decoder_.readInfo();
  if (!info) return false;
  info_ = *info;
  block_.resize(info->channelCount);
  nextBlock();
  return !hasEnded_;
}

bool FLACStream::seek(std::int64_t frame) {
  offset_ = 0;
  hasEnded_ = false;
  const bool isFound =
      decoder_.seek(frame, [this](const FLACDecoder::Block& block) { take(block); });
  soughtBlockEnd_ = decoder_.blockEnd();
  return isFound;
}

std::size_t FLACStream::read(MutablePlanarView room) {
  std::size_t filled = 0;
  while (filled < room.frameCount() && !hasEnded_) {
    const std::size_t count = std::min(room.frameCount() - filled, blockFrames_ - offset_);
    for (std::size_t c = 0; c < block_.size(); ++c)
      std::copy_n(block_[c].data() + offset_, count, room.channel(c) + filled);
    filled += count;
    offset_ += count;
    if (offset_ == blockFrames_) nextBlock();
  }
  return filled;
}

bool FLACStream::isFollowedBy(const FLACStream& next, PlanarView /*audio*/,
                              PlanarView nextAudio) const {
  return decoder_.blockEnd() == next.soughtBlockEnd_ && goesOnWith(nextAudio);
}

/// Whether these are the frames that come next, as far as the present block tells.
bool FLACStream::goesOnWith(PlanarView audio) const {
  if (hasEnded_) return audio.frameCount() == 0;
  const std::size_t count = std::min(blockFrames_ - offset_, audio.frameCount());
  for (std::size_t c = 0; c < block_.size(); ++c)
    if (!std::equal(audio.channel(c), audio.channel(c) + count, block_[c].data() + offset_))
      return false;
  return true;
}

void FLACStream::take(const FLACDecoder::Block& block) {
  blockFrames_ = block.frameCount;
  for (std::size_t c = 0; c < block_.size(); ++c) {
    block_[c].resize(std::max(block_[c].size(), blockFrames_));
    convert(block.channels[c], blockFrames_, block.bitsPerSample, block_[c].data());
  }
}

void FLACStream::nextBlock() {
  offset_ = 0;
  hasEnded_ = !decoder_.next([this](const FLACDecoder::Block& block) { take(block); });
}

}  // namespace orvane
