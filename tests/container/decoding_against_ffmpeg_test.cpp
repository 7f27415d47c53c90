// Files that other programs wrote decode, bit by bit, to what FFmpeg decodes from them.

#include <gtest/gtest.h>

#include <array>

#include "tests/container/peer_decoding.h"
#include "tests/support/ffmpeg_comparison.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using test::expectEqualToLibsndfile;
using test::expectEqualToSoX;
using test::writeWithLibsndfile;

using Arguments = std::vector<std::string>;

constexpr int kChannelCounts[] = {1, 2, 6, 8};

/// The way each program calls one encoding of one container.
struct Encoding {
  std::string extension;
  std::string name;
  Arguments options{};
};

/// Noise in as many channels as asked for; each program makes its own files of it.
std::filesystem::path noise(const std::filesystem::path& folder, int channels) {
  const auto target = folder / ("noise" + std::to_string(channels) + ".wav");
  test::runTool("sox", {"-R", "-n", "-r", "48000", "-b", "32", "-c", std::to_string(channels),
                        target.string(), "synth", "997s", "whitenoise"});
  return target;
}

/// FFmpeg does not know little-endian AU nor AIFF-C's types for little-endian 24 and 32 bits, and
/// takes the samples of big-endian WAVE for little-endian ones.
bool isBeyondFFmpeg(int container, int encoding, int order) {
  if (order == SF_ENDIAN_BIG) return container == SF_FORMAT_WAV;
  if (order != SF_ENDIAN_LITTLE) return false;
  return container == SF_FORMAT_AU ||
         (container == SF_FORMAT_AIFF &&
          (encoding == SF_FORMAT_PCM_24 || encoding == SF_FORMAT_PCM_32));
}

TEST(DecodingAgainstFFmpeg, FilesOfFFmpeg) {
  test::FFmpegComparison files;
  std::vector<Encoding> encodings;
  const auto add = [&](const std::string& extension, const Arguments& codecs,
                       const Arguments& options = {}) {
    for (const std::string& codec : codecs) encodings.push_back({extension, codec, options});
  };
  const Arguments little = {"pcm_s16le", "pcm_s24le", "pcm_s32le", "pcm_f32le", "pcm_f64le"};
  const Arguments big = {"pcm_s16be", "pcm_s24be", "pcm_s32be", "pcm_f32be", "pcm_f64be"};
  add("wav", {"pcm_u8", "pcm_s64le"});
  add("wav", little);
  add("rf64.wav", {"pcm_u8"}, {"-rf64", "always"});
  add("rf64.wav", little, {"-rf64", "always"});
  add("w64", {"pcm_u8", "pcm_s64le"});
  add("w64", little);
  add("aiff", {"pcm_s8", "pcm_s16le"});
  add("aiff", big);
  add("caf", {"pcm_s8"});
  add("caf", little);
  add("caf", big);
  add("au", {"pcm_s8"});
  add("au", big);
  for (const int channels : kChannelCounts) {
    // One run writes all files of a channel count.
    Arguments arguments = {"-v", "error", "-y", "-i", noise(files.folder(), channels).string()};
    for (const Encoding& encoding : encodings) {
      const std::string name =
          encoding.name + "-" + std::to_string(channels) + "." + encoding.extension;
      arguments.insert(arguments.end(), {"-c:a", encoding.name});
      arguments.insert(arguments.end(), encoding.options.begin(), encoding.options.end());
      arguments.push_back((files.folder() / name).string());
      files.add(name, channels);
    }
    test::runTool("ffmpeg", arguments);
  }
  files.expectEqual();
}

TEST(DecodingAgainstFFmpeg, FilesOfSoX) {
  test::FFmpegComparison files;
  std::vector<Encoding> encodings;
  const auto add = [&](const std::string& extension, const std::string& kind,
                       const std::vector<int>& depths, const std::string& order) {
    for (const int bits : depths)
      encodings.push_back({extension,
                           kind.substr(0, 3) + std::to_string(bits) + order,
                           {"-e", kind, "-b", std::to_string(bits), order}});
  };
  add("wav", "unsigned-integer", {8}, "-L");
  add("wav", "signed-integer", {16, 24, 32}, "-L");
  add("wav", "floating-point", {32, 64}, "-L");
  add("wav", "unsigned-integer", {8}, "-B");
  add("wav", "signed-integer", {16, 24, 32}, "-B");
  add("wav", "floating-point", {32, 64}, "-B");
  add("w64", "unsigned-integer", {8}, "-L");
  add("w64", "signed-integer", {16, 24, 32}, "-L");
  add("w64", "floating-point", {32, 64}, "-L");
  add("aiff", "signed-integer", {8, 16, 24, 32}, "-B");
  add("aifc", "signed-integer", {8, 16, 24, 32}, "-B");
  add("aifc", "floating-point", {32, 64}, "-B");
  add("caf", "signed-integer", {8, 16, 24, 32}, "-B");
  add("caf", "signed-integer", {16, 24, 32}, "-L");
  add("caf", "floating-point", {32, 64}, "-B");
  add("caf", "floating-point", {32, 64}, "-L");
  add("au", "signed-integer", {8, 16, 24, 32}, "-B");
  add("au", "floating-point", {32, 64}, "-B");
  add("au", "signed-integer", {8, 16, 24, 32}, "-L");
  add("au", "floating-point", {32, 64}, "-L");
  for (const int channels : kChannelCounts) {
    const auto source = noise(files.folder(), channels);
    for (const Encoding& encoding : encodings) {
      const std::string name =
          encoding.name + "-" + std::to_string(channels) + "." + encoding.extension;
      Arguments arguments = {"-D", source.string()};
      arguments.insert(arguments.end(), encoding.options.begin(), encoding.options.end());
      arguments.push_back((files.folder() / name).string());
      test::runTool("sox", arguments);
      // FFmpeg does not read big-endian WAVE right, and little-endian AU not at all.
      const std::string& order = encoding.options.back();
      if ((encoding.extension == "wav" && order == "-B") ||
          (encoding.extension == "au" && order == "-L"))
        expectEqualToSoX(files.folder() / name);
      else
        files.add(name, channels);
    }
  }
  files.expectEqual();
}

TEST(DecodingAgainstFFmpeg, FilesOfLibsndfile) {
  struct Container {
    const char* extension;
    int format;
  };
  constexpr std::array kContainers = {
      Container{"wav", SF_FORMAT_WAV},   Container{"wavex.wav", SF_FORMAT_WAVEX},
      Container{"w64", SF_FORMAT_W64},   Container{"rf64", SF_FORMAT_RF64},
      Container{"aiff", SF_FORMAT_AIFF}, Container{"caf", SF_FORMAT_CAF},
      Container{"au", SF_FORMAT_AU}};
  constexpr std::array kEncodings = {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16,
                                     SF_FORMAT_PCM_24, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT,
                                     SF_FORMAT_DOUBLE};
  test::FFmpegComparison files;
  for (const Container& container : kContainers) {
    for (const int encoding : kEncodings) {
      for (const int order : {SF_ENDIAN_FILE, SF_ENDIAN_LITTLE, SF_ENDIAN_BIG}) {
        for (const int channels : kChannelCounts) {
          const std::string name = "e" + std::to_string(encoding) + "-o" +
                                   std::to_string(order >> 28) + "-" + std::to_string(channels) +
                                   "." + container.extension;
          const auto path = files.folder() / name;
          if (!writeWithLibsndfile(path, container.format | encoding | order, channels)) continue;
          if (isBeyondFFmpeg(container.format, encoding, order))
            expectEqualToLibsndfile(path);
          else
            files.add(name, channels);
        }
      }
    }
  }
  EXPECT_GT(files.size(), 200U);
  files.expectEqual();
}

}  // namespace
}  // namespace orvane
