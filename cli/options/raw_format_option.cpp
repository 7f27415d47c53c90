#include "cli/options/raw_format_option.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <vector>

#include "cli/options/sample_rate_limits.h"
#include "cli/usage_error.h"
#include "orvane/text/number_text.h"

namespace orvane::cli::RawFormatOption {
namespace {

constexpr std::int64_t kMaximumChannels = 64;

[[noreturn]] void fail(const std::string& text) {
  throw UsageError("--raw: " + text);
}

std::string quoted(std::string_view text) {
  return "'" + std::string(text) + "'";
}

std::vector<std::string_view> splitAtCommas(std::string_view text) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t comma = text.find(',');
    parts.push_back(text.substr(0, comma));
    if (comma == std::string_view::npos) return parts;
    text.remove_prefix(comma + 1);
  }
}

std::string encodings() {
  std::string list;
  for (const auto token : RawPCMFormat::allFormatTokens())
    list += (list.empty() ? "" : " ") + std::string(token);
  return list;
}

std::int64_t byteCountIn(std::string_view name, std::string_view text) {
  const auto bytes = NumberText::parsed<std::int64_t>(text);
  if (!bytes || *bytes < 0)
    fail(std::string(name) + " takes a number of bytes, not " + quoted(text));
  return *bytes;
}

void applyChoice(std::string_view part, RawPCMFormat& format) {
  const std::size_t equals = part.find('=');
  const std::string_view name = part.substr(0, equals);
  const bool hasValue = equals != std::string_view::npos;
  const std::string_view value = hasValue ? part.substr(equals + 1) : "";
  if (part == "planar") {
    format.isPlanar = true;
  } else if (part == "interleaved") {
    format.isPlanar = false;
  } else if (hasValue && name == "skip") {
    format.headerSkipBytes = byteCountIn(name, value);
  } else if (hasValue && name == "tolerate") {
    format.trailingBytesTolerance = byteCountIn(name, value);
  } else {
    fail("unknown part " + quoted(part) + "; planar, skip=BYTES and tolerate=BYTES may follow");
  }
}

}  // namespace

RawPCMFormat parse(std::string_view text) {
  const auto parts = splitAtCommas(text);
  if (parts.size() < 3) fail("ENCODING,RATE,CHANNELS are needed, as in s16le,48000,2");

  const auto encoding = RawPCMFormat::encodingAndEndianness(parts[0]);
  if (!encoding) fail("unknown encoding " + quoted(parts[0]) + "; one of " + encodings());
  RawPCMFormat format;
  format.encoding = encoding->first;
  format.endianness = encoding->second;

  const auto rate = NumberText::parsed<double>(parts[1]);
  if (!rate || !SampleRateLimits::contains(*rate))
    fail("the rate must be " + SampleRateLimits::description() + ", not " + quoted(parts[1]));
  format.sampleRate = *rate;

  const auto channels = NumberText::parsed<std::int64_t>(parts[2]);
  if (!channels || *channels < 1 || *channels > kMaximumChannels)
    fail("the channels must be 1 to 64, not " + quoted(parts[2]));
  format.channelCount = *channels;

  std::set<std::string_view> seen;
  for (std::size_t i = 3; i < parts.size(); ++i) {
    const std::string_view name = parts[i].substr(0, parts[i].find('='));
    if (!seen.insert(name).second) fail(quoted(name) + " is given twice");
    applyChoice(parts[i], format);
  }
  return format;
}

std::string description() {
  return "The files are headerless PCM.\n"
         "FORMAT is ENCODING,RATE,CHANNELS and then, where it applies, planar, skip=BYTES, "
         "tolerate=BYTES, for example s24le,48000,2,skip=512.\nENCODING is one of " +
         encodings() + ".";
}

}  // namespace orvane::cli::RawFormatOption
