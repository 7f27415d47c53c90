#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/slice_stage.h"

namespace orvane {

/// The samples of a source where an edit has put them, in the order of the result, as they were
/// before the edit changed them: to be compared with what it made of them. Where two pieces overlap
/// they are those of the first one, where there are none they are silence.
class MovedSource {
 public:
  /// `source`: one that nothing has been read of.
  MovedSource(std::shared_ptr<AudioSource> source, const FrameMap& frames);

  /// The next frames of the result, at most as many as there are. They stand until the next call.
  /// Throws what reading throws, and `PlatformError` for a source that ends early.
  PlanarView next(std::size_t frameCount);

 private:
  std::size_t held() const { return held_.front().size(); }

  std::shared_ptr<AudioSource> source_;
  std::shared_ptr<PCMBuffer> slice_;
  MoveStage stage_;
  std::int64_t remaining_;  ///< frames of the result that are not held yet
  std::size_t given_ = 0;   ///< frames
  std::vector<std::vector<float>> held_;
  std::vector<const float*> pointers_{};
};

}  // namespace orvane
