// Whatever is done to a compressed file, reading it ends, in a sentence or with what is there.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <ostream>
#include <string>
#include <vector>

#include "tests/container/ffmpeg/damaged_files.h"
#include "tests/support/random.h"

namespace orvane {
namespace {

using test::Arguments;

constexpr auto nameOfFile = [](const auto& tested) { return test::wordOf(tested.param); };

/// Seconds of work that this process has done so far: unlike time, the same on a busy machine.
double workSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

class FFmpegTruncation : public test::DamagedFiles,
                         public testing::WithParamInterface<std::string> {};

TEST_P(FFmpegTruncation, IsSurvivedWhereverItFalls) {
  const std::string whole = encode(GetParam(), {}, 0.5);
  const std::int64_t length = survive(whole);
  for (std::size_t cut = 0; cut < whole.size(); cut += cut < 200 ? 7 : whole.size() / 25 + 1)
    EXPECT_LE(survive(whole.substr(0, cut)), length + 4096) << cut;
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, FFmpegTruncation,
                         testing::Values("a.flac", "a.mp3", "a.m4a", "a.opus", "a.ogg", "a.wv",
                                         "a.mkv", "a.ts", "a.ac3", "a.wma"),
                         nameOfFile);

class FFmpegFlippedBits : public test::DamagedFiles,
                          public testing::WithParamInterface<std::string> {};

TEST_P(FFmpegFlippedBits, AreSurvivedInGoodTime) {
  constexpr int kVariants = 40;
  constexpr double kMostSeconds = 20;
  const std::string& name = GetParam();
  const std::string whole =
      encode(name, name == "a.flv" ? Arguments{"-ar", "44100"} : Arguments{}, 0.5);
  test::Random random(20251121);
  double longest = 0;
  for (int variant = 0; variant < kVariants; ++variant) {
    std::string bytes = whole;
    // Half of them in the header, where they hurt most.
    const std::uint64_t range =
        variant % 2 == 0 ? bytes.size() : std::min<std::uint64_t>(bytes.size(), 1500);
    const std::uint64_t flips = 1 + random.below(variant % 3 == 0 ? 40 : 3);
    for (std::uint64_t i = 0; i < flips; ++i)
      bytes[random.below(range)] ^= static_cast<char>(1U << random.below(8));
    const double before = workSeconds();
    survive(bytes);
    longest = std::max(longest, workSeconds() - before);
  }
  EXPECT_LT(longest, kMostSeconds);
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, FFmpegFlippedBits,
                         testing::Values("a.flac", "a.mp3", "a.m4a", "a.opus", "a.ogg", "a.wv",
                                         "a.tta", "a.mkv", "a.ts", "a.ac3", "a.wma", "a.avi",
                                         "a.mov", "a.flv"),
                         nameOfFile);

/// A file and those of its atoms, chunks or tags whose following numbers are forged.
struct Forgery {
  std::string file;
  std::vector<std::string> fields;
  Arguments arguments{};
};

std::ostream& operator<<(std::ostream& out, const Forgery& forgery) {
  return out << forgery.file;
}

class FFmpegForgedSizes : public test::DamagedFiles, public testing::WithParamInterface<Forgery> {};

TEST_P(FFmpegForgedSizes, AreSurvived) {
  const std::string whole = encode(GetParam().file, GetParam().arguments, 0.15);
  std::size_t found = 0;
  for (const std::string& field : GetParam().fields) {
    const std::size_t at = whole.find(field);
    if (at == std::string::npos) continue;
    ++found;
    for (const std::uint32_t lie : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU})
      for (const std::ptrdiff_t offset : {-4, 4, 8, 12, 16, 20}) {
        const auto place = static_cast<std::ptrdiff_t>(at) + offset;
        if (place < 0 || static_cast<std::size_t>(place) + 4 > whole.size()) continue;
        std::string bytes = whole;
        test::putBigEndian32(bytes, static_cast<std::size_t>(place), lie);
        survive(bytes);
      }
  }
  EXPECT_EQ(found, GetParam().fields.size());
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryKind, FFmpegForgedSizes,
    testing::Values(
        Forgery{"a.m4a",
                {"ftyp", "mdat", "moov", "mdhd", "elst", "esds", "stts", "stsc", "stsz", "stco"}},
        Forgery{"fragments.mp4",
                {"trex", "moof", "tfhd", "tfdt", "trun", "mfra", "tfra"},
                {"-movflags", "frag_keyframe+empty_moov"}},
        Forgery{"alac.caf", {"desc", "pakt", "data", "kuki", "chan"}, {"-c:a", "alac"}},
        Forgery{"adpcm.wav", {"RIFF", "fmt ", "fact", "data"}, {"-c:a", "adpcm_ms"}},
        Forgery{"ima.aiff", {"FORM", "COMM", "SSND", "FVER"}, {"-c:a", "adpcm_ima_qt"}},
        Forgery{"a.avi", {"RIFF", "avih", "strh", "strf", "movi", "idx1"}},
        Forgery{"a.ogg", {"OggS", "vorbis"}}, Forgery{"a.wv", {"wvpk"}}, Forgery{"a.tta", {"TTA1"}},
        Forgery{"a.flac", {"fLaC"}}, Forgery{"a.mp3", {"ID3", "Lavf"}}),
    [](const auto& tested) { return test::wordOf(tested.param.file); });

class FFmpegBlockSizes : public test::DamagedFiles,
                         public testing::WithParamInterface<Arguments> {};

/// Header fields of a compressed WAVE file that disagree with each other.
TEST_P(FFmpegBlockSizes, ThatCannotBeAreSurvived) {
  const std::string whole = encode("a.wav", GetParam(), 0.3);
  const std::size_t format = test::placeOf(whole, "fmt ") + 8;
  for (const std::uint32_t channels : {0U, 1U, 2U, 3U, 255U, 65535U})
    for (const std::uint32_t blockAlign : {0U, 1U, 5U, 256U, 65535U})
      for (const std::uint32_t samplesPerBlock : {0U, 1U, 65535U}) {
        std::string bytes = whole;
        test::putLittleEndian(bytes, format + 2, channels, 2);
        test::putLittleEndian(bytes, format + 12, blockAlign, 2);
        test::putLittleEndian(bytes, format + 18, samplesPerBlock, 2);
        survive(bytes);
      }
  for (const std::uint32_t rate : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    std::string bytes = whole;
    test::putLittleEndian(bytes, format + 4, rate, 4);
    survive(bytes);
  }
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, FFmpegBlockSizes,
                         testing::Values(Arguments{"-c:a", "adpcm_ms"},
                                         Arguments{"-c:a", "adpcm_ima_wav"},
                                         Arguments{"-c:a", "libgsm_ms", "-ar", "8000"},
                                         Arguments{"-c:a", "adpcm_yamaha"}),
                         [](const auto& tested) { return test::wordOf(tested.param[1]); });

}  // namespace
}  // namespace orvane
