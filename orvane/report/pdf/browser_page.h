#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/report/pdf/browser/headless_browser.h"
#include "orvane/report/pdf/browser/patience.h"

namespace orvane {

/// A page in a browser, laid out as it will be printed: 794 CSS pixels wide, without scripts, cut
/// off from every network. It shows one document after the other and is closed with the object.
/// Everything throws `BrowserError` and `Cancelled`.
class ORVANE_TESTING_API BrowserPage {
 public:
  /// How the page came out, in CSS pixels.
  struct Layout {
    double height = 0;
    double width = 0;
    bool hasFonts = true;                   ///< false when text takes no room for want of a font
    std::vector<char32_t> missingGlyphs{};  ///< characters that no font has
  };

  BrowserPage(std::shared_ptr<HeadlessBrowser> browser, const Patience& patience);
  ~BrowserPage();
  BrowserPage(const BrowserPage&) = delete;
  BrowserPage& operator=(const BrowserPage&) = delete;

  const HeadlessBrowser* browser() const noexcept { return browser_.get(); }
  /// False when it has crashed or its browser has ended.
  bool isAlive() const;

  void load(std::string_view html, const Patience& patience);
  /// Waits for fonts and pictures, then measures. Absent when the page cannot be measured.
  std::optional<Layout> measure(const Patience& patience);
  /// Cuts off what lies beyond the page's width.
  void clipWidth(const Patience& patience);
  /// Prints at one point per CSS pixel on paper of this height. With `firstOnly` what does not fit
  /// is dropped, else it makes further pages.
  std::vector<std::byte> print(int height, bool firstOnly, const Patience& patience);

 private:
  void prepare(const Patience& patience);
  void close() noexcept;
  std::string call(std::string_view method, std::string_view parameters, const Patience& patience);
  std::optional<Layout> evaluate(std::string_view expression, const Patience& patience);
  std::vector<std::byte> readStream(const std::string& stream, const Patience& patience);

  std::shared_ptr<HeadlessBrowser> browser_;
  std::string target_{};
  std::string session_{};
};

}  // namespace orvane
