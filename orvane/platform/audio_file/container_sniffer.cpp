#include "orvane/platform/audio_file/container_sniffer.h"

#include "orvane/platform/audio_file/header_fields.h"

namespace orvane {

SniffedContainer sniffContainer(const InputFile& file) {
  const HeaderFields head(file, 0, 12, std::endian::big);
  if (head.size() < 12) return {};
  const auto audio = [](const char* code) {
    return SniffedContainer{.kind = SniffedContainer::Kind::audio, .fileTypeID = fourCCFrom(code)};
  };
  if (head.fourCC(8) == fourCCFrom("WAVE")) {
    if (head.fourCC(0) == fourCCFrom("RIFF")) return audio("WAVE");
    if (head.fourCC(0) == fourCCFrom("RIFX")) return audio("WAVE");
    if (head.fourCC(0) == fourCCFrom("RF64")) return audio("RF64");
    if (head.fourCC(0) == fourCCFrom("BW64")) return audio("BW64");
  }
  return {};
}

}  // namespace orvane
