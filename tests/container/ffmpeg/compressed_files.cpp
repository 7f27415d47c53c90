#include "tests/container/ffmpeg/compressed_files.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "orvane/platform/error.h"
#include "tests/support/tool_runner.h"

namespace orvane::test {

std::filesystem::path encodeNoise(const TemporaryDirectory& folder, const std::string& name,
                                  const Arguments& arguments, double seconds) {
  const auto file = folder / name;
  Arguments words = {"-v",
                     "error",
                     "-y",
                     "-f",
                     "lavfi",
                     "-i",
                     "anoisesrc=duration=" + std::to_string(seconds) +
                         ":color=pink:sample_rate=48000:amplitude=0.3:seed=7"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  words.push_back(file.string());
  runTool("ffmpeg", words);
  return file;
}

std::vector<float> decodeWithFFmpeg(const std::filesystem::path& file, int stream) {
  const std::string bytes =
      runTool("ffmpeg", {"-v", "error", "-i", "file:" + file.string(), "-map",
                         "0:a:" + std::to_string(stream), "-f", "f32le", "-"});
  std::vector<float> samples(bytes.size() / sizeof(float));
  std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
  return samples;
}

bool ReadFile::hasWarning(AudioFileWarning::Code code) const {
  return std::any_of(description.warnings.begin(), description.warnings.end(),
                     [&](const AudioFileWarning& warning) { return warning.code == code; });
}

ReadFile readToEnd(AudioFile& file, std::uint32_t bufferFrames) {
  ReadFile result;
  result.promisedFrames = file.frameLength();
  const auto buffer = PCMBuffer::make(file.processingFormat(), bufferFrames);
  if (!buffer) throw std::runtime_error("no memory for a buffer");
  for (;;) {
    file.read(*buffer);
    if (buffer->frameLength() == 0) break;
    for (std::uint32_t i = 0; i < buffer->frameLength(); ++i)
      for (std::uint32_t c = 0; c < buffer->channelCount(); ++c)
        result.samples.push_back(buffer->channel(c)[i]);
  }
  result.description = file.description();
  return result;
}

ReadFile readWholeFile(const std::filesystem::path& file, const AudioFileOpenOptions& options,
                       std::uint32_t bufferFrames) {
  return readToEnd(*AudioFile::open(file, options), bufferFrames);
}

double largestDifference(const std::vector<float>& a, const std::vector<float>& b) {
  double largest = a.size() == b.size() ? 0 : INFINITY;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    largest = std::max(largest, std::abs(static_cast<double>(a[i]) - static_cast<double>(b[i])));
  return largest;
}

std::string openingError(const std::filesystem::path& file, const AudioFileOpenOptions& options) {
  try {
    AudioFile::open(file, options);
  } catch (const PlatformError& error) {
    return error.message();
  }
  return {};
}

std::string wordOf(const std::string& name) {
  std::string word;
  for (const char c : name) word += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return word;
}

std::string textOf(FourCC code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift & 0xFF);
  return text;
}

}  // namespace orvane::test
