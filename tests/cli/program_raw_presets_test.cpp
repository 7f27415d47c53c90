#include <set>
#include <thread>

#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;

class ProgramRawPresets : public ProgramTest {
 protected:
  ProgramRawPresets() { folder().write("take.raw", sineSamples(48'000, 0.5)); }

  ProgramEnd runHere(std::vector<std::string> arguments) const {
    ProgramSetup setup;
    setup.arguments = std::move(arguments);
    setup.environment = {"XDG_DATA_HOME=" + folder().path().string()};
    return run(setup);
  }
  ProgramEnd presets(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"raw", "presets"});
    return runHere(std::move(arguments));
  }
  void save(const std::string& name, const std::string& format = "s16le,48000,2") const {
    const ProgramEnd end = presets({"save", name, "--raw", format});
    ASSERT_EQ(end.exitCode, 0) << end.errors;
  }
  Json list() const { return Json::parse(presets({"list", "--json"}).output)["presets"]; }
  std::filesystem::path file() const { return folder() / "Orvane/raw-pcm-presets.json"; }
};

TEST_F(ProgramRawPresets, KeepWhatIsSaved) {
  EXPECT_EQ(presets({"list"}).output,
            "There are no presets; \"orvane raw presets save\" makes one.\n");
  const ProgramEnd end = presets({"save", "Field recorder", "--raw", "s24le,48000,2,skip=512"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.output, "Field recorder: saved, 48 kHz · 2 ch · s24le · skip 512 B\n");
  save("stems", "f32le,96000,6,planar,tolerate=3");
  EXPECT_EQ(presets({"list"}).output,
            "Name            Format\n"
            "Field recorder  48 kHz · 2 ch · s24le · skip 512 B\n"
            "stems           96 kHz · 6 ch · f32le · planar · tolerate 3 B\n");
  EXPECT_EQ(presets({"show", "STEMS"}).output,
            "stems: 96 kHz · 6 ch · f32le · planar · tolerate 3 B\n"
            "--raw f32le,96000,6,planar,tolerate=3\n");
  EXPECT_EQ(presets({"remove", "field RECORDER"}).output,
            "Field recorder: removed, 48 kHz · 2 ch · s24le · skip 512 B\n");
  ASSERT_EQ(list().size(), 1U);
  EXPECT_EQ(list()[0]["name"], "stems");
}

TEST_F(ProgramRawPresets, AreJSONForMachines) {
  const ProgramEnd saved = presets({"save", "a", "--raw", "s16le,48000,2", "--json"});
  const Json preset = Json::parse(saved.output)["preset"];
  EXPECT_EQ(preset["name"], "a");
  EXPECT_EQ(preset["format"]["encoding"], "int16");
  EXPECT_EQ(Json::parse(presets({"show", "A", "--json"}).output)["preset"], preset);
  EXPECT_EQ(list(), Json::array({preset}));
  EXPECT_EQ(Json::parse(orvane::test::readFile(file())), Json::array({preset}));
  EXPECT_EQ(Json::parse(presets({"remove", "a", "--json"}).output)["preset"], preset);
  EXPECT_EQ(list(), Json::array());
}

TEST_F(ProgramRawPresets, ServeWhereverAFormatIsDeclared) {
  save("mine");
  folder().write("labels.txt", "0.25\t0.5\tAnna\n");
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"analyze", "take.raw", "--preset", "MINE"},
        {"raw", "convert", "take.raw", "--preset", "mine", "-o", "take.wav"},
        {"diff", "take.raw", "take.raw", "--preset", "mine"},
        {"diff", "take.raw", "take.raw", "--preset-a", "mine", "--preset-b", "mine"},
        {"diff", "take.raw", "take.raw", "--raw-a", "s16le,48000,2", "--preset-b", "mine"},
        {"dialogue", "import", "labels.txt", "take.raw", "--preset", "Mine"},
        {"raw", "presets", "save", "copy", "--preset", "mine"}}) {
    const ProgramEnd end = runHere(command);
    EXPECT_EQ(end.exitCode, 0) << command[1] << end.errors;
  }
  EXPECT_EQ(list()[1]["format"], list()[0]["format"]);
}

TEST_F(ProgramRawPresets, AreTakenAloneAndOnlyWhenTheyExist) {
  save("mine");
  const auto error = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"analyze", "take.raw"});
    const ProgramEnd end = runHere(options);
    EXPECT_EQ(end.exitCode, 2);
    return end.errors;
  };
  EXPECT_EQ(error({"--preset", "other"}),
            "orvane: --preset: there is none called 'other'; \"orvane raw presets list\" shows "
            "those that there are (see orvane analyze --help)\n");
  const char* const alone =
      "orvane: --preset says all that --raw and the options beside it could say (see orvane "
      "analyze --help)\n";
  EXPECT_EQ(error({"--preset", "mine", "--raw", "s16le,48000,2"}), alone);
  EXPECT_EQ(error({"--preset", "mine", "--rate", "48000"}), alone);
  EXPECT_EQ(error({"--preset", "mine", "--planar"}), alone);
}

TEST_F(ProgramRawPresets, AreRefusedWhereNoFileCanHaveTheirFormat) {
  save("odd");
  std::string text = orvane::test::readFile(file());
  text.replace(text.find("48000"), 5, "-1");
  orvane::test::writeFile(file(), text);
  const ProgramEnd end = runHere({"analyze", "take.raw", "--preset", "odd"});
  EXPECT_EQ(end.exitCode, 2);
  EXPECT_THAT(end.errors, HasSubstr("no file can have the format of 'odd', -1 Hz"));
}

TEST_F(ProgramRawPresets, AreReplacedOnlyOnRequestAndKeepTheirIdAndPlace) {
  save("one");
  save("two");
  save("three");
  const std::string before = orvane::test::readFile(file());
  const ProgramEnd refused = presets({"save", "TWO", "--raw", "u8,8000,1"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.errors,
            "orvane: raw-pcm-presets.json: there is a preset called 'two' already; --force "
            "replaces it\n");
  EXPECT_EQ(orvane::test::readFile(file()), before);
  const std::string id = list()[1]["id"];
  ASSERT_EQ(presets({"save", "TWO", "--raw", "u8,8000,1", "--force"}).exitCode, 0);
  ASSERT_EQ(list().size(), 3U);
  EXPECT_EQ(list()[1]["id"], id);
  EXPECT_EQ(list()[1]["name"], "TWO");
  EXPECT_EQ(list()[1]["format"]["encoding"], "uint8");
}

TEST_F(ProgramRawPresets, AreMissedByName) {
  for (const char* const action : {"show", "remove"}) {
    const ProgramEnd end = presets({action, "none"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.errors, "orvane: raw-pcm-presets.json: there is no preset called 'none'\n");
  }
}

TEST_F(ProgramRawPresets, LeaveAloneAFileThatIsNoList) {
  orvane::test::writeFile(file(), "{\"precious\": true}");
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"list"},
        {"show", "a"},
        {"remove", "a"},
        {"save", "a", "--raw", "s16le,48000,2"},
        {"save", "a", "--raw", "s16le,48000,2", "--force"}}) {
    const ProgramEnd end = presets(command);
    EXPECT_EQ(end.exitCode, 1) << command[0];
    EXPECT_THAT(end.errors, HasSubstr("raw-pcm-presets.json: "));
  }
  const ProgramEnd end = runHere({"analyze", "take.raw", "--preset", "a"});
  EXPECT_EQ(end.exitCode, 2);
  EXPECT_THAT(end.errors, HasSubstr("raw-pcm-presets.json: "));
  EXPECT_EQ(orvane::test::readFile(file()), "{\"precious\": true}");
}

TEST_F(ProgramRawPresets, NeedANameAndAFormat) {
  EXPECT_EQ(presets({"save", "", "--raw", "s16le,48000,2"}).exitCode, 2);
  EXPECT_EQ(presets({"save", "a"}).exitCode, 2);
  EXPECT_EQ(presets({"save"}).exitCode, 2);
  EXPECT_EQ(presets({}).exitCode, 2);
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(ProgramRawPresets, LoseNothingWhenTwelveSaveAtOnce) {
  std::vector<std::thread> savers;
  for (int i = 0; i < 12; ++i) savers.emplace_back([this, i] { save(std::to_string(i)); });
  for (auto& saver : savers) saver.join();
  std::set<std::string> names;
  for (const Json& preset : list()) names.insert(preset["name"].get<std::string>());
  EXPECT_EQ(names.size(), 12U);
}

}  // namespace
}  // namespace orvane::cli::test
