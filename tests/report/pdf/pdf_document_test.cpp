#include "orvane/report/pdf/pdf_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orvane/report/pdf/browser/browser_error.h"
#include "tests/report/pdf/sample_pdf.h"

namespace orvane {
namespace {

using test::bytesOf;
using test::SamplePDF;
using test::textOf;
using testing::HasSubstr;
using testing::Not;

/// The sample with its page made to be of this size.
std::string fitted(const SamplePDF& sample, int width, int height) {
  const auto bytes = PDFDocument(bytesOf(sample.text())).withPageOf(width, height);
  return std::string(textOf(bytes));
}

TEST(PDFDocument, CountsPages) {
  for (const int count : {0, 1, 2, 11})
    EXPECT_EQ(PDFDocument(bytesOf(SamplePDF{.pageCount = count}.text())).pageCount(), count);
}

TEST(PDFDocument, MakesTheBoxExactWithoutMovingAnything) {
  const auto before = SamplePDF{}.text();
  const auto text = fitted({}, 794, 1123);
  EXPECT_THAT(text, HasSubstr("\n/MediaBox [0 0 794 1123]            \n/Contents"));
  // Neither the title nor a dictionary inside of the page's is taken for the box.
  EXPECT_THAT(text, HasSubstr("/Title (\\(/MediaBox [9 9 9 9] >> \\) /Count 7)"));
  EXPECT_THAT(text, HasSubstr("/Other <</MediaBox [1 2 3 4]>>"));
  const auto table = before.rfind("xref\n0");
  EXPECT_EQ(text.substr(table, before.size() - table), before.substr(table));
  EXPECT_THAT(text, Not(HasSubstr("793.9")));
}

TEST(PDFDocument, RaisesWhatIsDrawnToTheUpperEdge) {
  const auto before = SamplePDF{}.text();
  const auto text = fitted({}, 794, 1123).substr(before.size());
  EXPECT_THAT(text, HasSubstr("/Contents [5 0 R 9 0 R 6 0 R]"));
  EXPECT_THAT(text, HasSubstr("\n5 0 obj\n<</Length 22>>\nstream\n"
                              "q 1 0 0 1 0 0.04004 cm\nendstream\nendobj\n"));
  EXPECT_THAT(text, HasSubstr("\n6 0 obj\n<</Length 1>>\nstream\nQ\nendstream\nendobj\n"));
  EXPECT_THAT(text,
              HasSubstr("trailer\n<</Size 7\n/Prev " + std::to_string(before.rfind("xref\n0")) +
                        "\n/Root 2 0 R\n/Info 1 0 R>>\nstartxref\n"));
  EXPECT_THAT(fitted({.contents = "[8 0 R 9 0 R]"}, 794, 1123),
              HasSubstr("/Contents [5 0 R 8 0 R 9 0 R 6 0 R]"));
  EXPECT_THAT(fitted({.mediaBox = "[0 0 793.91998 1667.03992]"}, 794, 1667),
              HasSubstr("q 1 0 0 1 0 -0.03992 cm"));
}

TEST(PDFDocument, PointsToEveryObjectThatItAdds) {
  const auto text = fitted({}, 794, 1123);
  const auto numberAfter = [&](std::string_view words) {
    return std::stoul(text.substr(text.rfind(words) + words.size()));
  };
  const auto table = text.substr(numberAfter("startxref\n"));
  ASSERT_TRUE(table.starts_with("xref\n4 1\n")) << table;
  for (const std::size_t number : {4U, 5U, 6U}) {
    const auto name = std::to_string(number);
    const auto row = table.substr(table.find("\n" + name + " 1\n") + 5, 20);
    EXPECT_THAT(row, testing::EndsWith(" 00000 n \n"));
    EXPECT_TRUE(text.substr(std::stoul(row)).starts_with(name + " 0 obj\n")) << row;
  }
}

TEST(PDFDocument, AddsNothingWhenTheHeightIsExact) {
  const SamplePDF sample{.mediaBox = "[0 0 793.91998 1200]"};
  EXPECT_EQ(fitted(sample, 794, 1200).size(), sample.text().size());
}

TEST(PDFDocument, LeavesABoxThatIsExact) {
  const SamplePDF sample{.mediaBox = "[0 0 794 14400]"};
  EXPECT_EQ(fitted(sample, 794, 14400), sample.text());
}

TEST(PDFDocument, RefusesABoxThatIsNotTheOneAskedFor) {
  for (const char* box : {"[0 0 612 792]", "[0 0 793.91998 1125]", "[0 5 793.91998 1128]",
                          "[0 0 793.91998]", "[0 0 (a) 1123]", "7", "[]"})
    EXPECT_THROW(fitted({.mediaBox = box}, 794, 1123), BrowserError) << box;
}

std::string dated(const SamplePDF& sample, std::int64_t time) {
  PDFDocument document(bytesOf(sample.text()));
  document.setDates(time);
  const auto bytes = std::move(document).withPageOf(794, 1123);
  return std::string(textOf(bytes));
}

TEST(PDFDocument, SetsBothDates) {
  const SamplePDF sample{.mediaBox = "[0 0 794 1123]"};
  const auto text = dated(sample, 1'000'000'000);
  EXPECT_EQ(text.size(), sample.text().size());
  EXPECT_THAT(text, HasSubstr("/CreationDate (D:20010909014640+00'00')"));
  EXPECT_THAT(text, HasSubstr("/ModDate (D:20010909014640+00'00')"));
}

TEST(PDFDocument, LeavesDatesOfAnotherFormAndDoesWithout) {
  for (const char* information : {"<</CreationDate (D:2026)>>", "<</Title (none)>>", "<<>>"}) {
    const SamplePDF sample{.mediaBox = "[0 0 794 1123]", .information = information};
    EXPECT_EQ(dated(sample, 0), sample.text());
  }
}

TEST(PDFDocument, RefusesWhatIsNoDocument) {
  const auto good = SamplePDF{}.text();
  const auto with = [&](std::string_view from, std::string_view to) {
    auto text = good;
    text.replace(text.find(from), from.size(), to);
    return text;
  };
  for (const auto& text :
       {std::string(), std::string("%PDF-1.4\n"), good.substr(1), good.substr(0, good.size() / 2),
        with("startxref\n", "startxref\n9999999"), with("xref\n0 5", "xref\n0 99999999"),
        with("/Root 2 0 R", "/Root 9 0 R"), with("/Root 2 0 R", "/Root (22R)"),
        with("/Count 1", "/Count x"), with("trailer", "nothing"), with("/Pages 3", "/Paths 3"),
        with("/Root", "/Prev 9\n/Root")})
    EXPECT_THROW(PDFDocument{bytesOf(text)}, BrowserError) << text;
}

TEST(PDFDocument, SurvivesAnyDamage) {
  const auto good = SamplePDF{}.text();
  for (std::size_t i = 0; i < good.size(); ++i)
    for (const char damage : {'(', '<', '>', '[', '9', '\0', '\xFF'}) {
      auto text = good;
      text[i] = damage;
      try {
        PDFDocument document(bytesOf(text));
        document.setDates(0);
        EXPECT_GE(std::move(document).withPageOf(794, 1123).size(), good.size());
      } catch (const BrowserError& failure) {
        EXPECT_EQ(failure.kind(), BrowserError::Case::invalidPDF);
      }
    }
}

}  // namespace
}  // namespace orvane
