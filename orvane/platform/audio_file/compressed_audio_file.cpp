#include "orvane/platform/audio_file/compressed_audio_file.h"

#include <dlfcn.h>

#include <string>

#include "orvane/platform/audio_file/ffmpeg/ffmpeg_module.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// Any address of this library, for dladdr.
const char kOwnAddress = 0;

std::filesystem::path libraryFolder() {
  Dl_info info{};
  if (dladdr(&kOwnAddress, &info) == 0 || info.dli_fname == nullptr) return {};
  return std::filesystem::path(info.dli_fname).parent_path();
}

/// Loads the module from this library's folder (the build tree) or the folder "orvane" below it (an
/// installation). Nothing else is searched: a name alone would let the environment choose.
const FFmpegModule* loadModule(std::string& failure) {
  const std::filesystem::path folder = std::filesystem::absolute(libraryFolder());
  for (const auto& candidate :
       {folder / kFFmpegModuleFile, folder / "orvane" / kFFmpegModuleFile}) {
    std::error_code ignored;
    if (!std::filesystem::exists(candidate, ignored)) continue;
    void* library = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* factory = library != nullptr ? dlsym(library, kFFmpegModuleFactory) : nullptr;
    if (factory != nullptr)
      return reinterpret_cast<FFmpegModuleFactory>(factory)(kFFmpegModuleVersion);
    const char* reason = dlerror();
    failure = reason != nullptr ? reason : "unknown failure";
  }
  return nullptr;
}

/// The module; loaded once and never unloaded, because open files keep running its code.
const FFmpegModule& ffmpegModule(const std::filesystem::path& path) {
  static std::string failure;
  static const FFmpegModule* const module = loadModule(failure);
  if (module == nullptr)
    throw PlatformError(
        path, "Cannot be read, because the decoder module " + std::string(kFFmpegModuleFile) +
                  (failure.empty() ? " is not installed" : " cannot be loaded (" + failure + ")"));
  return *module;
}

}  // namespace

std::unique_ptr<AudioFile> openCompressedAudioFile(const std::filesystem::path& path,
                                                   const AudioFileOpenOptions& options,
                                                   FourCC containerHint) {
  return ffmpegModule(path).open(path, options, containerHint);
}

std::optional<AudioFileDescription> describeCompressedAudioFile(const std::filesystem::path& path,
                                                                FourCC containerHint) {
  try {
    return ffmpegModule(path).describe(path, containerHint);
  } catch (const PlatformError&) {
    return std::nullopt;
  }
}

}  // namespace orvane
