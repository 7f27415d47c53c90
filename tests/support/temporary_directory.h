#pragma once

#include <stdlib.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::test {

/// A fresh folder that goes away with its contents.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "orvane-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const noexcept { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  /// Writes a file of these bytes and gives its path.
  std::filesystem::path write(std::string_view name, const std::vector<std::byte>& bytes) const {
    const auto target = path_ / name;
    std::ofstream stream(target, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    if (!stream) throw std::runtime_error("cannot write " + target.string());
    return target;
  }

  std::filesystem::path write(std::string_view name, std::string_view text) const {
    const auto* const bytes = reinterpret_cast<const std::byte*>(text.data());
    return write(name, std::vector<std::byte>(bytes, bytes + text.size()));
  }

 private:
  std::filesystem::path path_;
};

}  // namespace orvane::test
