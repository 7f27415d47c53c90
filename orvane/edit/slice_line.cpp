#include "orvane/edit/slice_line.h"

#include <algorithm>
#include <utility>

#include "orvane/edit/sliced_edit.h"

namespace orvane {
namespace {

/// Samples of a slice of the source.
constexpr std::int64_t kSliceSamples = std::int64_t{1} << 17;
constexpr std::int64_t kLeastSliceFrames = 1024;

std::uint32_t sliceFrames(std::uint32_t channelCount) {
  return static_cast<std::uint32_t>(std::max(kSliceSamples / channelCount, kLeastSliceFrames));
}

/// The stages of one run, each of which hands on to the next.
class Run {
 public:
  Run(std::vector<std::unique_ptr<SliceStage>> stages, const SliceStage::Next& take)
      : stages_(std::move(stages)), take_(take) {}

  void pass(std::size_t index, MutablePlanarView slice) const {
    if (index == stages_.size()) return take_(slice);
    stages_[index]->process(slice, [=, this](MutablePlanarView next) { pass(index + 1, next); });
  }
  void finish() const {
    for (std::size_t i = 0; i < stages_.size(); ++i)
      stages_[i]->finish([=, this](MutablePlanarView rest) { pass(i + 1, rest); });
  }

 private:
  std::vector<std::unique_ptr<SliceStage>> stages_;
  const SliceStage::Next& take_;
};

}  // namespace

SliceLine::SliceLine(Opening open, const AudioFormat& format, std::int64_t frameCount,
                     const Execution& execution)
    : open_(std::move(open)), format_(format), frameCount_(frameCount), execution_(execution) {}

void SliceLine::run(const SliceStage::Next& take) {
  std::vector<std::unique_ptr<SliceStage>> stages;
  for (const auto& make : stages_) stages.push_back(make());
  const Run line(std::move(stages), take);
  std::optional<SlicedMeter> meter;
  if (std::exchange(isMeasuring_, false)) meter.emplace(makeMeter());

  const auto source = open_();
  const auto slice = source->makeBuffer(sliceFrames(format_.channelCount));
  for (std::int64_t done = 0; done < frameCount_;) {
    source->read(*slice);
    const std::int64_t count = std::min<std::int64_t>(slice->frameLength(), frameCount_ - done);
    if (count == 0) throw AudioEndsEarly(done);
    const auto frames = slice->room().slice(0, static_cast<std::size_t>(count));
    if (meter) meter->process(frames, execution_.threadCount);
    line.pass(0, frames);
    done += count;
  }
  line.finish();
  if (meter) sourceLevels_ = meter->levels();
}

}  // namespace orvane
