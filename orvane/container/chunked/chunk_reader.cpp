#include "orvane/container/chunked/chunk_reader.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "orvane/container/chunked/header_fields.h"

namespace orvane {
namespace {

constexpr std::uint64_t kAllOnes = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint32_t kAllOnes32 = std::numeric_limits<std::uint32_t>::max();
/// From here to 2^31 − 1 writers to pipes put "as much as a reader takes".
constexpr std::uint32_t kPipeSize = 0x7FFFF000;
/// The last twelve bytes of most Wave64 GUIDs, as two big-endian numbers.
constexpr std::uint32_t kWave64Tail1 = 0xF3ACD311;
constexpr std::uint64_t kWave64Tail2 = 0x8CD100C04F8EDB8A;

/// A chunk's header as it stands.
struct Header {
  FourCC id = 0;
  std::uint64_t stated = 0;    ///< size of the body; `kAllOnes` when left open by all ones
  bool isSizePossible = true;  ///< false for sizes that cannot be (negative, below the header's)
  bool isPipeSize = false;
};

class Walker {
 public:
  Walker(const InputFile& file, const ChunkGrammar& grammar) : file_(file), grammar_(grammar) {}

  ChunkList walk(std::uint64_t offset) const;

 private:
  std::optional<Header> headerAt(std::uint64_t offset) const;
  bool isPlausibleAt(std::uint64_t offset) const;
  bool isChainAt(std::uint64_t offset) const;
  Chunk chunkOf(const Header& header, std::uint64_t offset) const;
  ChunkList::Ending walkChunks(std::uint64_t& offset, ChunkList& list) const;
  std::uint64_t nextOffset(const Chunk& chunk, ChunkList& list) const;

  const InputFile& file_;
  const ChunkGrammar& grammar_;
};

std::optional<Header> Walker::headerAt(std::uint64_t offset) const {
  const HeaderFields fields(file_, offset, grammar_.headerBytes(), grammar_.byteOrder);
  if (fields.size() < grammar_.headerBytes()) return {};
  Header header{.id = fields.fourCC(0)};
  switch (grammar_.header) {
    case ChunkGrammar::Header::riff: {
      const std::uint32_t size = fields.u32(4);
      header.stated = size == kAllOnes32 ? kAllOnes : size;
      header.isPipeSize = size >= kPipeSize && size <= 0x7FFFFFFF;
      if (size != kAllOnes32) break;
      for (const auto& [id, longSize] : grammar_.longSizes)
        if (id == header.id) header.stated = longSize;
      break;
    }
    case ChunkGrammar::Header::wave64: {
      const HeaderFields guid(file_, offset + 4, 12, std::endian::big);
      if (guid.u32(0) != kWave64Tail1 || guid.u64(4) != kWave64Tail2) header.id = 0;
      const std::uint64_t size = fields.u64(16);
      header.isSizePossible = size >= grammar_.headerBytes();
      header.stated =
          size == kAllOnes || !header.isSizePossible ? size : size - grammar_.headerBytes();
      break;
    }
    case ChunkGrammar::Header::caf: {
      header.stated = fields.u64(4);
      header.isSizePossible = header.stated == kAllOnes || (header.stated >> 63) == 0;
      break;
    }
  }
  return header;
}

/// Whether a chunk seems to begin here: a readable identifier and a body that fits the file.
bool Walker::isPlausibleAt(std::uint64_t offset) const {
  const std::optional<Header> header = headerAt(offset);
  if (!header || !header->isSizePossible) return false;
  for (int shift = 0; shift < 32; shift += 8) {
    const FourCC character = (header->id >> shift) & 0xFF;
    if (character < 0x20 || character > 0x7E) return false;
  }
  return header->id == grammar_.audioID ||
         header->stated <= file_.size() - offset - grammar_.headerBytes();
}

/// Whether what seems to begin here is the audio, or leads to the next chunk or to the file's end.
bool Walker::isChainAt(std::uint64_t offset) const {
  if (!isPlausibleAt(offset)) return false;
  const Header header = *headerAt(offset);
  const std::uint64_t end = offset + grammar_.headerBytes() + header.stated;
  return header.id == grammar_.audioID || end == file_.size() ||
         isPlausibleAt(end + header.stated % 2);
}

Chunk Walker::chunkOf(const Header& header, std::uint64_t offset) const {
  Chunk chunk{
      .id = header.id, .headerOffset = offset, .bodyOffset = offset + grammar_.headerBytes()};
  const std::uint64_t rest = file_.size() - chunk.bodyOffset;
  chunk.size = std::min(header.stated, rest);
  if (header.id == grammar_.audioID) {
    // Recorders that crashed and programs that write to a pipe leave the size at 0 or all ones.
    const bool isOpen = header.stated == kAllOnes || !header.isSizePossible ||
                        (header.isPipeSize && header.stated > rest) ||
                        (header.stated == 0 && rest > 0 && !isPlausibleAt(chunk.bodyOffset));
    if (isOpen) {
      chunk.size = rest;
      chunk.extent = Chunk::Extent::open;
      return chunk;
    }
  }
  if (header.stated > rest) chunk.extent = Chunk::Extent::cutShort;
  return chunk;
}

std::uint64_t Walker::nextOffset(const Chunk& chunk, ChunkList& list) const {
  const std::uint64_t end = chunk.bodyOffset + chunk.size;
  if (grammar_.header == ChunkGrammar::Header::wave64) {
    const std::uint64_t length = end - chunk.headerOffset;
    return chunk.headerOffset + (length + 7) / 8 * 8;
  }
  if (grammar_.header == ChunkGrammar::Header::caf || chunk.size % 2 == 0) return end;
  // Some writers forget the pad byte behind an odd chunk.
  if (!isChainAt(end + 1) && isChainAt(end)) {
    list.hasMissingPad = true;
    return end;
  }
  return end + 1;
}

ChunkList Walker::walk(std::uint64_t offset) const {
  ChunkList list{.grammar = grammar_};
  list.ending = walkChunks(offset, list);
  list.end = std::min(offset, file_.size());
  return list;
}

ChunkList::Ending Walker::walkChunks(std::uint64_t& offset, ChunkList& list) const {
  while (list.chunks.size() < kMaximumChunks) {
    const std::optional<Header> header = headerAt(offset);
    if (!header) return ChunkList::Ending::fileEnd;
    if (!header->isSizePossible && header->id != grammar_.audioID)
      return ChunkList::Ending::impossible;
    const Chunk chunk = chunkOf(*header, offset);
    list.chunks.push_back(chunk);
    offset = chunk.extent == Chunk::Extent::exact ? nextOffset(chunk, list) : file_.size();
    if (chunk.extent == Chunk::Extent::open) return ChunkList::Ending::openAudio;
    if (chunk.extent == Chunk::Extent::cutShort) return ChunkList::Ending::cutShort;
  }
  return ChunkList::Ending::tooMany;
}

}  // namespace

std::uint64_t ChunkGrammar::headerBytes() const noexcept {
  switch (header) {
    case Header::riff:
      return 8;
    case Header::wave64:
      return 24;
    case Header::caf:
      return 12;
  }
  return 8;
}

std::uint64_t ChunkGrammar::alignment() const noexcept {
  switch (header) {
    case Header::riff:
      return 2;
    case Header::wave64:
      return 8;
    case Header::caf:
      return 1;
  }
  return 1;
}

const Chunk* ChunkList::find(FourCC id) const noexcept {
  const auto found = std::ranges::find(chunks, id, &Chunk::id);
  return found == chunks.end() ? nullptr : &*found;
}

std::size_t ChunkList::count(FourCC id) const noexcept {
  return static_cast<std::size_t>(std::ranges::count(chunks, id, &Chunk::id));
}

ChunkList readChunks(const InputFile& file, std::uint64_t form, std::uint64_t headBytes,
                     const ChunkGrammar& grammar) {
  ChunkList list = Walker(file, grammar).walk(form + headBytes);
  list.formOffset = form;
  return list;
}

}  // namespace orvane
