#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "orvane/platform/error.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/whole_file.h"

namespace orvane::test {

/// Files that lie, break off or are scratched.
class DamagedFiles : public testing::Test {
 protected:
  std::string encode(const std::string& name, const Arguments& arguments = {},
                     double seconds = 1.2345) {
    return readFile(encodeNoise(folder_, name, arguments, seconds));
  }

  std::filesystem::path write(const std::string& bytes) {
    return writeFile(folder_ / "damaged.bin", bytes);
  }

  /// Reads the file to its end or to its error, whose text must be there. Gives the frames read.
  std::int64_t survive(const std::string& bytes) {
    const auto file = write(bytes);
    describeAudioFile(file);
    try {
      return readWholeFile(file).frames();
    } catch (const Error& error) {
      EXPECT_FALSE(error.errorDescription().empty());
      return 0;
    }
  }

  TemporaryDirectory folder_;
};

inline void putBigEndian32(std::string& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (24 - 8 * i));
}

inline void putLittleEndian(std::string& bytes, std::size_t at, std::uint32_t value,
                            std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
}

inline std::size_t placeOf(const std::string& bytes, const std::string& what) {
  const std::size_t at = bytes.find(what);
  if (at == std::string::npos) throw std::runtime_error("no " + what + " in the file");
  return at;
}

}  // namespace orvane::test
