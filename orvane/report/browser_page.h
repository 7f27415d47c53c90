#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/browser/devtools_pipe.h"
#include "orvane/platform/browser/patience.h"

namespace orvane {

/// A page in a browser, laid out as it will be printed: 794 CSS pixels wide, without scripts, cut
/// off from every network. It is closed with the object. Everything throws `BrowserError` and
/// `Cancelled`.
class BrowserPage {
 public:
  /// How the page came out, in CSS pixels.
  struct Layout {
    double height = 0;
    double width = 0;
    bool hasFonts = true;  ///< false when text takes no room for want of a font
  };

  BrowserPage(DevToolsPipe& pipe, const Patience& patience);
  ~BrowserPage();
  BrowserPage(const BrowserPage&) = delete;
  BrowserPage& operator=(const BrowserPage&) = delete;

  void load(std::string_view html);
  /// Waits for fonts and pictures, then measures. Absent when the page cannot be measured.
  std::optional<Layout> measure();
  /// Cuts off what lies beyond the page's width.
  void clipWidth();
  /// Prints at one point per CSS pixel on paper of this height. With `firstOnly` what does not fit
  /// is dropped, else it makes further pages.
  std::vector<std::byte> print(int height, bool firstOnly);

 private:
  void close() noexcept;
  std::string call(std::string_view method, std::string_view parameters = "{}");
  std::optional<Layout> evaluate(std::string_view expression);
  std::vector<std::byte> readStream(const std::string& stream);

  DevToolsPipe& pipe_;
  const Patience& patience_;
  std::string target_{};
  std::string session_{};
};

}  // namespace orvane
