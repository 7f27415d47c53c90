#include "cli/options/edit_requests.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "cli/options/edit_names.h"
#include "cli/options/named_choice.h"
#include "cli/options/number_option.h"
#include "cli/options/shell_words.h"
#include "cli/usage_error.h"
#include "orvane/text/number_text.h"

namespace orvane::cli {
namespace {

using EditOperations::SilenceMode;
using EditAtRate = std::function<Edit(double)>;

/// Two times, or one that is both, from the word `first` on.
std::pair<EditTime, EditTime> rangeIn(const OperationWords& words, std::size_t first) {
  const auto start = EditTime::parse(words.words[first], "START");
  if (first + 1 == words.words.size()) return {start, start};
  const auto end = EditTime::parse(words.words[first + 1], "END");
  requireOrder(start, end);
  return {start, end};
}

FrameRange framesOf(const std::pair<EditTime, EditTime>& range, double rate) {
  return {range.first.frameAt(rate), range.second.frameAt(rate)};
}

void addNothing(CLI::App&, OperationWords&) {}

void addRange(CLI::App& command, OperationWords& words) {
  addTimeOption(command, "--from", "Where it begins; by default at the start",
                [&words](EditTime time) { words.from = time; });
  addTimeOption(command, "--to", "Where it ends; by default at the end",
                [&words](EditTime time) { words.to = time; });
}

/// What `--from` and `--to` ask for.
std::function<FrameRange(double)> rangeOf(const OperationWords& words) {
  if (words.from && words.to) requireOrder(*words.from, *words.to);
  return [from = words.from, to = words.to](double rate) {
    return FrameRange{from ? from->frameAt(rate) : 0,
                      to ? to->frameAt(rate) : std::numeric_limits<std::int64_t>::max()};
  };
}

EditAtRate trimOf(const OperationWords& words) {
  return
      [range = rangeIn(words, 0)](double rate) -> Edit { return TrimEdit{framesOf(range, rate)}; };
}

void addCrossfade(CLI::App& command, OperationWords& words) {
  addTimeOption(command, "--crossfade",
                "How long both sides overlap, as far as there is audio; by default 10 ms",
                [&words](EditTime time) { words.crossfade = time; });
}

EditAtRate cutOf(const OperationWords& words) {
  return [range = rangeIn(words, 0), crossfade = words.crossfade](double rate) -> Edit {
    return CutEdit{framesOf(range, rate), crossfade.frameAt(rate)};
  };
}

void addLength(CLI::App& command, OperationWords& words) {
  addTimeOption(command, "--length", "How much silence is inserted before or after",
                [&words](EditTime time) { words.length = time; });
}

EditAtRate silenceOf(const OperationWords& words) {
  const SilenceMode mode = namedChoice(EditNames::kSilences, "silence", words.words[0]);
  const bool isInsertion = mode != SilenceMode::replace;
  if (isInsertion && !words.length)
    throw UsageError("--length is missing; it says how much silence is inserted");
  if (!isInsertion && words.length)
    throw UsageError("silence replace keeps the length; --length is for before and after");
  if (!isInsertion && words.words.size() < 3) throw UsageError("silence replace takes START END");
  return [mode, range = rangeIn(words, 1), length = words.length](double rate) -> Edit {
    return SilenceEdit{framesOf(range, rate), mode, length ? length->frameAt(rate) : 0};
  };
}

void addCurve(CLI::App& command, OperationWords& words) {
  command
      .add_option_function<std::string>(
          "--curve",
          [&words](const std::string& name) {
            words.curve = namedChoice(EditNames::kCurves, "--curve", name);
          },
          "By default linear")
      ->option_text("linear|log|equal-power")
      ->group(kEditGroup);
}

EditAtRate fadeOf(const OperationWords& words) {
  return [direction = namedChoice(EditNames::kDirections, "fade", words.words[0]),
          range = rangeIn(words, 1), curve = words.curve](double rate) -> Edit {
    return FadeEdit{framesOf(range, rate), direction, curve};
  };
}

constexpr double kMostDB = 300;
constexpr double kUsualCeilingDBTP = -1;

double decibelsIn(const std::string& text, const char* operation) {
  const auto decibels = NumberText::parsed<double>(text);
  if (!decibels || !(*decibels >= -kMostDB && *decibels <= kMostDB))
    throw UsageError(std::string(operation) + " takes decibels from -300 to 300, not '" + text +
                     "'");
  return *decibels;
}

EditAtRate gainOf(const OperationWords& words) {
  return
      [range = rangeOf(words), decibels = decibelsIn(words.words[0], "gain")](double rate) -> Edit {
        return GainEdit{range(rate), decibels};
      };
}

EditAtRate peakOf(const OperationWords& words) {
  return [edit = PeakEdit{decibelsIn(words.words[0], "peak")}](double) -> Edit { return edit; };
}

void addLevelOption(CLI::App& command, const char* name, const char* argument, const char* text,
                    std::optional<double>& level) {
  addNumberOption(command, {name, argument, kEditGroup, -kMostDB, kMostDB, text},
                  [&level](double value) { level = value; });
}

void addCeiling(CLI::App& command, OperationWords& words) {
  addLevelOption(command, "--ceiling", "DBTP", "The highest true peak; by default -1",
                 words.ceilingDBTP);
}

EditAtRate limitOf(const OperationWords& words) {
  return [edit = LimitEdit{words.ceilingDBTP.value_or(kUsualCeilingDBTP)}](double) -> Edit {
    return edit;
  };
}

void addTarget(CLI::App& command, OperationWords& words) {
  addLevelOption(command, "--target", "LUFS", "The integrated loudness to come to",
                 words.targetLUFS);
  addLevelOption(command, "--ceiling", "DBTP",
                 "The highest true peak; by default that of --target-id, else -1",
                 words.ceilingDBTP);
  command
      .add_option_function<std::string>(
          "--target-id",
          [&words](const std::string& id) {
            words.target = core::LoudnessTargetCatalog::target(id);
            if (!words.target)
              throw UsageError("--target-id: unknown target '" + id +
                               "'; \"orvane targets\" lists them");
            if (words.target->source != core::LoudnessTargetSource::integrated)
              throw UsageError("--target-id: " + id + " is not about integrated loudness");
          },
          "Loudness and ceiling of a delivery target")
      ->option_text("ID")
      ->group(kEditGroup);
}

EditAtRate normalizationOf(const OperationWords& words) {
  if (words.targetLUFS.has_value() == words.target.has_value())
    throw UsageError("normalize takes either --target or --target-id");
  const double target =
      words.target ? static_cast<double>(words.target->referenceLUFS) : *words.targetLUFS;
  const double ceiling =
      words.target ? static_cast<double>(words.target->truePeakCeilingDBTP) : kUsualCeilingDBTP;
  return [edit = NormalizeEdit{target, words.ceilingDBTP.value_or(ceiling)}](double) -> Edit {
    return edit;
  };
}

EditAtRate inversionOf(const OperationWords& words) {
  return [range = rangeOf(words)](double rate) -> Edit { return InvertEdit{range(rate)}; };
}

EditAtRate offsetOf(const OperationWords& words) {
  return [range = rangeOf(words)](double rate) -> Edit { return DCOffsetEdit{range(rate)}; };
}

void addExpansion(CLI::App& command, OperationWords& words) {
  command
      .add_option("--regions", words.speechRegions,
                  "Where somebody speaks in IN, as \"orvane dialogue\" keeps it")
      ->option_text("SIDECAR")
      ->group(kEditGroup);
  command.add_flag("--speech", words.detectsSpeech, "Detect where somebody speaks in IN")
      ->group(kEditGroup);
  addNumberOption(command,
                  {"--reduction", "DB", kEditGroup, -kMostDB, 0,
                   "By how much the level of what is not speech changes, such as -12"},
                  [&words](double value) { words.reductionDB = value; });
  addNumberOption(command,
                  {"--makeup", "DB", kEditGroup, -kMostDB, kMostDB,
                   "By how much the level of everything changes; by default 0"},
                  [&words](double value) { words.makeupDB = value; });
  addTimeOption(command, "--attack", "Time constant back to speech; by default 50 ms",
                [&words](EditTime time) { words.attack = time; });
  addTimeOption(command, "--release", "Time constant away from speech; by default 300 ms",
                [&words](EditTime time) { words.release = time; });
}

EditAtRate expansionOf(const OperationWords& words) {
  if (words.detectsSpeech == !words.speechRegions.empty())
    throw UsageError("expand takes either --regions or --speech");
  if (!words.reductionDB) throw UsageError("--reduction is missing; it says by how many decibels");
  constexpr double kMilliseconds = 1000;
  return [reduction = *words.reductionDB, makeup = words.makeupDB, attack = words.attack,
          release = words.release](double rate) -> Edit {
    return ExpandEdit{.expansion = {.reductionDB = reduction,
                                    .makeupDB = makeup,
                                    .attackMs = attack.secondsAt(rate) * kMilliseconds,
                                    .releaseMs = release.secondsAt(rate) * kMilliseconds}};
  };
}

EditAtRate swapOf(const OperationWords&) {
  return [](double) -> Edit { return SwapEdit{}; };
}

EditAtRate splitOf(const OperationWords&) {
  return nullptr;
}

constexpr EditOperation kOperations[] = {
    {"trim", "START END", 2, 2, "Keep only what lies between two times", addNothing, trimOf},
    {"cut", "START END", 2, 2, "Remove what lies between two times, and join both sides",
     addCrossfade, cutOf},
    {"silence", "before|after|replace START [END]", 2, 3,
     "Insert silence before START, or after END, or silence what lies between", addLength,
     silenceOf},
    {"fade", "in|out START END", 3, 3, "Fade in or out", addCurve, fadeOf},
    {"gain", "DB", 1, 1, "Change the level", addRange, gainOf},
    {"invert", "", 0, 0, "Invert the polarity", addRange, inversionOf},
    {"dc", "", 0, 0, "Remove the offset of each channel from zero", addRange, offsetOf},
    {"peak", "DB", 1, 1, "Bring the sample peak to a level in dBFS", addNothing, peakOf},
    {"limit", "", 0, 0, "Lower the audio around true peaks above a ceiling", addCeiling, limitOf},
    {"normalize", "", 0, 0,
     "Bring the integrated loudness to a target, and limit true peaks to a ceiling", addTarget,
     normalizationOf},
    {"expand", "", 0, 0, "Lower what is not speech", addExpansion, expansionOf},
    {"swap", "", 0, 0, "Exchange the channels of stereo", addNothing, swapOf},
    {"split", "", 0, 0, "Write each channel to a file of its own, OUT with .L, .R … in its name",
     addNothing, splitOf},
};

void requireOperation(const std::vector<std::string>& words) {
  std::string known;
  for (const EditOperation& operation : kOperations) {
    if (!words.empty() && words.front() == operation.name) return;
    known += (known.empty() ? "" : ", ") + std::string(operation.name);
  }
  throw UsageError(
      (words.empty() ? "an operation is missing" : "unknown operation '" + words.front() + "'") +
      "; the operations are " + known);
}

}  // namespace

void addEditOperations(
    CLI::App& command, const char* file,
    const std::function<void(CLI::App& subcommand, const EditOperation& operation,
                             std::shared_ptr<OperationWords> words)>& added) {
  for (const EditOperation& operation : kOperations) {
    CLI::App* const subcommand = command.add_subcommand(operation.name, operation.description);
    const auto words = std::make_shared<OperationWords>();
    const std::string expected = operation.words;
    subcommand->add_option("WORDS", words->words)
        ->option_text(expected + (expected.empty() ? "" : " ") + file);
    operation.addOptions(*subcommand, *words);
    added(*subcommand, operation, words);
  }
}

EditRequest requestOf(const EditOperation& operation, const OperationWords& words) {
  if (words.words.size() < operation.fewest || words.words.size() > operation.most)
    throw UsageError(std::string(operation.name) + " takes " +
                     (operation.most == 0 ? "no further words" : operation.words));
  return {operation.name, operation.request(words), words.speechRegions, words.detectsSpeech};
}

EditRequest requestIn(const std::string& text) {
  try {
    std::vector<std::string> words = shellWords(text);
    requireOperation(words);
    CLI::App command;
    command.set_help_flag();
    EditRequest request;
    addEditOperations(
        command, "",
        [&](CLI::App& subcommand, const EditOperation& operation,
            const std::shared_ptr<OperationWords>& of) {
          subcommand.callback([&request, &operation, of] { request = requestOf(operation, *of); });
        });
    std::ranges::reverse(words);  // as CLI11 takes them
    command.parse(std::move(words));
    return request;
  } catch (const CLI::ParseError& error) {
    throw UsageError("--then \"" + text + "\": " + error.what());
  } catch (const UsageError& error) {
    throw UsageError("--then \"" + text + "\": " + error.what());
  }
}

}  // namespace orvane::cli
