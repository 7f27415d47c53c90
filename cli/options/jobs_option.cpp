#include "cli/options/jobs_option.h"

namespace orvane::cli {

void addJobsOption(CLI::App& command, int& jobs, const std::string& description,
                   const std::string& group) {
  constexpr int kMostJobs = 1024;
  command.add_option("-j,--jobs", jobs, description)
      ->option_text("N")
      ->group(group)
      ->check(CLI::Range(1, kMostJobs));
}

}  // namespace orvane::cli
