#include "orvane/audio/cue_sheet.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "orvane/text/extension_text.h"
#include "orvane/text/number_text.h"
#include "orvane/text/text_list.h"
#include "orvane/text/utf8.h"

namespace orvane::ChapterList {
namespace {

using TextList::quoted;
using TextList::trimmed;

/// Of the audio CD, for which the format was made.
constexpr double kFramesPerSecond = 75;

/// Takes the next word off the front of a line, in upper case.
std::string takeWord(std::string_view& line) {
  line = trimmed(line);
  const auto word = line.substr(0, line.find_first_of(" \t"));
  line.remove_prefix(word.size());
  line = trimmed(line);
  return uppercased(word);
}

/// "mm:ss:ff" in seconds; absent for anything else.
std::optional<double> indexTime(std::string_view text) {
  const auto first = text.find(':');
  const auto second = text.find(':', std::min(first + 1, text.size()));
  if (first == std::string_view::npos || second == std::string_view::npos) return std::nullopt;
  const auto minutes = NumberText::parsed<std::uint32_t>(text.substr(0, first));
  const auto seconds =
      NumberText::parsed<std::uint32_t>(text.substr(first + 1, second - first - 1));
  const auto frames = NumberText::parsed<std::uint32_t>(text.substr(second + 1));
  if (!minutes || !seconds || !frames || *seconds >= 60 || *frames >= 75) return std::nullopt;
  return static_cast<double>(*minutes) * 60 + static_cast<double>(*seconds) +
         static_cast<double>(*frames) / kFramesPerSecond;
}

/// The argument of a command, without its quotation marks.
std::string textOf(std::string_view argument) {
  if (argument.size() >= 2 && argument.front() == '"' && argument.back() == '"')
    argument = argument.substr(1, argument.size() - 2);
  return isValidUTF8(argument) ? std::string(argument) : utf8FromLatin1(argument);
}

/// What has been read of a track.
struct Track {
  std::size_t line = 0;
  bool isAudio = false;
  std::string title{};
  std::optional<double> start{};
};

class Parser {
 public:
  std::vector<ChapterMark> parse(std::string_view text) {
    text = TextList::withoutByteOrderMark(text);
    for (line_ = 1; !text.empty(); ++line_) readLine(TextList::takeLine(text));
    finishTrack();
    return std::move(marks_);
  }

 private:
  void readLine(std::string_view line) {
    const std::string command = takeWord(line);
    if (command == "FILE") {
      finishTrack();
      // A sheet may name a file without tracks of its own, for a gap.
      if (!marks_.empty()) throw TextListError(line_, "the cue sheet goes on in a second file.");
    } else if (command == "TRACK") {
      finishTrack();
      takeWord(line);  // its number
      track_ = Track{.line = line_, .isAudio = takeWord(line) == "AUDIO"};
    } else if (command == "TITLE") {
      if (track_) track_->title = textOf(line);
    } else if (command == "INDEX") {
      readIndex(line);
    }
  }

  void readIndex(std::string_view line) {
    if (!track_) throw TextListError(line_, "an INDEX stands before the first TRACK.");
    const auto index = NumberText::parsed<std::uint32_t>(takeWord(line));
    const auto time = indexTime(line);
    if (!index || !time)
      throw TextListError(line_,
                          "INDEX takes a number and a time mm:ss:ff, not " + quoted(line) + ".");
    if (*index == 1) track_->start = time;
  }

  void finishTrack() {
    if (!track_) return;
    if (!track_->start) throw TextListError(track_->line, "the track has no INDEX 01.");
    if (track_->isAudio)
      marks_.push_back({.startSeconds = *track_->start, .name = std::move(track_->title)});
    track_.reset();
  }

  std::size_t line_ = 0;
  std::optional<Track> track_{};
  std::vector<ChapterMark> marks_{};
};

}  // namespace

bool isCueSheetLine(std::string_view line) noexcept {
  constexpr std::array<std::string_view, 10> kCommands = {
      "FILE",       "REM",        "TITLE", "PERFORMER", "CATALOG",
      "CDTEXTFILE", "SONGWRITER", "TRACK", "ISRC",      "FLAGS"};
  const auto word = line.substr(0, line.find_first_of(" \t"));
  return std::any_of(kCommands.begin(), kCommands.end(), [word](std::string_view command) {
    return isSameIgnoringCase(word, command);
  });
}

std::vector<ChapterMark> readCueSheet(std::string_view text) {
  return Parser().parse(text);
}

}  // namespace orvane::ChapterList
