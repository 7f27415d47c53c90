#include "cli/options/source_options.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "cli/options/sample_rate_limits.h"
#include "cli/usage_error.h"
#include "orvane/platform/error.h"
#include "orvane/rawpcm/raw_pcm_preset_store.h"
#include "orvane/text/number_text.h"

namespace orvane::cli {
namespace {

using Parts = std::map<std::string, std::string>;

constexpr std::int64_t kMaximumChannels = 64;

[[noreturn]] void fail(const std::string& text) {
  throw UsageError("--raw: " + text);
}

std::string inQuotes(std::string_view text) {
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

void state(Parts& parts, const std::string& name, std::string_view value) {
  if (!parts.emplace(name, value).second) fail(name + " is stated twice");
}

/// Adds what follows the encoding in the text of `--raw`.
void stateAll(std::span<const std::string_view> texts, Parts& parts) {
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string_view text = texts[i];
    const std::size_t equals = text.find('=');
    const std::string name(text.substr(0, equals));
    if (i == 0)
      state(parts, "rate", text);
    else if (i == 1)
      state(parts, "channels", text);
    else if (text == "planar" || text == "interleaved")
      state(parts, "layout", text);
    else if (equals != std::string_view::npos && (name == "skip" || name == "tolerate"))
      state(parts, name, text.substr(equals + 1));
    else
      fail("unknown part " + inQuotes(text) + "; planar, skip=BYTES and tolerate=BYTES may follow");
  }
}

double rateIn(const Parts& parts) {
  const auto& text = parts.at("rate");
  const auto rate = orvane::NumberText::parsed<double>(text);
  if (!rate || !SampleRateLimits::contains(*rate))
    fail("the rate must be " + SampleRateLimits::description() + ", not " + inQuotes(text));
  return *rate;
}

std::int64_t channelsIn(const Parts& parts) {
  const auto& text = parts.at("channels");
  const auto channels = orvane::NumberText::parsed<std::int64_t>(text);
  if (!channels || *channels < 1 || *channels > kMaximumChannels)
    fail("the channels must be 1 to 64, not " + inQuotes(text));
  return *channels;
}

std::int64_t bytesIn(const Parts& parts, const std::string& name) {
  const auto part = parts.find(name);
  if (part == parts.end()) return 0;
  const auto bytes = orvane::NumberText::parsed<std::int64_t>(part->second);
  if (!bytes || *bytes < 0) fail(name + " takes a number of bytes, not " + inQuotes(part->second));
  return *bytes;
}

std::string description() {
  return "The files are headerless PCM.\n"
         "FORMAT is ENCODING,RATE,CHANNELS and then, where it applies, planar, skip=BYTES, "
         "tolerate=BYTES, for example s24le,48000,2,skip=512; or ENCODING alone with the options "
         "below.\nENCODING is one of " +
         encodings() + ".";
}

constexpr const char* kGroup = "Input";

/// Throws `UsageError`, for what no file can have too. `option` is where the name was given.
RawPCMFormat presetFormat(const std::string& option, const std::string& name) {
  const RawPCMPresetStore store(RawPCMPresetStore::defaultDirectory());
  try {
    store.loadIntact();
  } catch (const Error& error) {
    throw UsageError(option + ": " + error.errorDescription());
  }
  const auto preset = store.preset(name);
  if (!preset)
    throw UsageError(option + ": there is none called " + inQuotes(name) +
                     "; \"orvane raw presets list\" shows those that there are");
  const auto& format = preset->format;
  if (!format.isShapeValid() || !SampleRateLimits::contains(format.sampleRate))
    throw UsageError(option + ": no file can have the format of " + inQuotes(name) + ", " +
                     format.summary());
  return format;
}

/// What the user says of a headerless file, until it is complete.
struct Declaration {
  std::optional<std::string> text{};
  Parts parts{};
  std::optional<std::string> preset{};
};

void addPartOption(CLI::App& command, const std::shared_ptr<Declaration>& declaration,
                   const std::string& part, const char* argument, const char* text) {
  command
      .add_option_function<std::string>(
          "--" + part,
          [declaration, part](const std::string& value) { declaration->parts[part] = value; }, text)
      ->option_text(argument)
      ->group(kGroup);
}

}  // namespace

RawPCMFormat rawFormatOf(std::string_view text, std::map<std::string, std::string> parts) {
  const auto texts = splitAtCommas(text);
  const auto encoding = RawPCMFormat::encodingAndEndianness(texts[0]);
  if (!encoding) fail("unknown encoding " + inQuotes(texts[0]) + "; one of " + encodings());
  stateAll(std::span(texts).subspan(1), parts);
  for (const char* needed : {"rate", "channels"})
    if (!parts.contains(needed))
      fail(std::string(needed) +
           " is missing; say s16le,48000,2 or --raw s16le --rate 48000 --channels 2");
  return {.sampleRate = rateIn(parts),
          .channelCount = channelsIn(parts),
          .encoding = encoding->first,
          .endianness = encoding->second,
          .isPlanar = parts.contains("layout") && parts.at("layout") == "planar",
          .headerSkipBytes = bytesIn(parts, "skip"),
          .trailingBytesTolerance = bytesIn(parts, "tolerate")};
}

std::string rawOptionText(const RawPCMFormat& format) {
  std::string text = format.formatToken() + "," + NumberText::shortest(format.sampleRate) + "," +
                     std::to_string(format.channelCount);
  if (format.isPlanar) text += ",planar";
  if (format.headerSkipBytes > 0) text += ",skip=" + std::to_string(format.headerSkipBytes);
  if (format.trailingBytesTolerance > 0)
    text += ",tolerate=" + std::to_string(format.trailingBytesTolerance);
  return text;
}

void addRawOptions(CLI::App& command, std::optional<RawPCMFormat>& format) {
  const auto declaration = std::make_shared<Declaration>();
  command
      .add_option_function<std::string>(
          "--raw", [declaration](const std::string& text) { declaration->text = text; },
          description())
      ->option_text("FORMAT")
      ->group(kGroup);
  addPartOption(command, declaration, "rate", "HZ", "The sample rate of headerless PCM");
  addPartOption(command, declaration, "channels", "N", "Its channels");
  addPartOption(command, declaration, "skip", "BYTES", "What stands before its samples");
  addPartOption(command, declaration, "tolerate", "BYTES", "What may stand behind them");
  command
      .add_flag_callback(
          "--planar", [declaration] { declaration->parts["layout"] = "planar"; },
          "It has one channel after the other")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--preset", [declaration](const std::string& name) { declaration->preset = name; },
          "The files are headerless PCM in the format of that name; see \"orvane raw presets\"")
      ->option_text("NAME")
      ->group(kGroup);
  command.parse_complete_callback([declaration, &format] {
    const bool isDeclared = declaration->text || !declaration->parts.empty();
    if (declaration->preset && isDeclared)
      throw UsageError("--preset says all that --raw and the options beside it could say");
    if (declaration->preset)
      format = presetFormat("--preset", *declaration->preset);
    else if (declaration->text)
      format = rawFormatOf(*declaration->text, declaration->parts);
    else if (isDeclared)
      throw UsageError("--raw is missing; it says how headerless files are encoded");
  });
}

void addRawOptionsFor(CLI::App& command, const std::string& file,
                      std::optional<RawPCMFormat>& format) {
  const std::string suffix(1, static_cast<char>(file.at(0) - 'A' + 'a'));
  auto* raw = command.add_option_function<std::string>(
      "--raw-" + suffix, [&format](const std::string& text) { format = rawFormatOf(text); },
      "Only " + file + " is headerless PCM, as --raw says it in one word");
  auto* preset = command.add_option_function<std::string>(
      "--preset-" + suffix,
      [&format, suffix](const std::string& name) {
        format = presetFormat("--preset-" + suffix, name);
      },
      "Only " + file + " is headerless PCM in the format of that name");
  raw->option_text("FORMAT")->group(kGroup);
  preset->option_text("NAME")->group(kGroup)->excludes(raw);
}

void addSourceOptions(CLI::App& command, SourceOptions& options) {
  addRawOptions(command, options.rawFormat);
  command
      .add_option("--stream", options.streamIndex,
                  "Take audio stream N of files with several, counted from 0")
      ->option_text("N")
      ->group(kGroup)
      ->check(CLI::NonNegativeNumber);
}

}  // namespace orvane::cli
