#include "cli/options/number_option.h"

#include "cli/usage_error.h"
#include "orvane/text/number_text.h"

namespace orvane::cli {

void addNumberOption(CLI::App& command, const NumberOption& option,
                     const std::function<void(double)>& set) {
  command
      .add_option_function<std::string>(
          option.name,
          [option, set](const std::string& text) {
            const auto value = NumberText::parsed<double>(text);
            // Not for what is no number at all either.
            if (!value || !(*value >= option.lowest && *value <= option.highest))
              throw UsageError(option.name + " takes a number from " +
                               NumberText::shortest(option.lowest) + " to " +
                               NumberText::shortest(option.highest));
            set(*value);
          },
          option.description)
      ->option_text(option.argument)
      ->group(option.group);
}

}  // namespace orvane::cli
