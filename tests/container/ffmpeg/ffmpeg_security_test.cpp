#include <gtest/gtest.h>

#include <string>

#include "orvane/platform/error.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

/// Files that ask for other files, and names that look like protocols.
class FFmpegSecurity : public testing::Test {
 protected:
  FFmpegSecurity() : secret_(test::encodeNoise(folder_, "secret.mp3")) {}

  void expectRefused(const std::string& name, const std::string& content) {
    const auto file = test::writeFile(folder_ / name, content);
    EXPECT_NE(test::openingError(file), "") << name;
    EXPECT_FALSE(describeAudioFile(file)) << name;
  }

  test::TemporaryDirectory folder_;
  std::filesystem::path secret_;
};

TEST_F(FFmpegSecurity, RefusesPlaylistsUnderAnyName) {
  const std::string secret = secret_.string();
  const std::string playlist =
      "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:0\n#EXTINF:1,\n" + secret +
      "\n#EXT-X-ENDLIST\n";
  const std::string concat = "ffconcat version 1.0\nfile '" + secret + "'\n";
  const std::string session =
      "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 5004 RTP/AVP 0\n";
  const std::string manifest =
      "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\">"
      "<Period><AdaptationSet><Representation id=\"0\" mimeType=\"audio/mp4\"><BaseURL>" +
      secret + "</BaseURL></Representation></AdaptationSet></Period></MPD>\n";
  const std::string composition =
      "<?xml version=\"1.0\"?><CompositionPlaylist xmlns=\"http://www.smpte-ra.org/schemas/2067-3/"
      "2016\"></CompositionPlaylist>";
  for (const char* name : {"a.wav", "a.mp3", "a.m3u8", "a.ffconcat", "a.sdp", "a.mpd", "plain"}) {
    expectRefused(name, playlist);
    expectRefused(name, concat);
    expectRefused(name, session);
    expectRefused(name, manifest);
    expectRefused(name, composition);
    expectRefused(name, "[playlist]\nFile1=" + secret + "\n");
    expectRefused(name, "RTSPtext\nrtsp://127.0.0.1/x\n");
  }
}

TEST_F(FFmpegSecurity, RefusesPlaylistsBehindAnID3Tag) {
  const std::string tag("ID3\x03\0\0\0\0\0\x0A\0\0\0\0\0\0\0\0\0\0", 20);
  expectRefused("a.mp3",
                tag + "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + secret_.string() + "\n");
  expectRefused("b.mp3", tag + "ffconcat version 1.0\nfile '" + secret_.string() + "'\n");
}

TEST_F(FFmpegSecurity, RefusesPicturesTextAndScripts) {
  expectRefused("a.wav", "1\n00:00:00,000 --> 00:00:01,000\nHello\n");
  expectRefused("b.wav", ";FFMETADATA1\ntitle=x\n");
  expectRefused("c.wav", "P6\n1 1\n255\nabc");
  expectRefused("d.wav", "GIF89a\1\0\1\0");
  expectRefused("e.wav", "-SE\n0: 150+8/60\n");
  expectRefused("f.wav", std::string(100000, 'x'));
}

TEST_F(FFmpegSecurity, TakesNamesAsNames) {
  const std::string bytes = test::readFile(secret_);
  const auto expected = test::readWholeFile(secret_).samples;
  for (const char* name : {"concat:a|b", "http:a.mp3", "-", "pipe:0", "file:a", "subfile,,start,0",
                           "data:audio", "crypto:a", "%03d.mp3", "[a]*.mp3", "a\nb.mp3"}) {
    const auto file = test::writeFile(folder_ / name, bytes);
    EXPECT_EQ(test::readWholeFile(file).samples, expected) << name;
  }
  // A relative name must not become an option or a protocol either.
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  EXPECT_EQ(test::readWholeFile("concat:a|b").samples, expected);
  EXPECT_EQ(test::readWholeFile("-").samples, expected);
  std::filesystem::current_path(before);
}

/// A QuickTime file whose sound lies in another file, as its data reference says.
TEST_F(FFmpegSecurity, DoesNotFollowExternalDataReferences) {
  const auto movie = test::encodeNoise(folder_, "a.mov", {"-c:a", "pcm_s16le"});
  std::string bytes = test::readFile(movie);
  const auto at = bytes.find("url ");
  ASSERT_NE(at, std::string::npos);
  // Not self-contained any more: the flag goes, and the reference becomes an alias to nowhere.
  bytes[at + 7] = 0;
  bytes.replace(at, 4, "alis");
  const auto file = test::writeFile(folder_ / "b.mov", bytes);
  try {
    const auto found = test::readWholeFile(file);
    // What is read can only come from this file itself.
    EXPECT_LE(found.frames() * 2, static_cast<std::int64_t>(bytes.size()));
  } catch (const PlatformError& error) {
    EXPECT_FALSE(error.message().empty());
  }
}

}  // namespace
}  // namespace orvane
