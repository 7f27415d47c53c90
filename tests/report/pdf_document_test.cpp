#include "orvane/report/pdf_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orvane/platform/browser/browser_error.h"
#include "tests/report/sample_pdf.h"

namespace orvane {
namespace {

using test::bytesOf;
using test::SamplePDF;
using testing::HasSubstr;

TEST(PDFDocument, CountsPages) {
  for (const int count : {0, 1, 2, 11}) {
    auto text = SamplePDF{.pageCount = count}.text();
    EXPECT_EQ(PDFDocument(bytesOf(text)).pageCount(), count);
  }
}

TEST(PDFDocument, MakesTheBoxExactWithoutMovingAnything) {
  auto text = SamplePDF{}.text();
  const auto before = text;
  PDFDocument(bytesOf(text)).setPageBox(794, 1123);
  EXPECT_EQ(text.size(), before.size());
  EXPECT_THAT(text, HasSubstr("\n/MediaBox [0 0 794 1123]            \n/Parent"));
  // Neither the title nor a dictionary inside of the page's is taken for the box.
  EXPECT_THAT(text, HasSubstr("/Title (\\(/MediaBox [9 9 9 9] >> \\) /Count 7)"));
  EXPECT_THAT(text, HasSubstr("/Other <</MediaBox [1 2 3 4]>>"));
  EXPECT_EQ(text.substr(text.rfind("xref\n0")), before.substr(before.rfind("xref\n0")));
}

TEST(PDFDocument, LeavesABoxThatIsExact) {
  SamplePDF sample{.mediaBox = "[0 0 794 14400]"};
  auto text = sample.text();
  PDFDocument(bytesOf(text)).setPageBox(794, 14400);
  EXPECT_EQ(text, sample.text());
}

TEST(PDFDocument, RefusesABoxThatIsNotTheOneAskedFor) {
  for (const char* box : {"[0 0 612 792]", "[0 0 793.91998 1125]", "[0 5 793.91998 1128]",
                          "[0 0 793.91998]", "[0 0 (a) 1123]", "7", "[]"}) {
    auto text = SamplePDF{.mediaBox = box}.text();
    const auto before = text;
    PDFDocument document(bytesOf(text));
    EXPECT_THROW(document.setPageBox(794, 1123), BrowserError) << box;
    EXPECT_EQ(text, before);
  }
}

TEST(PDFDocument, SetsBothDates) {
  auto text = SamplePDF{}.text();
  const auto size = text.size();
  PDFDocument(bytesOf(text)).setDates(1'000'000'000);
  EXPECT_EQ(text.size(), size);
  EXPECT_THAT(text, HasSubstr("/CreationDate (D:20010909014640+00'00')"));
  EXPECT_THAT(text, HasSubstr("/ModDate (D:20010909014640+00'00')"));
}

TEST(PDFDocument, LeavesDatesOfAnotherFormAndDoesWithout) {
  for (const char* information : {"<</CreationDate (D:2026)>>", "<</Title (none)>>", "<<>>"}) {
    SamplePDF sample{.information = information};
    auto text = sample.text();
    PDFDocument(bytesOf(text)).setDates(0);
    EXPECT_EQ(text, sample.text());
  }
}

TEST(PDFDocument, RefusesWhatIsNoDocument) {
  const auto good = SamplePDF{}.text();
  const auto with = [&](std::string_view from, std::string_view to) {
    auto text = good;
    text.replace(text.find(from), from.size(), to);
    return text;
  };
  for (auto text :
       {std::string(), std::string("%PDF-1.4\n"), good.substr(1), good.substr(0, good.size() / 2),
        with("startxref\n", "startxref\n9999999"), with("xref\n0 5", "xref\n0 99999999"),
        with("/Root 2 0 R", "/Root 9 0 R"), with("/Root 2 0 R", "/Root (22R)"),
        with("/Count 1", "/Count x"), with("trailer", "nothing"), with("/Pages 3", "/Paths 3")})
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
        document.setPageBox(794, 1123);
      } catch (const BrowserError& failure) {
        EXPECT_EQ(failure.kind(), BrowserError::Case::invalidPDF);
      }
      EXPECT_EQ(text.size(), good.size());
    }
}

}  // namespace
}  // namespace orvane
