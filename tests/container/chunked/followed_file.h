#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/container_table.h"
#include "orvane/container/metadata_changes.h"
#include "orvane/container/rewrite_plan.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"
#include "tests/support/marked_files.h"
#include "tests/support/temporary_directory.h"

/// Files whose chunks follow an edit of their audio.
namespace orvane::test {

/// The edits that move frames, of a marked file.
namespace Edits {

inline FrameFollower none() {
  return {kMarkedFrames, kMarkedFrames, {{0, kMarkedFrames, 0}}};
}
inline FrameFollower headTrimmed(std::int64_t count) {
  return {kMarkedFrames, kMarkedFrames - count, {{count, kMarkedFrames - count, 0}}};
}
inline FrameFollower tailTrimmed(std::int64_t count) {
  return {kMarkedFrames, kMarkedFrames - count, {{0, kMarkedFrames - count, 0}}};
}
inline FrameFollower cut(std::int64_t start, std::int64_t end) {
  return {kMarkedFrames,
          kMarkedFrames - end + start,
          {{0, start, 0}, {end, kMarkedFrames - end, start}}};
}
inline FrameFollower inserted(std::int64_t start, std::int64_t count) {
  FrameFollower frames{kMarkedFrames, kMarkedFrames + count, {}};
  if (start > 0) frames.kept.push_back({0, start, 0});
  if (start < kMarkedFrames) frames.kept.push_back({start, kMarkedFrames - start, start + count});
  return frames;
}

}  // namespace Edits

struct FollowedChunk {
  std::string id{};
  Bytes body{};

  bool operator==(const FollowedChunk&) const = default;
};

using Notes = std::vector<std::string>;

/// What is left of the chunks that a test gave, and what the user is told.
struct FollowedFile {
  std::vector<FollowedChunk> chunks{};
  Notes notes{};
  std::vector<FollowedChunk> added{};

  bool operator==(const FollowedFile&) const = default;
};

inline std::string lettersOf(FourCC id) {
  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8) letters += static_cast<char>(id >> shift);
  return letters;
}

inline PCMStream parsedStream(const InputFile& file) {
  const SniffedContainer container = sniffContainer(file);
  const ContainerKind* const kind = containerKind(container.fileTypeID);
  if (kind == nullptr || kind->parse == nullptr) throw PlatformError(file.path(), "no parser");
  return kind->parse(file, container.start);
}

inline MetadataChanges changesOf(const std::filesystem::path& path, const FrameFollower& frames,
                                 bool hasChangedAudio = true) {
  const InputFile file(path);
  return followEdit(file, parsedStream(file), frames, hasChangedAudio);
}

/// The file after the edit, its audio all 0x55, put together without the product's writer.
inline Bytes rewritten(const std::filesystem::path& path, const Bytes& original,
                       const FrameFollower& frames, const MetadataChanges& changes) {
  const InputFile file(path);
  const RewritePlan plan = planRewrite(file, parsedStream(file),
                                       {.frameCount = frames.newFrameCount,
                                        .hasChangedAudio = true,
                                        .chunkChanges = changes.chunkChanges});
  Bytes result;
  for (const auto& piece : plan.pieces) switch (piece.kind) {
      case RewritePlan::Piece::Kind::copy: {
        const auto begin = original.begin() + static_cast<std::ptrdiff_t>(piece.offset);
        result.insert(result.end(), begin, begin + static_cast<std::ptrdiff_t>(piece.size));
        break;
      }
      case RewritePlan::Piece::Kind::bytes:
        result.insert(result.end(), piece.bytes.begin(), piece.bytes.end());
        break;
      case RewritePlan::Piece::Kind::audio:
        result.resize(result.size() + piece.size, std::byte{0x55});
        break;
    }
  return result;
}

class FollowedFileTest : public testing::Test {
 protected:
  /// The chunks behind the audio after an edit.
  FollowedFile followed(const Bytes& bytes, const FrameFollower& frames,
                        bool hasChangedAudio = true,
                        const std::optional<BroadcastLoudness>& loudness = {}) const {
    const auto path = folder_.write("file", bytes);
    const InputFile file(path);
    const PCMStream stream = parsedStream(file);
    const auto changes = followEdit(file, stream, frames, hasChangedAudio, loudness);
    FollowedFile result{.notes = changes.notes};
    for (const auto& [id, body] : changes.newChunks) result.added.push_back({lettersOf(id), body});
    const auto& chunks = stream.chunkList.chunks;
    const auto audio = stream.chunkList.find(stream.chunkList.grammar.audioID) - chunks.data();
    for (auto i = static_cast<std::size_t>(audio) + 1; i < chunks.size(); ++i) {
      FollowedChunk chunk{.id = lettersOf(chunks[i].id)};
      chunk.body.resize(static_cast<std::size_t>(chunks[i].size));
      file.readExactlyAt(chunks[i].bodyOffset, chunk.body);
      const auto change = std::ranges::find(changes.chunkChanges, i,
                                            &decltype(changes.chunkChanges)::value_type::first);
      if (change == changes.chunkChanges.end()) {
        result.chunks.push_back(std::move(chunk));
        continue;
      }
      // A change that changes nothing is none.
      EXPECT_NE(change->second, chunk.body) << chunk.id;
      if (change->second) result.chunks.push_back({chunk.id, *change->second});
    }
    return result;
  }

  /// The only chunk of a WAVE file after an edit; absent when it is gone.
  std::optional<Bytes> after(const FrameFollower& frames, const std::string& id, const Bytes& body,
                             Notes* notes = nullptr) const {
    const FollowedFile result = followed(markedWave({{id, body}}), frames);
    if (notes != nullptr) *notes = result.notes;
    if (result.chunks.empty()) return std::nullopt;
    return result.chunks.front().body;
  }

  const TemporaryDirectory& folder() const { return folder_; }

 private:
  TemporaryDirectory folder_{};
};

}  // namespace orvane::test
