#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string_view>

#include "orvane/platform/error.h"
#include "orvane/platform/file_descriptor.h"
#include "orvane/platform/file_stamp.h"

namespace orvane {

/// The new content of a file until it takes that file's name. It lies in the file's folder, without
/// a name where the file system can do that, else hidden as ".take1.orvane-save-1A2B3C4D.wav" for
/// "take1.wav". It is marked as in use, and gone with this object unless it has taken the name.
///
/// Every operation that can fail throws `PlatformError` with the target's file name.
class TemporaryFile {
 public:
  /// For the file `name` in the open `folder`; errors name `target`.
  TemporaryFile(const FileDescriptor& folder, std::filesystem::path name,
                std::filesystem::path target, mode_t mode);
  ~TemporaryFile() { discard(); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  int descriptor() const noexcept { return file_.number(); }
  bool isOpen() const noexcept { return static_cast<bool>(file_); }
  /// Where the content can be read.
  std::filesystem::path path() const;

  void sync() const;
  /// After this the content is on disk under its temporary name, and complete.
  void finish();

  // Each gives the finished content the name.

  /// Which nobody may have taken meanwhile.
  void takeFreeName();
  /// Whatever stands there.
  void replaceAny();
  /// If this version still stands there.
  void replaceVersion(const FileStamp& version);

  /// Removes the content, wherever it is; nothing that this object has not made.
  void discard() noexcept;

  /// What is thrown where another version is found than the one to be replaced.
  static PlatformError changedMeanwhile(const std::filesystem::path& target);

  /// Whether a file's name is that of a temporary.
  static bool isTemporaryName(std::string_view name) noexcept;

 private:
  [[noreturn]] void fail(int code) const;
  [[noreturn]] void failAsLeftBeside(const std::filesystem::path& name, int code) const;
  // Asked also where a call has failed: network file systems report so what they have done. They
  // differ where nothing can be seen.
  bool isUnder(const std::filesystem::path& name) const noexcept;
  bool mayBeUnder(const std::filesystem::path& name) const noexcept;
  void removeTemporaryName();
  void end() noexcept;

  // Names are paths, so that nothing is allocated to look at them: that may not fail once the
  // content has its name.
  int folder_;
  std::filesystem::path name_;
  std::filesystem::path target_;
  FileDescriptor file_{};
  FileDescriptor mark_{};  ///< that it is in use: outlives `file_`, until the name is given
  FileStamp own_{};        ///< which file `file_` is
  std::filesystem::path temporaryName_{};  ///< empty while the content has none
};

}  // namespace orvane
