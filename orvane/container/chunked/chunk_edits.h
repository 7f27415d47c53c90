#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/container/chunked/header_bytes.h"
#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/metadata_changes.h"

namespace orvane {

/// Gathers, chunk by chunk, what an edit of the audio makes of the rest of a file.
class ChunkEdits {
 public:
  /// Writes the new body; false leaves the chunk out. A body that lacks what it promises lets
  /// `HeaderFields` throw; so what it found is kept only when it is through.
  using Edit = std::function<bool(const HeaderFields& body, HeaderBytes& edited)>;

  ChunkEdits(const InputFile& file, const PCMStream& stream, const FrameFollower& frames)
      : file_(file), stream_(stream), frames_(frames) {}

  const InputFile& file() const noexcept { return file_; }
  const PCMStream& stream() const noexcept { return stream_; }
  const FrameFollower& frames() const noexcept { return frames_; }
  HeaderBytes bytes() const { return HeaderBytes(stream_.chunkList.grammar.byteOrder); }

  /// Edits all chunks with this identifier; where the body begins with a type, those of `type`.
  void edit(FourCC id, const Edit& edit, std::optional<FourCC> type = {});
  /// Leaves out all chunks with this identifier, and says `why` if there was one.
  void drop(FourCC id, const std::string& why);

  /// A chunk that the file does not have.
  void add(FourCC id, std::vector<std::byte> body) {
    changes_.newChunks.emplace_back(id, std::move(body));
  }

  /// Where a 32-bit place comes to lie; absent when it was removed or the field cannot hold it. All
  /// ones is no place and stays.
  std::optional<std::uint32_t> placeOf(std::uint32_t frame) const noexcept;
  /// The length of what is left of a stretch that began at `frame` and begins at `place`.
  std::uint32_t lengthOf(std::uint32_t frame, std::uint32_t length,
                         std::uint32_t place) const noexcept;

  void note(std::string sentence);
  /// "3 markers <what> and are gone: A, B, C"; nothing for no names.
  void noteGone(std::string_view noun, std::string_view what,
                const std::vector<std::string>& names);
  /// What a place without a name is called: "at 1.250 s".
  std::string placeName(double frame) const;

  MetadataChanges take() { return std::move(changes_); }

 private:
  const InputFile& file_;
  const PCMStream& stream_;
  const FrameFollower& frames_;
  MetadataChanges changes_{};
};

}  // namespace orvane
