#include "orvane/edit/generator_audio_writer.h"

#include <utility>

#include "orvane/container/pcm_file_writer.h"
#include "orvane/core/generator/signal_generator.h"
#include "orvane/edit/edit_result.h"
#include "orvane/edit/pcm_write_settings.h"

namespace orvane::GeneratorAudioWriter {
namespace {

using core::GeneratorBitDepth;
using core::GeneratorContainer;

std::string descriptionOf(WriterError::Case errorCase) {
  switch (errorCase) {
    case WriterError::Case::noChannels:
      return "The render produced no channels.";
    case WriterError::Case::emptyBuffer:
      return "The render produced no samples.";
    case WriterError::Case::ragged:
      return "Channels have unequal lengths; render output must be rectangular.";
    default:
      return {};
  }
}

PCMEncoding encodingOf(GeneratorBitDepth bitDepth) {
  switch (bitDepth) {
    case GeneratorBitDepth::int16:
      return {.bitDepth = 16, .isFloat = false};
    case GeneratorBitDepth::int24:
      return {.bitDepth = 24, .isFloat = false};
    case GeneratorBitDepth::float32:
      break;
  }
  return PCMEncoding::float32;
}

AudioContainer containerOf(GeneratorContainer container) {
  switch (container) {
    case GeneratorContainer::wav:
      return AudioContainer::wave;
    case GeneratorContainer::aiff:
      return AudioContainer::aiff;
    case GeneratorContainer::caf:
      break;
  }
  return AudioContainer::caf;
}

void requireRectangular(const std::vector<std::vector<float>>& channelData) {
  if (channelData.empty()) throw WriterError(WriterError::Case::noChannels);
  if (channelData.front().empty()) throw WriterError(WriterError::Case::emptyBuffer);
  for (const auto& channel : channelData)
    if (channel.size() != channelData.front().size()) throw WriterError(WriterError::Case::ragged);
}

}  // namespace

WriterError::WriterError(Case errorCase)
    : WriterError(errorCase, {}, 0, descriptionOf(errorCase)) {}
WriterError::WriterError(Case errorCase, std::string message, std::int64_t channelCount,
                         const std::string& description)
    : Error(description),
      case_(errorCase),
      message_(std::move(message)),
      channelCount_(channelCount) {}
WriterError::~WriterError() = default;

WriterError WriterError::unsupportedFormat(const std::string& message) {
  return {Case::unsupportedFormat, message, 0, message};
}
WriterError WriterError::bufferBuildFailed(std::int64_t channelCount) {
  return {Case::bufferBuildFailed,
          {},
          channelCount,
          "Couldn't build a " + std::to_string(channelCount) + "-channel output buffer."};
}
WriterError WriterError::writeFailed(const std::string& message) {
  return {Case::writeFailed, message, 0, "Couldn't write the file: " + message};
}

AudioFormatSettings settings(const AudioFormat& format, GeneratorBitDepth bitDepth,
                             GeneratorContainer container) {
  return PCMWriteSettings::make(containerOf(container), format, encodingOf(bitDepth));
}

void renderAndWrite(const core::GeneratorSpec& spec, const std::filesystem::path& url,
                    AtomicFile::Existing existing) {
  spec.validate();
  write(core::SignalGenerator::render(spec), spec.sampleRate, spec.bitDepth, spec.container, url,
        existing);
}

void write(const std::vector<std::vector<float>>& channelData, double sampleRate,
           GeneratorBitDepth bitDepth, GeneratorContainer container,
           const std::filesystem::path& url, AtomicFile::Existing existing) {
  requireRectangular(channelData);
  if (container == GeneratorContainer::aiff && encodingOf(bitDepth).isFloat)
    throw WriterError::unsupportedFormat(
        "AIFF stores integer PCM only. Pick 16- or 24-bit, or use WAV or CAF for 32-bit float.");
  const auto channelCount = static_cast<std::int64_t>(channelData.size());
  const auto discrete = ChannelLayout::fromTag(ChannelLayoutTags::discreteInOrder |
                                               static_cast<ChannelLayoutTag>(channelCount));
  const auto buffer = EditOperations::buildBuffer(
      {channelData, sampleRate, static_cast<int>(channelCount)}, discrete);
  if (!buffer) throw WriterError::bufferBuildFailed(channelCount);
  try {
    PCMFileWriter writer(url, settings(buffer->format(), bitDepth, container),
                         buffer->frameLength(), {.existing = existing});
    writer.write(buffer->view());
    writer.commit();
  } catch (const SavedFileError&) {
    throw;
  } catch (const PlatformError& error) {
    throw WriterError::writeFailed(error.errorDescription());
  }
}

}  // namespace orvane::GeneratorAudioWriter
