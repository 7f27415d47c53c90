#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/edit_chain.h"
#include "orvane/edit/programme_levels.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"

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

  /// Throws `EditChainError` for a crossfade that is too long to be held.
  static void requirePossible(const EditChain& chain, std::uint32_t channelCount);

  /// `chain` is one that is possible, `format` the source's.
  SlicedEdit(const EditChain& chain, const AudioFormat& format, Opening open,
             const Execution& execution = {});
  ~SlicedEdit();
  SlicedEdit(const SlicedEdit&) = delete;
  SlicedEdit& operator=(const SlicedEdit&) = delete;

  /// Finds out what has to be known beforehand, and gives what came of normalising the loudness, in
  /// order. With `measures` the levels are known after that and after the audio has been
  /// delivered once.
  std::vector<Normalization> prepare(bool measures);

  /// The edited audio, after `prepare`, for as long as this lives.
  SlicedAudio audio();

  const ProgrammeLevels& levelsBefore() const noexcept;
  const ProgrammeLevels& levelsAfter() const noexcept;

 private:
  void deliver(const SlicedAudio::Take& take);

  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace orvane
