#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/slice_stage.h"
#include "orvane/edit/sliced_meter.h"
#include "orvane/platform/execution.h"

namespace orvane {

/// A source that goes through stages slice by slice, as often as asked for.
class SliceLine {
 public:
  using Opening = std::function<std::shared_ptr<AudioSource>()>;

  /// `frameCount`: of the source. `format` is the source's.
  SliceLine(Opening open, const AudioFormat& format, std::int64_t frameCount,
            const Execution& execution);

  const AudioFormat& format() const noexcept { return format_; }
  SlicedMeter makeMeter() const { return SlicedMeter(format_); }

  template <class Stage, class... Arguments>
  void add(Arguments... arguments) {
    stages_.push_back([=] { return std::make_unique<Stage>(arguments...); });
  }
  void addChange(ChangeStage::Change change) { add<ChangeStage>(std::move(change)); }

  std::size_t stageCount() const noexcept { return stages_.size(); }
  /// Takes back all stages but the first ones.
  void keepStages(std::size_t count) { stages_.resize(count); }

  /// Has the next run measure the source.
  void measureSource() { isMeasuring_ = true; }
  const ProgrammeLevels& sourceLevels() const noexcept { return sourceLevels_; }

  /// Hands the audio behind the last stage to `take`. Throws what reading throws, and
  /// `AudioEndsEarly`.
  void run(const SliceStage::Next& take);

 private:
  Opening open_;
  AudioFormat format_;
  std::int64_t frameCount_;
  Execution execution_;
  std::vector<std::function<std::unique_ptr<SliceStage>()>> stages_{};
  bool isMeasuring_ = false;
  ProgrammeLevels sourceLevels_{};
};

}  // namespace orvane
