#include "orvane/report/pdf_report_renderer.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cmath>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <thread>

#include "orvane/platform/file_descriptor.h"
#include "orvane/platform/parallel.h"
#include "tests/report/sample_pdf.h"
#include "tests/report/sample_reports.h"
#include "tests/support/fake_browser.h"
#include "tests/support/tool_runner.h"

// All of these need a browser and poppler's programs.

namespace orvane {
namespace {

using test::textOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::chrono::milliseconds kLongEnough{300'000};

/// Where the upper left corner of a word is, in points.
struct Place {
  double x = 0;
  double y = 0;
};

class PDFReportRendererTest : public testing::Test {
 protected:
  ~PDFReportRendererTest() override { EXPECT_TRUE(temporary_.isEmpty()); }

  std::vector<std::byte> render(std::string_view html) {
    return PDFReportRenderer::render(html, {.deadline = kLongEnough, .warnings = &warnings_});
  }

  std::string text(const std::vector<std::byte>& pdf) {
    return test::runTool("pdftotext", {"-layout", folder_.write("page.pdf", pdf), "-"});
  }

  std::map<std::string, Place> words(const std::vector<std::byte>& pdf) {
    const auto output = test::runTool("pdftotext", {"-bbox", folder_.write("w.pdf", pdf), "-"});
    static const std::regex kWord(R"re(xMin="([-0-9.]+)" yMin="([-0-9.]+)"[^>]*>([^<]*)<)re");
    std::map<std::string, Place> result;
    for (std::sregex_iterator i(output.begin(), output.end(), kWord), end; i != end; ++i)
      result[(*i)[3]] = {std::stod((*i)[1]), std::stod((*i)[2])};
    return result;
  }

  /// "pages width x height".
  std::string geometry(const std::vector<std::byte>& pdf) {
    const auto output = test::runTool("pdfinfo", {folder_.write("info.pdf", pdf)});
    static const std::regex kPages(R"(Pages:\s+(\d+))");
    static const std::regex kSize(R"(Page size:\s+(.*) pts)");
    std::smatch pages;
    std::smatch size;
    if (!std::regex_search(output, pages, kPages) || !std::regex_search(output, size, kSize))
      return output;
    return pages[1].str() + ": " + size[1].str();
  }

  /// The page as a picture, one pixel for each point, as red, green, blue.
  std::string picture(const std::vector<std::byte>& pdf) {
    const auto file = folder_.write("p.pdf", pdf);
    test::runTool("pdftoppm", {"-r", "72", "-singlefile", file, folder_ / "p"});
    std::ifstream stream(folder_ / "p.ppm", std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  // Made before the other one, so not in it.
  test::TemporaryDirectory folder_{};
  test::OwnTemporaryFolder temporary_{};
  std::vector<std::string> warnings_{};
};

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

TEST_F(PDFReportRendererTest, NoRequestLeavesThePage) {
  const FileDescriptor server(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  ASSERT_EQ(bind(server.number(), generic, size), 0);
  ASSERT_EQ(listen(server.number(), 8), 0);
  ASSERT_EQ(getsockname(server.number(), generic, &size), 0);
  const auto secret = folder_.write(
      "secret.svg", std::string_view("<svg xmlns='http://www.w3.org/2000/svg'><text y='20'>"
                                     "Secret</text></svg>"));
  const std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
  const auto pdf =
      render("<!DOCTYPE html><link rel=stylesheet href='" + url + "1'><link rel=preconnect href='" +
             url + "'><style>@import '" + url + "2';@font-face{font-family:f;src:url(" + url +
             "3)}body{font-family:f;background:url(" + url + "4)}</style><body>Text<img src='" +
             url + "5'><iframe src='" + url + "6'></iframe><iframe srcdoc=\"<img src='" + url +
             "7'>\"></iframe><object data='" + url + "8'></object><video src='" + url +
             "9'></video><img src='file://" + secret.string() + "'><iframe src='file://" +
             secret.string() + "'></iframe>");
  pollfd event{server.number(), POLLIN, 0};
  EXPECT_EQ(poll(&event, 1, 200), 0);
  EXPECT_THAT(text(pdf), HasSubstr("Text"));
  EXPECT_THAT(text(pdf), testing::Not(HasSubstr("Secret")));
}

TEST_F(PDFReportRendererTest, AnyTextCanBePrinted) {
  const auto pdf = render(
      "<!DOCTYPE html><title>(/MediaBox [0 0 1 1]) >> endobj</title><meta charset=utf-8><p>"
      "Gr\xC3\xBC\xC3\x9F\x65 \"quoted\" \\ back \xFF broken");
  EXPECT_EQ(geometry(pdf), "1: 794 x 1123");
  EXPECT_THAT(text(pdf), HasSubstr("Gr\xC3\xBC\xC3\x9F\x65 \"quoted\" \\ back"));
}

TEST_F(PDFReportRendererTest, EqualPagesMakeEqualBytesAtAGivenTime) {
  const std::string html = "<!DOCTYPE html><body><p>Same</p>";
  const PDFReportRenderer::Execution execution{.deadline = kLongEnough,
                                               .sourceDateEpoch = 1'000'000'000};
  const auto first = PDFReportRenderer::render(html, execution);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_EQ(PDFReportRenderer::render(html, execution), first);
  EXPECT_THAT(textOf(first), HasSubstr("/CreationDate (D:20010909014640+00'00')"));
}

TEST_F(PDFReportRendererTest, RenderingsAtOnceDoNotShareAnything) {
  BrowserSession session;
  std::vector<std::vector<std::byte>> results(6);
  parallelFor(3, results.size(), [&](std::size_t i) {
    results[i] = PDFReportRenderer::render(
        "<!DOCTYPE html><body style='margin:0;height:" + std::to_string(2000 + i) + "px'>Number" +
            std::to_string(i),
        {.deadline = kLongEnough, .session = i % 3 == 0 ? nullptr : &session});
  });
  for (std::size_t i = 0; i < results.size(); ++i) {
    EXPECT_EQ(geometry(results[i]), "1: 794 x " + std::to_string(2000 + i));
    EXPECT_THAT(text(results[i]), HasSubstr("Number" + std::to_string(i)));
  }
}

TEST_F(PDFReportRendererTest, ARenderingOfASessionLeavesNothingToTheNext) {
  BrowserSession session;
  const PDFReportRenderer::Execution execution{
      .deadline = kLongEnough, .session = &session, .sourceDateEpoch = 0, .warnings = &warnings_};
  const std::string page = "<!DOCTYPE html><title>Next</title><p>Plain";
  const auto alone = render(page);
  PDFReportRenderer::render(
      "<!DOCTYPE html><title>Wide</title><style>*{color:red;margin:50px}@page{size:A6}</style>"
      "<base href='http://127.0.0.1/'><body id=b style='height:9000px;width:2000px'>Former",
      execution);
  EXPECT_EQ(warnings_.size(), 1U);
  warnings_.clear();
  const auto next = PDFReportRenderer::render(page, execution);
  EXPECT_EQ(geometry(next), "1: 794 x 1123");
  EXPECT_EQ(picture(next), picture(alone));
  EXPECT_EQ(text(next), text(alone));
  EXPECT_THAT(textOf(next), HasSubstr("/Title (Next)"));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(PDFReportRendererTest, ASessionServesManyRenderingsAndLeavesNothing) {
  {
    BrowserSession session;
    for (int i = 0; i < 50; ++i)
      ASSERT_FALSE(PDFReportRenderer::render("<p>" + std::to_string(i),
                                             {.deadline = kLongEnough, .session = &session})
                       .empty());
    EXPECT_FALSE(temporary_.isEmpty());
  }
  EXPECT_TRUE(temporary_.isEmpty());
  // The folder's name stands among the arguments of the browser and of all its helpers.
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream stream(entry.path() / "cmdline");
    std::stringstream line;
    line << stream.rdbuf();
    EXPECT_EQ(line.str().find(temporary_.path().string()), std::string::npos) << line.str();
  }
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

TEST_F(PDFReportRendererTest, AProgramWithoutAWindowCanPrepareForRendering) {
  EXPECT_NO_THROW(bootstrapAppKitForHeadlessRendering());
}

}  // namespace
}  // namespace orvane
