#include "orvane/container/chunked/chunk_bytes.h"

#include "orvane/container/chunked/header_bytes.h"

namespace orvane {

std::vector<std::byte> chunkBytes(const ChunkGrammar& grammar, FourCC id,
                                  std::span<const std::byte> body) {
  HeaderBytes chunk(grammar.byteOrder);
  chunk.fourCC(id);
  switch (grammar.header) {
    case ChunkGrammar::Header::riff:
      chunk.u32(body.size());
      break;
    case ChunkGrammar::Header::wave64:
      chunk.text(kWave64ChunkTail).u64(grammar.headerBytes() + body.size());
      break;
    case ChunkGrammar::Header::caf:
      chunk.u64(body.size());
      break;
  }
  const std::uint64_t padding = (0 - body.size()) % grammar.alignment();
  return chunk.append(body).append(std::vector<std::byte>(padding)).bytes();
}

}  // namespace orvane
