#include "cli/terminal/progress_bar.h"

#include <algorithm>

#include "cli/interruption.h"
#include "cli/output/number_text.h"
#include "cli/terminal/terminal_text.h"

namespace orvane::cli {
namespace {

constexpr std::size_t kBarColumns = 24;
constexpr auto kFirstDrawing = std::chrono::milliseconds(300);  // short work needs no bar
constexpr auto kDrawingInterval = std::chrono::milliseconds(100);

std::string padded(std::string text, std::size_t columns, bool atFront) {
  const std::size_t missing = columns - std::min(columns, text.size());
  return atFront ? std::string(missing, ' ') + text : text + std::string(missing, ' ');
}

}  // namespace

class FileProgress : public ProgressObserver {
 public:
  FileProgress(ProgressBar& bar, std::string name) : bar_(bar), name_(std::move(name)) {}

  void onProgress(std::string_view stage, double fraction) override {
    bar_.show(stage, fraction, name_);
  }
  bool isCancelled() override { return Interruption::isRequested(); }

 private:
  ProgressBar& bar_;
  std::string name_;
};

ProgressBar::ProgressBar(Console& console, std::size_t fileCount, bool isWanted)
    : console_(console),
      fileCount_(fileCount),
      isWanted_(isWanted && console.showsStatus()),
      nextDrawing_(std::chrono::steady_clock::now() + kFirstDrawing) {}

ProgressBar::~ProgressBar() {
  if (isWanted_) console_.status("");
}

std::unique_ptr<ProgressObserver> ProgressBar::forFile(std::string_view name) {
  return std::make_unique<FileProgress>(*this, TerminalText::escaped(name));
}

void ProgressBar::fileDone() {
  const std::lock_guard lock(mutex_);
  ++done_;
}

void ProgressBar::show(std::string_view stage, double fraction, std::string_view name) {
  if (!isWanted_) return;
  std::string text;
  {
    const std::lock_guard lock(mutex_);
    const auto now = std::chrono::steady_clock::now();
    if (now < nextDrawing_) return;
    nextDrawing_ = now + kDrawingInterval;
    text = line(done_, fileCount_, stage, fraction, name);
  }
  console_.status(text);
}

std::string ProgressBar::line(std::size_t done, std::size_t fileCount, std::string_view stage,
                              double fraction, std::string_view name) {
  const double share = std::clamp(fraction, 0.0, 1.0);
  const auto filled = static_cast<std::size_t>(share * kBarColumns);
  std::string text;
  if (fileCount > 1) {
    const std::string total = std::to_string(fileCount);
    text = padded(std::to_string(done + 1), total.size(), true) + "/" + total + "  ";
  }
  text += padded(std::string(stage), 9, false);
  text += "  [" + std::string(filled, '#') + std::string(kBarColumns - filled, '-') + "] ";
  text += padded(NumberText::fixed(100 * share, 1), 5, true) + " %  ";
  return text + std::string(name);
}

}  // namespace orvane::cli
