#include "orvane/container/sniff/text_sniffer.h"

#include <gtest/gtest.h>

#include <string>

#include "orvane/container/sniff/container_sniffer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using namespace std::string_literals;
using enum SniffedContainer::Kind;

SniffedContainer::Kind kindOf(const std::string& text) {
  const test::TemporaryDirectory folder;
  const InputFile file(folder.write("song.wav", text));
  return sniffContainer(file).kind;
}

TEST(TextSniffer, KnowsTextInSeveralCodes) {
  EXPECT_EQ(kindOf("x"), text);
  EXPECT_EQ(kindOf("Hello, world.\r\n\tYours\n"), text);
  EXPECT_EQ(kindOf("\xEF\xBB\xBFGr\xC3\xBC\xC3\x9F"
                   "e aus M\xC3\xBCnchen\n"),
            text);
  EXPECT_EQ(kindOf("\xFF\xFEH\0i\0!\0\n\0"s), text);
  EXPECT_EQ(kindOf("\xFE\xFF\0H\0i\0!\0\n"s), text);
  EXPECT_EQ(kindOf("{\"a\": [1, 2]}"), text);
  EXPECT_EQ(kindOf("<!DOCTYPE html><html></html>"), text);
}

TEST(TextSniffer, KnowsListsOfOtherFiles) {
  for (const std::string& list :
       {"#EXTM3U\nhttp://example.org/a.ts\n"s, "\xEF\xBB\xBF#EXTM3U\n"s, "  \n#extm3u\n"s,
        "[playlist]\nFile1=a.mp3\n"s, "ffconcat version 1.0\nfile a.wav\n"s, "file 'a.wav'\n"s,
        "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\n"s,
        "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\"></MPD>"s,
        "<?xml version=\"1.0\"?><playlist version=\"1\"></playlist>"s, "<asx version=\"3\">"s,
        "<smil><body/></smil>"s, "FILE \"a.wav\" WAVE\n  TRACK 01 AUDIO\n"s})
    EXPECT_EQ(kindOf(list), playlist) << list;
}

TEST(TextSniffer, LeavesOtherBytesAlone) {
  EXPECT_EQ(kindOf("text\0with zero"s), unknown);
  EXPECT_EQ(kindOf("bell\x07"), unknown);
  EXPECT_EQ(kindOf("\xC3\xA9\xC3\xA9\xC3\xA9"
                   "a"),
            unknown);
}

}  // namespace
}  // namespace orvane
