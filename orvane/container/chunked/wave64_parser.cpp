#include "orvane/container/chunked/wave_file.h"

#include "orvane/container/chunked/wave_format.h"

namespace orvane {

PCMStream parseWave64(const InputFile& file, std::uint64_t start) {
  /// GUID and size of the form, GUID of its type.
  constexpr std::uint64_t kFormHeader = 40;
  const ChunkGrammar grammar{.header = ChunkGrammar::Header::wave64,
                             .byteOrder = std::endian::little,
                             .audioID = kWaveDataID};
  return waveStream(file, fourCCFrom("W64f"), readChunks(file, start, kFormHeader, grammar));
}

}  // namespace orvane
