#include "cli/commands/file_work.h"

#include <exception>
#include <new>
#include <utility>

#include "cli/commands/job_runner.h"
#include "cli/interruption.h"
#include "cli/output/json_output.h"
#include "orvane/audio/audio_file_identity.h"
#include "orvane/platform/error.h"

namespace orvane::cli::FileWork {
namespace {

/// A file that was found in a folder, and that neither its name nor its bytes say to be audio. What
/// the system keeps from being read may be anything.
bool isNoAudio(const InputName& file, const Error& error) {
  if (!file.isFound) return false;
  if (const auto* ofSystem = dynamic_cast<const PlatformError*>(&error);
      ofSystem == nullptr || ofSystem->code())
    return false;
  const std::string extension = file.path.extension().string();
  const bool isHidden = file.path.filename().string().starts_with('.');
  if (!isHidden && !extension.empty() && AudioFileIdentity::expectedContainers(extension.substr(1)))
    return false;
  return !describeAudioFile(file.path);
}

/// What the user may have meant; empty where nothing suggests itself.
std::string hintFor(const Error& error) {
  const auto* ofSystem = dynamic_cast<const PlatformError*>(&error);
  if (ofSystem == nullptr) return "";
  if (ofSystem->code() == std::errc::is_a_directory)
    return "; --recursive takes the audio files in it";
  if (ofSystem->message() == "Not an audio file")
    return "; --raw reads headerless PCM, \"orvane raw guess\" finds out how";
  return "";
}

}  // namespace

ExitCode run(const std::vector<InputName>& files, const Plan& plan, Console& console,
             const std::function<Report(const InputName&)>& work) {
  ExitCode code = ExitCode::done;  // changed by reports alone, which come one at a time
  const auto failure = [&](const InputName& file, const Error& error) -> Report {
    if (isNoAudio(file, error)) return plan.onNoAudio ? plan.onNoAudio : [] {};
    return [&, message = file.message(error) + (plan.takesRawAndFolders ? hintFor(error) : "")] {
      console.error(message);
      if (plan.json) console.print(JsonOutput::failure(file.display, message));
      if (plan.onFailure) plan.onFailure(file, message);
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
      return failure(file, error);
    } catch (const std::bad_alloc&) {
      return failure(file, PlatformError(file.path, "not enough memory"));
    } catch (const std::exception& error) {  // of the standard library
      return failure(file, PlatformError(file.path, error.what()));
    }
  });
  return code;
}

}  // namespace orvane::cli::FileWork
