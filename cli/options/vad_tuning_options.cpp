#include "cli/options/vad_tuning_options.h"

#include <type_traits>

#include "cli/options/number_option.h"

namespace orvane::cli {
namespace {

constexpr const char* kGroup = "Speech detection";
/// An hour: no phrase and no pause of speech is longer.
constexpr double kLongestSeconds = 3600;

}  // namespace

void addVADTuningOptions(CLI::App& command, VADTuningOptions& options) {
  SileroVADTuning& tuning = options.tuning;
  const auto add = [&](const char* name, const char* argument, double highest, auto& target,
                       const char* description) {
    addNumberOption(command,
                    {.name = name,
                     .argument = argument,
                     .group = kGroup,
                     .highest = highest,
                     .description = description},
                    [&options, &target, name](double value) {
                      options.given = name;
                      target = static_cast<std::remove_reference_t<decltype(target)>>(value);
                    });
  };
  add("--vad-threshold", "T", 1, tuning.threshold,
      "Speech probability from which a frame counts as speech (0.5)");
  add("--min-speech", "S", kLongestSeconds, tuning.minSpeechDuration,
      "Drop speech shorter than S seconds (0.1)");
  add("--min-silence", "S", kLongestSeconds, tuning.minSilenceDuration,
      "Let only pauses of at least S seconds end speech (0.1)");
}

}  // namespace orvane::cli
