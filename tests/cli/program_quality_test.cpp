#include "tests/cli/program_fixture.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// What the table notes and JSON tells of the audio itself.
class ProgramQuality : public ProgramTest {
 protected:
  std::string table(const std::string& name) const { return run({"analyze", name}).output; }
  Json figures(const std::string& name) const {
    return jsonLines(run({"analyze", name, "--json"}).output).at(0);
  }
};

TEST_F(ProgramQuality, NotesSilence) {
  const auto silence = [](std::size_t frames) { return std::string(frames * 4, '\0'); };
  folder().write("gaps.wav",
                 waveFile(silence(72'000) + sineSamples(48'000, 0.5) + silence(168'000) +
                          sineSamples(48'000, 0.5) + silence(96'000)));
  EXPECT_THAT(table("gaps.wav"), HasSubstr("  Note: Silent for 1.5 s at the head.\n"
                                           "  Note: Silent for 2.0 s at the tail.\n"
                                           "  Note: Longest gap of silence: 3.5 s at 0:02.500.\n"));
  const auto found = figures("gaps.wav");
  EXPECT_NEAR(found.at("headSilenceSeconds").get<double>(), 1.5, 1e-3);
  EXPECT_NEAR(found.at("tailSilenceSeconds").get<double>(), 2, 1e-3);
  EXPECT_NEAR(found.at("longestGapSeconds").get<double>(), 3.5, 1e-3);
  EXPECT_NEAR(found.at("longestGapStartSeconds").get<double>(), 2.5, 1e-3);
  EXPECT_EQ(figures("good.wav").at("longestGapSeconds"), 0);
  folder().write("silence.wav", waveFile(silence(48'000)));
  EXPECT_THAT(table("silence.wav"), HasSubstr("  Note: All of it is silent.\n"));
}

TEST_F(ProgramQuality, NotesChannelsThatAreDeadAlikeOrInverted) {
  EXPECT_THAT(table("good.wav"), HasSubstr("  Note: Channels L and R are identical.\n"));
  EXPECT_EQ(figures("good.wav").at("identicalChannels").at(0).at("second"), 1);
  std::string oneSided;
  for (int i = 0; i < 48'000; ++i)
    oneSided += littleEndian(i % 2 == 0 ? 9'000 : 0, 2) + std::string(2, '\0');
  folder().write("dead.wav", waveFile(oneSided));
  EXPECT_THAT(table("dead.wav"), HasSubstr("  Note: Channel R is silent.\n"));
  EXPECT_EQ(figures("dead.wav").at("silentChannels").at(0), 1);
  std::string opposite;
  for (int i = 0; i < 48'000; ++i) {
    const int value = i % 7 * 1'000 - 3'000;
    opposite += littleEndian(static_cast<std::uint16_t>(value), 2) +
                littleEndian(static_cast<std::uint16_t>(-value), 2);
  }
  folder().write("opposite.wav", waveFile(opposite));
  EXPECT_THAT(table("opposite.wav"),
              HasSubstr("  Note: Channels L and R are of opposite polarity.\n"));
  EXPECT_EQ(figures("opposite.wav").at("invertedChannels").at(0).at("first"), 0);
}

TEST_F(ProgramQuality, NotesBitsThatAreNeverUsed) {
  run({"edit", "gain", "0", "good.wav", "--encoding", "s24", "-o", "wide.wav"});
  EXPECT_THAT(table("wide.wav"),
              HasSubstr("  Note: Only 16 of the 24 bits per sample are used.\n"));
  EXPECT_EQ(figures("wide.wav").at("effectiveBitDepth"), 16);
  EXPECT_THAT(table("good.wav"), Not(HasSubstr("bits per sample")));
  run({"edit", "gain", "0", "good.wav", "--encoding", "f32", "-o", "float.wav"});
  EXPECT_FALSE(figures("float.wav").contains("effectiveBitDepth"));
}

TEST_F(ProgramQuality, IsNoWarning) {
  EXPECT_THAT(run({"analyze", "good.wav", "-q"}).errors, IsEmpty());
}

}  // namespace
}  // namespace orvane::cli::test
