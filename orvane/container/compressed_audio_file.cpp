#include "orvane/container/compressed_audio_file.h"

#include <dlfcn.h>

#include <string>
#include <utility>

#include "orvane/container/decoder_module.h"
#include "orvane/container/ffmpeg/ffmpeg_module.h"
#include "orvane/platform/error.h"
#include "orvane/platform/module_location.h"

namespace orvane {
namespace {

/// A module of decoders, loaded from this library's folder (the build tree) or the folder "orvane"
/// below it (an installation). Nothing else is searched: a bare name would let the environment
/// choose. It is never unloaded, because open files keep running its code.
template <typename Module>
struct LoadedModule {
  const Module* module = nullptr;
  std::string failure{};  ///< why there is none, where a file of that name is

  LoadedModule(const char* file, const char* factory, int version) {
    const auto library = ModuleLocation::module();
    if (!library) return;
    const std::filesystem::path folder = library->parent_path();
    for (const auto& path : {folder / file, folder / "orvane" / file}) {
      std::error_code ignored;
      if (module != nullptr || !std::filesystem::exists(path, ignored)) continue;
      void* const loaded = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
      void* const make = loaded != nullptr ? dlsym(loaded, factory) : nullptr;
      if (make == nullptr) {
        failure = dlerror();
        continue;
      }
      module = reinterpret_cast<const Module* (*)(int)>(make)(version);
      if (module == nullptr) failure = "it is of another version";
    }
  }
};

const LoadedModule<FFmpegModule>& loadedFFmpeg() {
  static const LoadedModule<FFmpegModule> loaded(kFFmpegModuleFile, kFFmpegModuleFactory,
                                                 kFFmpegModuleVersion);
  return loaded;
}

const FFmpegModule& ffmpegModule(const std::filesystem::path& path) {
  const auto& [module, failure] = loadedFFmpeg();
  if (module != nullptr) return *module;
  const std::string reason = failure.empty() ? "is not installed" : "cannot be loaded: " + failure;
  throw PlatformError(path, std::string("The decoder module ") + kFFmpegModuleFile + " " + reason);
}

std::unique_ptr<AudioFile> openByFFmpeg(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options, FourCC containerHint) {
  const FFmpegModule& module = ffmpegModule(file->path());
  return module.open(std::move(file), options, containerHint);
}

/// The module of the library that is made for such files; null where there is none or FFmpeg has to
/// look for the stream.
const DecoderModule* moduleFor(FourCC containerHint, const AudioFileOpenOptions& options) {
  using Loaded = LoadedModule<DecoderModule>;
  if (options.streamIndex.value_or(0) != 0) return nullptr;
  if (containerHint == fourCCFrom("flac")) {
    static const Loaded loaded("orvane_flac.so", "orvaneFLACModule", kDecoderModuleVersion);
    return loaded.module;
  }
  if (containerHint == fourCCFrom("MPG3")) {
    static const Loaded loaded("orvane_mp3.so", "orvaneMP3Module", kDecoderModuleVersion);
    return loaded.module;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<AudioFile> openCompressedAudioFile(std::shared_ptr<const InputFile> file,
                                                   const AudioFileOpenOptions& options,
                                                   FourCC containerHint) {
  if (const DecoderModule* const module = moduleFor(containerHint, options))
    if (auto opened = module->open(file, options, openByFFmpeg)) return opened;
  return openByFFmpeg(std::move(file), options, containerHint);
}

AudioFileDescription describeCompressedAudioFile(std::shared_ptr<const InputFile> file,
                                                 const AudioFileOpenOptions& options,
                                                 FourCC containerHint) {
  if (const DecoderModule* const module = moduleFor(containerHint, options))
    if (auto description = module->describe(file, options)) return *std::move(description);
  const FFmpegModule& module = ffmpegModule(file->path());
  return module.describe(std::move(file), options, containerHint);
}

AudioStreamCount countCompressedStreams(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options, FourCC containerHint) {
  const FFmpegModule& module = ffmpegModule(file->path());
  return module.countStreams(std::move(file), options, containerHint);
}

std::optional<std::string> ffmpegVersion() {
  const FFmpegModule* const module = loadedFFmpeg().module;
  return module != nullptr ? std::optional<std::string>(module->version()) : std::nullopt;
}

}  // namespace orvane
