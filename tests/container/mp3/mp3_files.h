#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "orvane/container/ffmpeg/ffmpeg_module.h"
#include "orvane/platform/module_location.h"
#include "tests/container/ffmpeg/damaged_files.h"

namespace orvane::test {

/// MP3s, beside FFmpeg's reading of them.
class MP3Files : public DamagedFiles {
 protected:
  static constexpr FourCC kFileType = fourCCFrom("MPG3");

  /// Whether libmpg123 reads the file: it alone has the length at hand.
  static bool isReadByModule(const std::filesystem::path& file) {
    return AudioFile::open(file)->knowsFrameLength();
  }

  static const FFmpegModule& ffmpeg() {
    const auto library = ModuleLocation::module().value().parent_path() / kFFmpegModuleFile;
    void* const handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    const auto factory = reinterpret_cast<FFmpegModuleFactory>(dlsym(handle, kFFmpegModuleFactory));
    return *factory(kFFmpegModuleVersion);
  }

  /// The whole file as the library's reader by FFmpeg gives it.
  static ReadFile readByFFmpeg(const std::filesystem::path& file) {
    const auto opened = ffmpeg().open(std::make_shared<const InputFile>(file), {}, kFileType);
    return readToEnd(*opened);
  }

  static AudioFileDescription describeByFFmpeg(const std::filesystem::path& file) {
    return ffmpeg().describe(std::make_shared<const InputFile>(file), {}, kFileType);
  }
};

}  // namespace orvane::test
