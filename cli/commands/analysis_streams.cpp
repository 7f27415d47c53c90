#include "cli/commands/analysis_streams.h"

#include "cli/interruption.h"
#include "orvane/audio/joined_audio_source.h"
#include "orvane/container/audio_streams.h"
#include "orvane/core/channel_order.h"
#include "orvane/platform/error.h"

namespace orvane::cli::AnalysisStreams {
namespace {

/// What the labels say of the loudspeakers; absent without labels.
std::optional<ChannelLayout> layoutOf(const std::vector<std::string>& names,
                                      const InputName& file) {
  if (names.empty()) return std::nullopt;
  std::vector<ChannelLabel> labels;
  for (const auto& name : names) {
    const auto label = core::ChannelOrder::loudspeakerNamed(name);
    if (!label)
      throw PlatformError(file.path,
                          "--channel-labels must name loudspeakers as L, R, C, LFE, Ls, "
                          "Rs where streams are joined, not \"" +
                              name + "\"");
    labels.push_back(*label);
  }
  return ChannelLayout::fromLabels(std::move(labels));
}

}  // namespace

std::vector<InputName> eachByItself(const std::vector<InputName>& files) {
  std::vector<InputName> streams;
  for (const InputName& file : files) {
    if (Interruption::isRequested()) throw Cancelled();
    int count = 1;
    try {
      count = countAudioStreams(file.path).count;
    } catch (const Error&) {
      // Measuring it will say so.
    }
    for (int i = 0; i < count; ++i) {
      streams.push_back(file);
      if (count > 1) streams.back().stream = i;
    }
  }
  return streams;
}

std::unique_ptr<AudioSource> open(const InputName& file, const AnalyzeOptions& options,
                                  const Execution& execution) {
  if (!options.joinedStreams.empty())
    return openJoinedStreams(file.path, options.joinedStreams,
                             layoutOf(options.parts.parts.channelLabels, file), execution);
  const auto stream = file.stream ? file.stream : options.source.streamIndex;
  return AudioSource::open(file.path, options.source.rawFormat,
                           {.streamIndex = stream, .execution = execution});
}

void describe(MeasuredFile& measured, const AnalyzeOptions& options, ProgressObserver& observer) {
  if (options.source.rawFormat) return;
  const auto streams = countAudioStreams(measured.name.path, &observer);
  measured.streamCount = streams.count;
  measured.streams = options.joinedStreams;
  if (measured.streams.empty())
    measured.streams = {
        measured.name.stream.value_or(options.source.streamIndex.value_or(streams.defaultIndex))};
}

}  // namespace orvane::cli::AnalysisStreams
