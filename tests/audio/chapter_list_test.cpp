#include "orvane/audio/chapter_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane {
namespace {

using ChapterList::Format;
using Marks = std::vector<ChapterMark>;

const Marks kTwo = {{0, 10, "One"}, {10.5, {}, "Two"}};

Marks read(std::string_view text) {
  return ChapterList::read(text, ChapterList::formatOf(text));
}

std::string failure(std::string_view text) {
  try {
    read(text);
  } catch (const ChapterListError& error) {
    return error.errorDescription();
  }
  return "";
}

TEST(ChapterListTest, KnowsWhatATextIs) {
  EXPECT_EQ(ChapterList::formatOf(" \n[{}]"), Format::json);
  EXPECT_EQ(ChapterList::formatOf("\xEF\xBB\xBF{}"), Format::json);
  EXPECT_EQ(ChapterList::formatOf("0.5\t1.5\tname"), Format::audacityLabels);
  EXPECT_EQ(ChapterList::formatOf("0:30\t1:00"), Format::audacityLabels);
  EXPECT_EQ(ChapterList::formatOf("REM GENRE Rock\n"), Format::cueSheet);
  EXPECT_EQ(ChapterList::formatOf("\xEF\xBB\xBF\r\nfile \"a.wav\" WAVE"), Format::cueSheet);
  EXPECT_EQ(ChapterList::formatOf("start,end,name"), Format::csv);
  EXPECT_EQ(ChapterList::formatOf("name\tstart"), Format::csv);
  EXPECT_EQ(ChapterList::formatOf(""), Format::csv);
}

TEST(ChapterListTest, TellsTheOriginAsReportsDo) {
  EXPECT_EQ(ChapterList::origin(Format::json), "imported");
  EXPECT_EQ(ChapterList::origin(Format::csv), "imported (CSV)");
  EXPECT_EQ(ChapterList::origin(Format::audacityLabels), "imported (Audacity labels)");
  EXPECT_EQ(ChapterList::origin(Format::cueSheet), "imported (cue sheet)");
}

TEST(ChapterListTest, ReadsJSONInItsForms) {
  const std::string array =
      R"([{"name":"One","startSec":0,"endSec":10,"index":0},{"title":"Two","startTime":10.5}])";
  EXPECT_EQ(read(array), kTwo);
  EXPECT_EQ(read("{\"version\":\"1.2.0\",\"chapters\":" + array + "}"), kTwo);
  EXPECT_EQ(read("{\"entries\":" + array + ",\"origin\":\"imported\"}"), kTwo);
  EXPECT_EQ(read("{\"file\":{},\"chapters\":{\"medianLUFS\":-20,\"entries\":" + array + "}}"),
            kTwo);
  EXPECT_EQ(read(R"([{"start":1,"end":null,"name":null}])"), (Marks{{1, {}, ""}}));
}

TEST(ChapterListTest, NamesTheKeyThatIsWrongInJSON) {
  EXPECT_EQ(failure(R"([{"name":"x"}])"), "The key \"[0].startSec\" is missing.");
  EXPECT_THAT(failure(R"({"chapters":[{"startSec":-1}]})"),
              testing::HasSubstr("chapters[0].startSec"));
  EXPECT_THAT(failure(R"([{"startSec":5,"endSec":4}])"), testing::HasSubstr("[0]"));
  EXPECT_THAT(failure(R"([{"startSec":"0"}])"), testing::HasSubstr("[0].startSec"));
  EXPECT_THAT(failure(R"([{"startSec":1e999}])"), testing::HasSubstr("[0].startSec"));
  for (const char* text : {"[", "{\"chapters\":", "[{\"startSec\":1}", "[{\"startSec\":1}] x",
                           "{\"chapters\":7}", "{\"entries\":{}}", "[7]", "{"})
    EXPECT_NE(failure(text), "") << text;
  EXPECT_NE(failure(std::string(100'000, '[')), "");
  EXPECT_NE(failure("{\"a\":" + std::string(100'000, '[')), "");
}

TEST(ChapterListTest, RefusesAKeyThatStandsThereTwiceInJSON) {
  EXPECT_EQ(failure(R"([{"startSec":1,"name":"a","startSec":1}])"),
            "\"[0].startSec\" stands there twice.");
  EXPECT_EQ(failure(R"([{"start":1},{"start":2,"name":null,"name":"a"}])"),
            "\"[1].name\" stands there twice.");
  EXPECT_EQ(failure(R"({"chapters":null,"chapters":[{"start":1}]})"),
            "\"chapters\" stands there twice.");
  EXPECT_EQ(failure(R"({"chapters":{"entries":[{"start":1}],"entries":[]}})"),
            "\"chapters.entries\" stands there twice.");
  EXPECT_EQ(read(R"([{"start":0,"startSec":0,"end":10,"name":"One","title":"One"},{"start":10.5}])")
                .size(),
            2U);
}

// A first chapter of that name made its record pass for a header without a start.
TEST(ChapterListTest, ReadsAChapterNamedTitleInCSVWithoutAHeader) {
  EXPECT_EQ(read("0,1,title\n"), (Marks{{0, 1, "title"}}));
}

TEST(ChapterListTest, ReadsCSVByItsHeader) {
  EXPECT_EQ(read("Title,End,Start,Other\r\nOne,10,0,x\r\nTwo,,0:10.5,y\r\n"), kTwo);
  EXPECT_EQ(read("start,name\n0,\n"), (Marks{{0, {}, ""}}));
  EXPECT_EQ(read("\xEF\xBB\xBFname,start\n\"a, \"\"b\"\"\nc\",1\n"),
            (Marks{{1, {}, "a, \"b\"\nc"}}));
}

TEST(ChapterListTest, ReadsCSVWithoutAHeader) {
  EXPECT_EQ(read("0,10,One\n\n10.5,,Two"), kTwo);
  EXPECT_EQ(read("1:02:03.5"), (Marks{{3723.5, {}, ""}}));
}

TEST(ChapterListTest, ReadsTheChapterTableOfReportsBack) {
  EXPECT_EQ(read("Index,Name,Start (s),End (s),Duration (s),RMS (dBFS)\r\n"
                 "0,\"'=SUM(A1)\",0.000,10.000,10.000,-20.00\r\n"
                 "1,Two,10.000,20.000,10.000,\r\n"),
            (Marks{{0, 10, "=SUM(A1)"}, {10, 20, "Two"}}));
}

TEST(ChapterListTest, ReadsAudacityLabels) {
  EXPECT_EQ(read("0.000000\t10.000000\tOne\n\\\t100.0\t200.0\n10.5\t10.5\tTwo\n"), kTwo);
  EXPECT_EQ(read("3\t4"), (Marks{{3, 4, ""}}));
  EXPECT_EQ(read("3\t4\ta\tb\r\n"), (Marks{{3, 4, "a\tb"}}));
}

TEST(ChapterListTest, NamesTheLineThatIsWrong) {
  EXPECT_EQ(failure("start,name\n0,a\nx,b\n"), "Line 3: the start \"x\" is no time in the file.");
  EXPECT_EQ(failure("start,name\n,b\n"), "Line 2: the start is missing.");
  EXPECT_EQ(failure("0,1,a\n5,4,b\n"), "Line 2: the end lies before the start.");
  EXPECT_EQ(failure("name,end\na,1\n"), "Line 1: the header names no column \"start\".");
  EXPECT_EQ(failure("0,1,\"a\n"), "Line 1: a quotation mark is never closed.");
  EXPECT_EQ(failure("0,1,caf\xE9\n"), "Line 1: the name is not UTF-8.");
  EXPECT_EQ(failure("0\t1\ta\n-1\t1\tb\n"), "Line 2: the start \"-1\" is no time in the file.");
  EXPECT_EQ(failure("0\t1\ta\nb\n"), "Line 2: the start \"b\" is no time in the file.");
  EXPECT_EQ(failure("0\tnan\ta\n"), "Line 1: the end \"nan\" is no time in the file.");
  EXPECT_EQ(failure(std::string(1000, 'x')),
            "Line 1: the start \"" + std::string(40, 'x') + "...\" is no time in the file.");
}

TEST(ChapterListTest, RefusesListsWithoutChaptersAndEndlessOnes) {
  for (const char* text :
       {"", "\n\n", "start,end,name\n", "[]", "{}", "{\"chapters\":null}", "REM nothing\n"})
    EXPECT_EQ(failure(text), "The list holds no chapters.") << text;
  std::string labels;
  std::string json = "[";
  for (int i = 0; i <= 10'000; ++i) {
    labels += std::to_string(i) + "\t" + std::to_string(i) + "\n";
    json += "{\"start\":1},";
  }
  EXPECT_EQ(failure(labels), "The list holds more than 10000 chapters.");
  EXPECT_EQ(failure(json), "The list holds more than 10000 chapters.");
}

// Lists from spreadsheets were refused.
TEST(ChapterListTest, ReadsUTF16WithAByteOrderMark) {
  using namespace std::string_view_literals;
  constexpr auto kLittle =
      "\xFF\xFE"
      "0\0\t\0001\0\t\0\xEB\0\n\0"sv;
  constexpr auto kBig = "\xFE\xFF\0[\0{\0\"\0s\0t\0a\0r\0t\0\"\0:\0002\0}\0]"sv;
  EXPECT_EQ(ChapterList::formatOf(kLittle), ChapterList::Format::audacityLabels);
  EXPECT_EQ(ChapterList::read(kLittle, ChapterList::Format::audacityLabels),
            (std::vector<ChapterMark>{{0, 1, "\u00EB"}}));
  EXPECT_EQ(ChapterList::formatOf(kBig), ChapterList::Format::json);
  EXPECT_EQ(ChapterList::read(kBig, ChapterList::Format::json), std::vector<ChapterMark>{{2}});
}

TEST(CueSheet, GivesTheTitlesOfItsTracks) {
  EXPECT_EQ(
      read("REM DATE 1999\r\n"
           "PERFORMER \"Somebody\"\r\n"
           "TITLE \"The album\"\r\n"
           "FILE \"album.wav\" WAVE\r\n"
           "  TRACK 01 AUDIO\r\n"
           "    TITLE \"One\"\r\n"
           "    INDEX 01 00:00:00\r\n"
           "  TRACK 02 AUDIO\r\n"
           "    TITLE Two words\r\n"
           "    FLAGS DCP\r\n"
           "    INDEX 00 01:58:00\r\n"
           "    INDEX 01 02:00:37\r\n"
           "  track 03 audio\n"
           "    index 01 100:59:74"),
      (Marks{{0, {}, "One"}, {120 + 37.0 / 75, {}, "Two words"}, {6059 + 74.0 / 75, {}, ""}}));
}

TEST(CueSheet, MayBeInLatin1) {
  EXPECT_EQ(read("FILE x WAVE\nTRACK 1 AUDIO\nTITLE \"Caf\xE9\"\nINDEX 1 0:0:0"),
            (Marks{{0, {}, "Café"}}));
}

TEST(CueSheet, LeavesDataTracksOut) {
  EXPECT_EQ(read("FILE x BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                 "TRACK 02 AUDIO\nINDEX 01 01:00:00"),
            (Marks{{60, {}, ""}}));
}

TEST(CueSheet, NamesTheLineThatIsWrong) {
  EXPECT_EQ(failure("FILE x WAVE\nTRACK 1 AUDIO\nTITLE x\n"), "Line 2: the track has no INDEX 01.");
  EXPECT_EQ(failure("FILE x WAVE\nINDEX 01 00:00:00\n"),
            "Line 2: an INDEX stands before the first TRACK.");
  EXPECT_EQ(failure("FILE a WAVE\nTRACK 1 AUDIO\nINDEX 01 00:00:00\nFILE b WAVE\n"
                    "TRACK 2 AUDIO\nINDEX 01 00:00:00\n"),
            "Line 4: the cue sheet goes on in a second file.");
  for (const char* time : {"", "00:00", "00:60:00", "00:00:75", "-1:00:00", "0:0:0:0", "a:b:c",
                           "99999999999:00:00", "00:00:00 x"})
    EXPECT_THAT(failure("FILE x WAVE\nTRACK 1 AUDIO\nINDEX 01 " + std::string(time)),
                testing::StartsWith("Line 3: INDEX takes a number and a time mm:ss:ff, not \""))
        << time;
}

}  // namespace
}  // namespace orvane
