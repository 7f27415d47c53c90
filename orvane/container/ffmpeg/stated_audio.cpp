#include "orvane/container/ffmpeg/stated_audio.h"

#include <cstdio>
#include <string_view>

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/mathematics.h>
}

#include "orvane/container/chunked/iso_track.h"
#include "orvane/container/container_table.h"
#include "orvane/container/sniff/id3v2_tag.h"

namespace orvane {
namespace {

/// FFmpeg numbers linear PCM, A-law, µ-law and ADPCM before all others.
bool leavesOrderToContainer(AVCodecID codec) {
  return codec >= AV_CODEC_ID_FIRST_AUDIO && codec < AV_CODEC_ID_AMR_NB;
}

/// Frames that iTunes' note on gapless playback gives the audio.
std::optional<std::int64_t> gaplessFrames(const AVFormatContext& format) {
  const AVDictionaryEntry* const note = av_dict_get(format.metadata, "iTunSMPB", nullptr, 0);
  unsigned long long frames = 0;
  if (note == nullptr || std::sscanf(note->value, "%*x %*x %*x %llx", &frames) != 1) return {};
  return frames > 0 && frames >> 62 == 0 ? std::optional(static_cast<std::int64_t>(frames))
                                         : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> StatedAudio::framesAt(int sampleRate) const {
  if (!duration || timescale <= 0) return std::nullopt;
  return av_rescale(*duration, sampleRate, timescale);
}

StatedAudio statedAudio(const InputFile& file, const AVFormatContext& format,
                        const AVStream& stream, FourCC containerHint) {
  const AVCodecParameters& parameters = *stream.codecpar;
  StatedAudio stated;
  stated.timescale = parameters.sample_rate;
  const ContainerKind* const kind = containerKind(containerHint);
  if (kind != nullptr && kind->parse != nullptr) {
    const PCMStream header = kind->parse(file, endOfID3v2Tags(file));
    stated.decidesLayout = leavesOrderToContainer(parameters.codec_id);
    stated.layout = header.description.layout;
    if (header.extent) {
      stated.priming = header.extent->priming;
      stated.duration = header.extent->frames;
    }
  } else if (std::string_view(format.iformat->name).starts_with("mov,")) {
    const auto track =
        readISOTrack(file, static_cast<std::uint32_t>(stream.id),
                     static_cast<std::uint32_t>(parameters.ch_layout.nb_channels));
    stated.decidesLayout = track && leavesOrderToContainer(parameters.codec_id);
    if (track) stated.layout = track->layout;
    if (track && track->duration) {
      stated.duration = track->duration;
      stated.timescale = track->timescale;
    } else {
      stated.duration = gaplessFrames(format);
    }
  }
  return stated;
}

}  // namespace orvane
