#include "orvane/container/ffmpeg/container_chapters.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/rational.h>
}

#include "orvane/text/utf8.h"

namespace orvane {
namespace {

std::optional<double> seconds(std::int64_t time, AVRational base) {
  if (time == AV_NOPTS_VALUE) return std::nullopt;
  const double value = static_cast<double>(time) * av_q2d(base);
  if (!std::isfinite(value)) return std::nullopt;
  return value;
}

std::string titleOf(const AVChapter& chapter) {
  const AVDictionaryEntry* const title = av_dict_get(chapter.metadata, "title", nullptr, 0);
  if (title == nullptr) return {};
  return isValidUTF8(title->value) ? title->value : utf8FromLatin1(title->value);
}

}  // namespace

std::vector<ChapterMark> chaptersOf(const AVFormatContext& format) {
  const std::size_t count = std::min<std::size_t>(format.nb_chapters, kMaximumEmbeddedChapters);
  std::vector<ChapterMark> marks;
  for (std::size_t i = 0; i < count; ++i) {
    const AVChapter& chapter = *format.chapters[i];
    const auto start = seconds(chapter.start, chapter.time_base);
    if (!start) continue;
    // Some files count from before their first sample.
    ChapterMark mark{.startSeconds = std::max(*start, 0.0), .name = titleOf(chapter)};
    const auto end = seconds(chapter.end, chapter.time_base);
    if (end && *end > mark.startSeconds) mark.endSeconds = end;
    marks.push_back(std::move(mark));
  }
  return marks;
}

}  // namespace orvane
