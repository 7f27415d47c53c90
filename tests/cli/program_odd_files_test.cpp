// Files that are not as they should be, but exist: an edit in place keeps what is odd about them,
// or says in one sentence why it does not save. Independent readers read what they read before.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <memory>

#include "tests/cli/program_fixture.h"
#include "tests/support/container_writer.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using orvane::test::Bytes;
using orvane::test::ByteWriter;
using orvane::test::RawChunk;
using ::testing::StartsWith;

/// A file of 16-bit mono samples, in the file's byte order, made around any audio. `isSaved`: as
/// the program leaves it, with sizes that are true.
struct OddFile {
  std::string name{};
  std::function<Bytes(const Bytes& audio, bool isSaved)> make{};
  std::endian order = std::endian::little;
};

Bytes filled(std::size_t size, int value) {
  return Bytes(size, static_cast<std::byte>(value));
}

Bytes joined(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// Another number at a place that holds 32 bits.
Bytes withNumber(Bytes bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::byte>(value >> 8 * i);
  return bytes;
}

RawChunk format(std::endian order = std::endian::little) {
  return {"fmt ", orvane::test::waveFormatBody({.channels = 1}, order)};
}

Bytes wave(const std::vector<RawChunk>& chunks) {
  return orvane::test::formFile("RIFF", "WAVE", chunks);
}

Bytes longWave(const Bytes& audio) {
  Bytes table = orvane::test::longSizesBody(0, audio.size(), audio.size() / 2);
  table[24] = std::byte{1};  // one more long chunk, which is not there
  table = joined(table, ByteWriter().text("long").u64(77).bytes());
  const RawChunk data{.id = "data", .body = audio, .statedSize = 0xFFFFFFFF};
  Bytes bytes = withNumber(
      orvane::test::formFile("RF64", "WAVE", {{"ds64", table}, format(), data}), 4, 0xFFFFFFFF);
  return withNumber(bytes, 20, static_cast<std::uint32_t>(bytes.size() - 8));
}

std::vector<OddFile> oddFiles() {
  const auto withForm = [](std::uint32_t stated) {
    return [stated](const Bytes& audio, bool isSaved) {
      const Bytes bytes = wave({format(), {"data", audio}, {"iXML", filled(10, 3)}});
      return isSaved ? bytes : withNumber(bytes, 4, stated);
    };
  };
  const auto withData = [](std::uint32_t stated) {
    return [stated](const Bytes& audio, bool isSaved) {
      const Bytes bytes = wave({format(), {"data", audio}});
      return isSaved ? bytes : withNumber(bytes, 40, stated);
    };
  };
  return {
      {"padded.wav",
       [](const Bytes& audio, bool) {
         return wave({{"odd1", filled(7, 1)}, format(), {"data", audio}, {"odd2", filled(9, 2)}});
       }},
      {"unpadded.wav",
       [](const Bytes& audio, bool) {
         return wave({{.id = "odd1", .body = filled(7, 1), .hasPad = false},
                      format(),
                      {"data", audio},
                      {"even", filled(8, 2)}});
       }},
      {"format-behind.wav",
       [](const Bytes& audio, bool) {
         return wave({{"data", audio}, format(), {"note", filled(8, 2)}});
       }},
      {"twice.wav",
       [](const Bytes& audio, bool) {
         return wave({format(), {"data", audio}, {"data", filled(60, 4)}});
       }},
      {"junk.wav",
       [](const Bytes& audio, bool) {
         return wave(
             {{"JUNK", filled(28, 0)}, format(), {"FLLR", filled(4008, 0)}, {"data", audio}});
       }},
      {"tagged.wav",
       [](const Bytes& audio, bool) {
         const Bytes tag =
             ByteWriter().text("ID3").u8(4).u8(0).u8(0).u8(0).u8(0).u8(0).u8(20).zeros(20).bytes();
         return joined(tag, wave({format(), {"data", audio}}));
       }},
      {"text-behind.wav",
       [](const Bytes& audio, bool) {
         return joined(wave({format(), {"data", audio}}),
                       ByteWriter().text("recorded on a Sunday\n").bytes());
       }},
      {"form-small.wav", withForm(100)},
      {"form-zero.wav", withForm(0)},
      {"form-ones.wav", withForm(0xFFFFFFFF)},
      {"data-zero.wav", withData(0)},
      {"data-ones.wav", withData(0xFFFFFFFF)},
      {"big.wav",
       [](const Bytes& audio, bool) {
         return orvane::test::formFile(
             "RIFX", "WAVE", {format(std::endian::big), {"data", audio}, {"iXML", filled(10, 3)}});
       },
       std::endian::big},
      {"table.rf64", [](const Bytes& audio, bool) { return longWave(audio); }},
      {"many.wav",
       [](const Bytes& audio, bool) {
         std::vector<RawChunk> chunks = {format(), {"data", audio}};
         for (int i = 0; i < 65'000; ++i) chunks.push_back({"many", filled(2, i)});
         return wave(chunks);
       }},
      {std::string(251, 'n') + ".wav",
       [](const Bytes& audio, bool) {
         return wave({format(), {"data", audio}});
       }},
      {"padded.aiff",
       [](const Bytes& audio, bool) {
         const auto frames = static_cast<std::uint32_t>(audio.size() / 2);
         return orvane::test::formFile("FORM", "AIFF",
                                       {{"odd1", filled(7, 1)},
                                        {"COMM", orvane::test::commonBody(1, frames, 16, 48'000)},
                                        {"SSND", orvane::test::soundBody(audio)},
                                        {"odd2", filled(9, 2)}});
       },
       std::endian::big},
      {"padded.w64",
       [](const Bytes& audio, bool) {
         return orvane::test::wave64File(
             {{"odd1", filled(7, 1)}, format(), {"data", audio}, {"odd2", filled(9, 2)}});
       }},
      {"free.caf",
       [](const Bytes& audio, bool isSaved) {
         Bytes body = orvane::test::cafDataBody(audio);
         if (isSaved) body[3] = std::byte{1};  // the count of edits
         return orvane::test::cafFile(
             {{"desc", orvane::test::cafDescriptionBody(48'000, 1, {.order = std::endian::big})},
              {"free", filled(33, 0)},
              {"data", body},
              {"info", filled(9, 5)}});
       },
       std::endian::big}};
}

/// Samples of which each has its negative, from 1 on, so that no two are alike.
Bytes ramp(std::endian order, int sign, int first = 1, int frames = 1000) {
  ByteWriter writer(order);
  for (int i = first; i < first + frames; ++i) writer.u16(static_cast<std::uint16_t>(sign * i));
  return writer.bytes();
}

using Samples = std::optional<std::vector<std::int16_t>>;

Samples samplesOf(const std::string& bytes) {
  std::vector<std::int16_t> samples(bytes.size() / 2);
  std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
  return samples;
}

Samples readByTool(const std::string& tool, const std::vector<std::string>& arguments) {
  try {
    return samplesOf(orvane::test::runTool(tool, arguments));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

Samples readByLibsndfile(const std::filesystem::path& path) {
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(sf_open(path.c_str(), SFM_READ, &info),
                                                           &sf_close);
  if (!file || info.channels != 1) return std::nullopt;
  std::vector<std::int16_t> samples(
      static_cast<std::size_t>(std::min<sf_count_t>(info.frames, 9999)));
  sf_read_short(file.get(), samples.data(), static_cast<sf_count_t>(samples.size()));
  return samples;
}

/// What each reader finds; nothing where it refuses.
std::vector<Samples> readByPeers(const std::filesystem::path& path) {
  return {readByLibsndfile(path),
          readByTool("ffmpeg", {"-v", "error", "-i", path.string(), "-f", "s16le", "-"}),
          readByTool("sox", {path.string(), "-t", "raw", "-e", "signed", "-b", "16", "-L", "-"})};
}

class ProgramOddFiles : public ProgramTest {
 protected:
  /// `expected`: samples of the result, first and count, times `sign`.
  void expectSaved(const OddFile& odd, const std::vector<std::string>& operation, int sign,
                   int first, int frames) const {
    SCOPED_TRACE(odd.name.substr(0, 40) + ", " + operation.front());
    const Bytes before = odd.make(ramp(odd.order, 1), false);
    const auto path = folder().write(odd.name, before);
    const auto readBefore = readByPeers(path);
    std::vector<std::string> arguments = {"edit"};
    arguments.insert(arguments.end(), operation.begin(), operation.end());
    arguments.insert(arguments.end(), {odd.name, "--in-place", "-q"});
    const ProgramEnd end = run(arguments);
    ASSERT_EQ(end.exitCode, 0) << end.errors;
    const std::string expected = text(odd.make(ramp(odd.order, sign, first, frames), true));
    const std::string saved = orvane::test::readFile(path);
    ASSERT_EQ(saved.size(), expected.size());
    const auto difference = std::ranges::mismatch(saved, expected).in1;
    ASSERT_EQ(difference, saved.end()) << "byte " << difference - saved.begin();

    const Samples original = samplesOf(text(ramp(std::endian::native, 1)));
    const Samples edited = samplesOf(text(ramp(std::endian::native, sign, first, frames)));
    const auto readAfter = readByPeers(path);
    for (std::size_t peer = 0; peer < readBefore.size(); ++peer)
      if (readBefore[peer] == original) {
        EXPECT_TRUE(readAfter[peer] == edited) << "peer " << peer;
        ++readings_;
      }
  }

  static std::string text(const Bytes& bytes) {
    std::string text;
    for (const std::byte byte : bytes) text += static_cast<char>(byte);
    return text;
  }

  mutable int readings_ = 0;  ///< that peers could compare
};

TEST_F(ProgramOddFiles, AreSavedWithAllThatIsOdd) {
  for (const OddFile& odd : oddFiles()) expectSaved(odd, {"invert"}, -1, 1, 1000);
  EXPECT_GT(readings_, 40);
}

TEST_F(ProgramOddFiles, ChangeTheirLengthAndNothingElse) {
  for (const OddFile& odd : oddFiles()) expectSaved(odd, {"trim", "#100", "#900"}, 1, 101, 800);
}

TEST_F(ProgramOddFiles, AreSavedAsNewFilesJustSo) {
  for (const OddFile& odd : oddFiles()) {
    SCOPED_TRACE(odd.name.substr(0, 40));
    folder().write(odd.name, odd.make(ramp(odd.order, 1), false));
    const std::string extension = std::filesystem::path(odd.name).extension();
    const ProgramEnd end =
        run({"edit", "invert", odd.name, "-o", "new" + extension, "--force", "-q"});
    ASSERT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_TRUE(orvane::test::readFile(folder() / ("new" + extension)) ==
                text(odd.make(ramp(odd.order, -1), true)));
  }
}

TEST_F(ProgramOddFiles, AreRefusedInOneSentence) {
  const auto expectRefused = [&](const std::string& name, const Bytes& bytes,
                                 const std::string& sentence) {
    const auto path = folder().write(name, bytes);
    const ProgramEnd end = run({"edit", "invert", name, "--in-place", "-q"});
    EXPECT_EQ(end.exitCode, 1) << name;
    EXPECT_THAT(end.errors, StartsWith("orvane: " + sentence)) << name;
    EXPECT_EQ(std::ranges::count(end.errors, '\n'), 1) << end.errors;
    EXPECT_TRUE(orvane::test::readFile(path) == text(bytes)) << name;
  };
  const Bytes audio = ramp(std::endian::little, 1);
  expectRefused("named.caf", wave({format(), {"data", audio}}),
                "Inside, this file is a WAVE container");
  expectRefused("long.wav", longWave(audio), "Inside, this file is a RF64 container");
  expectRefused("law.wav",
                wave({{"fmt ", orvane::test::waveFormatBody({.tag = 7, .channels = 1, .bits = 8})},
                      {"data", audio}}),
                "law.wav: only linear PCM");
  expectRefused("no-audio.wav", wave({format()}), "Empty or unreadable file: no-audio.wav");
  expectRefused("no-format.wav", wave({{"data", audio}}), "no-format.wav: ");
}

}  // namespace
}  // namespace orvane::cli::test
