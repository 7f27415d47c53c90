#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/file_stamp.h"
#include "orvane/platform/metadata_losses.h"
#include "orvane/platform/saved_file_error.h"

namespace orvane {

/// Writes a file so that its name stands for the old content or for the whole new one, never for
/// anything between, whatever fails and whenever the process or the machine stops.
///
/// Order: construct, then `reserve`, `write` and `writeAt` as needed, then `commit`. Without
/// `commit`, or after any failure, everything written is dropped and what stood under the name is
/// untouched.
///
/// A symbolic link is followed; the link stays. A file that is replaced keeps its mode, owner,
/// access lists and extended attributes as far as the system allows (`losses`); if the group cannot
/// be kept, its rights shrink to those of everybody. Other hard links to it keep the old content.
/// Files that may not be written and anything that is no regular file are refused.
///
/// The new content lies in the target's folder, without a name until `commit` where the file system
/// can do that, else as ".take1.orvane-save-1A2B3C4D.wav" for "take1.wav". A process that is killed
/// may leave that behind; see `abandonedTemporaries`. Signals that end a process wait for this
/// thread while the content gets its name.
///
/// Every operation throws `PlatformError` with the target's file name. One thread at a time.
class ORVANE_API AtomicFile {
 public:
  /// What becomes of a file that has the name already.
  enum class Existing {
    replace,
    refuse,  ///< a `PlatformError` (file exists), also when it appears before `commit`
  };

  explicit AtomicFile(const std::filesystem::path& target, Existing existing = Existing::replace);

  /// Replaces this version of the file, taken when it was read, and no other: "the file was changed
  /// by another program meanwhile", here or at `commit`. Where the file system can exchange two
  /// names not even a change in the last moment is lost.
  AtomicFile(const std::filesystem::path& target, const FileStamp& version);

  ~AtomicFile();
  AtomicFile(AtomicFile&& other) noexcept;
  AtomicFile& operator=(AtomicFile&& other) noexcept;

  /// As it was given.
  const std::filesystem::path& target() const noexcept;

  /// Appends. Nothing is gathered: give sizeable pieces. The disk is set to work meanwhile.
  void write(std::span<const std::byte> bytes);
  void write(std::string_view text);

  /// Writes at `offset` bytes from the start, e.g. sizes in a header; appending goes on behind what
  /// was appended before.
  void writeAt(std::uint64_t offset, std::span<const std::byte> bytes);

  /// Takes disk space for a file of `size` bytes, so that a full disk shows before the work is
  /// done. Changes no content; `commit` gives back what was not needed. Does nothing where the file
  /// system cannot reserve.
  void reserve(std::uint64_t size);

  /// Where the bytes written so far can be read, until `commit`; for checking them first.
  std::filesystem::path readablePath() const;

  /// Gives the content its name, safe against power failure. Throws `SavedFileError` if it has the
  /// name, but is perhaps not safe or something is left beside it.
  void commit();

  /// What `commit` could not keep of the file that was replaced.
  const MetadataLosses& losses() const noexcept;
  /// The same, handed over, so that nothing fails once the file is saved.
  MetadataLosses takeLosses() noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// What killed processes of this user have left in `folder`: temporaries that no living process
/// writes, sorted. Empty when the folder cannot be read.
ORVANE_API std::vector<std::filesystem::path> abandonedTemporaries(
    const std::filesystem::path& folder);

/// `content` as the whole of the file, by `AtomicFile`. Throws `PlatformError`.
ORVANE_API void writeFileAtomically(const std::filesystem::path& target,
                                    std::span<const std::byte> content);
ORVANE_API void writeFileAtomically(const std::filesystem::path& target, std::string_view content);

}  // namespace orvane
