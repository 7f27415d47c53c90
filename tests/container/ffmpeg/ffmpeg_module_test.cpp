#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "orvane/container/ffmpeg/ffmpeg_module.h"
#include "orvane/platform/error.h"
#include "orvane/platform/module_location.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

/// Set for a copy of this program that is run beside libraries without the module.
constexpr const char* kWithoutModule = "ORVANE_TEST_WITHOUT_MODULE";

bool isFFmpegLoaded() {
  std::ifstream maps("/proc/self/maps");
  const std::string text{std::istreambuf_iterator<char>(maps), {}};
  return text.find("libavcodec") != std::string::npos;
}

class FFmpegModuleTest : public testing::Test {
 protected:
  std::filesystem::path program() const { return ModuleLocation::executable().value(); }

  /// Runs one test of this program in a process of its own.
  static std::string runAlone(const std::filesystem::path& program, const std::string& test,
                              const std::vector<std::string>& environment = {}) {
    std::vector<std::string> words = environment;
    words.insert(words.end(), {program.string(), "--gtest_filter=" + test});
    return test::runTool("env", words);
  }

  test::TemporaryDirectory folder_;
};

TEST_F(FFmpegModuleTest, IsNotLoadedForLinearPCM) {
  if (isFFmpegLoaded()) {
    // Another test of this process needed it: ask a fresh process.
    const std::string output = runAlone(program(), "FFmpegModuleTest.IsNotLoadedForLinearPCM");
    EXPECT_NE(output.find("[  PASSED  ] 1 test"), std::string::npos);
    return;
  }
  for (const char* name : {"a.wav", "a.aiff", "a.caf", "a.w64"}) {
    const auto file = test::encodeNoise(folder_, name, {"-ac", "2"});
    EXPECT_TRUE(describeAudioFile(file));
    EXPECT_GT(test::readWholeFile(file).frames(), 0);
    EXPECT_FALSE(isFFmpegLoaded()) << name;
  }
  test::readWholeFile(test::encodeNoise(folder_, "a.ogg"));
  EXPECT_TRUE(isFFmpegLoaded());
}

TEST_F(FFmpegModuleTest, IsNamedWhenItIsMissing) {
  if (std::getenv(kWithoutModule) == nullptr) {
    // The libraries alone, where the program finds them before its own.
    const auto library = ModuleLocation::module().value();
    for (const auto& entry : std::filesystem::directory_iterator(library.parent_path()))
      if (entry.path().filename().string().starts_with("libOrvane"))
        std::filesystem::copy(entry.path(), folder_ / entry.path().filename().string(),
                              std::filesystem::copy_options::copy_symlinks);
    const std::string output = runAlone(
        program(), "FFmpegModuleTest.IsNamedWhenItIsMissing",
        {"LD_LIBRARY_PATH=" + folder_.path().string(), std::string(kWithoutModule) + "=1"});
    EXPECT_NE(output.find("[  PASSED  ] 1 test"), std::string::npos) << output;
    return;
  }
  const auto file = test::encodeNoise(folder_, "a.mp3");
  EXPECT_EQ(test::openingError(file), "The decoder module orvane_ffmpeg.so is not installed");
  EXPECT_FALSE(describeAudioFile(file));
  EXPECT_FALSE(ffmpegVersion());
  // What needs no decoder is read as ever.
  EXPECT_GT(test::readWholeFile(test::encodeNoise(folder_, "a.wav")).frames(), 0);
}

/// The sniffer stops text before it comes so far; the module must not depend on that.
TEST_F(FFmpegModuleTest, RefusesPlaylistsByItself) {
  const auto library = ModuleLocation::module().value().parent_path() / kFFmpegModuleFile;
  void* const handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(handle, nullptr);
  const auto factory = reinterpret_cast<FFmpegModuleFactory>(dlsym(handle, kFFmpegModuleFactory));
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(factory(kFFmpegModuleVersion + 1), nullptr);
  const FFmpegModule* const module = factory(kFFmpegModuleVersion);
  ASSERT_NE(module, nullptr);

  const std::string audio = test::encodeNoise(folder_, "a.mp3").string();
  const std::string texts[] = {
      "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:0\n#EXTINF:1,\n" + audio + "\n",
      "ffconcat version 1.0\nfile '" + audio + "'\n",
      "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 5004 RTP/AVP 0\n",
      "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\"></MPD>\n",
      "1\n00:00:00,000 --> 00:00:01,000\nHello\n",
      "\x89PNG\r\n\x1A\n",
  };
  for (const std::string& text : texts) {
    const auto file = std::make_shared<const InputFile>(test::writeFile(folder_ / "a.wav", text));
    for (const char* hint : {"", "WAVE", "MPG3", "m4af"}) {
      const FourCC code = *hint != '\0' ? fourCCFrom(hint) : 0;
      EXPECT_THROW(module->open(file, {}, code), PlatformError) << hint << text;
      EXPECT_THROW(module->describe(file, {}, code), PlatformError) << hint << text;
    }
  }
}

TEST_F(FFmpegModuleTest, NamesItsVersion) {
  const auto version = ffmpegVersion();
  ASSERT_TRUE(version);
  const std::string banner = test::runTool("ffmpeg", {"-version"});
  EXPECT_NE(banner.find("ffmpeg version " + *version + " "), std::string::npos) << *version;
}

TEST_F(FFmpegModuleTest, ServesManyThreadsAtOnce) {
  const auto file = test::encodeNoise(folder_, "a.mp3");
  const auto expected = test::readWholeFile(file).samples;
  std::vector<int> isEqual(4, 0);
  {
    std::vector<std::jthread> threads;
    for (int& equal : isEqual)
      threads.emplace_back([&] { equal = test::readWholeFile(file).samples == expected ? 1 : 0; });
  }
  EXPECT_EQ(isEqual, std::vector<int>(4, 1));
}

}  // namespace
}  // namespace orvane
