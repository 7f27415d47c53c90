#include <future>

#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;

std::string chunk(const std::string& id, const std::string& body) {
  return id + littleEndian(body.size(), 4) + body + std::string(body.size() % 2, '\0');
}

class ProgramInPlace : public ProgramTest {
 protected:
  /// Two seconds with two markers, a time reference and a chunk that nobody knows.
  ProgramInPlace() {
    const auto point = [](int id, int frame) {
      return littleEndian(static_cast<unsigned>(id), 4) +
             littleEndian(static_cast<unsigned>(frame), 4) + "data" + std::string(8, '\0') +
             littleEndian(static_cast<unsigned>(frame), 4);
    };
    std::string bytes = waveFile(sineSamples(96'000, 0.25));
    bytes += chunk("cue ", littleEndian(2, 4) + point(1, 12'000) + point(2, 72'000));
    bytes += chunk("LIST", "adtl" + chunk("labl", littleEndian(1, 4) + std::string("In\0", 3)) +
                               chunk("labl", littleEndian(2, 4) + std::string("Out\0", 4)));
    bytes += chunk("bext", std::string(338, '\0') + littleEndian(1'000'000, 8) +
                               littleEndian(1, 2) + std::string(254, '\0'));
    bytes += chunk("mine", "nobody knows this");
    bytes.replace(4, 4, littleEndian(bytes.size() - 8, 4));
    folder().write("take.wav", bytes);
  }

  ProgramEnd edit(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "edit");
    return run(arguments);
  }
  /// Of the cue points, in seconds.
  std::vector<double> markers(const std::string& name) const {
    const ProgramEnd end = run({"analyze", "--json", name, "--chapters-from-file"});
    const Json document = Json::parse(end.output);
    std::vector<double> places;
    for (const Json& chapter : document["chapters"]["entries"])
      places.push_back(chapter["startSec"].get<double>());
    return places;
  }
  std::string content(const std::string& name) const {
    return orvane::test::readFile(folder() / name);
  }
};

TEST_F(ProgramInPlace, KeepsChunksAndMovesWhatSpeaksOfFrames) {
  const ProgramEnd end = edit({"trim", "0.5", "2", "take.wav", "--in-place"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, HasSubstr("take.wav: WAV, 16-bit integer, 48 kHz, 2 channels, 0:01.500"));
  EXPECT_THAT(end.errors, HasSubstr("In"));  // its marker lay in what is gone
  EXPECT_THAT(content("take.wav"), HasSubstr("nobody knows this"));
  const ProgramEnd chapters = run({"analyze", "--json", "take.wav", "--chapters-from-file"});
  const Json document = Json::parse(chapters.output);
  ASSERT_EQ(document["chapters"]["entries"].size(), 1U);
  EXPECT_EQ(document["chapters"]["entries"][0]["name"], "Out");
  EXPECT_NEAR(document["chapters"]["entries"][0]["startSec"].get<double>(), 1.0, 1e-9);
  const std::string file = content("take.wav");
  EXPECT_EQ(file.substr(file.find("bext") + 8 + 338, 8), littleEndian(1'024'000, 8));
}

TEST_F(ProgramInPlace, ChangesNoByteOutsideOfWhatIsEdited) {
  const std::string before = content("take.wav");
  EXPECT_EQ(
      edit({"gain", "-6", "take.wav", "--from", "1", "--to", "1.5", "--in-place", "-q"}).exitCode,
      0);
  const std::string after = content("take.wav");
  ASSERT_EQ(after.size(), before.size());
  constexpr std::size_t kAudio = 44;
  for (std::size_t i = 0; i < after.size(); ++i) {
    const bool isEdited = i >= kAudio + 48'000 * 4 && i < kAudio + 72'000 * 4;
    ASSERT_TRUE(isEdited || after[i] == before[i]) << i;
  }
  EXPECT_NE(after, before);
}

TEST_F(ProgramInPlace, KeepsACopyOnRequest) {
  const std::string before = content("take.wav");
  EXPECT_EQ(edit({"invert", "take.wav", "--in-place", "--backup", "-q"}).exitCode, 0);
  EXPECT_EQ(content("take.wav.bak"), before);
  EXPECT_NE(content("take.wav"), before);
  const std::string edited = content("take.wav");
  const ProgramEnd again = edit({"invert", "take.wav", "--in-place", "--backup", "-q"});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_EQ(again.errors, "orvane: take.wav.bak: File exists; --force replaces it\n");
  EXPECT_EQ(content("take.wav"), edited);
}

/// A copy once stayed of a file that was not saved, and was in the way of the next one.
TEST_F(ProgramInPlace, KeepsNoCopyOfWhatIsNotSaved) {
  std::filesystem::rename(folder() / "take.wav", folder() / "take.caf");
  for (const std::string more : {"--backup", "--dry-run"}) {
    const ProgramEnd end = edit({"invert", "take.caf", "--in-place", more});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, HasSubstr("Inside, this file is a WAVE container"));
    EXPECT_FALSE(std::filesystem::exists(folder() / "take.caf.bak"));
  }
}

TEST_F(ProgramInPlace, SavesIntoANewFileOfTheSameKindJustSo) {
  const std::string before = content("take.wav");
  const ProgramEnd copied = edit({"trim", "0.5", "2", "take.wav", "-o", "new.wav", "--json"});
  EXPECT_EQ(copied.exitCode, 0) << copied.errors;
  EXPECT_EQ(content("take.wav"), before);
  const Json document = Json::parse(copied.output);
  EXPECT_EQ(document["leftBehind"], Json::array());
  EXPECT_EQ(document["warnings"], Json({"1 marker lay in removed audio and is gone: In",
                                        "The time reference (bext) is now 24000 frames later"}));
  EXPECT_EQ(copied.errors,
            "orvane: warning: new.wav: 1 marker lay in removed audio and is gone: In\n"
            "orvane: warning: new.wav: The time reference (bext) is now 24000 frames later\n");
  EXPECT_EQ(edit({"trim", "0.5", "2", "take.wav", "--in-place", "-q"}).exitCode, 0);
  EXPECT_TRUE(content("new.wav") == content("take.wav"));
  const ProgramEnd again = edit({"invert", "take.wav", "-o", "new.wav"});
  EXPECT_EQ(again.errors, "orvane: new.wav: File exists; --force replaces it\n");
}

TEST_F(ProgramInPlace, KeepsChunksWhereSamplesAreStoredAnotherWay) {
  const ProgramEnd end = edit({"trim", "0", "1", "take.wav", "-o", "new.wav", "--encoding", "f32"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, HasSubstr("new.wav: WAV, 32-bit float, 48 kHz, 2 channels, 0:01.000"));
  EXPECT_EQ(end.errors,
            "orvane: warning: new.wav: 1 marker lay in removed audio and is gone: Out\n");
  EXPECT_THAT(content("new.wav"), HasSubstr("nobody knows this"));
  EXPECT_THAT(markers("new.wav"), testing::ElementsAre(0.25));
  edit({"trim", "0", "1", "take.wav", "-o", "same.wav", "-q"});
  const ProgramEnd difference = run({"diff", "same.wav", "new.wav", "--at-most", "-190"});
  EXPECT_EQ(difference.exitCode, 0) << difference.output;

  const ProgramEnd sliced = edit({"trim", "0", "1", "take.wav", "-o", "sliced.wav", "--encoding",
                                  "f32", "--memory", "0", "-q"});
  EXPECT_EQ(sliced.exitCode, 0) << sliced.errors;
  EXPECT_TRUE(content("sliced.wav") == content("new.wav"));

  folder().write("more.wav", waveFile(sineSamples(24'000, 0.5)));
  const ProgramEnd spliced =
      run({"splice", "append", "take.wav", "more.wav", "-o", "long.wav", "--encoding", "s24"});
  EXPECT_EQ(spliced.errors, "");
  EXPECT_THAT(content("long.wav"), HasSubstr("nobody knows this"));
  EXPECT_THAT(markers("long.wav"), testing::ElementsAre(0.25, 1.5));
}

TEST_F(ProgramInPlace, GivesTheChunksToEachChannelOfAFileThatIsSplit) {
  const ProgramEnd end =
      edit({"trim", "0.5", "2", "take.wav", "-o", "one.wav", "--then", "split", "--json"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, HasSubstr("\"leftBehind\":[]"));
  for (const std::string channel : {"L", "R"}) {
    const std::string name = "one." + channel + ".wav";
    EXPECT_THAT(end.errors, HasSubstr(name + ": 1 marker lay in removed audio and is gone: In\n"));
    EXPECT_THAT(content(name), HasSubstr("nobody knows this"));
    EXPECT_THAT(markers(name), testing::ElementsAre(1));
    const Json measured = Json::parse(run({"analyze", "--json", name}).output);
    EXPECT_EQ(measured["channelCount"], 1);
    EXPECT_EQ(measured["durationSeconds"], 1.5);
  }
  ASSERT_EQ(edit({"split", "take.wav", "-o", "two.caf", "-q"}).exitCode, 0);
  EXPECT_THAT(content("two.L.caf"), testing::Not(HasSubstr("nobody knows this")));
  EXPECT_EQ(edit({"split", "take.wav", "-o", "three.caf"}).errors,
            "orvane: warning: take.wav: these chunks are left behind: cue, LIST, bext, mine\n");
}

TEST_F(ProgramInPlace, ForeseesWhatBecomesOfChunks) {
  folder().write("more.wav", waveFile(sineSamples(24'000, 0.5)));
  const std::vector<std::vector<std::string>> kEdits = {
      {"edit", "trim", "0.5", "2", "take.wav", "-o", "new.wav"},
      {"edit", "trim", "0.5", "2", "take.wav", "-o", "new.wav", "--encoding", "f32"},
      {"edit", "trim", "0.5", "2", "take.wav", "-o", "new.wav", "--update-loudness"},
      {"edit", "trim", "0.5", "2", "take.wav", "-o", "new.wav", "--then", "split"},
      {"edit", "gain", "-3", "take.wav", "--in-place"},
      {"edit", "trim", "0", "2", "take.wav", "--in-place"},
      {"splice", "replace", "--from", "0.2", "--to", "0.3", "take.wav", "more.wav", "--in-place"}};
  std::string loud = content("take.wav");
  loud[loud.find("bext") + 8 + 346] = 2;
  for (const auto& arguments : kEdits) {
    folder().write("take.wav", loud);
    auto asked = arguments;
    asked.emplace_back("--dry-run");
    const ProgramEnd foreseen = run(asked);
    EXPECT_EQ(foreseen.exitCode, 0);
    EXPECT_TRUE(content("take.wav") == loud);
    const ProgramEnd done = run(arguments);
    EXPECT_EQ(foreseen.errors, done.errors) << testing::PrintToString(arguments);
    const bool keepsAll = arguments[1] == "trim" && arguments[2] == "0";
    EXPECT_EQ(done.errors.empty(), keepsAll);
    std::filesystem::remove(folder() / "new.wav");
  }
}

TEST_F(ProgramInPlace, SplicesATakeIn) {
  folder().write("more.wav", waveFile(sineSamples(24'000, 0.5)));
  const std::string before = content("take.wav");
  const ProgramEnd end = run({"splice", "insert", "--at", "1", "take.wav", "more.wav", "--in-place",
                              "--backup", "--crossfade", "0"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.errors, "");
  EXPECT_THAT(end.output, HasSubstr("take.wav: WAV, 16-bit integer, 48 kHz, 2 channels, 0:02.500"));
  EXPECT_EQ(content("take.wav.bak"), before);
  EXPECT_THAT(content("take.wav"), HasSubstr("nobody knows this"));
  EXPECT_THAT(markers("take.wav"), testing::ElementsAre(0.25, 2));
}

TEST_F(ProgramInPlace, NamesTheMarkersThatATakeReplaces) {
  folder().write("more.wav", waveFile(sineSamples(24'000, 0.5)));
  const std::vector<std::string> replace = {"splice", "replace",  "--from",   "0.2", "--to",
                                            "0.3",    "take.wav", "more.wav", "-q"};
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), replace.begin(), replace.end());
    return run(more);
  };
  EXPECT_THAT(with({"-o", "new.wav"}).errors, HasSubstr("1 marker lay in removed audio"));
  const ProgramEnd end = with({"--in-place"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.errors,
            "orvane: warning: take.wav: 1 marker lay in removed audio and is gone: In\n");
  EXPECT_EQ(markers("take.wav").size(), 1U);
  EXPECT_TRUE(content("new.wav") == content("take.wav"));
}

TEST_F(ProgramInPlace, TakesNoTakeForTheRecordingAndChoosesNothingAnew) {
  folder().write("more.wav", waveFile(sineSamples(240, 0.5)));
  const struct {
    std::vector<std::string> more;
    int exitCode;
    std::string text;
  } kCases[] = {{{"more.wav"}, 2, "-o OUT or --in-place"},
                {{"more.wav", "-o", "b.wav", "--backup"}, 2, "--backup goes with --in-place"},
                {{"more.wav", "--in-place", "--encoding", "f32"}, 2, "keeps container"},
                {{"take.wav", "--in-place"}, 1, "Refusing to overwrite source file"}};
  const std::string before = content("take.wav");
  for (const auto& c : kCases) {
    std::vector<std::string> arguments = {"splice", "append", "take.wav"};
    arguments.insert(arguments.end(), c.more.begin(), c.more.end());
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, c.exitCode) << c.text;
    EXPECT_THAT(end.errors, HasSubstr(c.text));
    EXPECT_EQ(content("take.wav"), before);
  }
}

/// A figure of the broadcast extension.
double statedFigure(const std::string& file, int index) {
  const std::size_t at = file.find("bext") + 8 + 412 + 2 * static_cast<std::size_t>(index);
  const auto low = static_cast<unsigned char>(file[at]);
  return static_cast<std::int16_t>(low | static_cast<unsigned char>(file[at + 1]) << 8) / 100.0;
}

TEST_F(ProgramInPlace, StatesTheLoudnessThatMeasuringGives) {
  const std::string original = content("take.wav");
  folder().write("plain.wav", waveFile(sineSamples(240'000, 0.25)));
  const std::vector<std::vector<std::string>> kEdits = {
      {"edit", "loudness", "take.wav", "--in-place"},
      {"edit", "loudness", "plain.wav", "--in-place"},
      {"edit", "gain", "20", "plain.wav", "-o", "out.wav", "--update-loudness"},
      {"splice", "append", "take.wav", "out.wav", "--in-place", "--update-loudness"}};
  for (const auto& arguments : kEdits) {
    const std::string file = arguments[1] == "gain"     ? "out.wav"
                             : arguments[1] == "append" ? "take.wav"
                                                        : arguments[2];
    const ProgramEnd end = run(arguments);
    ASSERT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.output, HasSubstr("Stated in bext: "));
    const Json measured = Json::parse(run({"analyze", "--json", file}).output);
    const char* keys[] = {"integratedLUFS", "loudnessRange", "truePeakDB", "maxMomentaryLUFS",
                          "maxShortTermLUFS"};
    for (int i = 0; i < 5; ++i) {
      SCOPED_TRACE(file + ", " + keys[i]);
      if (measured[keys[i]].is_null()) continue;
      EXPECT_NEAR(statedFigure(content(file), i), measured[keys[i]].get<double>(), 0.005001);
    }
    EXPECT_EQ(content(file)[content(file).find("bext") + 8 + 346], 2);
  }
  EXPECT_THAT(content("take.wav"), HasSubstr("nobody knows this"));
  EXPECT_EQ(statedFigure(original, 0), 0);
}

TEST_F(ProgramInPlace, SaysLoudnessAsJSON) {
  const ProgramEnd end = run({"edit", "loudness", "take.wav", "-o", "new.wav", "--json"});
  ASSERT_EQ(end.exitCode, 0) << end.errors;
  const Json document = Json::parse(end.output);
  EXPECT_EQ(document["edits"], Json::array());
  EXPECT_NEAR(document["statedIntegratedLUFS"].get<double>(), statedFigure(content("new.wav"), 0),
              0.0051);
  EXPECT_TRUE(document.contains("statedMaxShortTermLUFS"));
  EXPECT_EQ(document["warnings"], Json::array());
}

TEST_F(ProgramInPlace, SaysWhereLoudnessHasNoPlace) {
  ASSERT_EQ(edit({"invert", "take.wav", "-o", "take.caf", "-q"}).exitCode, 0);
  const std::string before = content("take.caf");
  const ProgramEnd end = edit({"loudness", "take.caf", "--in-place"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(
      end.errors,
      "orvane: take.caf: only WAV, RF64, BW64 and Wave64 files have a place for the loudness\n");
  EXPECT_EQ(content("take.caf"), before);
  const ProgramEnd other = edit({"loudness", "take.caf", "-o", "new.wav"});
  EXPECT_EQ(other.exitCode, 1);
  EXPECT_THAT(other.errors, HasSubstr("only stated in files of the source's container"));
  EXPECT_EQ(edit({"loudness", "take.wav"}).exitCode, 2);
}

/// Each that says so has saved, on top of those before; the others are told.
TEST_F(ProgramInPlace, LosesNoEditWhenManySaveAtOnce) {
  constexpr int kSavers = 6;
  folder().write("take.wav", waveFile(sineSamples(960, 0.5)));
  const std::string original = content("take.wav");
  ASSERT_EQ(edit({"invert", "take.wav", "-o", "inverted.wav", "-q"}).exitCode, 0);
  for (int round = 0; round < 5; ++round) {
    folder().write("take.wav", original);
    std::vector<std::future<ProgramEnd>> savers;
    for (int i = 0; i < kSavers; ++i)
      savers.push_back(std::async(std::launch::async, [&] {
        return edit({"invert", "take.wav", "--in-place", "-q"});
      }));
    int saved = 0;
    for (auto& saver : savers) {
      const ProgramEnd end = saver.get();
      saved += end.exitCode == 0 ? 1 : 0;
      if (end.exitCode == 0) continue;
      EXPECT_EQ(end.errors,
                "orvane: Saving failed and the original file was left unchanged: the file was "
                "changed by another program meanwhile\n");
    }
    EXPECT_GT(saved, 0);
    EXPECT_TRUE(content("take.wav") == (saved % 2 == 0 ? original : content("inverted.wav")));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder().path()), {}), 3);
  }
}

TEST_F(ProgramInPlace, WritesNothingWhenOnlyAsked) {
  const std::string before = content("take.wav");
  const ProgramEnd end = edit({"gain", "-6", "take.wav", "--in-place", "--dry-run"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(content("take.wav"), before);
}

TEST_F(ProgramInPlace, SaysWhatIsWrongInOneSentence) {
  folder().write("take.raw", sineSamples(4800, 0.5));
  folder().write("au.au",
                 ".snd" + std::string("\0\0\0\x18\0\0\0\x08\0\0\0\x03\0\0\xBB\x80\0\0\0\1", 20) +
                     std::string(8, '\0'));
  std::filesystem::copy(folder() / "take.wav", folder() / "take.caf");
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string text;
  } kCases[] = {
      {{"gain", "1", "take.wav"}, 2, "-o OUT or --in-place"},
      {{"gain", "1", "take.wav", "-o", "b.wav", "--in-place"}, 2, "-o OUT or --in-place"},
      {{"gain", "1", "take.wav", "-o", "b.wav", "--backup"}, 2, "--backup goes with --in-place"},
      {{"gain", "1", "take.wav", "--in-place", "--container", "caf"}, 2, "keeps container"},
      {{"gain", "1", "take.wav", "--in-place", "--encoding", "s24"}, 2, "keeps container"},
      {{"split", "take.wav", "--in-place"}, 2, "split is not done in place"},
      {{"gain", "1", "take.raw", "--raw", "s16le,48000,2", "--in-place"}, 2, "headerless"},
      {{"gain", "1", "au.au", "--in-place"}, 1, "only linear PCM in WAV, AIFF and CAF"},
      {{"gain", "1", "take.caf", "--in-place"},
       1,
       "Inside, this file is a WAVE container, not WAV, AIFF, or CAF"}};
  for (const auto& c : kCases) {
    const std::string before = content("take.wav");
    const ProgramEnd end = edit(c.arguments);
    EXPECT_EQ(end.exitCode, c.exitCode) << c.text;
    EXPECT_THAT(end.errors, HasSubstr(c.text));
    EXPECT_EQ(content("take.wav"), before);
  }
}

}  // namespace
}  // namespace orvane::cli::test
