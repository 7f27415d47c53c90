#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "orvane/platform/error.h"
#include "orvane/report/pdf/pdf_report_renderer.h"
#include "tests/report/pdf/sample_pdf.h"
#include "tests/support/fake_browser.h"

namespace orvane {
namespace {

using Case = BrowserError::Case;
using PDFReportRenderer::Execution;
using test::FakeBrowser;
using test::SamplePDF;
using test::textOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr std::chrono::milliseconds kLongEnough{60'000};

class PDFRendererFailure : public testing::Test {
 protected:
  ~PDFRendererFailure() override { EXPECT_TRUE(temporary_.isEmpty()); }

  std::vector<std::byte> render(const FakeBrowser& fake) {
    return PDFReportRenderer::render(
        "<p>Page", {.deadline = kLongEnough, .browser = fake.program(), .warnings = &warnings_});
  }

  BrowserError failure(const FakeBrowser& fake) {
    try {
      render(fake);
    } catch (const BrowserError& error) {
      return error;
    }
    ADD_FAILURE() << "no error";
    return {Case::notFound, ""};
  }

  test::OwnTemporaryFolder temporary_{};
  std::vector<std::string> warnings_{};
};

TEST_F(PDFRendererFailure, NoneGivesAPageWithAnExactBox) {
  const FakeBrowser fake("");
  fake.answerWith(SamplePDF{}.text());
  EXPECT_THAT(textOf(render(fake)), HasSubstr("/MediaBox [0 0 794 1123] "));
  EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(PDFRendererFailure, KeepsScriptsAndTheNetworkOffAndPrintsInPointsPerPixel) {
  const FakeBrowser fake("");
  fake.answerWith(SamplePDF{}.text());
  render(fake);
  const auto commands = fake.commands();
  EXPECT_THAT(commands,
              HasSubstr(R"("Emulation.setScriptExecutionDisabled", "params": {"value": true})"));
  EXPECT_THAT(commands, HasSubstr(R"("params": {"offline": true)"));
  EXPECT_THAT(commands, HasSubstr(R"({"media": "print"})"));
  EXPECT_THAT(commands, HasSubstr(R"("scale": 1.3333333333333333)"));
  EXPECT_THAT(commands, HasSubstr(R"("paperWidth": 11.02777777777777)"));
  EXPECT_THAT(commands, HasSubstr(R"("paperHeight": 15.59722222222222)"));
  EXPECT_THAT(commands, HasSubstr(R"("pageRanges": "")"));
  EXPECT_THAT(fake.arguments(), HasSubstr("--host-resolver-rules=MAP * ~NOTFOUND"));
  EXPECT_THAT(fake.arguments(), HasSubstr("--no-proxy-server"));
}

TEST_F(PDFRendererFailure, OfMeasuringPrintsTheFirstPageOfTheMinimumHeight) {
  for (const char* script : {"noheight text", "error Runtime.evaluate", "height none"}) {
    warnings_.clear();
    const FakeBrowser fake(script);
    fake.answerWith(SamplePDF{}.text());
    EXPECT_THAT(textOf(render(fake)), HasSubstr("/MediaBox [0 0 794 1123] ")) << script;
    EXPECT_THAT(fake.commands(), HasSubstr(R"("pageRanges": "1")"));
    EXPECT_THAT(warnings_, ElementsAre("The page's height could not be measured; the PDF shows its "
                                       "first 1123 pixels."));
  }
}

TEST_F(PDFRendererFailure, OfLoadingIsPassedOnAndThePageIsClosed) {
  const FakeBrowser fake("error Page.setDocumentContent");
  EXPECT_EQ(
      failure(fake),
      BrowserError(Case::refused, "The browser refused Page.setDocumentContent: No such thing"));
  EXPECT_THAT(fake.commands(), Not(HasSubstr("Page.printToPDF")));

  BrowserSession session(fake.program());
  EXPECT_THROW(PDFReportRenderer::render("x", {.deadline = kLongEnough, .session = &session}),
               BrowserError);
  EXPECT_THROW(PDFReportRenderer::render("x", {.deadline = kLongEnough, .session = &session}),
               BrowserError);
  EXPECT_THAT(fake.commands(), HasSubstr(R"("Target.closeTarget", "params": {"targetId": "T"})"));
}

TEST_F(PDFRendererFailure, OfPrintingIsPassedOn) {
  const FakeBrowser fake("error Page.printToPDF");
  EXPECT_EQ(failure(fake),
            BrowserError(Case::refused, "The browser refused Page.printToPDF: No such thing"));
}

TEST_F(PDFRendererFailure, SaysHowManyPagesThereAreWhenMorePaperDoesNotHelp) {
  const FakeBrowser fake("");
  fake.answerWith(SamplePDF{.pageCount = 2}.text());
  EXPECT_EQ(failure(fake),
            BrowserError(Case::invalidPDF, "The browser made 2 pages instead of one."));
  // 1123 and three more.
  EXPECT_THAT(fake.commands(), HasSubstr(R"("paperHeight": 15.638888888888)"));
  EXPECT_THAT(fake.commands(), Not(HasSubstr(R"("paperHeight": 15.65277777)")));

  fake.answerWith(SamplePDF{.pageCount = 0}.text());
  EXPECT_EQ(failure(fake),
            BrowserError(Case::invalidPDF, "The browser made 0 pages instead of one."));
}

TEST_F(PDFRendererFailure, RefusesWhatIsNoPDF) {
  const FakeBrowser text("");
  text.answerWith("<html>");
  EXPECT_EQ(failure(text), BrowserError(Case::invalidPDF, "The browser's PDF cannot be read."));
  const FakeBrowser garbled("badpdf");
  EXPECT_EQ(failure(garbled), BrowserError(Case::invalidReply,
                                           "The browser's reply to IO.read cannot be understood."));
}

TEST_F(PDFRendererFailure, WarnsOfAPageHigherThanOtherProgramsShow) {
  const FakeBrowser fake("height 14400.5");
  fake.answerWith(SamplePDF{.mediaBox = "[0 0 793.91998 14400.95996]"}.text());
  EXPECT_THAT(textOf(render(fake)), HasSubstr("/MediaBox [0 0 794 14401] "));
  EXPECT_THAT(warnings_, ElementsAre("The PDF's page is 14401 points high; some programs show no "
                                     "more than 14400."));
}

TEST_F(PDFRendererFailure, WarnsOfMissingFonts) {
  const FakeBrowser fake("nofonts");
  fake.answerWith(SamplePDF{}.text());
  render(fake);
  EXPECT_THAT(warnings_, ElementsAre("The browser found no fonts, so text is missing from the PDF: "
                                     "install the package fonts-dejavu-core."));
}

TEST_F(PDFRendererFailure, RefusesAPageBeyondReason) {
  EXPECT_EQ(failure(FakeBrowser("height 1e300")),
            BrowserError(Case::pageTooLarge, "The page is too high for a PDF."));
}

TEST_F(PDFRendererFailure, RefusesMoreTextThanTheBrowserTakes) {
  const FakeBrowser fake("");
  const std::string html(std::size_t{100} << 20, 'x');
  try {
    PDFReportRenderer::render(html, {.deadline = kLongEnough, .browser = fake.program()});
    FAIL();
  } catch (const BrowserError& error) {
    EXPECT_EQ(error, BrowserError(Case::pageTooLarge,
                                  "The page is too large for the browser: 104857600 bytes, at most "
                                  "104853504."));
  }
  EXPECT_THAT(fake.commands(), Not(HasSubstr("Page.setDocumentContent")));
}

TEST_F(PDFRendererFailure, EndsWithTheBrowser) {
  EXPECT_EQ(failure(FakeBrowser("exit No usable sandbox!")),
            BrowserError(Case::ended, "The browser ended unexpectedly: No usable sandbox!"));
  EXPECT_EQ(failure(FakeBrowser("die Page.printToPDF")).kind(), Case::ended);
  EXPECT_EQ(failure(FakeBrowser("crash Runtime.evaluate")),
            BrowserError(Case::ended, "The browser's page crashed."));
}

TEST_F(PDFRendererFailure, EndsAtTheDeadline) {
  const FakeBrowser fake("hang");
  try {
    PDFReportRenderer::render(
        "x", {.deadline = std::chrono::milliseconds(300), .browser = fake.program()});
    FAIL();
  } catch (const BrowserError& error) {
    EXPECT_EQ(error, BrowserError(Case::timedOut, "The browser did not answer in time."));
  }
}

TEST_F(PDFRendererFailure, EndsWhenCancelled) {
  class Observer : public ProgressObserver {
   public:
    void onProgress(std::string_view stage, double fraction) override {
      EXPECT_EQ(stage, "Rendering");
      fraction_ = fraction;
    }
    bool isCancelled() override { return fraction_ >= 0.3; }

   private:
    double fraction_ = 0;
  } observer;
  const FakeBrowser fake("silent Runtime.evaluate");
  EXPECT_THROW(PDFReportRenderer::render("x", {.browser = fake.program(), .observer = &observer}),
               Cancelled);
}

TEST_F(PDFRendererFailure, OfASessionsBrowserDoesNotReachTheNextRendering) {
  const FakeBrowser fake("die Page.printToPDF");
  fake.answerWith(SamplePDF{}.text());
  BrowserSession session(fake.program());
  const Execution execution{.deadline = kLongEnough, .session = &session};
  EXPECT_THROW(PDFReportRenderer::render("x", execution), BrowserError);
  std::ofstream(fake.program().parent_path() / "script") << "well";
  EXPECT_THAT(textOf(PDFReportRenderer::render("x", execution)), HasSubstr("[0 0 794 1123]"));
}

TEST_F(PDFRendererFailure, MakesASessionTakeAnotherPage) {
  const auto pagesFor = [&](const char* script, int renderings) {
    const FakeBrowser fake(script);
    fake.answerWith(SamplePDF{}.text());
    BrowserSession session(fake.program());
    for (int i = 0; i < renderings; ++i) {
      try {
        PDFReportRenderer::render("x", {.deadline = kLongEnough, .session = &session});
      } catch (const BrowserError& error) {
        EXPECT_EQ(error.kind(), Case::refused);
      }
    }
    int count = 0;
    const auto commands = fake.commands();
    for (auto at = commands.find("Target.createTarget"); at != std::string::npos;
         at = commands.find("Target.createTarget", at + 1))
      ++count;
    return count;
  };
  EXPECT_EQ(pagesFor("", 3), 1);
  EXPECT_EQ(pagesFor("error Page.printToPDF", 3), 3);
  // It crashes when the rendering is over and nobody waits for it.
  EXPECT_EQ(pagesFor("crash IO.close", 3), 3);
}

TEST_F(PDFRendererFailure, ReplacesASessionsBrowserThatDoesNotAnswer) {
  const FakeBrowser fake("silent Browser.getVersion");
  fake.answerWith(SamplePDF{}.text());
  BrowserSession session(fake.program());
  EXPECT_THROW(PDFReportRenderer::render(
                   "x", {.deadline = std::chrono::milliseconds(500), .session = &session}),
               BrowserError);
  std::ofstream(fake.program().parent_path() / "script") << "well";
  EXPECT_NO_THROW(PDFReportRenderer::render("x", {.deadline = kLongEnough, .session = &session}));
}

TEST_F(PDFRendererFailure, SaysWhatCannotBeStarted) {
  try {
    PDFReportRenderer::render("x", {.browser = "/no/such/browser"});
    FAIL();
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.errorDescription(), "browser: No such file or directory");
  }
}

TEST_F(PDFRendererFailure, SaysWhatToInstallWhenThereIsNoBrowser) {
  const std::string before = getenv("PATH");
  setenv("PATH", temporary_.path().c_str(), 1);
  constexpr const char* sentence =
      "Writing PDF needs a browser: install the package chromium-headless-shell.";
  for (const bool isRender : {true, false}) {
    try {
      if (isRender)
        PDFReportRenderer::render("x");
      else
        bootstrapAppKitForHeadlessRendering();
      ADD_FAILURE();
    } catch (const BrowserError& error) {
      EXPECT_EQ(error, BrowserError(Case::notFound, sentence));
    }
  }
  setenv("PATH", before.c_str(), 1);
}

}  // namespace
}  // namespace orvane
