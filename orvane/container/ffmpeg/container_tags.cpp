#include "orvane/container/ffmpeg/container_tags.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
#include <span>
#include <string_view>

extern "C" {
#include <libavutil/dict.h>
}

#include "orvane/text/extension_text.h"
#include "orvane/text/utf8.h"

namespace orvane {
namespace {

/// More names than these tell a reader nothing.
constexpr std::size_t kMostNames = 100;

/// What FFmpeg keeps among the tags and what belongs to the file's form: a new file has its own.
constexpr auto kOfTheForm = std::to_array<std::string_view>(
    {"bps", "compatible_brands", "creation_time", "duration", "encoder", "handler_name", "itunsmpb",
     "language", "major_brand", "minor_version", "number_of_bytes", "number_of_frames",
     "vendor_id"});

bool isOfTheForm(std::string_view name) {
  return name.starts_with('_') || std::ranges::find(kOfTheForm, name) != kOfTheForm.end();
}

void addNames(const AVDictionary* tags, std::set<std::string>& names) {
  const AVDictionaryEntry* tag = nullptr;
  while ((tag = av_dict_get(tags, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    std::string name = lowercased(isValidUTF8(tag->key) ? tag->key : utf8FromLatin1(tag->key));
    if (!isOfTheForm(name) && names.size() < kMostNames) names.insert(std::move(name));
  }
}

}  // namespace

std::vector<std::string> tagNamesOf(const AVFormatContext& format, const AVStream& stream) {
  std::set<std::string> names;
  addNames(format.metadata, names);
  addNames(stream.metadata, names);
  for (const AVStream* other : std::span(format.streams, format.nb_streams))
    if ((other->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) names.insert("picture");
  return {names.begin(), names.end()};
}

}  // namespace orvane
