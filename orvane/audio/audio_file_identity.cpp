#include "orvane/audio/audio_file_identity.h"

#include <map>

#include "orvane/container/audio_container.h"
#include "orvane/container/container_table.h"
#include "orvane/text/extension_text.h"

namespace orvane {
namespace {

using NameTable = std::map<std::string, std::string, std::less<>>;

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
  const ContainerKind* const kind = containerKind(code);
  return kind != nullptr && !kind->name.empty() ? std::string(kind->name) : fourCC(code);
}

std::string AudioFileIdentity::codecNameForCode(FourCC code) {
  std::string text = fourCC(code);
  const auto found = codecNames().find(text);
  return found == codecNames().end() ? text : found->second;
}

std::optional<std::set<std::string>> AudioFileIdentity::expectedContainers(
    std::string_view extension) {
  const std::string lower = lowercased(extension);
  std::set<std::string> codes;
  for (const ContainerKind& kind : containerKinds())
    if (holdsWord(kind.extensions, lower) || holdsWord(kind.otherExtensions, lower))
      codes.insert(fourCC(kind.code));
  if (codes.empty()) return {};
  return codes;
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
