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

Identified identify(const InputName& file, ProgressObserver& observer) {
  auto description = AudioFile::describe(file.path, &observer);
  auto identity = AudioFileIdentity::fromDescription(description, file.path);
  return {std::move(description), std::move(identity)};
}

std::vector<std::string> channelNames(const AudioFileDescription& description) {
  return shownChannelNames(description.layout, description.dataFormat.channelsPerFrame);
}

std::string identityJson(const InputName& file, const Identified& found) {
  const auto& identity = found.identity;
  JsonOutput::Document document;
  document.add("url", file.display);
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
  std::vector<std::string> warnings;
  for (const auto& warning : found.description.warnings) warnings.push_back(warning.text);
  document.add("warnings", warnings);
  return document.takeLine();
}

void addRow(TextTable& table, const InputName& file, const Identified& found) {
  const auto& format = found.description.dataFormat;
  std::string channels = std::to_string(format.channelsPerFrame);
  constexpr std::size_t kNamed = 8;
  if (format.channelsPerFrame <= kNamed) {
    std::string names;
    for (const auto& name : channelNames(found.description)) names += " " + name;
    channels += ":" + names;
  }
  const Style style = found.identity.isMisnamed() ? Style::yellow : Style::plain;
  table.addRow({{TerminalText::escaped(file.shown())},
                {TerminalText::escaped(found.identity.formatLabel()), style},
                {encodingText(found.identity, found.description.sourceBitDepth)},
                {NumberText::sampleRate(format.sampleRate)},
                {TerminalText::escaped(channels)}});
}

ExitCode runIdentify(const IdentifyOptions& options, Console& console) {
  StandardInput standardInput;
  const auto files = FileList::resolve(options.files, standardInput);
  TextTable table(
      {{"File"}, {"Format"}, {"Encoding"}, {"Rate", TextTable::Alignment::right}, {"Channels"}});
  bool hasRows = false;
  ProgressBar progress(console, files.size(), false);  // only passes interruptions on
  const auto code = FileWork::run(files, {.json = options.json}, console,
                                  [&](const InputName& file) -> FileWork::Report {
                                    const auto observer = progress.forFile(file.shown());
                                    auto found = identify(file, *observer);
                                    std::string document;
                                    if (options.json) document = identityJson(file, found);
                                    return [&, found = std::move(found), document] {
                                      for (const auto& warning : found.description.warnings)
                                        console.warning(file.shown() + ": " + warning.text);
                                      if (options.json) {
                                        console.print(document);
                                      } else {
                                        addRow(table, file, found);
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
  command->add_flag("--json", options->json, "Print one JSON document per file and line")
      ->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runIdentify(*options, console); };
  });
}

}  // namespace orvane::cli
