// The order of a save: everything that may be refused is looked at before a byte is written; the
// new file is written whole under a name of its own and read back; then the names are exchanged. A
// failure before that leaves the file as it was, a failure behind it is told as what it is.

#include "orvane/edit/in_place_save.h"

#include <fcntl.h>
#include <unistd.h>

#include <new>
#include <utility>

#include "orvane/container/audio_container.h"
#include "orvane/container/audio_file.h"
#include "orvane/core/channel_order.h"

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

/// The file as its header says, checked against the audio.
std::unique_ptr<AudioFile> openMatching(const fs::path& url, std::size_t channelCount,
                                        double rate) {
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
  if (format.sampleRate != rate || format.channelsPerFrame != channelCount)
    throw InPlaceSaveError::formatMismatch(format.sampleRate, format.channelsPerFrame, rate,
                                           static_cast<std::int64_t>(channelCount));
  return file;
}

}  // namespace

const std::set<std::string>& supportedExtensions() {
  static const std::set<std::string> kExtensions = {"wav", "wave", "bwf",  "rf64", "bw64",
                                                    "w64", "aif",  "aiff", "aifc", "caf"};
  return kExtensions;
}

AudioFormatSettings writeSettings(const fs::path& url, const PCMBuffer& buffer) {
  const auto file = openMatching(url, buffer.channelCount(), buffer.sampleRate());
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

void requirePossible(const fs::path& over, std::size_t channelCount, double sampleRate) {
  const AudioFormat format = openMatching(over, channelCount, sampleRate)->processingFormat();
  requireWritable(over);
  fileOrder(format);
}

Outcome write(const PCMBuffer& buffer, const fs::path& over) {
  return write(buffer, over, {});
}

Outcome write(const PCMBuffer& buffer, const fs::path& over, const Options& options) {
  return write(buffer.view(), buffer.sampleRate(), over, options);
}

Outcome write(const SlicedAudio& audio, double sampleRate, const fs::path& over,
              const Options& options) {
  const auto version = options.version ? options.version : FileStamp::of(over);
  requirePossible(over, audio.channelCount, sampleRate);
  try {
    if (!version) throw PlatformError(over, "the file is gone");
    AtomicFile target(over, *version);
    AudioRewrite::Options rewrite = options.rewrite;
    rewrite.isReadBack = true;
    Outcome outcome{
        .rewrite = AudioRewrite::write(audio, InputFile(over), target, rewrite, options.execution)};
    if (options.beforehand) options.beforehand();
    target.commit();
    outcome.metadata = target.takeLosses();
    return outcome;
  } catch (const SavedFileError&) {
    throw;
  } catch (const PlatformError& error) {
    throw InPlaceSaveError::writeFailed(textOf(error));
  } catch (const std::bad_alloc&) {
    throw InPlaceSaveError::writeFailed("couldn't allocate the channel-order buffer");
  }
}

}  // namespace orvane::InPlaceSave
