#include "cli/vad_tuning_options.h"

#include <string>

#include "cli/number_text.h"
#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

constexpr const char* kGroup = "Speech detection";
/// An hour: no phrase and no pause of speech is longer.
constexpr double kLongestSeconds = 3600;

/// An option whose value is a number from 0 to `highest`.
template <typename Number>
void addNumber(CLI::App& command, const std::string& name, const char* argument, Number& target,
               double highest, const std::string& description) {
  command
      .add_option_function<double>(
          name,
          [name, highest, &target](double value) {
            if (!(value >= 0 && value <= highest))  // not for what is no number either
              throw UsageError(name + " takes a number from 0 to " + NumberText::shortest(highest));
            target = static_cast<Number>(value);
          },
          description)
      ->option_text(argument)
      ->group(kGroup);
}

}  // namespace

void addVADTuningOptions(CLI::App& command, SileroVADTuning& tuning) {
  addNumber(command, "--vad-threshold", "T", tuning.threshold, 1,
            "Speech probability from which a frame counts as speech (0.5)");
  addNumber(command, "--min-speech", "S", tuning.minSpeechDuration, kLongestSeconds,
            "Drop speech shorter than S seconds (0.1)");
  addNumber(command, "--min-silence", "S", tuning.minSilenceDuration, kLongestSeconds,
            "Let only pauses of at least S seconds end speech (0.1)");
}

}  // namespace orvane::cli
