#include "orvane/edit/audio_rewrite.h"

#include <algorithm>
#include <utility>

#include "orvane/container/container_table.h"
#include "orvane/container/metadata_changes.h"
#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/rewrite_plan.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/container/stored_format.h"
#include "orvane/edit/kept_samples.h"
#include "orvane/platform/checksum.h"
#include "orvane/platform/stage_progress.h"

namespace orvane::AudioRewrite {
namespace {

PCMStream parse(const InputFile& file) {
  const SniffedContainer container = sniffContainer(file);
  const ContainerKind* const kind = containerKind(container.fileTypeID);
  if (kind == nullptr || kind->parse == nullptr)
    throw PlatformError(file.path(), "what was written cannot be read back");
  return kind->parse(file, container.start);
}

std::uint64_t checksumOf(const InputFile& file, std::uint64_t offset, std::uint64_t size) {
  constexpr std::uint64_t kPieceBytes = std::uint64_t{1} << 20;
  Checksum sum;
  std::vector<std::byte> piece;
  for (std::uint64_t done = 0; done < size; done += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min(kPieceBytes, size - done)));
    file.readExactlyAt(offset + done, piece);
    sum.add(piece);
  }
  return sum.value();
}

std::uint64_t checksumOf(std::span<const std::byte> bytes) {
  Checksum sum;
  sum.add(bytes);
  return sum.value();
}

/// A file that is made of another one.
struct Planned {
  StoredFormat format{};
  RewritePlan plan{};
  std::vector<std::string> notes{};
};

void verify(const std::filesystem::path& written, const InputFile& original,
            const PCMStream& stream, const Planned& planned, const Options& options,
            std::int64_t frameCount, const Checksum& audio) {
  using Kind = RewritePlan::Piece::Kind;
  const InputFile file(written);
  const PCMStream result = parse(file);
  bool isRight = file.size() == planned.plan.fileBytes && result.frameCount == frameCount &&
                 result.sample == planned.format.sample &&
                 result.description.dataFormat == planned.format.dataFormat &&
                 (options.channel || result.description.layout == stream.description.layout);
  std::uint64_t place = 0;
  for (const auto& piece : planned.plan.pieces) {
    const std::uint64_t meant = piece.kind == Kind::audio ? audio.value()
                                : piece.kind == Kind::bytes
                                    ? checksumOf(piece.bytes)
                                    : checksumOf(original, piece.offset, piece.size);
    isRight = isRight && checksumOf(file, place, piece.size) == meant &&
              (piece.kind != Kind::audio || place == result.dataOffset);
    place += piece.size;
  }
  if (!isRight)
    throw PlatformError(original.path(), "what was written is not what was to be written");
}

/// For what names places in the audio.
FrameFollower followerOf(const FrameMap& frames, std::int64_t oldFrameCount) {
  FrameFollower follower{.oldFrameCount = oldFrameCount, .newFrameCount = frames.frameCount};
  for (const FrameMap::Piece& piece : frames.pieces)
    follower.kept.push_back({piece.sourceFirst, piece.count, piece.place});
  return follower;
}

/// In slices that stay close to the processor.
void deliverShort(const SlicedAudio& audio, const SlicedAudio::Take& take) {
  constexpr std::size_t kFrames = std::size_t{1} << 15;
  audio.deliver([&](PlanarView slice) {
    for (std::size_t first = 0; first < slice.frameCount(); first += kFrames)
      take(slice.slice(first, std::min(kFrames, slice.frameCount() - first)));
  });
}

/// What cannot be written is said with the target's name.
template <class Make>
auto orWithName(const std::filesystem::path& target, Make make) {
  try {
    return make();
  } catch (const UnwritableFormat& error) {
    throw PlatformError(target, error.errorDescription());
  }
}

StoredFormat formatOf(const InputFile& file, const PCMStream& stream, const Options& options,
                      std::int64_t frameCount) {
  const StoredFormat::Change change{options.encoding, options.channel.has_value()};
  return storedFormat(file, stream, change, frameCount);
}

Planned planned(const InputFile& file, const PCMStream& stream, StoredFormat format,
                const FrameMap& frames, bool hasChanged, const Options& options) {
  MetadataChanges metadata =
      followEdit(file, stream, followerOf(frames, stream.frameCount), hasChanged, options.loudness);
  metadata.add(std::exchange(format.changes, {}));
  RewritePlan plan = planRewrite(file, stream,
                                 {.frameCount = frames.frameCount,
                                  .frameBytes = format.dataFormat.bytesPerFrame,
                                  .hasChangedAudio = hasChanged,
                                  .chunkChanges = std::move(metadata.chunkChanges),
                                  .newChunks = std::move(metadata.newChunks)});
  return {std::move(format), std::move(plan), std::move(metadata.notes)};
}

}  // namespace

Outcome write(const SlicedAudio& audio, const InputFile& file, AtomicFile& target,
              const Options& options, const Execution& execution) {
  const PCMStream stream = parse(file);
  StoredFormat format = orWithName(
      target.target(), [&] { return formatOf(file, stream, options, audio.frameCount); });
  KeptSamples samples(file, stream, {format.sample, options.channel});
  const FrameMap frames = options.frames ? *options.frames : samples.commonFrames(audio);
  samples.follow(frames);
  const bool hasChanged = samples.hasChanged(audio);
  Planned result = orWithName(target.target(), [&] {
    return planned(file, stream, std::move(format), frames, hasChanged, options);
  });
  Checksum sum;
  StageProgress progress(execution.observer, "Writing", static_cast<std::size_t>(audio.frameCount));
  writeRewrite(result.plan, file, target, [&](AtomicFile& output) {
    deliverShort(audio, [&](PlanarView slice) {
      const auto bytes = samples.store(slice, options.ditherSeed);
      if (options.isReadBack) sum.add(bytes);
      output.write(bytes);
      progress.advance(slice.frameCount());
    });
  });
  if (options.isReadBack)
    verify(target.readablePath(), file, stream, result, options, audio.frameCount, sum);
  return {
      .hasChangedAudio = hasChanged, .samples = samples.losses(), .notes = std::move(result.notes)};
}

std::vector<std::string> foreseenNotes(const InputFile& file, const std::filesystem::path& target,
                                       const FrameMap& frames, bool changesSamples,
                                       const Options& options) {
  const PCMStream stream = parse(file);
  return orWithName(target, [&] {
    StoredFormat format = formatOf(file, stream, options, frames.frameCount);
    const bool hasChanged = changesSamples || options.channel || format.sample != stream.sample ||
                            frames != FrameMap::identity(stream.frameCount);
    return planned(file, stream, std::move(format), frames, hasChanged, options).notes;
  });
}

}  // namespace orvane::AudioRewrite
