#include "orvane/platform/audio_file/ffmpeg/ffmpeg_module.h"

#include <cstdarg>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libavutil/log.h>
}

#include "orvane/platform/audio_file/ffmpeg/ffmpeg_audio_file.h"
#include "orvane/platform/export.h"

namespace orvane {
namespace {

std::string libraryVersion(unsigned version) {
  return std::to_string(AV_VERSION_MAJOR(version)) + "." +
         std::to_string(AV_VERSION_MINOR(version)) + "." +
         std::to_string(AV_VERSION_MICRO(version));
}

std::string ffmpegVersion() {
  return std::string("FFmpeg ") + av_version_info() + " (libavformat " +
         libraryVersion(avformat_version()) + ", libavcodec " + libraryVersion(avcodec_version()) +
         ")";
}

constexpr FFmpegModule kModule{
    .open = openFFmpegAudioFile, .describe = describeFFmpegAudioFile, .version = ffmpegVersion};

void discardLog(void* /*context*/, int /*level*/, const char* /*format*/, va_list /*arguments*/) {}

}  // namespace
}  // namespace orvane

extern "C" ORVANE_API const orvane::FFmpegModule* orvaneFFmpegModule(int version) {
  if (version != orvane::kFFmpegModuleVersion) return nullptr;
  av_log_set_callback(orvane::discardLog);
  return &orvane::kModule;
}
