#include <gmock/gmock.h>

#include <cmath>

#include "tests/report/pdf/pdf_rendering_test_base.h"
#include "tests/report/pdf/sample_pdf.h"
#include "tests/report/sample_reports.h"

namespace orvane {
namespace {

using test::kLongEnough;
using test::textOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What a page looks like as a PDF.
class PDFReportRendererTest : public test::PDFRenderingTest {};

TEST_F(PDFReportRendererTest, AShortPageIs1123PointsHigh) {
  const auto pdf = render("<!DOCTYPE html><title>T</title><p>Short");
  EXPECT_EQ(geometry(pdf), "1: 794 x 1123");
  EXPECT_THAT(textOf(pdf), HasSubstr("/MediaBox [0 0 794 1123] "));
  EXPECT_THAT(text(pdf), HasSubstr("Short"));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(PDFReportRendererTest, APageOf5000PixelsIsOnePageOf5000Points) {
  const auto pdf = render(
      "<!DOCTYPE html><body style='margin:0;height:5000px;position:relative'>"
      "<p style='position:absolute;left:693px;top:200px;margin:0'>Placed</p>"
      "<p style='position:absolute;bottom:0;margin:0'>Last</p>");
  EXPECT_EQ(geometry(pdf), "1: 794 x 5000");
  EXPECT_THAT(textOf(pdf), HasSubstr("/MediaBox [0 0 794 5000]"));
  auto found = words(pdf);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_NEAR(found["Placed"].x, 693, 0.1);
  EXPECT_NEAR(found["Placed"].y, 200, 3);
  EXPECT_NEAR(found["Last"].x, 0, 0.1);
  EXPECT_GT(found["Last"].y, 4970);
}

// The browser lays out in 64ths of a pixel.
TEST_F(PDFReportRendererTest, EveryHeightGivesOnePage) {
  BrowserSession session;
  for (const char* height : {"1122.6", "1123.39", "1124", "1999.5", "2000.02", "3333.33"}) {
    const auto pdf = PDFReportRenderer::render(
        "<!DOCTYPE html><body style='margin:0'><div style='height:" + std::string(height) +
            "px'>A</div>",
        {.deadline = kLongEnough, .session = &session});
    const int rounded = static_cast<int>(std::ceil(std::stod(height)));
    EXPECT_EQ(geometry(pdf), "1: 794 x " + std::to_string(rounded));
  }
}

TEST_F(PDFReportRendererTest, MarginsBreaksAndPageRulesOfThePageMakeNoSecondPage) {
  const auto pdf = render(
      "<!DOCTYPE html><style>@page{margin:3cm;size:A6} h1{break-before:page;margin:40px 0}"
      "@page x{margin:1cm} h2{page:x}</style>"
      "<body><h1>One</h1><h1>Two</h1><h2 style='break-after:always'>Three</h2>"
      "<div style='height:1500px'></div><p style='margin-bottom:70.4px'>Four</p>");
  EXPECT_TRUE(geometry(pdf).starts_with("1: 794 x ")) << geometry(pdf);
  EXPECT_THAT(text(pdf), HasSubstr("Four"));
}

TEST_F(PDFReportRendererTest, WideContentIsCutOffAndDoesNotShrinkThePage) {
  const auto pdf = render(
      "<!DOCTYPE html><body style='margin:0'><p style='margin:0;padding-left:600px'>Placed</p>"
      "<div style='width:2000px;background:red'>Wide</div>");
  EXPECT_EQ(geometry(pdf), "1: 794 x 1123");
  EXPECT_THAT(warnings_, ElementsAre("The page is wider than 794 pixels; the PDF does not show "
                                     "what lies beyond."));
  EXPECT_NEAR(words(pdf)["Placed"].x, 600, 0.1);
}

TEST_F(PDFReportRendererTest, APageAbove14400PointsIsOnePageWithAWarning) {
  const auto pdf = render("<!DOCTYPE html><body style='margin:0;height:20000px'>High");
  EXPECT_EQ(geometry(pdf), "1: 794 x 20000");
  EXPECT_THAT(warnings_, ElementsAre("The PDF's page is 20000 points high; some programs show no "
                                     "more than 14400."));
}

TEST_F(PDFReportRendererTest, APageThatCannotBeMeasuredGivesItsFirst1123Pixels) {
  // The name hides the document's own operation.
  const auto pdf = render(
      "<!DOCTYPE html><body style='margin:0'><img name=createElement><p>First</p>"
      "<div style='height:3000px'></div>Last");
  EXPECT_EQ(geometry(pdf), "1: 794 x 1123");
  EXPECT_EQ(warnings_.size(), 1U);
  EXPECT_THAT(text(pdf), HasSubstr("First"));
}

TEST_F(PDFReportRendererTest, BackgroundsInlinePicturesAndPrintStylesArePrinted) {
  const auto pdf = render(
      "<!DOCTYPE html><style>html{background:#0d1117} #s{color:#fff} @media print{#s{color:#0f0}}"
      "</style><body style='margin:0'><img style='position:absolute;left:100px;top:100px' "
      "width=50 height=50 src=\"data:image/svg+xml,<svg xmlns='http://www.w3.org/2000/svg' "
      "width='50' height='50'><rect width='50' height='50' fill='red'/></svg>\">"
      "<div id=s style='position:absolute;left:300px;top:300px;width:20px;height:20px;"
      "background:currentColor'></div>");
  const auto image = picture(pdf);
  ASSERT_TRUE(image.starts_with("P6\n794 1123\n255\n")) << image.substr(0, 20);
  const auto pixel = [&](std::size_t x, std::size_t y) {
    return image.substr(image.size() - (std::size_t{794} * 1123 - (y * 794 + x)) * 3, 3);
  };
  EXPECT_EQ(pixel(10, 10), "\x0d\x11\x17");
  EXPECT_EQ(pixel(790, 1120), "\x0d\x11\x17");
  EXPECT_EQ(pixel(125, 125), std::string("\xff\0\0", 3));
  EXPECT_EQ(pixel(310, 310), std::string("\0\xff\0", 3));
}

// The height of the browser's paper is up to 0.12 points off, to either side.
TEST_F(PDFReportRendererTest, TheBackgroundReachesEveryEdge) {
  for (const int height : {1123, 1200, 1667}) {
    const auto size = std::to_string(height);
    const auto pdf =
        render("<!DOCTYPE html><style>html{background:#0d1117}body{margin:0;height:" + size +
               "px}</style>");
    const auto file = folder_.write("edges.pdf", pdf);
    test::runTool("pdftocairo", {"-png", "-r", "72", "-singlefile", file, folder_ / "edges"});
    // Cairo, unlike the other tool, blends what covers a part of a pixel only.
    const auto pixels = test::runTool("ffmpeg", {"-v", "error", "-i", folder_ / "edges.png", "-f",
                                                 "rawvideo", "-pix_fmt", "rgb24", "-"});
    ASSERT_EQ(pixels.size(), std::size_t{794} * 3 * static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < pixels.size(); i += 3)
      ASSERT_EQ(pixels.substr(i, 3), "\x0d\x11\x17") << size << ": pixel " << i / 3;
  }
}

TEST_F(PDFReportRendererTest, ScriptsOfThePageDoNotRun) {
  const auto pdf = render(
      "<!DOCTYPE html><body><p id=p>Before</p><script>document.getElementById('p').textContent="
      "'After'</script><img src=x onerror=\"document.body.textContent='After'\">");
  EXPECT_THAT(text(pdf), HasSubstr("Before"));
}

TEST_F(PDFReportRendererTest, AnyTextCanBePrinted) {
  const auto pdf = render(
      "<!DOCTYPE html><title>(/MediaBox [0 0 1 1]) >> endobj</title><meta charset=utf-8><p>"
      "Gr\xC3\xBC\xC3\x9F\x65 \"quoted\" \\ back \xFF broken");
  EXPECT_EQ(geometry(pdf), "1: 794 x 1123");
  EXPECT_THAT(text(pdf), HasSubstr("Gr\xC3\xBC\xC3\x9F\x65 \"quoted\" \\ back"));
}

TEST_F(PDFReportRendererTest, EveryReportIsOnePageWithoutWarnings) {
  BrowserSession session;
  auto reports = test::sampleReports();
  reports.emplace_back("hostile", test::hostileReport());
  reports.emplace_back("endless words", test::reportSaying(std::string(2000, 'x')));
  for (const auto& [name, report] : reports) {
    const auto pdf = PDFReportRenderer::renderPDF(
        report, {.deadline = kLongEnough, .session = &session, .warnings = &warnings_});
    EXPECT_THAT(geometry(pdf), testing::StartsWith("1: 794 x ")) << name;
    EXPECT_THAT(warnings_, IsEmpty()) << name;
    EXPECT_THAT(text(pdf), HasSubstr("LUFS")) << name;
  }
}

}  // namespace
}  // namespace orvane
