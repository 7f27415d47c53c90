#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/fade_curve.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/frame_range.h"
#include "orvane/edit/loudness_normalizer.h"
#include "orvane/edit/non_speech_expander.h"
#include "orvane/edit/silence.h"
#include "orvane/platform/error.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

namespace orvane {

// What can stand in a chain of edits, with what `EditOperations` asks for. Ranges are those of the
// audio as the edits before have left it.
struct TrimEdit {
  FrameRange range{};
  bool operator==(const TrimEdit&) const = default;
};
struct CutEdit {
  FrameRange range{};
  std::int64_t crossfadeFrames = 0;
  bool operator==(const CutEdit&) const = default;
};
struct SilenceEdit {
  FrameRange range{};
  EditOperations::SilenceMode mode{};
  std::int64_t durationFrames = 0;  ///< of what is inserted
  bool operator==(const SilenceEdit&) const = default;
};
struct FadeEdit {
  FrameRange range{};
  EditOperations::FadeDirection direction{};
  EditOperations::FadeCurve curve{};
  bool operator==(const FadeEdit&) const = default;
};
struct GainEdit {
  FrameRange range{};
  double gainDB = 0;
  bool operator==(const GainEdit&) const = default;
};
struct InvertEdit {
  FrameRange range{};
  bool operator==(const InvertEdit&) const = default;
};
struct DCOffsetEdit {
  FrameRange range{};
  bool operator==(const DCOffsetEdit&) const = default;
};
struct ExpandEdit {
  /// Where somebody speaks: frames of the source, before any edit, in any order.
  std::vector<FrameRange> speech{};
  EditOperations::NonSpeechExpansion expansion{};
  bool operator==(const ExpandEdit&) const = default;
};
struct SwapEdit {
  bool operator==(const SwapEdit&) const = default;
};
struct PeakEdit {
  double targetDB = 0;
  bool operator==(const PeakEdit&) const = default;
};
struct LimitEdit {
  double ceilingDBTP = 0;
  bool operator==(const LimitEdit&) const = default;
};
struct NormalizeEdit {
  double targetLUFS = 0;
  double ceilingDBTP = 0;
  bool operator==(const NormalizeEdit&) const = default;
};

using Edit = std::variant<TrimEdit, CutEdit, SilenceEdit, FadeEdit, GainEdit, InvertEdit,
                          DCOffsetEdit, ExpandEdit, SwapEdit, PeakEdit, LimitEdit, NormalizeEdit>;

/// What came of normalising the loudness within a chain.
struct Normalization {
  NormalizeEdit edit{};
  EditOperations::NormalizationOutcome outcome{};

  bool operator==(const Normalization&) const = default;
};

/// An edit that would do nothing, or leave nothing, in one sentence.
class ORVANE_API EditChainError : public Error {
 public:
  enum class Case {
    emptyRange,     ///< nothing of the range is there
    nothingLeft,    ///< everything would be cut
    notStereo,      ///< only the channels of stereo can be swapped
    longCrossfade,  ///< audio that is not held in memory cannot be crossfaded for so long
  };

  EditChainError(Case errorCase, std::size_t index);
  ~EditChainError() override;

  Case errorCase() const noexcept { return case_; }
  std::size_t index() const noexcept { return index_; }  ///< of the edit

  bool operator==(const EditChainError& other) const {
    return case_ == other.case_ && index_ == other.index_;
  }

 private:
  Case case_;
  std::size_t index_;
};

/// Edits that are done one after the other to audio of a known length, checked before any of it is
/// read.
class ORVANE_API EditChain {
 public:
  /// Throws `EditChainError`. Silence of a negative duration is a programming error.
  EditChain(std::vector<Edit> edits, std::int64_t frameCount, std::uint32_t channelCount);

  /// The edits, their ranges, places and crossfades as far as there is audio; speech as the frames
  /// of the audio that the edit finds.
  const std::vector<Edit>& edits() const noexcept { return edits_; }
  std::int64_t sourceFrameCount() const noexcept { return sourceFrameCount_; }
  /// Where each of them puts the frames that it finds.
  const std::vector<FrameMap>& steps() const noexcept { return steps_; }
  /// Where all of them together put the frames.
  const FrameMap& frameMap() const noexcept { return map_; }

  /// What `load` and `apply` hold at most, in bytes.
  std::int64_t heldBytes(std::uint32_t channelCount) const;
  /// Whether the memory suffices for that.
  bool fitsIntoMemory(std::uint32_t channelCount) const;

  /// Loads all of a source that nothing has been read of, of the length and channels that the chain
  /// was made for, with room for the edits. Throws what reading throws, and `PlatformError` when
  /// the memory does not suffice. A damaged source may end before its length.
  std::shared_ptr<PCMBuffer> load(AudioSource& source) const;

  /// Edits the audio, for which the buffer has room, in place. Nothing of its length is held beside
  /// it, but for normalising the loudness. Gives what came of that, in order. Throws `Cancelled`,
  /// with part of the edits done.
  std::vector<Normalization> apply(PCMBuffer& audio, const Execution& execution = {}) const;

 private:
  std::vector<Edit> edits_;
  std::vector<FrameMap> steps_{};  ///< of each edit
  FrameMap map_;
  std::int64_t largestFrameCount_;  ///< on the way
  std::int64_t sourceFrameCount_;
};

}  // namespace orvane
