#include "orvane/analysis/offline_diff_pipeline.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <span>
#include <system_error>
#include <utility>

#include "orvane/audio/audio_source.h"
#include "orvane/container/audio_container.h"
#include "orvane/container/pcm_encoding.h"
#include "orvane/container/pcm_file_writer.h"
#include "orvane/core/decibels.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/edit/pcm_write_settings.h"
#include "orvane/platform/audio_load_limits.h"
#include "orvane/platform/file_descriptor.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/sample_arithmetic.h"
#include "orvane/platform/signal_kernels.h"
#include "orvane/platform/stage_progress.h"
#include "orvane/platform/uuid.h"
#include "orvane/text/number_text.h"

namespace orvane::OfflineDiffPipeline {
namespace {

/// Between two looks at the observer.
constexpr std::size_t kSliceFrames = std::size_t{1} << 20;
/// A piece of both files that stays in the cache while it is measured, subtracted and measured.
constexpr std::size_t kPieceFrames = std::size_t{1} << 14;

/// "44100.0"
std::string rateText(double rate) {
  std::string text = NumberText::plain(rate);
  if (text.find_first_of(".en") == std::string::npos) text += ".0";
  return text;
}

/// Throws what makes a comparison impossible, before any audio is in memory.
void requireComparable(AudioSource& a, AudioSource& b) {
  if (a.format().sampleRate != b.format().sampleRate)
    throw Failure::sampleRateMismatch(a.format().sampleRate, b.format().sampleRate);
  const std::int64_t channelsA = a.format().channelCount, channelsB = b.format().channelCount;
  if (channelsA != channelsB) throw Failure::channelCountMismatch(channelsA, channelsB);
  b.requireLoadable();
  if (AudioLoadLimits::decodedBytes(a.frameLength(), channelsA) +
          AudioLoadLimits::decodedBytes(b.frameLength(), channelsB) >
      AudioLoadLimits::maxDecodedBytes())
    throw Failure::fileTooLarge(b.url());
}

std::shared_ptr<PCMBuffer> readAll(AudioSource& source) {
  auto buffer = source.load();
  if (buffer->frameLength() == 0) throw Failure::emptyFile(source.url());
  return buffer;
}

double integratedLoudness(const PCMBuffer& buffer, StageProgress& progress) {
  core::LoudnessProcessor meter(buffer.sampleRate(), buffer.channelCount());
  const PlanarView audio = buffer.view();
  for (std::size_t first = 0; first < audio.frameCount(); first += kSliceFrames) {
    const std::size_t count = std::min(kSliceFrames, audio.frameCount() - first);
    meter.process(audio.slice(first, count));
    progress.advance(count);
  }
  meter.flushPartialBlock();
  return static_cast<double>(meter.integratedLUFS());
}

float matchingGain(const PCMBuffer& a, const PCMBuffer& b, const Execution& execution) {
  StageProgress progress(execution.observer, "Measuring",
                         std::size_t{a.frameLength()} + b.frameLength());
  std::array<double, 2> loudness{};
  parallelFor(execution.threadCount, loudness.size(),
              [&](std::size_t i) { loudness[i] = integratedLoudness(i == 0 ? a : b, progress); });
  if (!std::isfinite(loudness[0]) || !std::isfinite(loudness[1])) return 1;
  return static_cast<float>(std::pow(10.0, (loudness[0] - loudness[1]) / 20));
}

/// What one channel comes to, before and after.
struct ChannelLevels {
  double sumOfSquaresOfA = 0;
  double sumOfSquares = 0;
  float peak = 0;
};

/// Turns one channel of A into the residual.
ChannelLevels subtract(std::span<float> a, const float* b, float gain, StageProgress& progress) {
  ChannelLevels levels;
  for (std::size_t first = 0; first < a.size(); first += kPieceFrames) {
    const auto piece = a.subspan(first, std::min(kPieceFrames, a.size() - first));
    levels.sumOfSquaresOfA += SignalKernels::runStatistics(piece.data(), piece.size()).sumOfSquares;
    SampleArithmetic::addScaled(piece, b + first, -gain);
    const auto residual = SignalKernels::runStatistics(piece.data(), piece.size());
    levels.sumOfSquares += residual.sumOfSquares;
    levels.peak = std::max(levels.peak, residual.peak);
    progress.advance(piece.size());
  }
  return levels;
}

/// −200 dBFS at least; what is not finite stays so.
float rmsDB(double meanSquare) {
  constexpr double kFloor = 1e-20;  // 10^(-200/10)
  return static_cast<float>(20 * std::log10(std::sqrt(std::max(meanSquare, kFloor))));
}

/// An empty file of this process alone in the folder for temporary files, gone with this object.
class PrivateFile {
 public:
  explicit PrivateFile(const std::string& name) {
    std::error_code failure;
    const auto folder = std::filesystem::temp_directory_path(failure);
    path_ = folder / name;
    if (failure) throw PlatformError(path_, failure);
    const FileDescriptor made(
        open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!made) throw PlatformError(path_, std::error_code(errno, std::generic_category()));
  }
  ~PrivateFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

  const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_{};
};

}  // namespace

Failure::Failure(Case failureCase, std::string description)
    : Error(std::move(description)), case_(failureCase) {}
Failure::~Failure() = default;

Failure Failure::sampleRateMismatch(double a, double b) {
  return {Case::sampleRateMismatch, "Sample rate mismatch: A is " + rateText(a) + " Hz, B is " +
                                        rateText(b) + " Hz. Resample to match before diffing."};
}

Failure Failure::channelCountMismatch(std::int64_t a, std::int64_t b) {
  return {Case::channelCountMismatch, "Channel count mismatch: A has " + std::to_string(a) +
                                          " channels, B has " + std::to_string(b) +
                                          ". Downmix to match before diffing."};
}

Failure Failure::emptyFile(const std::filesystem::path& url) {
  return {Case::emptyFile, "Empty or unreadable file: " + url.filename().string() + "."};
}

Failure Failure::fileTooLarge(const std::filesystem::path& url) {
  return {Case::fileTooLarge,
          "Audio file is too large or its header is invalid: " + url.filename().string() + "."};
}

Result computeDiff(const std::filesystem::path& a, const std::filesystem::path& b,
                   const Options& options) {
  return computeDiff(a, b, options, {});
}

Result computeDiff(const std::filesystem::path& a, const std::filesystem::path& b,
                   const Options& options, const Choices& choices, Detail* detail) {
  const Execution& execution = choices.execution;
  const AudioFileOpenOptions opening{.streamIndex = choices.streamIndex, .execution = execution};
  const auto sourceA = AudioSource::open(a, options.rawFormatA, opening);
  sourceA->requireLoadable();  // A's failures come before B's
  const auto sourceB = AudioSource::open(b, options.rawFormatB, opening);
  requireComparable(*sourceA, *sourceB);
  const auto residual = readAll(*sourceA);  // A, until B is taken from it: nothing else needs it
  const auto bufferB = readAll(*sourceB);
  if (detail != nullptr) {
    const auto found = [](const AudioSource& source, const PCMBuffer& buffer) {
      return Detail::Source{.frameLength = buffer.frameLength(),
                            .layout = buffer.format().layout,
                            .warnings = source.warnings()};
    };
    detail->a = found(*sourceA, *residual);
    detail->b = found(*sourceB, *bufferB);
    detail->offset =
        AlignmentSearch::find(residual->view(), bufferB->view(), residual->sampleRate());
  }

  const float gain = options.matchLoudness ? matchingGain(*residual, *bufferB, execution) : 1.0F;
  residual->setFrameLength(std::min(residual->frameLength(), bufferB->frameLength()));
  const std::size_t frames = residual->frameLength();
  const std::size_t channels = residual->channelCount();
  StageProgress progress(execution.observer, "Comparing", frames * channels);
  std::vector<ChannelLevels> levels(channels);
  parallelFor(execution.threadCount, channels, [&](std::size_t channel) {
    levels[channel] = subtract(residual->room().slice(0, frames).samples(channel),
                               bufferB->view().channel(channel), gain, progress);
  });

  ChannelLevels sum;
  for (const ChannelLevels& channel : levels) {
    sum.sumOfSquaresOfA += channel.sumOfSquaresOfA / static_cast<double>(frames);
    sum.sumOfSquares += channel.sumOfSquares / static_cast<double>(frames);
    sum.peak = std::max(sum.peak, channel.peak);
  }
  const auto overChannels = static_cast<double>(channels);
  if (detail != nullptr) detail->rmsDBOfA = rmsDB(sum.sumOfSquaresOfA / overChannels);
  return {.buffer = residual,
          .sampleRate = residual->sampleRate(),
          .channelCount = static_cast<std::int64_t>(channels),
          .durationSeconds = static_cast<double>(frames) / residual->sampleRate(),
          .residualPeakDB = core::linearToDB(sum.peak),
          .residualRMSDB = rmsDB(sum.sumOfSquares / overChannels),
          .appliedGainB = gain};
}

void writeWAV(const PCMBuffer& buffer, const std::filesystem::path& url,
              AtomicFile::Existing existing) {
  PCMFileWriter writer(
      url, PCMWriteSettings::make(AudioContainer::wave, buffer.format(), PCMEncoding::float32),
      buffer.frameLength(), {.existing = existing});
  writer.write(buffer.view());
  writer.commit();
}

std::vector<std::byte> wavData(const PCMBuffer& buffer) {
  const PrivateFile file("orvane-diff-" + UUID::random().text() + ".wav");
  writeWAV(buffer, file.path());  // which keeps the mode
  const InputFile written(file.path());
  std::vector<std::byte> bytes(written.size());
  written.readExactlyAt(0, bytes);
  return bytes;
}

}  // namespace orvane::OfflineDiffPipeline
