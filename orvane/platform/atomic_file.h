#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// Writes a file so that its name stands for the old content or for the whole new one, never for
/// anything between, whatever fails and whenever the process or the machine stops.
///
/// Order: construct, then `reserve`, `write` and `writeAt` as needed, then `commit`. Without
/// `commit`, or after any failure, everything written is dropped and what stood under the name is
/// untouched.
///
/// A symbolic link is followed; the link stays. A file that is replaced keeps its mode, owner,
/// access lists and extended attributes as far as the system allows; if the group cannot be kept,
/// its rights shrink to those of everybody. Other hard links to it keep the old content. Files that
/// may not be written and anything that is no regular file are refused.
///
/// The new content lies in the target's folder, without a name until `commit` where the file
/// system can do that, else as ".orvane-<UUID>.tmp". A process that is killed may leave that
/// behind; see `abandonedTemporaries`.
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
  ~AtomicFile();
  AtomicFile(AtomicFile&& other) noexcept;
  AtomicFile& operator=(AtomicFile&& other) noexcept;

  /// As it was given.
  const std::filesystem::path& target() const noexcept;

  /// Appends. Nothing is gathered: give sizeable pieces.
  void write(std::span<const std::byte> bytes);
  void write(std::string_view text);

  /// Writes at `offset` bytes from the start, e.g. sizes in a header; appending goes on behind what
  /// was appended before.
  void writeAt(std::uint64_t offset, std::span<const std::byte> bytes);

  /// Takes `size` bytes of disk space, so that a full disk shows before the work is done. Changes
  /// no content; does nothing where the file system cannot reserve.
  void reserve(std::uint64_t size);

  /// Where the bytes written so far can be read, until `commit`; for checking them first.
  std::filesystem::path readablePath() const;

  /// Gives the content its name, safe against power failure. If only that last safety cannot be
  /// had, the error says that the file is saved.
  void commit();

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
