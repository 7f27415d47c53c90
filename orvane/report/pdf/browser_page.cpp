#include "orvane/report/pdf/browser_page.h"

#include <cmath>
#include <utility>

#include "orvane/report/pdf/pdf_geometry.h"
#include "orvane/text/json/json_writer.h"

namespace orvane {
namespace {

using Case = BrowserError::Case;

/// Chromium closes the connection at 100 MiB; the rest of the command takes a few bytes more.
constexpr std::size_t kMaximumPageText = (std::size_t{100} << 20) - 4096;
constexpr std::size_t kMaximumPDF = std::size_t{1} << 30;

/// One page whatever the style sheet says of breaks and margins.
constexpr std::string_view kMeasuring = R"js((async () => {
  const style = document.createElement('style');
  style.textContent = '@page { margin: 0 !important } * { break-before: auto !important;' +
      ' break-after: auto !important; break-inside: auto !important; page: auto !important }';
  (document.head || document.documentElement).append(style);
  await document.fonts.ready;
  await Promise.all([...document.images].map((image) => image.decode().catch(() => {})));
  const root = document.documentElement, body = document.body;
  const probe = document.createElement('span');
  probe.style.cssText = 'position:absolute;visibility:hidden;font:12px sans-serif';
  probe.textContent = 'Mm0';
  body.append(probe);
  const hasFonts = probe.getBoundingClientRect().width > 0;
  probe.remove();
  const board = new OffscreenCanvas(32, 32).getContext('2d', {willReadFrequently: true});
  board.font = '24px monospace';
  const drawn = (text) => {
    board.clearRect(0, 0, 32, 32);
    board.fillText(text, 2, 26);
    return board.getImageData(0, 0, 32, 32).data.join();
  };
  const box = drawn('\u{10FFFD}');  // for private use: what no font has looks like it
  const unusual = body.textContent.match(/[^\0-\u02AF\p{M}\p{Z}\p{DI}\p{Co}]/gu);
  const missing = [...new Set(unusual)].slice(0, 2000).filter((text) => drawn(text) === box);
  const bottom = (element) => element.getBoundingClientRect().bottom + scrollY;
  return [Math.max(root.scrollHeight, body.scrollHeight, bottom(root), bottom(body)),
          Math.max(root.scrollWidth, body.scrollWidth), hasFonts ? 1 : 0,
          ...(hasFonts ? missing : []).map((text) => text.codePointAt(0))];
})())js";

constexpr std::string_view kClipping = R"js((() => {
  const style = document.createElement('style');
  style.textContent = 'html, body { overflow-x: clip !important; max-width: 794px !important }';
  (document.head || document.documentElement).append(style);
})())js";

constexpr const char* kFixedPrintParameters =
    R"(","marginTop":0,"marginBottom":0,"marginLeft":0,"marginRight":0,"printBackground":true,)"
    R"("displayHeaderFooter":false,"preferCSSPageSize":false,"landscape":false,)"
    R"("transferMode":"ReturnAsStream"})";

[[noreturn]] void failReply(std::string_view method) {
  throw BrowserError(Case::invalidReply,
                     "The browser's reply to " + std::string(method) + " cannot be understood.");
}

std::string expectString(std::string_view reply, DevToolsMessage::Keys keys,
                         std::string_view method) {
  auto value = DevToolsMessage::stringAt(reply, keys);
  if (!value) failReply(method);
  return std::move(*value);
}

}  // namespace

BrowserPage::BrowserPage(std::shared_ptr<HeadlessBrowser> browser, const Patience& patience)
    : browser_(std::move(browser)) {
  target_ = expectString(call("Target.createTarget", R"({"url":"about:blank"})", patience),
                         {"result", "targetId"}, "Target.createTarget");
  try {
    prepare(patience);
  } catch (...) {
    close();
    throw;
  }
}

void BrowserPage::prepare(const Patience& patience) {
  const std::string target = R"({"flatten":true,"targetId":)" + DevToolsMessage::quoted(target_);
  session_ = expectString(call("Target.attachToTarget", target + "}", patience),
                          {"result", "sessionId"}, "Target.attachToTarget");
  constexpr std::pair<std::string_view, std::string_view> kSettings[] = {
      {"Inspector.enable", "{}"},  // tells of a crash
      {"Emulation.setDeviceMetricsOverride",
       R"({"width":794,"height":1123,"deviceScaleFactor":1,"mobile":false})"},
      {"Emulation.setScriptExecutionDisabled", R"({"value":true})"},
      {"Emulation.setEmulatedMedia", R"({"media":"print"})"},
      {"Network.enable", "{}"},
      {"Network.emulateNetworkConditions",
       R"({"offline":true,"latency":0,"downloadThroughput":0,"uploadThroughput":0})"},
  };
  for (const auto& [method, parameters] : kSettings) call(method, parameters, patience);
}

BrowserPage::~BrowserPage() {
  close();
}

void BrowserPage::close() noexcept {
  try {
    const std::string parameters = R"({"targetId":)" + DevToolsMessage::quoted(target_) + "}";
    browser_->pipe().post({.method = "Target.closeTarget", .parameters = parameters});
  } catch (const std::exception&) {
    // Without memory for a command the page stays until the browser ends.
  }
}

bool BrowserPage::isAlive() const {
  return browser_->pipe().isOpen() && !browser_->pipe().hasCrashed(session_);
}

std::string BrowserPage::call(std::string_view method, std::string_view parameters,
                              const Patience& patience) {
  return browser_->pipe().call({.method = method, .parameters = parameters, .session = session_},
                               patience);
}

void BrowserPage::load(std::string_view html, const Patience& patience) {
  const auto frame = expectString(call("Page.getFrameTree", "{}", patience),
                                  {"result", "frameTree", "frame", "id"}, "Page.getFrameTree");
  const auto text = DevToolsMessage::quoted(html);
  if (text.size() > kMaximumPageText)
    throw BrowserError(Case::pageTooLarge,
                       "The page is too large for the browser: " + std::to_string(html.size()) +
                           " bytes, at most " + std::to_string(kMaximumPageText) + ".");
  call("Page.setDocumentContent",
       R"({"frameId":)" + DevToolsMessage::quoted(frame) + R"(,"html":)" + text + "}", patience);
}

std::optional<BrowserPage::Layout> BrowserPage::evaluate(std::string_view expression,
                                                         const Patience& patience) {
  std::string reply;
  try {
    reply = call("Runtime.evaluate",
                 R"({"expression":)" + DevToolsMessage::quoted(expression) +
                     R"(,"awaitPromise":true,"returnByValue":true})",
                 patience);
  } catch (const BrowserError& failure) {
    if (failure.kind() == Case::refused) return std::nullopt;
    throw;
  }
  const auto numbers = DevToolsMessage::numbersAt(reply, {"result", "result", "value"});
  if (!numbers || numbers->size() < 3) return std::nullopt;
  Layout layout{(*numbers)[0], (*numbers)[1], (*numbers)[2] != 0};
  for (std::size_t i = 3; i < numbers->size(); ++i)
    layout.missingGlyphs.push_back(static_cast<char32_t>((*numbers)[i]));
  if (!std::isfinite(layout.height) || !std::isfinite(layout.width)) return std::nullopt;
  return layout;
}

std::optional<BrowserPage::Layout> BrowserPage::measure(const Patience& patience) {
  return evaluate(kMeasuring, patience);
}

void BrowserPage::clipWidth(const Patience& patience) {
  evaluate(kClipping, patience);
}

std::vector<std::byte> BrowserPage::print(int height, bool firstOnly, const Patience& patience) {
  // The browser prints 96 pixels per inch and a PDF has 72 points; scaled by 96/72 a pixel is a
  // point. Paper sizes are inches.
  const auto number = [](double value) {
    json::Writer writer;
    writer.value(value);
    return writer.take();
  };
  const auto reply =
      call("Page.printToPDF",
           R"({"scale":)" + number(96.0 / 72) + R"(,"paperWidth":)" +
               number(PDFGeometry::kWidth / 72.0) + R"(,"paperHeight":)" + number(height / 72.0) +
               R"(,"pageRanges":")" + (firstOnly ? "1" : "") + kFixedPrintParameters,
           patience);
  return readStream(expectString(reply, {"result", "stream"}, "Page.printToPDF"), patience);
}

std::vector<std::byte> BrowserPage::readStream(const std::string& stream,
                                               const Patience& patience) {
  const std::string handle = R"({"handle":)" + DevToolsMessage::quoted(stream);
  std::vector<std::byte> bytes;
  for (bool isAtEnd = false; !isAtEnd;) {
    const auto reply = call("IO.read", handle + R"(,"size":1048576})", patience);
    const auto data = DevToolsMessage::stringAt(reply, {"result", "data"});
    const auto eof = DevToolsMessage::boolAt(reply, {"result", "eof"});
    if (!data || !eof || !DevToolsMessage::appendBase64(bytes, *data)) failReply("IO.read");
    if (bytes.size() > kMaximumPDF)
      throw BrowserError(Case::invalidPDF, "The browser's PDF is too large.");
    isAtEnd = *eof;
  }
  const std::string parameters = handle + "}";
  browser_->pipe().post({.method = "IO.close", .parameters = parameters, .session = session_});
  return bytes;
}

}  // namespace orvane
