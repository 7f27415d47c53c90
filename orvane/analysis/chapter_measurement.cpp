#include "orvane/analysis/chapter_measurement.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "orvane/music/music_section_chapters.h"

namespace orvane::ChapterMeasurement {
namespace {

using SelectionMeasurement::ChapterSpan;

/// Sections shorter than this are no parts that a listener would call one.
constexpr double kMinimumSectionSeconds = 10;

/// Tells of one chapter's measuring as a share of all.
class ChapterProgress : public ProgressObserver {
 public:
  ChapterProgress(ProgressObserver* observer, std::size_t chapter, std::size_t count)
      : observer_(observer), chapter_(chapter), count_(count) {}

  void onProgress(std::string_view, double fraction) override {
    if (observer_ == nullptr) return;
    observer_->onProgress("Chapters",
                          (static_cast<double>(chapter_) + fraction) / static_cast<double>(count_));
  }
  bool isCancelled() override { return observer_ != nullptr && observer_->isCancelled(); }

 private:
  ProgressObserver* observer_;
  std::size_t chapter_;
  std::size_t count_;
};

/// A mark and what it covers of the file.
struct Placed {
  ChapterMark mark{};
  double start = 0;
  double end = 0;

  bool hasAudio() const { return start < end; }  // not so when one is no number
};

std::vector<Placed> placed(std::vector<ChapterMark> marks, double duration) {
  std::stable_sort(marks.begin(), marks.end(), [](const ChapterMark& a, const ChapterMark& b) {
    return a.startSeconds < b.startSeconds;
  });
  std::vector<Placed> chapters;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    const double next = i + 1 < marks.size() ? marks[i + 1].startSeconds : duration;
    const double start = std::max(marks[i].startSeconds, 0.0);
    const double end = std::min(marks[i].endSeconds.value_or(next), duration);
    chapters.push_back({std::move(marks[i]), start, end});
  }
  return chapters;
}

}  // namespace

std::vector<ChapterSpan> spansOf(std::vector<ChapterMark> marks, double duration) {
  std::vector<ChapterSpan> spans;
  for (Placed& chapter : placed(std::move(marks), duration)) {
    if (!chapter.hasAudio()) continue;
    const auto index = static_cast<std::int64_t>(spans.size() + 1);
    std::string& name = chapter.mark.name;
    if (name.empty()) name = "Chapter " + std::to_string(index);
    spans.push_back({index, std::move(name), chapter.start, chapter.end});
  }
  return spans;
}

std::vector<ChapterMark> withoutAudio(std::vector<ChapterMark> marks, double duration) {
  std::vector<ChapterMark> result;
  for (Placed& chapter : placed(std::move(marks), duration))
    if (!chapter.hasAudio()) result.push_back(std::move(chapter.mark));
  return result;
}

std::vector<ChapterSpan> spansOfSections(std::span<const MusicAnalysisResult::TimeSpan> sections,
                                         double duration) {
  std::vector<ChapterSpan> spans;
  for (const auto& tile : MusicSectionChapters::tile(sections, duration, kMinimumSectionSeconds)) {
    const auto index = static_cast<std::int64_t>(spans.size() + 1);
    spans.push_back({index, "Section " + std::to_string(index), tile.start, tile.end});
  }
  return spans;
}

std::vector<core::Chapter> measure(const PCMBuffer& buffer, std::span<const ChapterSpan> spans,
                                   const std::optional<std::vector<bool>>& fileSpeechHistory,
                                   const Execution& execution, bool dualMono) {
  std::vector<core::Chapter> chapters;
  chapters.reserve(spans.size());
  for (const ChapterSpan& span : spans) {
    ChapterProgress progress(execution.observer, chapters.size(), spans.size());
    chapters.push_back(SelectionMeasurement::measureChapter(
        buffer, span, fileSpeechHistory, {execution.threadCount, &progress}, dualMono));
  }
  return chapters;
}

std::optional<float> medianLUFS(std::span<const core::Chapter> chapters) {
  std::vector<float> values;
  for (const core::Chapter& chapter : chapters)
    if (chapter.integratedLUFS && std::isfinite(*chapter.integratedLUFS))
      values.push_back(*chapter.integratedLUFS);
  if (values.empty()) return std::nullopt;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  if (values.size() % 2 == 1) return values[middle];
  return (values[middle - 1] + values[middle]) * 0.5F;
}

}  // namespace orvane::ChapterMeasurement
