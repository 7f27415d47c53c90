// What belongs together: audio, its dialogue regions, the model that found them, and where they
// lie.
#include <sys/stat.h>

#include "orvane/platform/orvane_resources.h"
#include "orvane/speech/detector/speech_model.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"
#include "tests/cli/program_fixture.h"
#include "tests/speech/dialogue/dialogue_samples.h"
#include "tests/support/test_places.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

/// good.wav lasts one second at 48 kHz.
class ProgramSidecars : public ProgramTest {
 protected:
  ProgramSidecars() { folder().write("labels.txt", "0.25\t0.5\tAnna\n"); }

  /// With the folder that is given, if any.
  void import(const std::string& audio, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"dialogue", "import", "labels.txt", audio});
    const auto end = run(options);
    ASSERT_EQ(end.exitCode, 0) << end.errors;
  }
  Json figures(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"analyze", "--json"});
    const auto end = run(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }
};

// The regions of another take were taken for those of this one, without a word.
TEST_F(ProgramSidecars, OfOtherAudioAreToldByEveryCommandThatTakesThem) {
  import("good.wav");
  EXPECT_THAT(figures({"--dialogue", "good.wav"})["notes"], IsEmpty());
  folder().write("good.wav", waveFile(sineSamples(96'000, 0.5)));
  const std::string note =
      "The dialogue regions were made for 0:01.000 at 48 kHz, the file has 0:02.000 at 48 kHz.";
  EXPECT_EQ(run({"dialogue", "show", "good.wav"}).errors,
            "orvane: warning: good.wav: " + note + "\n");
  EXPECT_EQ(figures({"--dialogue", "good.wav"})["notes"], Json::array({note}));
  EXPECT_THAT(run({"analyze", "--dialogue", "good.wav"}).output, HasSubstr("Warning: " + note));
  folder().write("good.wav", waveFile(sineSamples(44'100, 0.5), 2, 44'100));
  EXPECT_THAT(run({"dialogue", "show", "good.wav"}).errors, HasSubstr("0:01.000 at 44.1 kHz."));
}

// Files that end before their header says so were called other files.
TEST_F(ProgramSidecars, OfDamagedAudioBelongToIt) {
  orvane::test::runTool("ffmpeg",
                        {"-v", "error", "-i", folder() / "good.wav", folder() / "a.flac"});
  const auto whole = orvane::test::readFile(folder() / "a.flac");
  folder().write("a.flac", std::string_view(whole).substr(0, whole.size() * 2 / 3));
  for (const char* file : {"a.flac", "good.wav"}) {
    import(file);
    EXPECT_THAT(run({"dialogue", "show", file}).errors, IsEmpty());
    EXPECT_THAT(figures({"--dialogue", file})["notes"], IsEmpty());
  }
  const auto sidecar = DialogueSidecarIO::loadForAudio(folder() / "a.flac");
  EXPECT_EQ(sidecar->audioFile.durationSeconds, figures({"a.flac"})["durationSeconds"]);
  const auto shorter = orvane::test::readFile(folder() / "good.wav");
  folder().write("good.wav", std::string_view(shorter).substr(0, shorter.size() / 2));
  EXPECT_THAT(run({"dialogue", "show", "good.wav"}).errors, HasSubstr("the file has 0:00.499"));
}

TEST_F(ProgramSidecars, LieInAFolderOfTheirOwnWhereAskedFor) {
  std::filesystem::create_directories(folder() / "archive" / "reel");
  for (const char* name : {"archive/01.wav", "archive/reel/01.wav"})
    std::filesystem::copy_file(folder() / "good.wav", folder() / name);
  std::filesystem::permissions(folder() / "archive", std::filesystem::perms::owner_read |
                                                         std::filesystem::perms::owner_exec);
  import("archive/01.wav", {"--sidecars", "kept"});
  import("archive/reel/01.wav", {"--sidecars", "kept"});
  const auto place =
      folder() / "kept" / std::filesystem::canonical(folder() / "archive").relative_path();
  EXPECT_TRUE(DialogueSidecarIO::load(place / "01.wav.dlg.json"));
  EXPECT_TRUE(DialogueSidecarIO::load(place / "reel" / "01.wav.dlg.json"));
  EXPECT_FALSE(std::filesystem::exists(folder() / "archive" / "01.wav.dlg.json"));
  EXPECT_EQ(figures({"--dialogue", "--sidecars", "kept", "archive/01.wav"})["speechPercentage"],
            30);
  EXPECT_THAT(run({"dialogue", "show", "--sidecars", "kept", "archive/01.wav"}).output,
              HasSubstr("Anna"));
  EXPECT_THAT(run({"dialogue", "export", "--sidecars", "kept", "archive/01.wav"}).output,
              HasSubstr("Anna"));
  EXPECT_EQ(
      run({"dialogue", "import", "labels.txt", "archive/01.wav", "--sidecars", "kept"}).exitCode,
      1);
  EXPECT_EQ(run({"dialogue", "clear", "--sidecars", "kept", "archive/01.wav"}).exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(place / "01.wav.dlg.json"));
  EXPECT_EQ(run({"dialogue", "show", "archive/01.wav"}).exitCode, 1);
  EXPECT_EQ(run({"analyze", "--sidecars", "kept", "good.wav"}).exitCode, 2);
  EXPECT_EQ(run({"dialogue", "show", "--sidecars", "", "good.wav"}).exitCode, 2);
  std::filesystem::permissions(folder() / "archive", std::filesystem::perms::owner_all);
}

TEST_F(ProgramSidecars, OfTheDetectorAreNotReplacedByNothingUnasked) {
  folder().write("empty.csv", "start,end,label\r\n");
  auto detected = orvane::test::sampleSidecar();
  detected.source = DialogueRegionSource::silero;
  DialogueSidecarIO::saveForAudio(detected, folder() / "good.wav");
  const auto end = run({"dialogue", "import", "empty.csv", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors,
            "orvane: good.wav: the list is empty and the detected dialogue regions would be lost; "
            "--force replaces them\n");
  EXPECT_EQ(DialogueSidecarIO::loadForAudio(folder() / "good.wav"), detected);
  EXPECT_EQ(run({"dialogue", "import", "empty.csv", "good.wav", "--force"}).exitCode, 0);
  EXPECT_THAT(DialogueSidecarIO::loadForAudio(folder() / "good.wav")->regions, IsEmpty());
  folder().write("other.wav", waveFile(sineSamples(480, 0.5)));
  EXPECT_EQ(run({"dialogue", "import", "empty.csv", "other.wav"}).exitCode, 0);
}

TEST_F(ProgramSidecars, ComeFromListsInUTF16Too) {
  const auto wide = [](std::u16string_view text, bool isBig) {
    std::string bytes;
    for (const char16_t unit : text) {
      const std::string pair = littleEndian(unit, 2);
      bytes += isBig ? std::string(pair.rbegin(), pair.rend()) : pair;
    }
    return bytes;
  };
  folder().write("little.csv",
                 wide(u"\uFEFFstart,end,label\r\n0,0.5,Zo\u00EB \U0001F600\r\n", false));
  folder().write("big.txt", wide(u"\uFEFF0\t0.5\tZo\u00EB \U0001F600\n", true));
  for (const char* list : {"little.csv", "big.txt"}) {
    const auto end = run({"dialogue", "import", list, "good.wav", "--force"});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_EQ(DialogueSidecarIO::loadForAudio(folder() / "good.wav")->regions.at(0).label,
              "Zo\u00EB \U0001F600");
    EXPECT_EQ(run({"analyze", "good.wav", "--chapters", list}).exitCode, 0);
  }
}

TEST_F(ProgramSidecars, AreEscapedOnATerminal) {
  folder().write("labels.txt", "0\t0.5\t\x1B[31mred\u202E\n");
  import("good.wav");
  ProgramSetup setup;
  setup.arguments = {"dialogue", "export", "good.wav", "--format", "audacity"};
  EXPECT_THAT(run(setup).output, HasSubstr("\u202E"));
  setup.isOnTerminal = true;
  EXPECT_THAT(run(setup).output, StartsWith("0\t0.5\t [31mred\\u202E\n"));
  setup.arguments = {"dialogue", "export", "good.wav"};
  EXPECT_THAT(run(setup).output, HasSubstr("0,0.5,\\x1B[31mred\\u202E,drawn\n"));
}

TEST_F(ProgramSidecars, OfAMissingFileCannotBeCleared) {
  const auto end = run({"dialogue", "clear", "missing.wav", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: missing.wav: No such file or directory\n");
  EXPECT_EQ(end.output, "good.wav: no dialogue regions\n");
  import("good.wav");
  std::filesystem::remove(folder() / "good.wav");
  EXPECT_EQ(run({"dialogue", "clear", "good.wav"}).output,
            "good.wav: removed the dialogue regions\n");
}

TEST_F(ProgramSidecars, AreDetectedByTuningsOnlyWhereSpeechIsLookedFor) {
  import("good.wav");
  for (const char* option : {"--vad-threshold", "--min-speech", "--min-silence"}) {
    for (const std::vector<std::string>& choice : {std::vector<std::string>{}, {"--dialogue"}}) {
      std::vector<std::string> arguments = {"analyze", "good.wav", option, "0.5"};
      arguments.insert(arguments.end(), choice.begin(), choice.end());
      const auto end = run(arguments);
      EXPECT_EQ(end.exitCode, 2);
      EXPECT_THAT(end.errors, StartsWith(std::string("orvane: ") + option + " "));
    }
  }
}

TEST_F(ProgramSidecars, AreDetectedInSeveralFilesAtOnce) {
  ASSERT_TRUE(SpeechModel::installed()) << "run scripts/install-model for the speech model";
  std::vector<std::string> arguments = {"dialogue", "detect", "--json", "--jobs", "3"};
  for (int i = 1; i <= 6; ++i) {
    const std::string name = std::to_string(i) + ".wav";
    folder().write(name, waveFile(sineSamples(static_cast<std::size_t>(48'000 * i), 0.1)));
    arguments.push_back(name);
  }
  arguments.insert(arguments.begin() + 7, "missing.wav");
  const auto end = run(arguments);
  EXPECT_EQ(end.exitCode, 1);
  const auto lines = jsonLines(end.output);
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_EQ(lines[1].at("url"), "2.wav");
  EXPECT_EQ(lines[2].at("url"), "missing.wav");
  EXPECT_EQ(lines[6].at("sidecar").at("audioFile").at("durationSeconds"), 6);
  EXPECT_EQ(run({"dialogue", "detect", "1.wav", "--jobs", "0"}).exitCode, 2);
}

// The model under the name that a host ships it by was found by the detector alone, and no figure
// told by which model it came about.
TEST_F(ProgramSidecars, NameTheModelThatEveryCommandFinds) {
  const auto model = SpeechModel::installed();
  ASSERT_TRUE(model) << "run scripts/install-model for the speech model";
  const Json here = {{"version", "6"}, {"sha256", model->hash()}};
  EXPECT_EQ(figures({"--speech", "good.wav"})["speechModel"], here);
  EXPECT_FALSE(figures({"good.wav"}).contains("speechModel"));
  import("good.wav");
  EXPECT_FALSE(figures({"--dialogue", "good.wav"}).contains("speechModel"));

  // A copy of the program beside a model of the other name.
  const std::filesystem::path program = orvane::test::places::program;
  const auto lib = folder() / "lib";
  const auto bundle = lib / "OrvaneHeadless_OrvaneHeadless.bundle";
  std::filesystem::create_directories(bundle);
  std::filesystem::create_directory(folder() / "bin");
  std::filesystem::copy_file(program, folder() / "bin" / "orvane");
  for (const auto& entry :
       std::filesystem::directory_iterator(program.parent_path().parent_path() / "lib"))
    if (!entry.is_directory()) std::filesystem::copy(entry.path(), lib / entry.path().filename());
  std::filesystem::copy_file(model->path, bundle / "silero-vad-unified-256ms-v6.0.0.mlmodelc");
  const auto runCopy = [&](const std::vector<std::string>& arguments) {
    ProgramSetup setup;
    setup.arguments = arguments;
    setup.folder = folder().path();
    return orvane::test::runProgram(folder() / "bin" / "orvane", setup);
  };
  EXPECT_THAT(runCopy({"--version"}).output,
              HasSubstr("Silero VAD 6.0.0, SHA-256 " + model->hash() + "\n"));
  const auto detected = runCopy({"dialogue", "detect", "--json", "--force", "good.wav"});
  EXPECT_EQ(detected.exitCode, 0) << detected.errors;
  EXPECT_EQ(Json::parse(detected.output).at("speechModel"),
            (Json{{"version", "6.0.0"}, {"sha256", model->hash()}}));
  EXPECT_EQ(Json::parse(detected.output).at("sidecar").size(), 8U);
}

}  // namespace
}  // namespace orvane::cli::test
