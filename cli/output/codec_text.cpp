#include "cli/output/codec_text.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace orvane::cli {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 26> kNames = {{
    {"vorb", "Vorbis"},
    {"spex", "Speex"},
    {"wvpk", "WavPack"},
    {"TTA1", "True Audio"},
    {"ape", "Monkey's Audio"},
    {"tak", "TAK"},
    {"mpc7", "Musepack"},
    {"mpc8", "Musepack"},
    {"wma1", "WMA"},
    {"wma2", "WMA"},
    {"wmap", "WMA Pro"},
    {"wmal", "WMA Lossless"},
    {"wmav", "WMA Voice"},
    {"dts", "DTS"},
    {"mlpa", "TrueHD"},
    {"mlp", "MLP"},
    {"msad", "Microsoft ADPCM"},
    {"g722", "G.722"},
    {"g723", "G.723.1"},
    {"g726", "G.726"},
    {"g729", "G.729"},
    {"atr1", "ATRAC"},
    {"atr3", "ATRAC3"},
    {"at3p", "ATRAC3plus"},
    {"als", "MPEG-4 ALS"},
    {"dsd", "DSD"},
}};

}  // namespace

std::string codecText(const AudioFileIdentity& identity) {
  std::string text = identity.encodingName();
  const auto known = std::ranges::find(kNames, text, [](const auto& name) { return name.first; });
  return known == kNames.end() || identity.pcmEncoding ? text : std::string(known->second);
}

}  // namespace orvane::cli
