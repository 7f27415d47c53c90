#include "cli/output/batch_closing.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "cli/output/number_text.h"

namespace orvane::cli {
namespace {

constexpr std::size_t kNamed = 50;

std::string level(float value, const char* unit) {
  const std::string text = NumberText::fixed(value, 1);
  constexpr std::size_t kWidth = 6;
  return std::string(kWidth - std::min(text.size(), kWidth), ' ') + text + unit;
}

}  // namespace

void BatchClosing::addMeasured(const InputName& file, float integratedLUFS) {
  ++measured_;
  compare(file, integratedLUFS);
}

void BatchClosing::addKept(const InputName& file, float integratedLUFS) {
  ++kept_;
  compare(file, integratedLUFS);
}

void BatchClosing::compare(const InputName& file, float integratedLUFS) {
  if (!std::isfinite(integratedLUFS)) return;
  const Extreme extreme{file.shown(), integratedLUFS};
  if (extremes_.empty()) extremes_ = {extreme, extreme};
  if (integratedLUFS > extremes_.front().integratedLUFS) extremes_.front() = extreme;
  if (integratedLUFS < extremes_.back().integratedLUFS) extremes_.back() = extreme;
}

std::vector<std::string> BatchClosing::lines() const {
  std::string counts =
      NumberText::counted(static_cast<std::int64_t>(measured_), "file") + " measured";
  const auto add = [&counts](std::size_t count, const char* what) {
    if (count > 0) counts += ", " + std::to_string(count) + what;
  };
  add(kept_, " kept from before");
  add(failed_.size(), " failed");
  add(noAudio_, " passed over as no audio");
  std::vector<std::string> lines = {counts};
  if (!extremes_.empty() && measured_ + kept_ > 1) {
    const Extreme& loudest = extremes_.front();
    const Extreme& quietest = extremes_.back();
    lines.push_back("Loudest   " + level(loudest.integratedLUFS, " LUFS  ") + loudest.name);
    lines.push_back("Quietest  " + level(quietest.integratedLUFS, " LUFS  ") + quietest.name);
    lines.push_back("Spread    " + level(loudest.integratedLUFS - quietest.integratedLUFS, " LU"));
  }
  for (std::size_t i = 0; i < std::min(failed_.size(), kNamed); ++i)
    lines.push_back("Failed    " + failed_[i]);
  if (failed_.size() > kNamed)
    lines.push_back("and " + std::to_string(failed_.size() - kNamed) + " more");
  return lines;
}

}  // namespace orvane::cli
