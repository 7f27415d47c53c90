#include "cli/commands/identify_command.h"

#include <memory>
#include <utility>

#include "cli/commands/file_work.h"
#include "cli/commands/measured_file.h"
#include "cli/output/json_output.h"
#include "cli/output/number_text.h"
#include "cli/terminal/progress_bar.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/audio/audio_file_identity.h"
#include "orvane/container/audio_container.h"
#include "orvane/container/audio_file.h"
#include "orvane/container/audio_streams.h"

namespace orvane::json {
ORVANE_JSON_FIELDS(PCMEncoding, bitDepth, isFloat);
}

namespace orvane::cli {
namespace {

struct IdentifyOptions {
  FileList::Request files{};
  bool json = false;
};

struct Identified {
  AudioFileDescription description{};
  AudioFileIdentity identity{};
};

/// All audio streams of a file, the default one among them.
struct IdentifiedStreams {
  std::vector<Identified> all{};
  std::size_t defaultIndex = 0;

  const Identified& standard() const { return all[defaultIndex]; }
};

IdentifiedStreams identify(const InputName& file, ProgressObserver& observer) {
  const auto count = countAudioStreams(file.path, &observer);
  IdentifiedStreams streams{.defaultIndex = static_cast<std::size_t>(count.defaultIndex)};
  for (auto& description : describeAudioStreams(file.path, &observer)) {
    auto identity = AudioFileIdentity::fromDescription(description, file.path);
    streams.all.push_back({std::move(description), std::move(identity)});
  }
  return streams;
}

std::vector<std::string> channelNames(const AudioFileDescription& description) {
  return shownChannelNames(description.layout, description.dataFormat.channelsPerFrame);
}

void addStreams(JsonOutput::Document& document, const IdentifiedStreams& streams) {
  document.add("streamIndex", streams.defaultIndex);
  document.addObjects("streams", streams.all, [&document](const Identified& stream) {
    document.add("formatID", fourCC(stream.identity.formatID));
    document.add("encodingName", stream.identity.encodingName());
    document.add("sampleRate", stream.description.dataFormat.sampleRate);
    document.add("channelCount", stream.description.dataFormat.channelsPerFrame);
    document.add("channelLabels", channelNames(stream.description));
  });
}

std::string identityJson(const InputName& file, const IdentifiedStreams& streams) {
  const Identified& found = streams.standard();
  const auto& identity = found.identity;
  JsonOutput::Document document;
  document.addName(file.display);
  document.add("containerTypeID", fourCC(identity.containerTypeID));
  document.add("containerName", identity.containerName);
  document.add("pathExtension", identity.pathExtension);
  document.add("formatID", fourCC(identity.formatID));
  document.add("codecName", AudioFileIdentity::codecNameForCode(identity.formatID));
  if (identity.pcmEncoding) document.add("pcmEncoding", *identity.pcmEncoding);
  document.add("encodingName", identity.encodingName());
  document.add("formatLabel", identity.formatLabel());
  document.add("isMisnamed", identity.isMisnamed());
  document.add("isRewritableInPlace", identity.isRewritableInPlace());
  document.add("sampleRate", found.description.dataFormat.sampleRate);
  document.add("channelCount", found.description.dataFormat.channelsPerFrame);
  document.add("channelLabels", channelNames(found.description));
  if (found.description.sourceBitDepth > 0)
    document.add("sourceBitDepth", found.description.sourceBitDepth);
  addStreams(document, streams);
  std::vector<std::string> warnings;
  for (const auto& warning : found.description.warnings) warnings.push_back(warning.text);
  document.add("warnings", warnings);
  return document.takeLine();
}

std::string channelText(const AudioFileDescription& description) {
  const auto count = description.dataFormat.channelsPerFrame;
  constexpr std::size_t kNamed = 8;
  std::string text = std::to_string(count);
  if (count > kNamed) return text;
  text += ":";
  for (const auto& name : channelNames(description)) text += " " + name;
  return TerminalText::escaped(text);
}

/// A row per file, and where there are several streams a row for each of them, the default one
/// marked.
void addRows(TextTable& table, const InputName& file, const IdentifiedStreams& streams) {
  const auto& identity = streams.standard().identity;
  const Style style = identity.isMisnamed() ? Style::yellow : Style::plain;
  const auto row = [&table](TextTable::Cell name, TextTable::Cell format, const Identified& found) {
    table.addRow({std::move(name),
                  std::move(format),
                  {encodingText(found.identity, found.description.sourceBitDepth)},
                  {NumberText::sampleRate(found.description.dataFormat.sampleRate)},
                  {channelText(found.description)}});
  };
  const TextTable::Cell name{TerminalText::escaped(file.shown())};
  const TextTable::Cell format{TerminalText::escaped(identity.formatLabel()), style};
  if (streams.all.size() == 1) return row(name, format, streams.standard());
  table.addRow({name, format});
  for (std::size_t i = 0; i < streams.all.size(); ++i)
    row({"  stream " + std::to_string(i) + (i == streams.defaultIndex ? " (default)" : "")}, {},
        streams.all[i]);
}

ExitCode runIdentify(const IdentifyOptions& options, Console& console) {
  StandardInput standardInput;
  const auto files = FileList::resolve(options.files, standardInput);
  TextTable table(
      {{"File"}, {"Format"}, {"Encoding"}, {"Rate", TextTable::Alignment::right}, {"Channels"}});
  bool hasRows = false;
  ProgressBar progress(console, files.size(), false);  // only passes interruptions on
  const auto code = FileWork::run(
      files, {.json = options.json}, console, [&](const InputName& file) -> FileWork::Report {
        const auto observer = progress.forFile(file.shown());
        auto found = identify(file, *observer);
        std::string document;
        if (options.json) document = identityJson(file, found);
        return [&, found = std::move(found), document] {
          for (const auto& warning : found.standard().description.warnings)
            console.warning(file.shown() + ": " + warning.text);
          if (options.json) {
            console.print(document);
          } else {
            addRows(table, file, found);
            hasRows = true;
          }
        };
      });
  if (hasRows) console.print(table.text(console));
  return code;
}

}  // namespace

void addIdentifyCommand(CLI::App& program, ChosenCommand& chosen) {
  auto options = std::make_shared<IdentifyOptions>();
  CLI::App* command = program.add_subcommand(
      "identify", "Tell what files really hold: container, codec, rate and channels");
  addFileArguments(*command, options->files);
  addFolderOption(*command, options->files);
  command->add_flag("--json", options->json, "Print one JSON document per file and line")
      ->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runIdentify(*options, console); };
  });
}

}  // namespace orvane::cli
