#include "orvane/container/chunked/caf_file.h"

#include <numeric>

#include "orvane/container/chunked/header_bytes.h"
#include "orvane/container/chunked/layout_chunk.h"

namespace orvane {

PCMFileOutline outlineCAF(const PCMFileSpecification& specification) {
  const AudioFormat& audio = specification.format;
  const bool isFloat = specification.encoding.isFloat;
  const auto bits = static_cast<std::uint32_t>(specification.encoding.bitDepth);
  PCMFileOutline outline{.fileTypeID = fileTypeID(specification.container)};
  outline.sample = sampleIn(specification.container, specification.encoding, false);
  outline.channelOrder.resize(audio.channelCount);
  std::iota(outline.channelOrder.begin(), outline.channelOrder.end(), 0U);
  outline.audioBytes = specification.audioBytes(outline.sample);

  HeaderBytes head(std::endian::big);
  head.text("caff").u16(1).u16(0);
  head.text("desc").u64(32).float64(audio.sampleRate).fourCC(kFormatLinearPCM);
  head.u32(CAFFlags::isLittleEndian | (isFloat ? CAFFlags::isFloat : 0U));
  head.u32(specification.frameBytes(outline.sample)).u32(1).u32(audio.channelCount).u32(bits);
  if (audio.layout) {
    const auto layout = layoutChunkBody(*audio.layout);
    head.text("chan").u64(layout.size()).append(layout);
  }
  head.text("data").u64(4 + outline.audioBytes).u32(0);  // not edited yet
  outline.head = head.bytes();
  return outline;
}

}  // namespace orvane
