#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/temporary_directory.h"

namespace orvane::test {

/// Files of any origin that must decode, bit by bit and in their stored channel order, to what the
/// FFmpeg program decodes from them.
class FFmpegComparison {
 public:
  /// Where the files are to be written.
  const std::filesystem::path& folder() const { return folder_.path(); }
  std::size_t size() const { return files_.size(); }

  void add(const std::string& name, int channels) { files_.emplace_back(name, channels); }

  void expectEqual() const;

 private:
  using Named = std::pair<std::string, int>;

  std::string path(const std::string& name) const { return (folder() / name).string(); }
  void decodeWithFFmpeg(std::size_t first, std::size_t count) const;
  void expectEqual(const Named& file) const;

  TemporaryDirectory folder_;
  std::vector<Named> files_;
};

}  // namespace orvane::test
