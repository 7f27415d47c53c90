#include "orvane/text/text_list.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(TextLists, TakeLinesWithEitherEnd) {
  std::string_view text = "one\r\ntwo\n\nlast";
  EXPECT_EQ(TextList::takeLine(text), "one");
  EXPECT_EQ(TextList::takeLine(text), "two");
  EXPECT_EQ(TextList::takeLine(text), "");
  EXPECT_EQ(TextList::takeLine(text), "last");
  EXPECT_EQ(text, "");
  EXPECT_EQ(TextList::takeLine(text), "");
}

TEST(TextLists, AreUTF8WhateverTheyWere) {
  using namespace std::string_view_literals;
  EXPECT_EQ(TextList::asUTF8("plain \xEF"), "plain \xEF");
  EXPECT_EQ(TextList::asUTF8("\xFF\xFE"), "");
  EXPECT_EQ(TextList::asUTF8("\xFF\xFE"
                             "a\0\xEB\0-N\x3D\xD8\0\xDE"sv),
            "a\u00EB\u4E2D\U0001F600");
  EXPECT_EQ(TextList::asUTF8("\xFE\xFF\0a\0\xEBN-\xD8\x3D\xDE\0"sv), "a\u00EB\u4E2D\U0001F600");
  // Half a pair, the other half, half a character.
  EXPECT_EQ(TextList::asUTF8("\xFE\xFF\xD8\x3D\0a\xDE\0\0"sv), "\uFFFDa\uFFFD\uFFFD");
}

TEST(TextLists, FindColumnsByTheirNames) {
  TextList::CSVReader reader("Index, START (s) ,Name\n");
  const auto header = reader.next().value();
  EXPECT_EQ(TextList::columnNamed(header, {"start", "start (s)"}), 1U);
  EXPECT_EQ(TextList::columnNamed(header, {"name", "index"}), 0U);
  EXPECT_EQ(TextList::columnNamed(header, {"end"}), std::nullopt);
}

TEST(TextLists, CountTheLinesOfRecordsOverSeveral) {
  TextList::CSVReader reader("\"a\nb\",1\n\nlast");
  EXPECT_EQ(reader.next()->line, 1U);
  const auto empty = reader.next().value();
  EXPECT_EQ(empty.line, 3U);
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_EQ(reader.next()->line, 4U);
  EXPECT_FALSE(reader.next().has_value());
}

TEST(TextLists, QuoteNoMoreThanTheStartOfLongTexts) {
  EXPECT_EQ(TextList::quoted("abc"), "\"abc\"");
  EXPECT_EQ(TextList::quoted(std::string(100, 'x')), "\"" + std::string(40, 'x') + "...\"");
}

TEST(TextLists, TellWhatStartsLikeAFormula) {
  for (const char* cell : {"=1", "+1", "-1", "@x", "\t", "\r"}) {
    EXPECT_TRUE(TextList::startsLikeFormula(cell)) << cell;
    EXPECT_FALSE(TextList::startsLikeFormula(std::string("'") + cell)) << cell;
    EXPECT_TRUE(TextList::looksLikeFormula(std::string("''") + cell)) << cell;
  }
  for (const char* cell : {"", "'", "1", "a=b"}) {
    EXPECT_FALSE(TextList::startsLikeFormula(cell)) << cell;
    EXPECT_FALSE(TextList::looksLikeFormula(cell)) << cell;
  }
}

TEST(TextLists, PutCellsInQuotesWhereTheyNeedThem) {
  EXPECT_EQ(TextList::csvCell("plain 'text'"), "plain 'text'");
  EXPECT_EQ(TextList::csvCell("a,b"), "\"a,b\"");
  EXPECT_EQ(TextList::csvCell("\""), "\"\"\"\"");
  EXPECT_EQ(TextList::csvCell("a\nb"), "\"a\nb\"");
  EXPECT_EQ(TextList::csvCell(""), "");
  EXPECT_EQ(TextList::csvQuoted(""), "\"\"");
}

TEST(TextLists, TakeTheApostropheOffWhatIsNoFormula) {
  EXPECT_EQ(TextList::unguarded("'=cmd"), "=cmd");
  EXPECT_EQ(TextList::unguarded("'tis"), "'tis");
  EXPECT_EQ(TextList::unguarded(""), "");
}

}  // namespace
}  // namespace orvane
