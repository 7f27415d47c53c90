#include "orvane/edit/audio_rewrite.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "orvane/container/container_table.h"
#include "orvane/container/metadata_changes.h"
#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/rewrite_plan.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/core/channel_order.h"
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

void verify(const std::filesystem::path& written, const InputFile& original,
            const PCMStream& stream, const RewritePlan& plan, std::int64_t frameCount,
            const Checksum& audio) {
  using Kind = RewritePlan::Piece::Kind;
  const InputFile file(written);
  const PCMStream result = parse(file);
  bool isRight = file.size() == plan.fileBytes && result.frameCount == frameCount &&
                 result.sample == stream.sample &&
                 result.description.dataFormat == stream.description.dataFormat &&
                 result.description.layout == stream.description.layout;
  std::uint64_t place = 0;
  for (const auto& piece : plan.pieces) {
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
FrameFollower followerOf(const Options& options, const KeptSamples& samples,
                         std::int64_t oldFrameCount, std::int64_t newFrameCount) {
  FrameFollower follower{.oldFrameCount = oldFrameCount, .newFrameCount = newFrameCount};
  if (options.frames) {
    for (const FrameMap::Piece& piece : options.frames->pieces)
      follower.kept.push_back({piece.sourceFirst, piece.count, piece.place});
  } else if (oldFrameCount == newFrameCount) {
    follower.kept = {{0, oldFrameCount, 0}};
  } else {
    const std::int64_t end = samples.commonEnd();
    follower.kept = {{0, samples.commonBeginning(), 0},
                     {oldFrameCount - end, end, newFrameCount - end}};
  }
  return follower;
}

/// The channels as the file has them. One whose layout does not say the order has its own.
std::vector<const float*> inFileOrder(PlanarView audio, const PCMStream& stream) {
  std::vector<std::uint32_t> order(audio.channelCount());
  std::iota(order.begin(), order.end(), 0U);
  if (const auto& layout = stream.description.layout) {
    auto stated = core::ChannelOrder::permutationToCanonical(
        core::ChannelOrder::channelLabels(*layout), static_cast<std::uint32_t>(order.size()));
    if (stated) order = *std::move(stated);
  }
  std::vector<const float*> channels;
  for (const std::uint32_t channel : order) channels.push_back(audio.channel(channel));
  return channels;
}

}  // namespace

Outcome write(PlanarView audio, const InputFile& file, AtomicFile& target, const Options& options,
              const Execution& execution) {
  const PCMStream stream = parse(file);
  const auto frameCount = static_cast<std::int64_t>(audio.frameCount());
  const auto channels = inFileOrder(audio, stream);
  KeptSamples samples(file, stream, {channels, audio.frameCount()});
  MetadataChanges metadata =
      followEdit(file, stream, followerOf(options, samples, stream.frameCount, frameCount),
                 samples.hasChanged(), options.loudness);
  RewritePlan plan;
  try {
    plan = planRewrite(file, stream,
                       {.frameCount = frameCount,
                        .hasChangedAudio = samples.hasChanged(),
                        .chunkChanges = std::move(metadata.chunkChanges),
                        .newChunks = std::move(metadata.newChunks)});
  } catch (const UnwritableFormat& error) {
    throw PlatformError(target.target(), error.errorDescription());
  }
  Checksum sum;
  StageProgress progress(execution.observer, "Writing", audio.frameCount());
  const std::size_t frameBytes = stream.description.dataFormat.bytesPerFrame;
  writeRewrite(plan, file, target, [&](AtomicFile& output) {
    samples.write(options.ditherSeed, [&](std::span<const std::byte> bytes) {
      if (options.isReadBack) sum.add(bytes);
      output.write(bytes);
      progress.advance(bytes.size() / frameBytes);
    });
  });
  if (options.isReadBack) verify(target.readablePath(), file, stream, plan, frameCount, sum);
  return {.hasChangedAudio = samples.hasChanged(),
          .samples = samples.losses(),
          .notes = std::move(metadata.notes)};
}

}  // namespace orvane::AudioRewrite
