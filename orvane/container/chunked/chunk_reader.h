#pragma once

#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// Where one chunk of a chunked file lies.
struct Chunk {
  /// How the stated size relates to the file.
  enum class Extent {
    exact,    ///< the body lies within the file
    open,     ///< the size is left open (0 or all ones); the body is the rest of the file
    cutShort  ///< the body ends with the file, before its stated end
  };

  FourCC id = 0;                   ///< of a Wave64 chunk its GUID's four letters, 0 if foreign
  std::uint64_t headerOffset = 0;  ///< from the file's start, bytes
  std::uint64_t bodyOffset = 0;
  std::uint64_t size = 0;  ///< bytes of the body that the file really holds
  Extent extent = Extent::exact;

  bool operator==(const Chunk&) const = default;
};

/// How chunks are headed and strung together.
struct ChunkGrammar {
  enum class Header {
    riff,    ///< four characters, 32-bit size of the body; padded to even sizes
    wave64,  ///< GUID, 64-bit size with the header; padded to eight bytes
    caf      ///< four characters, signed 64-bit size of the body; not padded
  };

  Header header = Header::riff;
  std::endian byteOrder = std::endian::little;
  FourCC audioID = 0;  ///< the chunk that holds the samples; only its size may be left open
  /// True sizes of chunks whose 32-bit size is all ones (RF64, BW64).
  std::vector<std::pair<FourCC, std::uint64_t>> longSizes{};
};

struct ORVANE_TESTING_API ChunkList {
  std::vector<Chunk> chunks{};  ///< in file order
  bool hasMissingPad = false;   ///< an odd chunk was followed at once by the next one

  /// The first chunk with this identifier; null when there is none.
  const Chunk* find(FourCC id) const noexcept;
  std::size_t count(FourCC id) const noexcept;
};

/// More chunks than any real file has; the walk ends there.
inline constexpr std::size_t kMaximumChunks = 65'536;

/// Walks the chunks from `offset` to the file's end. Ends early, without complaint, where the bytes
/// stop making sense. The work is bounded by `kMaximumChunks`.
ORVANE_TESTING_API ChunkList readChunks(const InputFile& file, std::uint64_t offset,
                                        const ChunkGrammar& grammar);

}  // namespace orvane
