#include "orvane/container/container_table.h"

#include <algorithm>

#include "orvane/container/chunked/aiff_file.h"
#include "orvane/container/chunked/asf_stream_parser.h"
#include "orvane/container/chunked/au_parser.h"
#include "orvane/container/chunked/caf_file.h"
#include "orvane/container/chunked/marker_chunks.h"
#include "orvane/container/chunked/wave_file.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;

constexpr auto kWave64Riff = "riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0"sv;
constexpr auto kWave64Wave = "wave\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A"sv;
constexpr auto kASFHeader = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\0\xAA\0\x62\xCE\x6C"sv;

// clang-format off
const ContainerKind kKinds[] = {
    // PCM containers, read by parsers of our own.
    {.code = fourCCFrom("WAVE"), .name = "WAV", .extensions = "wav wave bwf",
     .otherExtensions = "rf64 bw64",
     .signatures = {{0, "RIFF", 8, "WAVE"}, {0, "RIFX", 8, "WAVE"}},
     .parse = parseRIFF, .markers = MarkerChunks::ofRIFF,
     .writable = AudioContainer::wave, .outline = outlineWave, .demuxer = "wav"},
    {.code = fourCCFrom("RF64"), .name = "RF64", .extensions = "rf64",
     .otherExtensions = "wav wave bwf", .signatures = {{0, "RF64", 8, "WAVE"}},
     .parse = parseRIFF, .markers = MarkerChunks::ofRIFF,
     .writable = AudioContainer::rf64, .outline = outlineWave, .demuxer = "wav"},
    {.code = fourCCFrom("BW64"), .name = "BW64", .extensions = "bw64",
     .otherExtensions = "wav wave bwf", .signatures = {{0, "BW64", 8, "WAVE"}},
     .parse = parseRIFF, .markers = MarkerChunks::ofRIFF,
     .writable = AudioContainer::bw64, .outline = outlineWave, .demuxer = "wav"},
    {.code = fourCCFrom("W64f"), .name = "Wave64", .extensions = "w64",
     .signatures = {{0, kWave64Riff, 24, kWave64Wave}}, .parse = parseWave64,
     .writable = AudioContainer::wave64, .outline = outlineWave64, .demuxer = "w64"},
    {.code = fourCCFrom("AIFF"), .name = "AIFF", .extensions = "aif aiff",
     .otherExtensions = "aifc", .signatures = {{0, "FORM", 8, "AIFF"}},
     .parse = parseAIFF, .markers = MarkerChunks::ofAIFF,
     .writable = AudioContainer::aiff, .outline = outlineAIFF, .demuxer = "aiff"},
    {.code = fourCCFrom("AIFC"), .name = "AIFF-C", .extensions = "aifc",
     .otherExtensions = "aif aiff", .signatures = {{0, "FORM", 8, "AIFC"}},
     .parse = parseAIFF, .markers = MarkerChunks::ofAIFF,
     .writable = AudioContainer::aifc, .outline = outlineAIFF, .demuxer = "aiff"},
    {.code = fourCCFrom("caff"), .name = "CAF", .extensions = "caf caff",
     .signatures = {{0, "caff\0\1"sv}}, .parse = parseCAF, .markers = MarkerChunks::ofCAF,
     .writable = AudioContainer::caf, .outline = outlineCAF, .demuxer = "caf"},
    {.code = fourCCFrom("NeXT"), .name = "NeXT/Sun (AU)", .extensions = "au snd",
     .signatures = {{0, ".snd"}, {0, "dns."}, {0, "\0ds."sv}, {0, ".sd\0"sv}},
     .parse = parseAU, .demuxer = "au"},

    // MPEG-4 and its relatives are told apart by their brands.
    {.code = fourCCFrom("m4af"), .name = "MPEG-4 (M4A)", .extensions = "m4a m4b m4r m4p mp4 aac",
     .demuxer = "mov"},
    {.code = fourCCFrom("m4bf"), .name = "MPEG-4 (M4B)", .extensions = "m4a m4b m4r m4p mp4",
     .demuxer = "mov"},
    {.code = fourCCFrom("mp4f"), .name = "MPEG-4", .extensions = "m4a m4b m4r m4p mp4 aac",
     .demuxer = "mov"},
    {.code = fourCCFrom("3gpp"), .name = "3GPP", .extensions = "3gp", .demuxer = "mov"},
    {.code = fourCCFrom("3gp2"), .name = "3GPP2", .extensions = "3g2", .demuxer = "mov"},

    // Streams without a container, known by the shape of their frames.
    {.code = fourCCFrom("adts"), .name = "AAC (ADTS)", .extensions = "aac", .demuxer = "aac"},
    {.code = fourCCFrom("loas"), .name = "LOAS/LATM", .demuxer = "loas"},
    {.code = fourCCFrom("MPG1"), .name = "MPEG-1 audio", .extensions = "mp1", .demuxer = "mp3"},
    {.code = fourCCFrom("MPG2"), .name = "MPEG-2 audio", .extensions = "mp2", .demuxer = "mp3"},
    {.code = fourCCFrom("MPG3"), .name = "MP3", .extensions = "mp3", .demuxer = "mp3"},
    {.code = fourCCFrom("ac-3"), .name = "AC-3", .extensions = "ac3", .demuxer = "ac3"},
    {.code = fourCCFrom("ec-3"), .name = "E-AC-3", .extensions = "ec3 eac3", .demuxer = "eac3"},
    {.code = fourCCFrom("SBC "), .demuxer = "sbc"},
    {.code = fourCCFrom("DTS "),
     .signatures = {{0, "\x7F\xFE\x80\x01"}, {0, "\xFE\x7F\x01\x80"},
                    {0, "\x1F\xFF\xE8\x00"sv}, {0, "\xFF\x1F\x00\xE8"sv}, {0, "DTSHDHDR"}}},
    {.code = fourCCFrom("THD "), .signatures = {{4, "\xF8\x72\x6F\xBA"}}},
    {.code = fourCCFrom("MLP "), .signatures = {{4, "\xF8\x72\x6F\xBB"}}},

    // Other containers of one codec, or of any.
    {.code = fourCCFrom("flac"), .name = "FLAC", .extensions = "flac",
     .signatures = {{0, "fLaC"}}, .demuxer = "flac"},
    {.code = fourCCFrom("Oggf"), .name = "Ogg", .extensions = "ogg oga opus",
     .signatures = {{0, "OggS"}}, .demuxer = "ogg"},
    {.code = fourCCFrom("amrf"), .name = "AMR", .extensions = "amr",
     .signatures = {{0, "#!AMR\n"}, {0, "#!AMR-WB\n"}, {0, "#!AMR_MC1.0\n"},
                    {0, "#!AMR-WB_MC1.0\n"}},
     .demuxer = "amr"},
    // Its header lies in a resource fork, which no file here has: known by its name alone.
    {.code = fourCCFrom("Sd2f"), .name = "Sound Designer II", .extensions = "sd2"},

    // Video and streaming containers.
    {.code = fourCCFrom("AVI "), .signatures = {{0, "RIFF", 8, "AVI "}}},
    {.code = fourCCFrom("AMV "), .signatures = {{0, "RIFF", 8, "AMV "}}},
    {.code = fourCCFrom("ASF "), .signatures = {{0, kASFHeader}}},
    {.code = fourCCFrom("ASFS"), .signatures = {{0, "$H", 12, kASFHeader}},
     .parse = parseASFStream},
    {.code = fourCCFrom("FLV "), .signatures = {{0, "FLV\1"}}},
    {.code = fourCCFrom("RM  "), .signatures = {{0, ".RMF"}}},
    {.code = fourCCFrom("RA  "), .signatures = {{0, ".ra\xFD"}}},
    {.code = fourCCFrom("MPEG"), .signatures = {{0, "\0\0\1\xBA"sv}}},
    {.code = fourCCFrom("MXF "),
     .signatures = {{0, "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01"}}},
    {.code = fourCCFrom("NUT "), .signatures = {{0, "nut/multimedia container\0"sv}}},
    {.code = fourCCFrom("SWF "), .signatures = {{0, "FWS"}}},

    // Lossless codecs with containers of their own.
    {.code = fourCCFrom("WV  "), .signatures = {{0, "wvpk"}}},
    {.code = fourCCFrom("TTA "), .signatures = {{0, "TTA1"}, {0, "TTA2"}}},
    {.code = fourCCFrom("APE "), .signatures = {{0, "MAC "}}},
    {.code = fourCCFrom("TAK "), .signatures = {{0, "tBaK"}}},
    {.code = fourCCFrom("OFR "), .signatures = {{0, "OFR "}}},
    {.code = fourCCFrom("SHN "), .signatures = {{0, "ajkg"}}},
    {.code = fourCCFrom("LA  "), .signatures = {{0, "LA0"}}},
    {.code = fourCCFrom("DSF "), .signatures = {{0, "DSD ", 28, "fmt "}}},
    {.code = fourCCFrom("DFF "), .signatures = {{0, "FRM8", 12, "DSD "}}},

    // Lossy ones.
    {.code = fourCCFrom("MPC "), .signatures = {{0, "MP+"}, {0, "MPCK"}}},
    {.code = fourCCFrom("QCP "), .signatures = {{0, "RIFF", 8, "QLCM"}}},
    {.code = fourCCFrom("XWMA"), .signatures = {{0, "RIFF", 8, "XWMA"}}},
    {.code = fourCCFrom("OMA "), .signatures = {{0, "ea3\3"}, {0, "EA3\1"}}},
    {.code = fourCCFrom("aptX"), .signatures = {{0, "\x4B\xBF\x4B\xBF"}}},

    // Formats of old machines.
    {.code = fourCCFrom("VOC "), .signatures = {{0, "Creative Voice File\x1A"}}},
    {.code = fourCCFrom("8SVX"), .signatures = {{0, "FORM", 8, "8SVX"}}},
    {.code = fourCCFrom("16SV"), .signatures = {{0, "FORM", 8, "16SV"}}},
    {.code = fourCCFrom("MAUD"), .signatures = {{0, "FORM", 8, "MAUD"}}},
    {.code = fourCCFrom("IRCM"),
     .signatures = {{0, "\x64\xA3\x01\x00"sv}, {0, "\x64\xA3\x02\x00"sv},
                    {0, "\x64\xA3\x03\x00"sv}, {0, "\x64\xA3\x04\x00"sv},
                    {0, "\x00\x01\xA3\x64"sv}, {0, "\x00\x02\xA3\x64"sv},
                    {0, "\x00\x03\xA3\x64"sv}, {0, "\x00\x04\xA3\x64"sv}}},
    {.code = fourCCFrom("NIST"), .signatures = {{0, "NIST_1A\n"}}},
    {.code = fourCCFrom("PVF "), .signatures = {{0, "PVF1\n"}}},
    {.code = fourCCFrom("AVR "), .signatures = {{0, "2BIT"}}, .demuxer = "avr"},
    {.code = fourCCFrom("SDS "), .signatures = {{0, "\xF0\x7E", 3, "\x01"}}},
    {.code = fourCCFrom("SoX "), .signatures = {{0, ".SoX"}, {0, "XoS."}}},
    {.code = fourCCFrom("HCOM"), .signatures = {{65, "FSSD", 128, "HCOM"}}},
    {.code = fourCCFrom("WVE "), .signatures = {{0, "ALawSoundFile**\0"sv}}, .demuxer = "wve"},
    {.code = fourCCFrom("RSO "), .demuxer = "rso"},
};
// clang-format on

}  // namespace

std::span<const ContainerKind> containerKinds() noexcept {
  return kKinds;
}

const ContainerKind* containerKind(FourCC code) noexcept {
  const auto found = std::ranges::find(kKinds, code, &ContainerKind::code);
  return found == std::end(kKinds) ? nullptr : &*found;
}

bool holdsWord(std::string_view list, std::string_view word) noexcept {
  while (!list.empty()) {
    const std::size_t blank = std::min(list.find(' '), list.size());
    if (list.substr(0, blank) == word) return true;
    list.remove_prefix(std::min(blank + 1, list.size()));
  }
  return false;
}

}  // namespace orvane
