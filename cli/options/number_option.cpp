#include "cli/options/number_option.h"

#include <charconv>

#include "cli/output/number_text.h"
#include "cli/usage_error.h"

namespace orvane::cli {

void addNumberOption(CLI::App& command, const NumberOption& option,
                     const std::function<void(double)>& set) {
  command
      .add_option_function<std::string>(
          option.name,
          [option, set](const std::string& text) {
            double value = 0;
            const char* const end = text.data() + text.size();
            const auto result = std::from_chars(text.data(), end, value);
            const bool isNumber = result.ec == std::errc() && result.ptr == end;
            // Not for what is no number at all either.
            if (!isNumber || !(value >= option.lowest && value <= option.highest))
              throw UsageError(option.name + " takes a number from " +
                               NumberText::shortest(option.lowest) + " to " +
                               NumberText::shortest(option.highest));
            set(value);
          },
          option.description)
      ->option_text(option.argument)
      ->group(option.group);
}

}  // namespace orvane::cli
