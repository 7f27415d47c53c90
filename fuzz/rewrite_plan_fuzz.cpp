// Plans to rewrite arbitrary files with the audio that they have: the plan's pieces lie within the
// file, and what it makes parses to the same audio. Then with half of the audio, which the other
// chunks have to follow.
#include <cstdint>
#include <vector>

#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "orvane/container/container_table.h"
#include "orvane/container/metadata_changes.h"
#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/rewrite_plan.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"

namespace {

using namespace orvane;
using fuzz::require;

struct Parsed {
  PCMStream stream;
  std::vector<std::uint8_t> audio;
};

Parsed parse(const std::vector<std::uint8_t>& bytes, const InputFile& file) {
  const SniffedContainer container = sniffContainer(file);
  const ContainerKind* const kind = containerKind(container.fileTypeID);
  if (kind == nullptr || kind->parse == nullptr) throw UnwritableFormat("no parser");
  Parsed parsed{kind->parse(file, container.start), {}};
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(parsed.stream.dataOffset);
  const auto size = parsed.stream.frameCount * parsed.stream.description.dataFormat.bytesPerFrame;
  parsed.audio.assign(begin, begin + size);
  return parsed;
}

std::vector<std::uint8_t> apply(const RewritePlan& plan, const std::vector<std::uint8_t>& original,
                                const std::vector<std::uint8_t>& audio) {
  std::vector<std::uint8_t> result;
  for (const auto& piece : plan.pieces) {
    if (piece.kind == RewritePlan::Piece::Kind::audio) {
      require(piece.size == audio.size());
      result.insert(result.end(), audio.begin(), audio.end());
    } else if (piece.kind == RewritePlan::Piece::Kind::bytes) {
      for (const std::byte byte : piece.bytes)
        result.push_back(std::to_integer<std::uint8_t>(byte));
    } else {
      require(piece.offset <= original.size() && piece.size <= original.size() - piece.offset);
      const auto begin = original.begin() + static_cast<std::ptrdiff_t>(piece.offset);
      result.insert(result.end(), begin, begin + static_cast<std::ptrdiff_t>(piece.size));
    }
  }
  require(result.size() == plan.fileBytes);
  return result;
}

void halve(const std::vector<std::uint8_t>& original, const InputFile& file, Parsed before) {
  const std::int64_t frames = before.stream.frameCount;
  const std::int64_t kept = frames - frames / 2;
  const FrameFollower trimmed{frames, kept, {{frames / 2, kept, 0}}};
  const MetadataChanges changes = followEdit(file, before.stream, trimmed, true);
  const RewritePlan plan = planRewrite(
      file, before.stream,
      {.frameCount = kept, .hasChangedAudio = true, .chunkChanges = changes.chunkChanges});
  const auto frameBytes = before.stream.description.dataFormat.bytesPerFrame;
  before.audio.resize(static_cast<std::size_t>(kept) * frameBytes);
  require(apply(plan, original, before.audio).size() <= original.size() + 16);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static fuzz::MemoryFile memory;
  const std::vector<std::uint8_t> original(bytes, bytes + size);
  try {
    const InputFile file(memory.write(bytes, size));
    const Parsed before = parse(original, file);
    const RewritePlan plan =
        planRewrite(file, before.stream, {.frameCount = before.stream.frameCount});
    const auto rewritten = apply(plan, original, before.audio);
    static fuzz::MemoryFile second;
    const InputFile result(second.write(rewritten.data(), rewritten.size()));
    const Parsed after = parse(rewritten, result);
    require(after.audio == before.audio);
    require(after.stream.sample == before.stream.sample);
    require(after.stream.description.dataFormat == before.stream.description.dataFormat);
    halve(original, file, before);
  } catch (const PlatformError&) {
  } catch (const UnwritableFormat&) {
  }
  return 0;
}
