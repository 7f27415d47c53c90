// A plan begins as "all of the original" and is changed by replacements of stretches, kept in file
// order. The audio is one of them, the header fields that speak of it are others, so a field that
// says the right thing already is never touched and whatever is not understood is carried along.
//
// Sizes of forms are true, or they lie: where the stated end of the form is the end of a chunk or
// of the file it moves with the edit, otherwise it is put right.

#include "orvane/container/rewrite_plan.h"

#include <algorithm>
#include <limits>

#include "orvane/container/audio_container.h"
#include "orvane/container/chunked/chunk_bytes.h"
#include "orvane/container/chunked/header_bytes.h"
#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/pcm_file_outline.h"

namespace orvane {
namespace {

constexpr std::uint64_t kAllOnes32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t kAllOnes64 = std::numeric_limits<std::uint64_t>::max();

class Planner {
 public:
  Planner(const InputFile& file, const PCMStream& stream, const RewriteRequest& request);

  RewritePlan plan();

 private:
  /// `removed` bytes from `offset` on become `bytes`, or `audioBytes` of audio.
  struct Replacement {
    std::uint64_t offset = 0;
    std::uint64_t removed = 0;
    std::vector<std::byte> bytes{};
    std::optional<std::uint64_t> audioBytes{};

    std::uint64_t inserted() const { return audioBytes.value_or(bytes.size()); }
  };

  void replace(std::uint64_t offset, std::uint64_t removed, std::vector<std::byte> bytes);
  void setField(std::uint64_t offset, std::size_t size, std::uint64_t value);
  std::uint64_t field(std::uint64_t offset, std::size_t size) const;
  std::vector<std::byte> number(std::uint64_t value, std::size_t size) const;

  void replaceAudio();
  void changeChunk(const Chunk& chunk, const std::optional<std::vector<std::byte>>& body);
  std::uint64_t endOfPadding(const Chunk& chunk) const;
  void setChunkSize(const Chunk& chunk, std::uint64_t size);
  void setFrameCounts();
  void setFormSize();
  std::uint64_t grown(std::uint64_t end) const;
  bool isChunkEnd(std::uint64_t end) const;
  /// The place of the 64-bit sizes of RF64 and BW64; absent for others.
  std::optional<std::uint64_t> longSizes() const;

  const InputFile& file_;
  const PCMStream& stream_;
  const ChunkList& list_;
  const RewriteRequest& request_;
  AudioContainer container_{};
  const Chunk* audio_ = nullptr;
  std::uint64_t oldAudioBytes_ = 0;
  std::uint64_t newAudioBytes_ = 0;
  std::vector<Replacement> replacements_{};
};

Planner::Planner(const InputFile& file, const PCMStream& stream, const RewriteRequest& request)
    : file_(file), stream_(stream), list_(stream.chunkList), request_(request) {
  const auto container = audioContainerFromFileTypeID(stream.description.fileTypeID);
  audio_ = list_.find(list_.grammar.audioID);
  const bool isPCM = stream.description.dataFormat.formatID == kFormatLinearPCM;
  if (!container || !isPCM || !stream.refusal.empty() || stream.sample.bytes == 0)
    throw UnwritableFormat("only linear PCM in WAV, RF64, BW64, Wave64, AIFF and CAF is rewritten");
  if (audio_ == nullptr) throw UnwritableFormat("the file has no place for audio");
  container_ = *container;
  const std::uint32_t oldFrameBytes = stream.description.dataFormat.bytesPerFrame;
  const std::uint32_t newFrameBytes = request.frameBytes.value_or(oldFrameBytes);
  oldAudioBytes_ = static_cast<std::uint64_t>(stream.frameCount) * oldFrameBytes;
  newAudioBytes_ = static_cast<std::uint64_t>(request.frameCount) * newFrameBytes;
  // Part of a frame, behind the last one, would be frames where those are shorter.
  if (newFrameBytes != oldFrameBytes)
    oldAudioBytes_ = audio_->bodyOffset + audio_->size - stream.dataOffset;
}

RewritePlan Planner::plan() {
  replaceAudio();
  for (const auto& [index, body] : request_.chunkChanges) changeChunk(list_.chunks[index], body);
  for (const auto& [id, body] : request_.newChunks)
    replace(audio_->headerOffset, 0, chunkBytes(list_.grammar, id, body));
  setFrameCounts();
  setFormSize();
  std::ranges::stable_sort(replacements_, {}, &Replacement::offset);

  RewritePlan plan;
  std::uint64_t position = 0;
  const auto copyTo = [&](std::uint64_t end) {
    if (end > position)
      plan.pieces.push_back({RewritePlan::Piece::Kind::copy, position, end - position});
  };
  for (Replacement& part : replacements_) {
    copyTo(part.offset);
    position = part.offset + part.removed;
    if (part.audioBytes)
      plan.pieces.push_back({RewritePlan::Piece::Kind::audio, 0, *part.audioBytes});
    else if (!part.bytes.empty())
      plan.pieces.push_back(
          {RewritePlan::Piece::Kind::bytes, 0, part.bytes.size(), std::move(part.bytes)});
  }
  copyTo(file_.size());
  for (const auto& piece : plan.pieces) plan.fileBytes += piece.size;
  return plan;
}

void Planner::replace(std::uint64_t offset, std::uint64_t removed, std::vector<std::byte> bytes) {
  if (removed == 0 && bytes.empty()) return;
  replacements_.push_back({.offset = offset, .removed = removed, .bytes = std::move(bytes)});
}

std::vector<std::byte> Planner::number(std::uint64_t value, std::size_t size) const {
  HeaderBytes bytes(list_.grammar.byteOrder);
  return (size == 4 ? bytes.u32(value) : bytes.u64(value)).bytes();
}

std::uint64_t Planner::field(std::uint64_t offset, std::size_t size) const {
  const HeaderFields fields(file_, offset, size, list_.grammar.byteOrder);
  return size == 4 ? fields.u32(0) : fields.u64(0);
}

void Planner::setField(std::uint64_t offset, std::size_t size, std::uint64_t value) {
  std::vector<std::byte> bytes = number(value, size);
  for (Replacement& part : replacements_) {
    // A chunk that gets another body has the field there.
    const std::uint64_t replaced = std::min<std::uint64_t>(part.removed, part.bytes.size());
    if (offset < part.offset || offset + size > part.offset + replaced) continue;
    std::ranges::copy(bytes,
                      part.bytes.begin() + static_cast<std::ptrdiff_t>(offset - part.offset));
    return;
  }
  if (field(offset, size) != value) replace(offset, size, std::move(bytes));
}

std::optional<std::uint64_t> Planner::longSizes() const {
  const Chunk* const sizes = list_.find(fourCCFrom("ds64"));
  const bool isLong = container_ == AudioContainer::rf64 || container_ == AudioContainer::bw64;
  constexpr std::uint64_t kUsefulBytes = 24;
  if (!isLong || sizes == nullptr || sizes->size < kUsefulBytes) return std::nullopt;
  return sizes->bodyOffset;
}

/// Where what pads a chunk ends, by the next chunk or the end of all.
std::uint64_t Planner::endOfPadding(const Chunk& chunk) const {
  const std::uint64_t bodyEnd = chunk.bodyOffset + chunk.size;
  const Chunk* const next = &chunk + 1;
  const bool isLast = next == list_.chunks.data() + list_.chunks.size();
  return std::max(bodyEnd, isLast ? list_.end : next->headerOffset);
}

void Planner::replaceAudio() {
  replacements_.push_back(
      {.offset = stream_.dataOffset, .removed = oldAudioBytes_, .audioBytes = newAudioBytes_});
  const std::uint64_t oldSize = audio_->size;
  const std::uint64_t newSize = oldSize - oldAudioBytes_ + newAudioBytes_;
  setChunkSize(*audio_, newSize);

  const std::uint64_t bodyEnd = audio_->bodyOffset + oldSize;
  const std::uint64_t oldPadding = endOfPadding(*audio_) - bodyEnd;
  const std::uint64_t alignment = list_.grammar.alignment();
  const std::uint64_t needed = (alignment - newSize % alignment) % alignment;
  const bool isFollowed = bodyEnd + oldPadding < file_.size();
  // Padding that has the right length stands as it is, zeros or not; at the very end it may lack.
  const bool isRight =
      oldPadding == needed || (newSize == oldSize && !isFollowed && oldPadding < needed);
  if (!isRight) replace(bodyEnd, oldPadding, std::vector<std::byte>(needed));
}

void Planner::changeChunk(const Chunk& chunk, const std::optional<std::vector<std::byte>>& body) {
  const std::uint64_t end = endOfPadding(chunk);
  if (!body) {
    replace(chunk.headerOffset, end - chunk.headerOffset, {});
    return;
  }
  std::vector<std::byte> padded = *body;
  const std::uint64_t alignment = list_.grammar.alignment();
  padded.resize((padded.size() + alignment - 1) / alignment * alignment);
  setChunkSize(chunk, body->size());
  replace(chunk.bodyOffset, end - chunk.bodyOffset, std::move(padded));
}

void Planner::setChunkSize(const Chunk& chunk, std::uint64_t size) {
  switch (list_.grammar.header) {
    case ChunkGrammar::Header::wave64:
      setField(chunk.headerOffset + 16, 8, size + list_.grammar.headerBytes());
      return;
    case ChunkGrammar::Header::caf: {
      // "To the end" is a proper size of the last chunk.
      const std::uint64_t at = chunk.headerOffset + 4;
      if (field(at, 8) != kAllOnes64 || &chunk != &list_.chunks.back()) setField(at, 8, size);
      return;
    }
    case ChunkGrammar::Header::riff:
      break;
  }
  const std::uint64_t at = chunk.headerOffset + 4;
  const auto sizes = longSizes();
  const bool isAudio = &chunk == audio_;
  if (sizes && isAudio) setField(*sizes + 8, 8, size);
  const bool isLong = sizes && isAudio && (field(at, 4) == kAllOnes32 || size >= kAllOnes32);
  setField(at, 4, isLong ? kAllOnes32 : std::min(size, kAllOnes32));
}

/// Frame counts stand beside the sizes in most containers.
void Planner::setFrameCounts() {
  const auto frames = static_cast<std::uint64_t>(request_.frameCount);
  if (container_ == AudioContainer::caf) {
    if (request_.hasChangedAudio && audio_->size >= 4)
      setField(audio_->bodyOffset, 4, (field(audio_->bodyOffset, 4) + 1) & kAllOnes32);
    return;
  }
  if (container_ == AudioContainer::aiff || container_ == AudioContainer::aifc) {
    // Only the count: the rate keeps the bits that it was written with.
    setField(list_.find(fourCCFrom("COMM"))->bodyOffset + 2, 4, frames);
    return;
  }
  if (request_.frameCount == stream_.frameCount && newAudioBytes_ == oldAudioBytes_) return;
  if (const auto sizes = longSizes()) setField(*sizes + 16, 8, frames);
  const Chunk* const fact = list_.find(fourCCFrom("fact"));
  if (fact == nullptr) return;
  if (container_ == AudioContainer::wave64 && fact->size >= 8)
    setField(fact->bodyOffset, 8, frames);
  else if (fact->size >= 4)
    setField(fact->bodyOffset, 4, std::min(frames, kAllOnes32));
}

/// Where a place in the original comes to lie.
std::uint64_t Planner::grown(std::uint64_t end) const {
  std::uint64_t place = end;
  for (const Replacement& part : replacements_)
    if (part.offset + part.removed <= end) place += part.inserted() - part.removed;
  return place;
}

bool Planner::isChunkEnd(std::uint64_t end) const {
  const std::uint64_t audioEnd = audio_->bodyOffset + audio_->size;
  if (end == file_.size() || end == list_.end) return end >= audioEnd;
  return end >= audioEnd && std::ranges::any_of(list_.chunks, [&](const Chunk& chunk) {
           return end == chunk.bodyOffset + chunk.size || end == chunk.headerOffset;
         });
}

void Planner::setFormSize() {
  if (list_.grammar.header == ChunkGrammar::Header::caf) return;
  const bool isWave64 = list_.grammar.header == ChunkGrammar::Header::wave64;
  const std::uint64_t start = list_.formOffset;
  // Wave64 counts the form's own header.
  const std::uint64_t origin = isWave64 ? start : start + 8;
  const std::uint64_t at = isWave64 ? start + 16 : start + 4;
  const std::size_t bytes = isWave64 ? 8 : 4;
  const auto sizes = longSizes();
  const std::uint64_t shortStated = field(at, bytes);
  const bool isLong = sizes && shortStated == kAllOnes32;
  const std::uint64_t stated = isLong ? field(*sizes, 8) : shortStated;

  const bool isTrue = stated <= file_.size() && isChunkEnd(origin + stated);
  const std::uint64_t size = grown(isTrue ? origin + stated : list_.end) - origin;
  const bool isAIFF = container_ == AudioContainer::aiff || container_ == AudioContainer::aifc;
  if (isLong || (sizes && size >= kAllOnes32)) {
    setField(*sizes, 8, size);
    setField(at, 4, kAllOnes32);
    return;
  }
  if (isAIFF && size > 0x7FFFFFFF)
    throw UnwritableFormat("the result is larger than an AIFF file can be; save it as CAF");
  if (!isWave64 && size > 0xFFFFFFFE - 8)
    throw UnwritableFormat("the result is larger than a WAV file can be; save it as RF64 or BW64");
  if (sizes) setField(*sizes, 8, size);
  setField(at, bytes, size);
}

}  // namespace

RewritePlan planRewrite(const InputFile& file, const PCMStream& stream,
                        const RewriteRequest& request) {
  return Planner(file, stream, request).plan();
}

void writeRewrite(const RewritePlan& plan, const InputFile& file, AtomicFile& target,
                  const std::function<void(AtomicFile&)>& audio) {
  constexpr std::uint64_t kPieceBytes = std::uint64_t{1} << 20;
  std::vector<std::byte> buffer;
  target.reserve(plan.fileBytes);
  for (const auto& piece : plan.pieces) {
    if (piece.kind == RewritePlan::Piece::Kind::audio) {
      audio(target);
    } else if (piece.kind == RewritePlan::Piece::Kind::bytes) {
      target.write(piece.bytes);
    } else {
      for (std::uint64_t done = 0; done < piece.size; done += buffer.size()) {
        buffer.resize(static_cast<std::size_t>(std::min(kPieceBytes, piece.size - done)));
        file.readExactlyAt(piece.offset + done, buffer);
        target.write(buffer);
      }
    }
  }
}

}  // namespace orvane
