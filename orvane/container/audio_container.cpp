#include "orvane/container/audio_container.h"

#include <algorithm>

#include "orvane/container/audio_file.h"
#include "orvane/container/container_table.h"
#include "orvane/text/extension_text.h"

namespace orvane {
namespace {

const ContainerKind& kindOf(AudioContainer container) noexcept {
  // Every case has a row.
  return *std::ranges::find(containerKinds(), container, &ContainerKind::writable);
}

}  // namespace

FourCC fileTypeID(AudioContainer container) noexcept {
  return kindOf(container).code;
}

std::optional<AudioContainer> audioContainerFromFileTypeID(FourCC code) noexcept {
  const ContainerKind* const kind = containerKind(code);
  return kind != nullptr ? kind->writable : std::nullopt;
}

std::optional<AudioContainer> audioContainerFromExtension(std::string_view extension) {
  const std::string lower = lowercased(extension);
  for (const ContainerKind& kind : containerKinds())
    if (kind.writable && holdsWord(kind.extensions, lower)) return kind.writable;
  return {};
}

std::string_view displayName(AudioContainer container) noexcept {
  return kindOf(container).name;
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
