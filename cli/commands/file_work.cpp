#include "cli/commands/file_work.h"

#include <exception>
#include <new>
#include <utility>

#include "cli/commands/job_runner.h"
#include "cli/interruption.h"
#include "cli/output/json_output.h"
#include "orvane/platform/error.h"

namespace orvane::cli::FileWork {

ExitCode run(const std::vector<InputName>& files, const Plan& plan, Console& console,
             const std::function<Report(const InputName&)>& work) {
  ExitCode code = ExitCode::done;  // changed by reports alone, which come one at a time
  const auto failure = [&](const InputName& file, const std::string& text) -> Report {
    return [&, message = file.message(text)] {
      console.error(message);
      if (plan.json) console.print(JsonOutput::failure(file.display, message));
      code = worse(code, ExitCode::fileFailed);
    };
  };
  JobRunner::run(plan.jobs, files.size(), [&](std::size_t index) -> Report {
    const InputName& file = files[index];
    if (Interruption::isRequested()) throw Cancelled();
    try {
      return work(file);
    } catch (const Cancelled&) {
      throw;
    } catch (const Error& error) {
      return failure(file, error.errorDescription());
    } catch (const std::bad_alloc&) {
      return failure(file, PlatformError(file.path, "not enough memory").errorDescription());
    } catch (const std::exception& error) {  // of the standard library
      return failure(file, PlatformError(file.path, error.what()).errorDescription());
    }
  });
  return code;
}

}  // namespace orvane::cli::FileWork
