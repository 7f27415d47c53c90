#include "orvane/container/ffmpeg/ffmpeg_module.h"

#include <cstdarg>

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/log.h>
}

#include "orvane/container/ffmpeg/ffmpeg_audio_file.h"
#include "orvane/platform/export.h"

namespace orvane {
namespace {

constexpr FFmpegModule kModule{.open = openFFmpegAudioFile,
                               .describe = describeFFmpegAudioFile,
                               .countStreams = countFFmpegStreams,
                               .version = av_version_info};

void discardLog(void* /*context*/, int /*level*/, const char* /*format*/, va_list /*arguments*/) {}

}  // namespace
}  // namespace orvane

extern "C" ORVANE_API const orvane::FFmpegModule* orvaneFFmpegModule(int version) {
  if (version != orvane::kFFmpegModuleVersion) return nullptr;
  av_log_set_callback(orvane::discardLog);
  return &orvane::kModule;
}
