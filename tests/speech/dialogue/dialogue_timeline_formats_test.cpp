#include "orvane/speech/dialogue/dialogue_timeline_formats.h"

#include <gtest/gtest.h>

#include <random>

namespace orvane {
namespace {

namespace formats = DialogueTimelineFormats;
using formats::Format;
using Regions = std::vector<DialogueRegion>;

/// Start, end and label, which is all that the formats carry.
using Line = std::tuple<double, double, std::optional<std::string>>;

std::vector<Line> lines(const Regions& regions) {
  std::vector<Line> result;
  for (const auto& region : regions) {
    EXPECT_TRUE(region.isManual());
    result.emplace_back(region.start, region.end, region.label);
  }
  return result;
}

DialogueRegion region(double start, double end, std::optional<std::string> label = std::nullopt) {
  return {UUID::random(), start, end, std::move(label)};
}

std::string csvRefusal(std::string_view text) {
  try {
    (void)formats::regionsFromCSV(text);
  } catch (const DialogueTimelineError& error) {
    return error.errorDescription();
  }
  return "accepted";
}

std::string labelRefusal(std::string_view text) {
  try {
    (void)formats::regionsFromAudacityLabels(text);
  } catch (const DialogueTimelineError& error) {
    return error.errorDescription();
  }
  return "accepted";
}

TEST(DialogueCSV, HasAHeaderAndOneRecordPerRegion) {
  Regions regions{region(0.1, 0.30000000000000004), region(1, 2, "Anna"),
                  region(3, 4, "a, \"b\"\n")};
  regions[0].vadOrigin = ClosedTimeRange{0.1, 0.30000000000000004};
  regions[1].vadOrigin = ClosedTimeRange{1, 3};
  EXPECT_EQ(formats::csv(regions),
            "start,end,label,origin\r\n"
            "0.1,0.30000000000000004,,detected\r\n"
            "1,2,Anna,changed\r\n"
            "3,4,\"a, \"\"b\"\"\n\",drawn\r\n");
  EXPECT_EQ(formats::csv({}), "start,end,label,origin\r\n");
}

TEST(DialogueCSV, GuardsLabelsThatASpreadsheetWouldRun) {
  for (const std::string start : {"=", "+", "-", "@", "\t", "\r"}) {
    const std::string label = start + "cmd|'/c calc'!A1";
    const auto text = formats::csv({region(0, 1, label)});
    EXPECT_TRUE(text.find(",'" + label) != std::string::npos ||
                text.find(",\"'" + label) != std::string::npos)
        << text;
  }
  EXPECT_EQ(formats::csv({region(0, 1, "plain = text")}).find('\''), std::string::npos);
}

TEST(DialogueCSV, LabelsComeBackToTheByte) {
  for (const char* label : {"",
                            " ",
                            "plain",
                            "=1+1",
                            "'=1+1",
                            "''=1+1",
                            "'",
                            "''",
                            "'quoted'",
                            "-",
                            "\tx",
                            "\r",
                            "\r\n",
                            "a\r\nb",
                            "\"",
                            "\"\"",
                            ",",
                            "a,b\"c\nd",
                            "\u00E9\U0001F3A4",
                            "\x1B[31m",
                            "start"}) {
    const auto back = formats::regionsFromCSV(formats::csv({region(1.5, 2.25, label)}));
    EXPECT_EQ(lines(back), (std::vector<Line>{{1.5, 2.25, label}}))
        << testing::PrintToString(label);
  }
  const auto back = formats::regionsFromCSV(formats::csv({region(1.5, 2.25)}));
  EXPECT_EQ(lines(back), (std::vector<Line>{{1.5, 2.25, std::nullopt}}));
}

TEST(DialogueCSV, RandomLabelsComeBackToTheByte) {
  std::mt19937 random(20240229);
  constexpr std::string_view kCharacters = "'=+-@\t\r\n\",ab ";
  Regions regions;
  for (int i = 0; i < 5000; ++i) {
    std::string label(random() % 6, ' ');
    for (char& c : label) c = kCharacters[random() % kCharacters.size()];
    regions.push_back(region(i, i + 0.5, label));
  }
  EXPECT_EQ(lines(formats::regionsFromCSV(formats::csv(regions))), lines(regions));
}

TEST(DialogueCSV, FindsItsColumnsByName) {
  const auto regions = formats::regionsFromCSV(
      "\xEF\xBB\xBFLabel,note,END,Start\nAnna,x,2,1\n\n,y, 4 ,\t3\n\"\",z,6,5");
  EXPECT_EQ(lines(regions), (std::vector<Line>{{1, 2, "Anna"}, {3, 4, std::nullopt}, {5, 6, ""}}));
}

TEST(DialogueCSV, NeedsNoHeader) {
  EXPECT_EQ(lines(formats::regionsFromCSV("1,2\r\n3,4,Anna,more\r\n1e-3,0.5,\n")),
            (std::vector<Line>{{1, 2, std::nullopt}, {3, 4, "Anna"}, {0.001, 0.5, std::nullopt}}));
  EXPECT_TRUE(formats::regionsFromCSV("").empty());
  EXPECT_TRUE(formats::regionsFromCSV("\r\n\n").empty());
  EXPECT_TRUE(formats::regionsFromCSV("start,end\n").empty());
}

TEST(DialogueCSV, NamesTheLineAndWhatIsWrongWithIt) {
  EXPECT_EQ(csvRefusal("start,end\n1,2\nx,4\n"),
            "Line 3: the start \"x\" is no number of seconds.");
  EXPECT_EQ(csvRefusal("1,2\n3\n"), "Line 2: the end is missing.");
  EXPECT_EQ(csvRefusal("1,2\n,3\n"), "Line 2: the start is missing.");
  EXPECT_EQ(csvRefusal("5,4\n"), "Line 1: the end \"4\" lies before the start \"5\".");
  EXPECT_EQ(csvRefusal("-1,4\n"), "Line 1: the start \"-1\" lies before the file.");
  EXPECT_EQ(csvRefusal("label,start\na,1\n"), "Line 1: the header names no column \"end\".");
  EXPECT_EQ(csvRefusal("end\n1\n"), "Line 1: the header names no column \"start\".");
  EXPECT_EQ(csvRefusal("0,1,\"a\n\nb\"\n2,z\n"), "Line 4: the end \"z\" is no number of seconds.");
  EXPECT_EQ(csvRefusal("0,1\n2,3,\"a\nb\n"), "Line 2: a quotation mark is never closed.");
  EXPECT_EQ(csvRefusal("0,1,\"a\"b\n"),
            "Line 1: something stands behind a closing quotation mark.");
  EXPECT_EQ(csvRefusal("0,1,a\"b\n"),
            "Line 1: a quotation mark stands inside a cell without quotes.");
  EXPECT_EQ(csvRefusal("0,1,a\xFF\n"), "Line 1: the label is not UTF-8.");
  for (const char* number :
       {"NaN", "inf", "-inf", "1e999", "0x10", "1;5", "1 2", "+1", "1s", "0:01"})
    EXPECT_EQ(csvRefusal(std::string(number) + ",9e9"),
              "Line 1: the start \"" + std::string(number) + "\" is no number of seconds.");
}

TEST(DialogueCSV, QuotesOnlyTheStartOfALongCell) {
  EXPECT_EQ(csvRefusal(std::string(1'000'000, 'x') + ",1"),
            "Line 1: the start \"" + std::string(40, 'x') + "...\" is no number of seconds.");
}

TEST(DialogueAudacityLabels, AreLinesOfStartEndAndLabel) {
  EXPECT_EQ(formats::audacityLabels({region(0.1, 0.5), region(1, 2, "Anna \u00E9")}),
            "0.1\t0.5\t\n1\t2\tAnna \u00E9\n");
  EXPECT_EQ(formats::audacityLabels({}), "");
}

TEST(DialogueAudacityLabels, ControlCharactersBecomeSpaces) {
  EXPECT_EQ(formats::audacityLabels({region(0, 1, "a\tb\r\nc\x1B\x7F")}), "0\t1\ta b  c  \n");
}

TEST(DialogueAudacityLabels, ComeBack) {
  const Regions regions{region(0.1, 0.30000000000000004), region(1e-7, 1e7, "=1+1"),
                        region(123.456789, 200, "a, \"b\" 'c'"), region(5, 5, "point")};
  EXPECT_EQ(lines(formats::regionsFromAudacityLabels(formats::audacityLabels(regions))),
            lines(regions));
}

TEST(DialogueAudacityLabels, ReadsWhatTheEditorWrites) {
  EXPECT_EQ(lines(formats::regionsFromAudacityLabels("0.500000\t1.250000\tAnna\r\n"
                                                     "\\\t100.000000\t2000.000000\r\n"
                                                     "\n2.000000\t2.000000\n3\t4\t\ta\tb")),
            (std::vector<Line>{{0.5, 1.25, "Anna"}, {2, 2, std::nullopt}, {3, 4, "\ta\tb"}}));
  EXPECT_TRUE(formats::regionsFromAudacityLabels("").empty());
}

TEST(DialogueAudacityLabels, NameTheLineAndWhatIsWrongWithIt) {
  EXPECT_EQ(labelRefusal("0\t1\na line\n"), "Line 2: there is no tab behind the start.");
  EXPECT_EQ(labelRefusal("0\t\tx\n"), "Line 1: the end is missing.");
  EXPECT_EQ(labelRefusal("0,5\t1\tx\n"), "Line 1: the start \"0,5\" is no number of seconds.");
  EXPECT_EQ(labelRefusal("2\t1\tx\n"), "Line 1: the end \"1\" lies before the start \"2\".");
  EXPECT_EQ(labelRefusal("0\t1\t\xC3\x28\n"), "Line 1: the label is not UTF-8.");
  EXPECT_EQ(labelRefusal("NaN\t1\tx\n"), "Line 1: the start \"NaN\" is no number of seconds.");
}

TEST(DialogueTimelineFormats, AreToldApartByTheirFirstLine) {
  EXPECT_EQ(formats::formatOf("0.5\t1\tx\n"), Format::audacityLabels);
  EXPECT_EQ(formats::formatOf("\xEF\xBB\xBF\n 0.5 \t1\n"), Format::audacityLabels);
  for (const char* text : {"", "\n", "start,end\n", "1,2\n", "1,2,a\tb\n", "start\tend\n"})
    EXPECT_EQ(formats::formatOf(text), Format::csv) << text;
  for (const Format format : {Format::csv, Format::audacityLabels}) {
    const Regions regions{region(1, 2, "x")};
    const auto text = formats::text(regions, format);
    EXPECT_EQ(formats::formatOf(text), format);
    EXPECT_EQ(lines(formats::regions(text, format)), lines(regions));
  }
}

// The first cell of such a list was no number, nor was any other.
TEST(DialogueTimelineFormats, AreReadAsUTF16Too) {
  using namespace std::string_view_literals;
  constexpr auto kLabels =
      "\xFF\xFE"
      "0\0\t\0001\0\t\0\xEB\0\n\0"sv;
  EXPECT_EQ(formats::formatOf(kLabels), Format::audacityLabels);
  EXPECT_EQ(lines(formats::regions(kLabels, Format::audacityLabels)),
            lines({region(0, 1, "\u00EB")}));
  constexpr auto kCSV = "\xFE\xFF\0000\0,\0001\0,\0\xEB"sv;
  EXPECT_EQ(formats::formatOf(kCSV), Format::csv);
  EXPECT_EQ(lines(formats::regions(kCSV, Format::csv)), lines({region(0, 1, "\u00EB")}));
}

TEST(DialogueTimelineFormats, HaveNames) {
  EXPECT_EQ(formats::formatFromName("csv"), Format::csv);
  EXPECT_EQ(formats::formatFromName("audacity"), Format::audacityLabels);
  EXPECT_EQ(formats::formatFromName("CSV"), std::nullopt);
}

TEST(DialogueTimelineFormats, TimesOfAnySizeAreWritten) {
  for (const double value : {0.0, 5e-324, 1e308, 1.0 / 3, 86400.125}) {
    for (const Format format : {Format::csv, Format::audacityLabels}) {
      const auto back = formats::regions(formats::text({region(0, value)}, format), format);
      ASSERT_EQ(back.size(), 1U);
      EXPECT_DOUBLE_EQ(back[0].end, value);
    }
  }
}

}  // namespace
}  // namespace orvane
