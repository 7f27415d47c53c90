#include "orvane/container/ffmpeg/formats.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/avstring.h>
}

#include "orvane/container/container_table.h"
#include "orvane/container/sniff/id3v2_tag.h"

namespace orvane {
namespace {

constexpr std::uint64_t kMostProbeBytes = std::uint64_t{1} << 20;
/// Above the score at which FFmpeg itself would rather see more bytes.
constexpr int kSureScore = AVPROBE_SCORE_RETRY + 1;

/// FFmpeg's verdict on the first bytes, without any file name and behind any ID3v2 tags, whose
/// pictures would drown the probing.
const AVInputFormat* probe(const InputFile& file, int& score) {
  const std::uint64_t start = endOfID3v2Tags(file);
  if (start >= file.size()) return nullptr;
  const std::uint64_t most = std::min(kMostProbeBytes, file.size() - start);
  std::vector<unsigned char> bytes(most + AVPROBE_PADDING_SIZE, 0);
  const std::size_t count =
      file.readAt(start, std::as_writable_bytes(std::span(bytes)).first(most));
  const AVInputFormat* best = nullptr;
  score = 0;
  for (std::size_t size = std::min<std::size_t>(count, 4096);; size = std::min(count, size * 4)) {
    // The padding must be zero, so every prefix but the whole is a copy.
    std::vector<unsigned char> prefix(bytes.begin(), bytes.begin() + static_cast<long>(size));
    prefix.resize(size + AVPROBE_PADDING_SIZE, 0);
    const AVProbeData data{
        .filename = "", .buf = prefix.data(), .buf_size = static_cast<int>(size), .mime_type = ""};
    best = av_probe_input_format3(&data, 1, &score);
    if (score >= kSureScore || size == count) return best;
  }
}

bool isAllowed(const AVInputFormat* format) {
  return format != nullptr && av_match_list(format->name, allowedDemuxers().c_str(), ',') > 0;
}

}  // namespace

const std::string& allowedDemuxers() {
  static const std::string names =
      // Audio files.
      "aa,aac,aax,ac3,acm,adp,ads,adx,aea,afc,aiff,alp,amr,apc,ape,apm,aptx,argo_asf,argo_cvg,"
      "ast,au,avr,"
      "bfstm,binka,bit,boa,brstm,caf,codec2,daud,dfpwm,dsf,dss,dts,dtshd,eac3,flac,fsb,fwse,"
      "g722,g723_1,g729,genh,gsm,hca,hcom,iff,ilbc,ircam,iss,kvag,loas,lvf,mca,mlp,mmf,mp3,mpc,"
      "mpc8,msf,mtaf,musx,nistsphere,nsp,ogg,oma,paf,pvf,qcp,rso,rsd,sbc,sds,sdx,shn,siff,sln,sol,"
      "sox,spdif,svag,tak,truehd,tta,vag,voc,vpk,vqf,w64,wav,wsaud,wsd,wv,wve,xa,xvag,xwma,"
      // Video files with sound.
      "asf,asf_o,avi,dv,ea,film_cpk,flv,gxf,kux,live_flv,matroska,mov,mpeg,mpegts,mxf,nsv,nut,nuv,"
      "rm,roq,"
      "smjpeg,smk,swf,vivo,wtv";
  return names;
}

const std::string& allowedDecoders() {
  static const std::string names = [] {
    std::string list;
    void* state = nullptr;
    while (const AVCodec* codec = av_codec_iterate(&state)) {
      if (codec->type != AVMEDIA_TYPE_AUDIO || av_codec_is_decoder(codec) == 0) continue;
      if (!list.empty()) list += ',';
      list += codec->name;
    }
    return list;
  }();
  return names;
}

const AVInputFormat* demuxerFor(const InputFile& file, FourCC containerHint) {
  const ContainerKind* const kind = containerKind(containerHint);
  if (kind != nullptr && kind->demuxer != nullptr) return av_find_input_format(kind->demuxer);
  int score = 0;
  const AVInputFormat* probed = probe(file, score);
  if (score >= kSureScore && isAllowed(probed)) return probed;
  // FFmpeg expects a stream to begin with a frame; a DTS-HD file, which has a header, always does.
  return containerHint == fourCCFrom("DTS ") ? av_find_input_format("dts") : nullptr;
}

}  // namespace orvane
