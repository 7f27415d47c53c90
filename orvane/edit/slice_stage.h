#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "orvane/edit/frame_map.h"
#include "orvane/edit/non_speech_expander.h"
#include "orvane/edit/programme_slice.h"
#include "orvane/edit/true_peak_limiter.h"

namespace orvane {

/// One edit of a programme that goes by in slices of any size. What is handed on may be changed and
/// stands until the call returns.
class SliceStage {
 public:
  using Next = std::function<void(MutablePlanarView)>;

  virtual ~SliceStage() = default;
  virtual void process(MutablePlanarView slice, const Next& next) = 0;
  /// Hands on what is left at the end.
  virtual void finish(const Next& /*next*/) {}
};

/// An edit that moves no frames and needs to know no others.
class ChangeStage final : public SliceStage {
 public:
  using Change = std::function<void(const ProgrammeSlice&)>;

  explicit ChangeStage(Change change) : change_(std::move(change)) {}
  void process(MutablePlanarView slice, const Next& next) override;

 private:
  Change change_;
  std::int64_t position_ = 0;
};

/// An edit that moves frames, as `renderMappedFrames` does. Beside the slice it holds what two
/// pieces have in common in the result.
class MoveStage final : public SliceStage {
 public:
  MoveStage(FrameMap map, std::size_t channelCount);
  void process(MutablePlanarView slice, const Next& next) override;
  void finish(const Next& next) override;

  /// Whether all frames of the pieces have come.
  bool hasAll() const noexcept { return sources_.empty() || position_ >= sources_.back().end; }

 private:
  std::int64_t knownPlaces() const;
  void render(std::int64_t end, const Next& next);
  void release();

  std::vector<FrameRange> sources_{};  ///< of the pieces
  FrameMap map_;                       ///< of the kept frames alone, one behind the other
  std::int64_t position_ = 0;          ///< next frame of the source
  std::int64_t kept_ = 0;              ///< frames of pieces that have come
  std::int64_t rendered_ = 0;          ///< frames of the result
  std::int64_t windowFirst_ = 0;       ///< kept frame with which the window begins
  std::vector<std::vector<float>> window_;
  std::vector<std::vector<float>> result_;
};

/// What is not speech is lowered.
class ExpandStage final : public SliceStage {
 public:
  explicit ExpandStage(EditOperations::NonSpeechExpander expander)
      : expander_(std::move(expander)) {}
  void process(MutablePlanarView slice, const Next& next) override;

 private:
  EditOperations::NonSpeechExpander expander_;
};

/// The limiter; `lastScale` is what it came to when the same audio went through before.
class LimitStage final : public SliceStage {
 public:
  LimitStage(double sampleRate, std::size_t channelCount, float ceiling, float lastScale)
      : limiter_(sampleRate, channelCount, ceiling), lastScale_(lastScale) {}
  void process(MutablePlanarView slice, const Next& next) override;
  void finish(const Next& next) override;

 private:
  void give(MutablePlanarView limited, const Next& next) const;

  EditOperations::TruePeakLimiter limiter_;
  float lastScale_;
};

}  // namespace orvane
