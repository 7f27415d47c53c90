#include "orvane/container/compressed_audio_file.h"

#include <dlfcn.h>

#include <string>
#include <utility>

#include "orvane/container/ffmpeg/ffmpeg_module.h"
#include "orvane/platform/error.h"
#include "orvane/platform/module_location.h"

namespace orvane {
namespace {

/// Loads the module from this library's folder (the build tree) or the folder "orvane" below it (an
/// installation). Nothing else is searched: a bare name would let the environment choose.
const FFmpegModule* loadModule(std::string& failure) {
  const auto library = ModuleLocation::module();
  if (!library) return nullptr;
  const std::filesystem::path folder = library->parent_path();
  for (const auto& file : {folder / kFFmpegModuleFile, folder / "orvane" / kFFmpegModuleFile}) {
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored)) continue;
    void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* factory = module != nullptr ? dlsym(module, kFFmpegModuleFactory) : nullptr;
    if (factory == nullptr) {
      failure = dlerror();
      continue;
    }
    const auto make = reinterpret_cast<FFmpegModuleFactory>(factory);
    if (const FFmpegModule* made = make(kFFmpegModuleVersion)) return made;
    failure = "it is of another version";
  }
  return nullptr;
}

struct LoadedModule {
  std::string failure{};  ///< why there is none
  const FFmpegModule* module = loadModule(failure);
};

/// Loaded once and never unloaded, because open files keep running the module's code.
const LoadedModule& loadedModule() {
  static const LoadedModule loaded;
  return loaded;
}

const FFmpegModule& ffmpegModule(const std::filesystem::path& path) {
  const auto& [failure, module] = loadedModule();
  if (module != nullptr) return *module;
  const std::string reason = failure.empty() ? "is not installed" : "cannot be loaded: " + failure;
  throw PlatformError(path, std::string("The decoder module ") + kFFmpegModuleFile + " " + reason);
}

}  // namespace

std::unique_ptr<AudioFile> openCompressedAudioFile(std::shared_ptr<const InputFile> file,
                                                   const AudioFileOpenOptions& options,
                                                   FourCC containerHint) {
  const FFmpegModule& module = ffmpegModule(file->path());
  return module.open(std::move(file), options, containerHint);
}

AudioFileDescription describeCompressedAudioFile(std::shared_ptr<const InputFile> file,
                                                 const AudioFileOpenOptions& options,
                                                 FourCC containerHint) {
  const FFmpegModule& module = ffmpegModule(file->path());
  return module.describe(std::move(file), options, containerHint);
}

AudioStreamCount countCompressedStreams(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options, FourCC containerHint) {
  const FFmpegModule& module = ffmpegModule(file->path());
  return module.countStreams(std::move(file), options, containerHint);
}

std::optional<std::string> ffmpegVersion() {
  const FFmpegModule* const module = loadedModule().module;
  return module != nullptr ? std::optional<std::string>(module->version()) : std::nullopt;
}

}  // namespace orvane
