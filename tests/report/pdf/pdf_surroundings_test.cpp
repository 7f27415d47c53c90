#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>

#include <sstream>
#include <thread>

#include "orvane/platform/file_descriptor.h"
#include "orvane/platform/parallel.h"
#include "tests/report/pdf/pdf_rendering_test_base.h"
#include "tests/report/pdf/sample_pdf.h"
#include "tests/support/in_child.h"

namespace orvane {
namespace {

using test::kLongEnough;
using test::textOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What a rendering has to do with the system, with time and with other renderings.
class PDFSurroundings : public test::PDFRenderingTest {
 protected:
  /// The folder's name stands among the arguments of the browser and of all its helpers.
  std::string commandOfABrowser() const {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
      std::ifstream stream(entry.path() / "cmdline");
      std::stringstream line;
      line << stream.rdbuf();
      if (line.str().find("=" + temporary_.path().string()) != std::string::npos) return line.str();
    }
    return "";
  }
};

TEST_F(PDFSurroundings, NoRequestLeavesThePage) {
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

TEST_F(PDFSurroundings, EqualPagesMakeEqualBytesAtAGivenTime) {
  const std::string html = "<!DOCTYPE html><body><p>Same</p>";
  const PDFReportRenderer::Execution execution{.deadline = kLongEnough,
                                               .sourceDateEpoch = 1'000'000'000};
  const auto first = PDFReportRenderer::render(html, execution);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_EQ(PDFReportRenderer::render(html, execution), first);
  EXPECT_THAT(textOf(first), HasSubstr("/CreationDate (D:20010909014640+00'00')"));
}

TEST_F(PDFSurroundings, RenderingsAtOnceDoNotShareAnything) {
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

TEST_F(PDFSurroundings, ARenderingOfASessionLeavesNothingToTheNext) {
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

TEST_F(PDFSurroundings, ASessionServesManyRenderingsAndLeavesNothing) {
  {
    BrowserSession session;
    for (int i = 0; i < 50; ++i)
      ASSERT_FALSE(PDFReportRenderer::render("<p>" + std::to_string(i),
                                             {.deadline = kLongEnough, .session = &session})
                       .empty());
    EXPECT_FALSE(temporary_.isEmpty());
  }
  EXPECT_TRUE(temporary_.isEmpty());
  EXPECT_EQ(commandOfABrowser(), "");
}

TEST_F(PDFSurroundings, AProgramWithoutAWindowCanPrepareForRendering) {
  EXPECT_NO_THROW(bootstrapAppKitForHeadlessRendering());
}

TEST_F(PDFSurroundings, WithoutFontsGiveAWarning) {
  const auto settings = folder_.write(
      "fonts.conf", std::string_view("<?xml version=\"1.0\"?><fontconfig></fontconfig>"));
  setenv("FONTCONFIG_FILE", settings.c_str(), 1);
  const auto pdf = render("<!DOCTYPE html><p>Text");
  unsetenv("FONTCONFIG_FILE");
  EXPECT_EQ(geometry(pdf), "1: 794 x 1123");
  EXPECT_THAT(warnings_, ElementsAre("The browser found no fonts, so text is missing from the PDF: "
                                     "install the package fonts-dejavu-core."));
}

// Names in Japanese were rows of boxes, and nobody was told.
TEST_F(PDFSurroundings, WithoutAFontForSomeCharactersSayWhichPackageHasOne) {
  const auto settings = folder_.write(
      "fonts.conf", std::string_view("<?xml version=\"1.0\"?><fontconfig>"
                                     "<dir>/usr/share/fonts/truetype/dejavu</dir></fontconfig>"));
  setenv("FONTCONFIG_FILE", settings.c_str(), 1);
  render("<!DOCTYPE html><p>日本の歌 🎸 ምዕራፍ 日 A&amp;R \u00E9 \u2014 \u05D0\u200F \u266F");
  render("<!DOCTYPE html><p>Plain \u00E9 \u2014 \u03A9 \u05D0\u200F \u266F \u00AD");
  unsetenv("FONTCONFIG_FILE");
  EXPECT_THAT(warnings_,
              ElementsAre("The PDF shows boxes in the place of characters that no installed font "
                          "has: install the package fonts-noto-cjk for 日本の歌, "
                          "fonts-noto-color-emoji for 🎸, fonts-noto-core for ምዕራፍ."));
}

// The browser then protects itself, which not every system allows.
TEST_F(PDFSurroundings, OfAnOrdinaryUserServeOrAreNamed) {
  std::filesystem::permissions(temporary_.path(), std::filesystem::perms::all);
  const auto end = test::runInChild([] {
    test::becomeNobody();
    try {
      return PDFReportRenderer::render("<p>Text", {.deadline = kLongEnough}).empty() ? 1 : 0;
    } catch (const BrowserError& failure) {
      return failure.errorDescription().find("sandbox") != std::string::npos ? 0 : 2;
    }
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(PDFSurroundings, NoBrowserOutlivesItsProgram) {
  const auto end = test::runInChild([] {
    BrowserSession session;
    PDFReportRenderer::render("<p>Text", {.deadline = kLongEnough, .session = &session});
    return raise(SIGKILL);
  });
  EXPECT_EQ(end.signal, SIGKILL);
  for (int i = 0; i < 500 && !commandOfABrowser().empty(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(commandOfABrowser(), "");
  for (const auto& entry : std::filesystem::directory_iterator(temporary_.path()))
    std::filesystem::remove_all(entry);
}

}  // namespace
}  // namespace orvane
