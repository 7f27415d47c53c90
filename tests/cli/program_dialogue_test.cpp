#include <sys/stat.h>

#include "orvane/platform/orvane_resources.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"
#include "tests/cli/program_fixture.h"
#include "tests/speech/dialogue/dialogue_samples.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr const char* kLabels = "0.25\t0.5\tAnna\n0.75\t1\t=cmd\n";

/// good.wav lasts one second at 48 kHz.
class ProgramDialogue : public ProgramTest {
 protected:
  ProgramEnd dialogue(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "dialogue");
    return run(arguments);
  }
  std::filesystem::path audio() const { return folder() / "good.wav"; }
  std::string sidecarText() const {
    return orvane::test::readFile(DialogueSidecarIO::sidecarURL(audio()));
  }
  DialogueSidecar sidecar() const { return DialogueSidecarIO::loadForAudio(audio()).value(); }
  void importLabels() const {
    folder().write("labels.txt", kLabels);
    const auto end = dialogue({"import", "labels.txt", "good.wav"});
    ASSERT_EQ(end.exitCode, 0) << end.errors;
  }
  void saveWithSource(DialogueRegionSource source) const {
    auto saved = orvane::test::sampleSidecar();
    saved.source = source;
    DialogueSidecarIO::saveForAudio(saved, audio());
  }
};

TEST_F(ProgramDialogue, ImportsLabelsAndCSVAlike) {
  folder().write("labels.txt", kLabels);
  folder().write("list.csv", "label,start,end\r\nAnna,0.25,0.5\r\n'=cmd,0.75,1\r\n");
  for (const char* list : {"labels.txt", "list.csv"}) {
    const auto end = dialogue({"import", list, "good.wav", "--force"});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_EQ(end.output, "good.wav: 2 regions, 0:00.500 of dialogue (50.0 %)\n");
    const auto saved = sidecar();
    EXPECT_EQ(saved.source, DialogueRegionSource::imported);
    EXPECT_EQ(saved.audioFile, (DialogueSidecar::AudioFileInfo{"good.wav", 1, 48000}));
    ASSERT_EQ(saved.regions.size(), 2U);
    EXPECT_EQ(saved.regions[0].label, "Anna");
    EXPECT_EQ(saved.regions[1].label, "=cmd");
    EXPECT_TRUE(saved.regions[1].isManual());
  }
}

TEST_F(ProgramDialogue, ImportsFromStandardInputAndByNamedFormat) {
  ProgramSetup setup{.arguments = {"dialogue", "import", "-", "good.wav", "-q"}, .input = kLabels};
  EXPECT_THAT(run(setup).output, IsEmpty());
  EXPECT_EQ(sidecar().regions.size(), 2U);
  folder().write("labels.txt", kLabels);
  const auto end = dialogue({"import", "labels.txt", "good.wav", "--force", "--format", "csv"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("labels.txt: Line 1: "));
}

TEST_F(ProgramDialogue, ImportsForHeaderlessAudio) {
  folder().write("voice.pcm", std::string(48'000, '\0'));
  folder().write("labels.txt", kLabels);
  const auto end = dialogue(
      {"import", "labels.txt", "voice.pcm", "--raw", "s16le", "--rate", "8000", "--channels", "1"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  const auto saved = DialogueSidecarIO::loadForAudio(folder() / "voice.pcm");
  EXPECT_EQ(saved->audioFile, (DialogueSidecar::AudioFileInfo{"voice.pcm", 3, 8000}));
}

TEST_F(ProgramDialogue, NamesTheLineOfABrokenListAndSavesNothing) {
  folder().write("labels.txt", "0\t1\tx\n2\t1\ty\n");
  const auto end = dialogue({"import", "labels.txt", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: labels.txt: Line 2: the end \"1\" lies before the start \"2\".\n");
  EXPECT_FALSE(std::filesystem::exists(folder() / "good.wav.dlg.json"));
}

TEST_F(ProgramDialogue, WarnsOfRegionsBeyondTheEnd) {
  folder().write("labels.txt", "0.5\t1.5\tx\n");
  const auto end = dialogue({"import", "labels.txt", "good.wav"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.errors,
            "orvane: warning: good.wav: some regions reach beyond the end of the file\n");
}

TEST_F(ProgramDialogue, ShowsATimelineAndAList) {
  importLabels();
  const auto end = dialogue({"show", "good.wav"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.errors, IsEmpty());
  EXPECT_THAT(end.output, StartsWith("good.wav\n  Duration  0:01.000, 48 kHz\n"
                                     "  Dialogue  2 regions, 0:00.500 of dialogue (50.0 %)\n"
                                     "  Source    imported\n"));
  EXPECT_THAT(end.output, HasSubstr("█"));
  EXPECT_THAT(end.output, HasSubstr("  2  0:00.750  0:01.000  0:00.250  imported  =cmd\n"));
}

TEST_F(ProgramDialogue, ShowsJSONLinesAndGoesOnBehindAFileWithoutRegions) {
  importLabels();
  folder().write("other.wav", waveFile(sineSamples(480, 0.5)));
  const auto end = dialogue({"show", "--json", "other.wav", "missing.wav", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  const auto documents = jsonLines(end.output);
  ASSERT_EQ(documents.size(), 3U);
  EXPECT_THAT(documents[0].at("error").get<std::string>(),
              StartsWith("other.wav: there are no dialogue regions"));
  EXPECT_EQ(documents[1].at("error"), "missing.wav: No such file or directory");
  EXPECT_EQ(documents[2].at("dialogueSeconds"), 0.5);
  EXPECT_EQ(documents[2].at("sidecar"), Json::parse(sidecarText()));
}

TEST_F(ProgramDialogue, TellsWhenTheAudioIsAnotherOne) {
  importLabels();
  folder().write("good.wav", waveFile(sineSamples(96'000, 0.5)));
  const auto end = dialogue({"show", "good.wav"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.errors,
            "orvane: warning: good.wav: The dialogue regions were made for 0:01.000 at 48 kHz, the "
            "file has 0:02.000 at 48 kHz.\n");
}

TEST_F(ProgramDialogue, RefusesBrokenAndNewerSidecarsInOneSentence) {
  folder().write("good.wav.dlg.json", "{\"schemaVersion\": 1}");
  EXPECT_EQ(dialogue({"show", "good.wav"}).errors,
            "orvane: good.wav.dlg.json: The key \"generator\" is missing.\n");
  auto newer = orvane::test::sampleSidecar();
  newer.schemaVersion = 2;
  DialogueSidecarIO::saveForAudio(newer, audio());
  const auto end = dialogue({"show", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors,
            "orvane: Dialogue sidecar at good.wav.dlg.json is schema v2, this version of Orvane "
            "reads up to v1.\n");
}

TEST_F(ProgramDialogue, ExportsToStandardOutputAndToFiles) {
  importLabels();
  const std::string csv = "start,end,label,origin\r\n0.25,0.5,Anna,drawn\r\n0.75,1,'=cmd,drawn\r\n";
  EXPECT_EQ(dialogue({"export", "good.wav"}).output, csv);
  EXPECT_EQ(dialogue({"export", "good.wav", "--format", "audacity"}).output, kLabels);
  EXPECT_EQ(dialogue({"export", "good.wav", "-o", "out.csv"}).exitCode, 0);
  EXPECT_EQ(orvane::test::readFile(folder() / "out.csv"), csv);
  EXPECT_EQ(dialogue({"export", "good.wav", "-o", "out.txt"}).exitCode, 0);
  EXPECT_EQ(orvane::test::readFile(folder() / "out.txt"), kLabels);
}

TEST_F(ProgramDialogue, OverwritesAnExportOnlyWhenForced) {
  importLabels();
  folder().write("out.csv", "mine");
  const auto end = dialogue({"export", "good.wav", "-o", "out.csv"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("out.csv: File exists"));
  EXPECT_EQ(orvane::test::readFile(folder() / "out.csv"), "mine");
  EXPECT_EQ(dialogue({"export", "good.wav", "-o", "out.csv", "--force"}).exitCode, 0);
  EXPECT_THAT(orvane::test::readFile(folder() / "out.csv"), StartsWith("start,end"));
}

TEST_F(ProgramDialogue, NeverWritesOntoWhatItReads) {
  importLabels();
  const auto before = orvane::test::readFile(audio());
  const auto sidecarBefore = sidecarText();
  std::filesystem::create_symlink("good.wav", folder() / "link.csv");
  for (const char* output : {"good.wav", "link.csv", "./good.wav", "good.wav.dlg.json"}) {
    const auto end = dialogue({"export", "good.wav", "-o", output, "--force"});
    EXPECT_EQ(end.exitCode, 1) << output;
    EXPECT_THAT(end.errors, StartsWith("orvane: Refusing to overwrite source file: input \""));
  }
  std::filesystem::remove(folder() / "good.wav.dlg.json");
  std::filesystem::create_symlink("good.wav", folder() / "good.wav.dlg.json");
  const auto end = dialogue({"import", "labels.txt", "good.wav", "--force"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("Refusing to overwrite source file"));
  EXPECT_EQ(orvane::test::readFile(audio()), before);
  EXPECT_FALSE(sidecarBefore.empty());
}

TEST_F(ProgramDialogue, KeepsRegionsThatSomebodyChangedOrImported) {
  folder().write("labels.txt", kLabels);
  for (const auto& [source, text] :
       {std::pair{DialogueRegionSource::userEdited, "changed by a user"},
        std::pair{DialogueRegionSource::imported, "imported"}}) {
    saveWithSource(source);
    const auto before = sidecarText();
    const auto end = dialogue({"import", "labels.txt", "good.wav"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.errors, std::string("orvane: good.wav: the dialogue regions were ") + text +
                              "; --force replaces them\n");
    EXPECT_EQ(sidecarText(), before);
  }
}

TEST_F(ProgramDialogue, ReplacesRegionsAndKeepsTheirDateOfCreation) {
  folder().write("labels.txt", kLabels);
  saveWithSource(DialogueRegionSource::silero);
  EXPECT_EQ(dialogue({"import", "labels.txt", "good.wav"}).exitCode, 0);
  EXPECT_EQ(sidecar().createdAt, orvane::test::sampleSidecar().createdAt);
  EXPECT_GT(sidecar().modifiedAt, orvane::test::sampleSidecar().modifiedAt);
  EXPECT_EQ(dialogue({"import", "labels.txt", "good.wav", "--force"}).exitCode, 0);
  EXPECT_EQ(sidecar().createdAt, orvane::test::sampleSidecar().createdAt);
}

TEST_F(ProgramDialogue, ReplacesABrokenSidecarOnlyWhenForced) {
  folder().write("labels.txt", kLabels);
  folder().write("good.wav.dlg.json", "broken");
  EXPECT_EQ(dialogue({"import", "labels.txt", "good.wav"}).exitCode, 1);
  EXPECT_EQ(sidecarText(), "broken");
  EXPECT_EQ(dialogue({"import", "labels.txt", "good.wav", "--force"}).exitCode, 0);
  EXPECT_EQ(sidecar().regions.size(), 2U);
}

TEST_F(ProgramDialogue, ClearsTheSidecarAlone) {
  importLabels();
  const auto end = dialogue({"clear", "good.wav"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.output, "good.wav: removed the dialogue regions\n");
  EXPECT_FALSE(std::filesystem::exists(folder() / "good.wav.dlg.json"));
  EXPECT_TRUE(std::filesystem::exists(audio()));
  EXPECT_EQ(dialogue({"clear", "good.wav"}).output, "good.wav: no dialogue regions\n");
}

// The model is no part of the build; both outcomes are those of a right program.
TEST_F(ProgramDialogue, DetectsSpeechOrTellsHowToInstallTheModel) {
  folder().write("quiet.wav", waveFile(sineSamples(96'000, 0)));
  const auto end =
      dialogue({"detect", "quiet.wav", "--min-speech", "0.2", "--vad-threshold", "0.6"});
  const bool isInstalled = OrvaneResources::url("silero_vad_v6", "onnx").has_value();
  const auto saved = DialogueSidecarIO::loadForAudio(folder() / "quiet.wav");
  if (!isInstalled) {
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("orvane: silero_vad_v6.onnx: the speech model is not "
                                       "installed; \"scripts/install-model '"));
    EXPECT_THAT(end.errors, EndsWith("'\" of the source folder installs it\n"));
    EXPECT_FALSE(saved);
    return;
  }
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.output, "quiet.wav: 0 regions, 0:00.000 of dialogue (0.0 %)\n");
  ASSERT_TRUE(saved);
  EXPECT_EQ(saved->source, DialogueRegionSource::silero);
  EXPECT_EQ(saved->generator, "Orvane");
  EXPECT_EQ(saved->audioFile, (DialogueSidecar::AudioFileInfo{"quiet.wav", 2, 48000}));
  EXPECT_EQ(saved->createdAt, saved->modifiedAt);
}

TEST_F(ProgramDialogue, DetectingKeepsChangedRegions) {
  saveWithSource(DialogueRegionSource::userEdited);
  const auto before = sidecarText();
  EXPECT_EQ(dialogue({"detect", "good.wav"}).exitCode, 1);
  EXPECT_EQ(sidecarText(), before);
}

TEST_F(ProgramDialogue, RefusesArgumentsThatMakeNoSense) {
  folder().write("labels.txt", kLabels);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{},
                                             {"find", "good.wav"},
                                             {"show"},
                                             {"show", "-"},
                                             {"detect", "good.wav", "--vad-threshold", "nan"},
                                             {"detect", "good.wav", "--vad-threshold", "1.5"},
                                             {"detect", "good.wav", "--min-speech", "-1"},
                                             {"detect", "good.wav", "--min-silence", "inf"},
                                             {"import", "labels.txt"},
                                             {"import", "labels.txt", "-"},
                                             {"export", "good.wav", "--format", "xml"}}) {
    const auto end = dialogue(arguments);
    EXPECT_EQ(end.exitCode, 2) << end.errors;
    EXPECT_THAT(end.errors, HasSubstr(" (see orvane dialogue"));
    EXPECT_THAT(end.errors, EndsWith(" --help)\n"));
    EXPECT_THAT(end.output, IsEmpty());
  }
}

TEST_F(ProgramDialogue, EveryCommandHasItsHelp) {
  for (const char* command : {"detect", "show", "import", "export", "clear"}) {
    const auto end = dialogue({command, "--help"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, StartsWith(std::string("Usage: orvane dialogue ") + command));
  }
}

TEST_F(ProgramDialogue, AFailedSaveNamesTheFileAndLeavesNothingBehind) {
  folder().write("labels.txt", kLabels);
  std::filesystem::create_directory(folder() / "good.wav.dlg.json");
  const auto end = dialogue({"import", "labels.txt", "good.wav", "--force"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: good.wav.dlg.json: Is a directory\n");
  for (const auto& entry : std::filesystem::directory_iterator(folder().path()))
    EXPECT_FALSE(entry.path().filename().string().starts_with("."));
}

}  // namespace
}  // namespace orvane::cli::test
