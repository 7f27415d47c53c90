#include "orvane/container/audio_container.h"

#include <utility>

#include "orvane/container/audio_file.h"
#include "orvane/text/extension_text.h"

namespace orvane {

FourCC fileTypeID(AudioContainer container) noexcept {
  switch (container) {
    case AudioContainer::wave:
      return fourCCFrom("WAVE");
    case AudioContainer::rf64:
      return fourCCFrom("RF64");
    case AudioContainer::bw64:
      return fourCCFrom("BW64");
    case AudioContainer::wave64:
      return fourCCFrom("W64f");
    case AudioContainer::aiff:
      return fourCCFrom("AIFF");
    case AudioContainer::aifc:
      return fourCCFrom("AIFC");
    case AudioContainer::caf:
      return fourCCFrom("caff");
  }
  return 0;
}

std::optional<AudioContainer> audioContainerFromFileTypeID(FourCC code) noexcept {
  for (const AudioContainer container : kAllAudioContainers)
    if (fileTypeID(container) == code) return container;
  return {};
}

std::optional<AudioContainer> audioContainerFromExtension(std::string_view extension) {
  using enum AudioContainer;
  constexpr std::array<std::pair<std::string_view, AudioContainer>, 11> kExtensions = {
      {{"wav", wave},
       {"wave", wave},
       {"bwf", wave},
       {"rf64", rf64},
       {"bw64", bw64},
       {"w64", wave64},
       {"aif", aiff},
       {"aiff", aiff},
       {"aifc", aifc},
       {"caf", caf},
       {"caff", caf}}};
  const std::string lower = lowercased(extension);
  for (const auto& [text, container] : kExtensions)
    if (text == lower) return container;
  return {};
}

std::string_view displayName(AudioContainer container) noexcept {
  switch (container) {
    case AudioContainer::wave:
      return "WAV";
    case AudioContainer::rf64:
      return "RF64";
    case AudioContainer::bw64:
      return "BW64";
    case AudioContainer::wave64:
      return "Wave64";
    case AudioContainer::aiff:
      return "AIFF";
    case AudioContainer::aifc:
      return "AIFF-C";
    case AudioContainer::caf:
      return "CAF";
  }
  return {};
}

bool isBigEndian(AudioContainer container) noexcept {
  return container == AudioContainer::aiff || container == AudioContainer::aifc;
}

AudioContainer accommodating(AudioContainer container, bool isFloat) noexcept {
  return container == AudioContainer::aiff && isFloat ? AudioContainer::aifc : container;
}

std::optional<FourCC> fileTypeIDOfFile(const std::filesystem::path& url) {
  const auto description = describeAudioFile(url);
  return description ? std::optional(description->fileTypeID) : std::nullopt;
}

std::optional<AudioContainer> audioContainerOfFile(const std::filesystem::path& url) {
  const auto code = fileTypeIDOfFile(url);
  return code ? audioContainerFromFileTypeID(*code) : std::nullopt;
}

std::string fourCC(FourCC code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto byte = static_cast<unsigned char>(code >> shift);
    if (byte < 32 || byte > 126) return std::to_string(code);
    text += static_cast<char>(byte);
  }
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace orvane
