#include "cli/commands/identify_command.h"

#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "cli/commands/file_work.h"
#include "cli/commands/job_runner.h"
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
#include "orvane/core/pcm_buffer_allocation.h"

namespace orvane::json {
ORVANE_JSON_FIELDS(PCMEncoding, bitDepth, isFloat);
}

namespace orvane::cli {
namespace {

struct IdentifyOptions {
  FileList::Request files{};
  bool verify = false;
  bool json = false;
};

/// What reading a file to its end has shown.
struct Verification {
  std::int64_t frameCount = 0;
  std::optional<bool> checksumHolds{};  ///< absent when the file states none
  std::vector<AudioFileWarning> warnings{};

  bool isComplete() const { return checksumHolds.value_or(true) && warnings.empty(); }
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

Verification verify(const InputName& file, ProgressObserver& observer) {
  constexpr std::uint32_t kPieceFrames = 1U << 16;
  const auto audio = AudioFile::open(
      file.path,
      {.verifiesChecksum = true,
       .execution = {.threadCount = JobRunner::threadsPerJob(1), .observer = &observer}});
  const auto piece = core::PCMBufferAllocation::make(audio->processingFormat(), kPieceFrames);
  if (!piece) throw std::bad_alloc();
  Verification found;
  do {
    audio->read(*piece);
    found.frameCount += piece->frameLength();
  } while (piece->frameLength() > 0);
  found.checksumHolds = audio->checksumHolds();
  found.warnings = audio->description().warnings;
  return found;
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

std::string identityJson(const InputName& file, const IdentifiedStreams& streams,
                         const std::optional<Verification>& verification) {
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
  if (verification) {
    document.add("frameCount", verification->frameCount);
    if (verification->checksumHolds) document.add("checksumHolds", *verification->checksumHolds);
    document.add("isComplete", verification->isComplete());
  }
  std::vector<std::string> warnings;
  for (const auto& warning : (verification ? verification->warnings : found.description.warnings))
    warnings.push_back(warning.text);
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

/// What the file's audio turned out to be.
TextTable::Cell verificationCell(const Verification& verification) {
  if (!verification.warnings.empty()) return {"damaged", Style::red};
  if (!verification.checksumHolds.value_or(true)) return {"changed", Style::red};
  return {verification.checksumHolds ? "as encoded" : "complete", Style::green};
}

/// A row per file, and where there are several streams a row for each of them, the default one
/// marked.
void addRows(TextTable& table, const InputName& file, const IdentifiedStreams& streams,
             const std::optional<Verification>& verification) {
  const auto& identity = streams.standard().identity;
  const Style style = identity.isMisnamed() ? Style::yellow : Style::plain;
  const auto row = [&](TextTable::Cell name, TextTable::Cell format, const Identified& found) {
    std::vector<TextTable::Cell> cells = {
        std::move(name),
        std::move(format),
        {encodingText(found.identity, found.description.sourceBitDepth)},
        {NumberText::sampleRate(found.description.dataFormat.sampleRate)},
        {channelText(found.description)}};
    // The one that is read is the default stream.
    if (verification && &found == &streams.standard())
      cells.push_back(verificationCell(*verification));
    table.addRow(std::move(cells));
  };
  const TextTable::Cell name{TerminalText::escaped(file.shown())};
  const TextTable::Cell format{TerminalText::escaped(identity.formatLabel()), style};
  if (streams.all.size() == 1) return row(name, format, streams.standard());
  table.addRow({name, format});
  for (std::size_t i = 0; i < streams.all.size(); ++i)
    row({"  stream " + std::to_string(i) + (i == streams.defaultIndex ? " (default)" : "")}, {},
        streams.all[i]);
}

/// Says what is wrong with a file's audio.
void tellOfDamage(const InputName& file, const Verification& verification, Console& console) {
  if (!verification.checksumHolds.value_or(true))
    console.error(file.shown() +
                  ": the audio is not what was encoded: it does not have the stated MD5");
  for (const auto& warning : verification.warnings)
    console.error(file.shown() + ": " + warning.text);
}

ExitCode runIdentify(const IdentifyOptions& options, Console& console) {
  StandardInput standardInput;
  const auto files = FileList::resolve(options.files, standardInput);
  std::vector<TextTable::Column> columns = {
      {"File"}, {"Format"}, {"Encoding"}, {"Rate", TextTable::Alignment::right}, {"Channels"}};
  if (options.verify) columns.push_back({"Audio"});
  TextTable table(columns);
  bool hasRows = false;
  ExitCode verified = ExitCode::done;
  ProgressBar progress(console, files.size(), options.verify);
  const auto code = FileWork::run(
      files, {.json = options.json}, console, [&](const InputName& file) -> FileWork::Report {
        const auto observer = progress.forFile(file.shown());
        auto found = identify(file, *observer);
        std::optional<Verification> verification;
        if (options.verify) verification = verify(file, *observer);
        std::string document;
        if (options.json) document = identityJson(file, found, verification);
        return [&, found = std::move(found), verification = std::move(verification), document] {
          if (!verification)
            for (const auto& warning : found.standard().description.warnings)
              console.warning(file.shown() + ": " + warning.text);
          else if (!verification->isComplete()) {
            tellOfDamage(file, *verification, console);
            verified = ExitCode::fileFailed;
          }
          if (options.json) {
            console.print(document);
          } else {
            addRows(table, file, found, verification);
            hasRows = true;
          }
        };
      });
  if (hasRows) console.print(table.text(console));
  return worse(code, verified);
}

}  // namespace

void completeIdentifyCommand(CLI::App& command, ChosenCommand& chosen) {
  auto options = std::make_shared<IdentifyOptions>();
  addFileArguments(command, options->files);
  addFolderOption(command, options->files);
  command
      .add_flag("--verify", options->verify,
                "Decode to the end: find damage, and check the MD5 that a FLAC states")
      ->group("Input");
  command.add_flag("--json", options->json, "Print one JSON document per file and line")
      ->group("Output");
  command.callback([options, &chosen] {
    chosen = [options](Console& console) { return runIdentify(*options, console); };
  });
}

}  // namespace orvane::cli
