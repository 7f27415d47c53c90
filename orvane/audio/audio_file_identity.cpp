#include "orvane/audio/audio_file_identity.h"

#include <map>

#include "orvane/container/audio_container.h"
#include "orvane/text/extension_text.h"

namespace orvane {
namespace {

using NameTable = std::map<std::string, std::string, std::less<>>;

const NameTable& containerNames() {
  static const NameTable kNames = {
      {"WAVE", "WAV"},          {"RF64", "RF64"},
      {"BW64", "BW64"},         {"W64f", "Wave64"},
      {"AIFF", "AIFF"},         {"AIFC", "AIFF-C"},
      {"caff", "CAF"},          {"m4af", "MPEG-4 (M4A)"},
      {"m4bf", "MPEG-4 (M4B)"}, {"mp4f", "MPEG-4"},
      {"adts", "AAC (ADTS)"},   {"MPG3", "MP3"},
      {"MPG1", "MPEG-1 audio"}, {"flac", "FLAC"},
      {"Oggf", "Ogg"},          {"ac-3", "AC-3"},
      {"ec-3", "E-AC-3"},       {"NeXT", "NeXT/Sun (AU)"},
      {"amrf", "AMR"},          {"Sd2f", "Sound Designer II"},
      {"3gpp", "3GPP"},         {"3gp2", "3GPP2"},
      {"loas", "LOAS/LATM"},    {"MPG2", "MPEG-2 audio"},
  };
  return kNames;
}

const NameTable& codecNames() {
  static const NameTable kNames = {
      {"lpcm", "PCM"},         {"aac", "AAC"},
      {"aach", "HE-AAC"},      {"aacp", "HE-AAC v2"},
      {"aacl", "AAC-LD"},      {"aace", "AAC-ELD"},
      {"aacf", "AAC-ELD SBR"}, {"aacg", "AAC-ELD v2"},
      {"aacs", "AAC Spatial"}, {"usac", "xHE-AAC"},
      {".mp3", "MP3"},         {".mp2", "MP2"},
      {".mp1", "MP1"},         {"alac", "Apple Lossless"},
      {"flac", "FLAC"},        {"opus", "Opus"},
      {"ac-3", "AC-3"},        {"ec-3", "E-AC-3"},
      {"QDMC", "QDesign"},     {"QDM2", "QDesign 2"},
      {"ulaw", "µ-law"},       {"alaw", "A-law"},
      {"ima4", "IMA ADPCM"},   {"samr", "AMR"},
      {"sawb", "AMR-WB"},      {"ilbc", "iLBC"},
      {"agsm", "GSM"},         {"MAC3", "MACE 3:1"},
      {"MAC6", "MACE 6:1"},    {"Qclp", "Qualcomm PureVoice"},
  };
  return kNames;
}

const std::map<std::string, std::set<std::string>, std::less<>>& expectedByExtension() {
  static const std::set<std::string> kWave = {"WAVE", "RF64", "BW64"};
  static const std::set<std::string> kAIFF = {"AIFF", "AIFC"};
  static const std::set<std::string> kMPEG4 = {"m4af", "m4bf", "mp4f"};
  static const std::map<std::string, std::set<std::string>, std::less<>> kExpected = {
      {"wav", kWave},
      {"wave", kWave},
      {"bwf", kWave},
      {"rf64", {"RF64", "WAVE"}},
      {"bw64", {"BW64", "WAVE"}},
      {"w64", {"W64f"}},
      {"aif", kAIFF},
      {"aiff", kAIFF},
      {"aifc", kAIFF},
      {"caf", {"caff"}},
      {"caff", {"caff"}},
      {"m4a", kMPEG4},
      {"m4b", kMPEG4},
      {"m4r", kMPEG4},
      {"m4p", kMPEG4},
      {"mp4", kMPEG4},
      {"aac", {"adts", "m4af", "mp4f"}},
      {"mp3", {"MPG3"}},
      {"mp2", {"MPG2"}},
      {"mp1", {"MPG1"}},
      {"flac", {"flac"}},
      {"ogg", {"Oggf"}},
      {"oga", {"Oggf"}},
      {"opus", {"Oggf"}},
      {"ac3", {"ac-3"}},
      {"ec3", {"ec-3"}},
      {"eac3", {"ec-3"}},
      {"au", {"NeXT"}},
      {"snd", {"NeXT"}},
      {"sd2", {"Sd2f"}},
      {"amr", {"amrf"}},
      {"3gp", {"3gpp"}},
      {"3g2", {"3gp2"}},
  };
  return kExpected;
}

std::string nameIn(const NameTable& names, FourCC code) {
  std::string text = fourCC(code);
  const auto found = names.find(text);
  return found == names.end() ? text : found->second;
}

}  // namespace

std::optional<AudioFileIdentity> AudioFileIdentity::inspect(const std::filesystem::path& url) {
  const auto description = describeAudioFile(url);
  if (!description) return {};
  return fromDescription(*description, url);
}

AudioFileIdentity AudioFileIdentity::fromDescription(const AudioFileDescription& description,
                                                     const std::filesystem::path& url) {
  const StreamDescription& format = description.dataFormat;
  AudioFileIdentity identity{.containerTypeID = description.fileTypeID,
                             .containerName = containerNameForCode(description.fileTypeID),
                             .pathExtension = orvane::pathExtension(url),
                             .formatID = format.formatID};
  if (format.formatID == kFormatLinearPCM && format.bitsPerChannel != 0)
    identity.pcmEncoding = PCMEncoding{.bitDepth = format.bitsPerChannel,
                                       .isFloat = (format.formatFlags & kFormatFlagIsFloat) != 0};
  return identity;
}

std::string AudioFileIdentity::containerNameForCode(FourCC code) {
  return nameIn(containerNames(), code);
}

std::string AudioFileIdentity::codecNameForCode(FourCC code) {
  return nameIn(codecNames(), code);
}

std::optional<std::set<std::string>> AudioFileIdentity::expectedContainers(
    std::string_view extension) {
  const auto found = expectedByExtension().find(lowercased(extension));
  if (found == expectedByExtension().end()) return {};
  return found->second;
}

std::string AudioFileIdentity::encodingName() const {
  return pcmEncoding ? pcmEncoding->label() : codecNameForCode(formatID);
}

bool AudioFileIdentity::isMisnamed() const {
  const auto expected = expectedContainers(pathExtension);
  return expected && !expected->contains(fourCC(containerTypeID));
}

std::string AudioFileIdentity::formatLabel() const {
  return isMisnamed() ? containerName + ", named ." + pathExtension : containerName;
}

std::string AudioFileIdentity::formatLabelOf(const std::optional<AudioFileIdentity>& identity,
                                             const std::filesystem::path& url) {
  return identity ? identity->formatLabel() : uppercased(orvane::pathExtension(url));
}

bool AudioFileIdentity::isRewritableInPlace() const {
  return pcmEncoding && audioContainerFromFileTypeID(containerTypeID);
}

}  // namespace orvane
