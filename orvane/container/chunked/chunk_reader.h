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

  bool operator==(const ChunkGrammar&) const = default;

  /// Bytes of a chunk's header.
  std::uint64_t headerBytes() const noexcept;
  /// Chunks begin at multiples of this.
  std::uint64_t alignment() const noexcept;
};

struct ORVANE_TESTING_API ChunkList {
  /// Why the walk ended.
  enum class Ending {
    fileEnd,     ///< with the file, or with fewer bytes left than a chunk's header has
    openAudio,   ///< the size of the audio is left open: it is the rest of the file
    cutShort,    ///< the last chunk states more than the file holds
    impossible,  ///< what follows cannot be a chunk
    tooMany      ///< `kMaximumChunks` are there
  };

  ChunkGrammar grammar{};
  std::uint64_t formOffset = 0;  ///< of the form that the chunks stand in, from the file's start
  std::vector<Chunk> chunks{};   ///< in file order
  std::uint64_t end = 0;         ///< behind the last chunk and its padding, from the file's start
  Ending ending = Ending::fileEnd;
  bool hasMissingPad = false;  ///< an odd chunk was followed at once by the next one

  bool operator==(const ChunkList&) const = default;

  /// The first chunk with this identifier; null when there is none.
  const Chunk* find(FourCC id) const noexcept;
  std::size_t count(FourCC id) const noexcept;
};

/// More chunks than any real file has; the walk ends there.
inline constexpr std::size_t kMaximumChunks = 65'536;

/// Walks the chunks of the form that begins at `form`, from `headBytes` behind that to the file's
/// end. Ends early, without complaint, where the bytes
/// stop making sense. The work is bounded by `kMaximumChunks`.
ORVANE_TESTING_API ChunkList readChunks(const InputFile& file, std::uint64_t form,
                                        std::uint64_t headBytes, const ChunkGrammar& grammar);

}  // namespace orvane
