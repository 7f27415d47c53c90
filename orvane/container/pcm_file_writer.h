#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "orvane/container/pcm_file_outline.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"
#include "orvane/platform/sample_conversion.h"

namespace orvane {

/// Writes a linear-PCM file of any container that is written. The header is made from the length,
/// which is known beforehand, and every byte goes through an `AtomicFile`: until `commit` nothing
/// stands under the name.
///
/// Everything throws `PlatformError` with the file's name, also for what the container cannot hold.
class ORVANE_API PCMFileWriter {
 public:
  struct Options {
    AtomicFile::Existing existing = AtomicFile::Existing::replace;
    /// Seeds triangular dither of integer samples; without one none is added.
    std::optional<std::uint64_t> ditherSeed{};
  };

  /// What the settings ask for, as bytes. They state container, linear PCM of a depth, rate and
  /// channel count; the byte order is the container's. For a look at what writing would do.
  static PCMFileOutline outline(const std::filesystem::path& target,
                                const AudioFormatSettings& settings, std::int64_t frameCount);

  PCMFileWriter(const std::filesystem::path& target, const AudioFormatSettings& settings,
                std::int64_t frameCount, const Options& options);
  PCMFileWriter(const std::filesystem::path& target, const AudioFormatSettings& settings,
                std::int64_t frameCount)
      : PCMFileWriter(target, settings, frameCount, Options{}) {}

  /// The next frames; they go on where those before ended, and never beyond the stated count.
  void write(PlanarView audio);

  /// The same with dither for those samples only that are not those of `original`, which has as
  /// many frames, of values that the file holds.
  void writeChanged(PlanarView audio, PlanarView original);

  /// The same as samples that are stored already, interleaved in the audio's channel order: for
  /// those that a float would not hold. Kind, bits and bytes are the file's; the byte order may be
  /// the other one.
  void writeStored(SampleEncoding encoding, std::span<const std::byte> samples);

  /// Whether samples of that encoding can be written as they are stored.
  bool holds(SampleEncoding encoding) const noexcept;

  /// Gives the file its name. All frames must have been written.
  void commit();

  FourCC fileTypeID() const noexcept { return outline_.fileTypeID; }
  /// What the file cannot say of its audio: sentences for the user.
  const std::vector<std::string>& warnings() const noexcept { return outline_.warnings; }
  /// Samples so far that were clipped or not finite.
  const SampleLosses& losses() const noexcept { return losses_; }
  /// Of the file that is replaced, what could not be kept; known after `commit`.
  const AtomicFile& file() const noexcept { return file_; }

 private:
  PlanarView inFileOrder(PlanarView audio, std::vector<const float*>& pointers) const;
  template <class Write>
  void inPieces(std::size_t frameCount, Write write);

  PCMFileOutline outline_;
  std::int64_t frameCount_;
  std::int64_t position_ = 0;
  std::optional<std::uint64_t> ditherSeed_;
  AtomicFile file_;
  std::vector<std::byte> bytes_{};  ///< a piece of converted audio
  SampleLosses losses_{};
};

}  // namespace orvane
