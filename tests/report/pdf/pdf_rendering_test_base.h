#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/report/pdf/pdf_report_renderer.h"
#include "tests/support/fake_browser.h"
#include "tests/support/tool_runner.h"

namespace orvane::test {

inline constexpr std::chrono::milliseconds kLongEnough{300'000};

/// Where the upper left corner of a word is, in points.
struct Place {
  double x = 0;
  double y = 0;
};

/// Renders with the installed browser and looks at the result with poppler's programs. Fails when a
/// temporary file stays behind.
class PDFRenderingTest : public testing::Test {
 protected:
  ~PDFRenderingTest() override { EXPECT_TRUE(temporary_.isEmpty()); }

  std::vector<std::byte> render(std::string_view html) {
    return PDFReportRenderer::render(html, {.deadline = kLongEnough, .warnings = &warnings_});
  }

  std::string text(const std::vector<std::byte>& pdf) {
    return runTool("pdftotext", {"-layout", folder_.write("page.pdf", pdf), "-"});
  }

  std::map<std::string, Place> words(const std::vector<std::byte>& pdf) {
    const auto output = runTool("pdftotext", {"-bbox", folder_.write("w.pdf", pdf), "-"});
    static const std::regex kWord(R"re(xMin="([-0-9.]+)" yMin="([-0-9.]+)"[^>]*>([^<]*)<)re");
    std::map<std::string, Place> result;
    for (std::sregex_iterator i(output.begin(), output.end(), kWord), end; i != end; ++i)
      result[(*i)[3]] = {std::stod((*i)[1]), std::stod((*i)[2])};
    return result;
  }

  /// "pages width x height".
  std::string geometry(const std::vector<std::byte>& pdf) {
    const auto output = runTool("pdfinfo", {folder_.write("info.pdf", pdf)});
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
    runTool("pdftoppm", {"-r", "72", "-singlefile", file, folder_ / "p"});
    std::ifstream stream(folder_ / "p.ppm", std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  // Made before the other one, so not in it.
  TemporaryDirectory folder_{};
  OwnTemporaryFolder temporary_{};
  std::vector<std::string> warnings_{};
};

}  // namespace orvane::test
