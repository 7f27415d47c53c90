#include "orvane/platform/audio_file/ffmpeg/ffmpeg_module.h"

#include <cstdarg>
#include <cstddef>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

#include "orvane/platform/audio_file/ffmpeg/ffmpeg_audio_file.h"
#include "orvane/platform/export.h"

namespace orvane {
namespace {

/// One allocation by FFmpeg. Far above what real audio asks for (the index of a hundred hours of
/// AAC), far below what a forged size can claim.
constexpr std::size_t kLargestAllocation = std::size_t{512} << 20;

constexpr FFmpegModule kModule{.open = openFFmpegAudioFile, .describe = describeFFmpegAudioFile};

void discardLog(void* /*context*/, int /*level*/, const char* /*format*/, va_list /*arguments*/) {}

}  // namespace
}  // namespace orvane

extern "C" ORVANE_API const orvane::FFmpegModule* orvaneFFmpegModule(int version) {
  if (version != orvane::kFFmpegModuleVersion) return nullptr;
  av_log_set_callback(orvane::discardLog);
  av_max_alloc(orvane::kLargestAllocation);
  return &orvane::kModule;
}
