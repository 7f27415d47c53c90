#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/edit_chain.h"
#include "orvane/edit/programme_levels.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// A damaged source has fewer frames than it states, and than its edits were made for.
class ORVANE_API AudioEndsEarly : public Error {
 public:
  explicit AudioEndsEarly(std::int64_t frameCount);
  ~AudioEndsEarly() override;

  std::int64_t frameCount() const noexcept { return frameCount_; }  ///< that are there

 private:
  std::int64_t frameCount_;
};

/// A chain of edits done to audio that is not held in memory: it is read anew as often as the edits
/// have to know all of it beforehand (an offset, a peak, a loudness, what the limiter leaves), and
/// goes through all of them slice by slice. The samples are those of `EditChain::apply`.
///
/// Everything throws what reading throws, `AudioEndsEarly`, and `Cancelled` when an observer asks
/// for it.
class ORVANE_API SlicedEdit {
 public:
  /// Opens the source, of which nothing has been read.
  using Opening = std::function<std::shared_ptr<AudioSource>()>;
  using Take = std::function<void(PlanarView)>;

  /// `format`: the source's. Throws `EditChainError` for a crossfade that is too long to be held.
  SlicedEdit(const EditChain& chain, const AudioFormat& format, Opening open,
             const Execution& execution = {});
  ~SlicedEdit();
  SlicedEdit(const SlicedEdit&) = delete;
  SlicedEdit& operator=(const SlicedEdit&) = delete;

  /// Finds out what has to be known beforehand, and gives what came of normalising the loudness, in
  /// order. With `measures` the levels are known after that and after `deliver`. To be called once.
  std::vector<Normalization> prepare(bool measures);

  /// Hands all of the edited audio to `take`, in order; after `prepare`, any number of times.
  void deliver(const Take& take);

  const ProgrammeLevels& levelsBefore() const noexcept;
  const ProgrammeLevels& levelsAfter() const noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace orvane
