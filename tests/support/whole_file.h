#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane::test {

/// Writes `content` as it stands and makes missing folders on the way.
inline std::filesystem::path writeFile(const std::filesystem::path& path,
                                       std::string_view content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream stream(path, std::ios::binary);
  stream.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!stream.flush()) throw std::runtime_error("cannot write " + path.string());
  return path;
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace orvane::test
