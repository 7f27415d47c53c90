// The order of a save: everything that may be refused is looked at before a byte is written; the
// new file is written whole under a name of its own and read back; then the names are exchanged. A
// failure before that leaves the file as it was, a failure behind it is told as what it is.

#include "orvane/edit/in_place_save.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

#include "orvane/container/audio_file.h"
#include "orvane/container/container_table.h"
#include "orvane/container/metadata_changes.h"
#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/rewrite_plan.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/core/channel_order.h"
#include "orvane/edit/kept_samples.h"
#include "orvane/platform/checksum.h"

namespace orvane::InPlaceSave {
namespace {

namespace fs = std::filesystem;

std::string extensionOf(const fs::path& url) {
  const std::string extension = url.extension().string();
  return extension.empty() ? extension : extension.substr(1);
}

/// Our own sentences stand as they are; those of the system name the file.
std::string textOf(const PlatformError& error) {
  return error.code() ? error.errorDescription() : error.message();
}

void requireWritable(const fs::path& url) {
  std::error_code failure;
  fs::path file = fs::canonical(url, failure);
  if (failure) file = url;
  for (const fs::path& path : {file.parent_path(), file})
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0)
      throw InPlaceSaveError::notWritable(path.string());
}

PCMStream parse(const InputFile& file) {
  const SniffedContainer container = sniffContainer(file);
  const ContainerKind* const kind = containerKind(container.fileTypeID);
  if (kind == nullptr || kind->parse == nullptr)
    throw PlatformError(file.path(), "what was written cannot be read back");
  return kind->parse(file, container.start);
}

Checksum checksumOf(const InputFile& file, std::uint64_t offset, std::uint64_t size) {
  constexpr std::uint64_t kPieceBytes = std::uint64_t{1} << 20;
  Checksum sum;
  std::vector<std::byte> piece;
  for (std::uint64_t done = 0; done < size; done += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min(kPieceBytes, size - done)));
    file.readExactlyAt(offset + done, piece);
    sum.add(piece);
  }
  return sum;
}

/// Reads the new file back and compares: its form with the old one's, its audio with what was meant
/// to be written, and everything that was carried over with where it came from.
void verify(const fs::path& written, const InputFile& original, const PCMStream& stream,
            const RewritePlan& plan, std::int64_t frameCount, const Checksum& audio) {
  const InputFile file(written);
  const PCMStream result = parse(file);
  bool isRight = file.size() == plan.fileBytes && result.frameCount == frameCount &&
                 result.sample == stream.sample &&
                 result.description.dataFormat == stream.description.dataFormat &&
                 result.description.layout == stream.description.layout;
  std::uint64_t place = 0;
  for (const auto& piece : plan.pieces) {
    if (piece.kind == RewritePlan::Piece::Kind::audio)
      isRight = isRight && place == result.dataOffset &&
                checksumOf(file, place, piece.size).value() == audio.value();
    else if (piece.kind == RewritePlan::Piece::Kind::copy)
      isRight = isRight && checksumOf(file, place, piece.size).value() ==
                               checksumOf(original, piece.offset, piece.size).value();
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

Outcome rewrite(const PCMBuffer& buffer, const fs::path& over, const AudioFormat& fileFormat,
                const FileStamp& version, const Options& options) {
  const InputFile file(over);
  const PCMStream stream = parse(file);
  std::vector<const float*> channels;
  for (const std::uint32_t channel : fileOrder(fileFormat))
    channels.push_back(buffer.channel(channel));
  KeptSamples samples(file, stream, {channels, buffer.frameLength()});

  MetadataChanges metadata = followEdit(
      file, stream, followerOf(options, samples, stream.frameCount, buffer.frameLength()),
      samples.hasChanged());
  const RewritePlan plan = planRewrite(file, stream,
                                       {.frameCount = buffer.frameLength(),
                                        .hasChangedAudio = samples.hasChanged(),
                                        .chunkChanges = std::move(metadata.chunkChanges)});
  AtomicFile target(over, version);
  Checksum audio;
  writeRewrite(plan, file, target, [&](AtomicFile& output) {
    samples.write(options.ditherSeed, [&](std::span<const std::byte> bytes) {
      audio.add(bytes);
      output.write(bytes);
    });
  });
  verify(target.readablePath(), file, stream, plan, buffer.frameLength(), audio);
  target.commit();
  return {.hasChangedAudio = samples.hasChanged(),
          .samples = samples.losses(),
          .metadata = target.losses(),
          .notes = std::move(metadata.notes)};
}

/// The file as its header says, checked against the audio.
std::unique_ptr<AudioFile> openMatching(const fs::path& url, const PCMBuffer& buffer) {
  const std::string extension = extensionOf(url);
  const auto container = audioContainerFromExtension(extension);
  if (!container) throw InPlaceSaveError::unsupportedContainer(extension);
  const auto code = fileTypeIDOfFile(url);
  if (!code)
    throw InPlaceSaveError::unreadable("the container type couldn't be read from the file header");
  if (*code != fileTypeID(*container)) throw InPlaceSaveError::notAPCMContainer(fourCC(*code));
  std::unique_ptr<AudioFile> file;
  try {
    file = AudioFile::open(url);
  } catch (const PlatformError& error) {
    throw InPlaceSaveError::unreadable(error.errorDescription());
  }
  const StreamDescription& format = file->description().dataFormat;
  if (format.formatID != kFormatLinearPCM)
    throw InPlaceSaveError::notLinearPCM(fourCC(format.formatID));
  if (format.sampleRate != buffer.sampleRate() || format.channelsPerFrame != buffer.channelCount())
    throw InPlaceSaveError::formatMismatch(format.sampleRate, format.channelsPerFrame,
                                           buffer.sampleRate(), buffer.channelCount());
  return file;
}

}  // namespace

const std::set<std::string>& supportedExtensions() {
  static const std::set<std::string> kExtensions = {"wav", "wave", "bwf",  "rf64", "bw64",
                                                    "w64", "aif",  "aiff", "aifc", "caf"};
  return kExtensions;
}

AudioFormatSettings writeSettings(const fs::path& url, const PCMBuffer& buffer) {
  const auto file = openMatching(url, buffer);
  AudioFormatSettings settings = file->fileFormat();
  settings.fileTypeID = file->description().fileTypeID;
  settings.layout = file->description().layout;
  return settings;
}

std::vector<std::uint32_t> fileOrder(const AudioFormat& fileFormat) {
  if (!fileFormat.layout) {
    std::vector<std::uint32_t> own(fileFormat.channelCount);
    for (std::uint32_t channel = 0; channel < own.size(); ++channel) own[channel] = channel;
    return own;
  }
  const ChannelLayout& layout = *fileFormat.layout;
  auto order = core::ChannelOrder::permutationToCanonical(core::ChannelOrder::channelLabels(layout),
                                                          fileFormat.channelCount);
  if (order) return *std::move(order);
  std::string names;
  for (const std::string& name : core::ChannelOrder::displayShortNames(layout))
    names += (names.empty() ? "" : " ") + name;
  throw InPlaceSaveError::channelOrderUnknown(names);
}

Outcome write(const PCMBuffer& buffer, const fs::path& over) {
  return write(buffer, over, {});
}

Outcome write(const PCMBuffer& buffer, const fs::path& over, const Options& options) {
  const auto version = options.version ? options.version : FileStamp::of(over);
  const AudioFormat fileFormat = openMatching(over, buffer)->processingFormat();
  requireWritable(over);
  try {
    if (!version) throw PlatformError(over, "the file is gone");
    return rewrite(buffer, over, fileFormat, *version, options);
  } catch (const InPlaceSaveError&) {
    throw;
  } catch (const SavedFileError&) {
    throw;
  } catch (const PlatformError& error) {
    throw InPlaceSaveError::writeFailed(textOf(error));
  } catch (const UnwritableFormat& error) {
    throw InPlaceSaveError::writeFailed(error.errorDescription());
  } catch (const std::bad_alloc&) {
    throw InPlaceSaveError::writeFailed("couldn't allocate the channel-order buffer");
  }
}

}  // namespace orvane::InPlaceSave
