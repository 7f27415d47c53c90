#include "orvane/container/rewrite_plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "orvane/container/container_table.h"
#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"
#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::RawChunk;

PCMStream parse(const InputFile& file) {
  const SniffedContainer container = sniffContainer(file);
  const ContainerKind* const kind = containerKind(container.fileTypeID);
  if (kind == nullptr || kind->parse == nullptr) throw PlatformError(file.path(), "no parser");
  return kind->parse(file, container.start);
}

Bytes bytesAt(const Bytes& bytes, std::uint64_t offset, std::uint64_t size) {
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

/// What a plan makes of a file, put together without the product's writer.
Bytes apply(const RewritePlan& plan, const Bytes& original, const Bytes& audio) {
  Bytes result;
  const auto add = [&](const Bytes& bytes) {
    result.insert(result.end(), bytes.begin(), bytes.end());
  };
  for (const auto& piece : plan.pieces) switch (piece.kind) {
      case RewritePlan::Piece::Kind::copy:
        add(bytesAt(original, piece.offset, piece.size));
        break;
      case RewritePlan::Piece::Kind::bytes:
        add(piece.bytes);
        break;
      case RewritePlan::Piece::Kind::audio:
        EXPECT_EQ(piece.size, audio.size());
        add(audio);
        break;
    }
  EXPECT_EQ(plan.fileBytes, result.size());
  return result;
}

class RewritePlanTest : public testing::Test {
 protected:
  struct Parsed {
    Bytes bytes;
    PCMStream stream;
    std::filesystem::path path;

    std::uint64_t frameBytes() const { return stream.description.dataFormat.bytesPerFrame; }
    Bytes audio() const {
      return bytesAt(bytes, stream.dataOffset,
                     static_cast<std::uint64_t>(stream.frameCount) * frameBytes());
    }
    Bytes body(const Chunk& chunk) const { return bytesAt(bytes, chunk.bodyOffset, chunk.size); }
  };

  Parsed parsed(const Bytes& bytes) {
    const auto path = folder_.write("file" + std::to_string(++files_), bytes);
    return {bytes, parse(InputFile(path)), path};
  }

  RewritePlan plan(const Parsed& file, const RewriteRequest& request) {
    return planRewrite(InputFile(file.path), file.stream, request);
  }

  Bytes unchanged(const Bytes& bytes) {
    const Parsed file = parsed(bytes);
    return apply(plan(file, {.frameCount = file.stream.frameCount}), bytes, file.audio());
  }

  /// The file with audio of another length.
  Parsed lengthened(const Bytes& bytes, std::int64_t frames) {
    const Parsed file = parsed(bytes);
    const Bytes audio(static_cast<std::size_t>(frames) * file.frameBytes(), std::byte{0x55});
    return parsed(apply(plan(file, {.frameCount = frames, .hasChangedAudio = true}), bytes, audio));
  }

  std::string refusal(const Bytes& bytes, std::int64_t frames) {
    const Parsed file = parsed(bytes);
    try {
      plan(file, {.frameCount = frames});
      return {};
    } catch (const UnwritableFormat& error) {
      return error.errorDescription();
    }
  }

 private:
  test::TemporaryDirectory folder_;
  int files_ = 0;
};

Bytes filled(std::size_t size, int value = 1) {
  return Bytes(size, static_cast<std::byte>(value));
}

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes text(std::string_view characters) {
  return test::ByteWriter().text(characters).bytes();
}

constexpr test::SampleSpec kEightBits{.bits = 8, .bytes = 1, .isUnsigned = true};

/// Mono of eight bits, so that any number of bytes is that many frames; chunks of odd sizes, known
/// and unknown, before and behind the audio.
Bytes wave(std::size_t frames, std::string_view form = "RIFF", bool isPadded = true) {
  const bool isBig = form == "RIFX";
  const Bytes format = test::waveFormatBody({.channels = 1, .bits = 8},
                                            isBig ? std::endian::big : std::endian::little);
  const Bytes fact =
      test::ByteWriter(isBig ? std::endian::big : std::endian::little).u32(frames).bytes();
  std::vector<RawChunk> chunks = {{"bext", filled(603)},
                                  {"fmt ", format},
                                  {"fact", fact},
                                  {"junk", filled(7, 2)},
                                  {"data", filled(frames, 3)},
                                  {"odd!", filled(5, 4)},
                                  {"LIST", filled(12, 5)}};
  chunks[4].hasPad = isPadded;
  if (form == "RF64" || form == "BW64") {
    chunks.insert(chunks.begin(), {"ds64", test::longSizesBody(0, frames, frames)});
    chunks[5].statedSize = 0xFFFFFFFF;
    Bytes bytes = test::formFile(form, "WAVE", chunks);
    const Bytes size = test::ByteWriter().u64(bytes.size() - 8).bytes();
    std::copy(size.begin(), size.end(), bytes.begin() + 20);
    std::fill_n(bytes.begin() + 4, 4, std::byte{0xFF});
    return bytes;
  }
  return test::formFile(form, "WAVE", chunks);
}

Bytes wave64(std::size_t frames) {
  return test::wave64File({{"fmt ", test::waveFormatBody({.channels = 1, .bits = 8})},
                           {"fact", test::ByteWriter().u64(frames).bytes()},
                           {"data", filled(frames, 3)},
                           {"bext", filled(603)}});
}

Bytes aiff(std::size_t frames, std::string_view type = "AIFF") {
  return test::formFile("FORM", type,
                        {{"NAME", text("odd")},
                         {"COMM", test::commonBody(1, static_cast<std::uint32_t>(frames), 8, 44100,
                                                   type == "AIFC" ? "NONE" : "")},
                         {"SSND", test::soundBody(filled(frames, 3), 6)},
                         {"ANNO", filled(9)}});
}

Bytes caf(std::size_t frames) {
  return test::cafFile({{"desc", test::cafDescriptionBody(48000, 1, {.bits = 8, .bytes = 1})},
                        {"free", filled(33)},
                        {"data", test::cafDataBody(filled(frames, 3))},
                        {"uuid", filled(40, 6)}});
}

std::vector<Bytes> everyContainer(std::size_t frames) {
  return {wave(frames),   wave(frames, "RIFX"), wave(frames, "RF64"), wave(frames, "BW64"),
          wave64(frames), aiff(frames),         aiff(frames, "AIFC"), caf(frames)};
}

TEST_F(RewritePlanTest, GivesTheFileAsItIsWhenNothingChanges) {
  for (const std::size_t frames : {0U, 1U, 2U, 999U})
    for (const Bytes& bytes : everyContainer(frames)) {
      EXPECT_EQ(unchanged(bytes), bytes);
      // What stands around the form belongs to somebody else.
      const Bytes tag = joined({text("ID3"),
                                {std::byte{3}, std::byte{0}, std::byte{0}},
                                {std::byte{0}, std::byte{0}, std::byte{0}, std::byte{20}},
                                filled(20, 9)});
      EXPECT_EQ(unchanged(joined({tag, bytes})), joined({tag, bytes}));
      for (const std::size_t behind : {1U, 5U, 128U})
        EXPECT_EQ(unchanged(joined({bytes, filled(behind, 'T')})),
                  joined({bytes, filled(behind, 'T')}));
    }
}

TEST_F(RewritePlanTest, GivesFilesThatEndWithTheAudioAsTheyAre) {
  const RawChunk format{"fmt ", test::waveFormatBody({.channels = 1, .bits = 8})};
  for (const std::size_t frames : {4U, 5U})
    for (const bool hasPad : {true, false}) {
      const Bytes bytes =
          test::formFile("RIFF", "WAVE", {format, {"data", filled(frames), {}, hasPad}});
      EXPECT_EQ(unchanged(bytes), bytes) << frames << hasPad;
    }
  Bytes open = test::cafFile({{"desc", test::cafDescriptionBody(48000, 1, kEightBits)},
                              {"data", test::cafDataBody(filled(50)), UINT64_MAX}});
  EXPECT_EQ(unchanged(open), open);
}

TEST_F(RewritePlanTest, PutsSizesRightThatAreNotTrue) {
  Bytes bytes = wave(100);
  Bytes wrongForm = bytes;
  for (const int size : {0, 1, 77}) {
    wrongForm[4] = static_cast<std::byte>(size);
    wrongForm[5] = wrongForm[6] = std::byte{0};
    EXPECT_EQ(unchanged(wrongForm), bytes) << size;
  }
  // A recorder that crashed leaves its sizes at 0 or at all ones.
  const Bytes format = test::waveFormatBody({.channels = 1, .bits = 8});
  const Bytes whole = test::formFile("RIFF", "WAVE", {{"fmt ", format}, {"data", filled(100)}});
  for (const std::uint64_t size : {std::uint64_t{0}, std::uint64_t{0xFFFFFFFF}}) {
    Bytes crashed = test::formFile("RIFF", "WAVE", {{"fmt ", format}, {"data", filled(100), size}});
    crashed[4] = crashed[5] = crashed[6] = crashed[7] = static_cast<std::byte>(size);
    EXPECT_EQ(unchanged(crashed), whole) << size;
  }
}

TEST_F(RewritePlanTest, AddsThePadThatIsMissingBehindTheAudio) {
  EXPECT_EQ(unchanged(wave(99, "RIFF", false)), wave(99));
  EXPECT_EQ(unchanged(wave(99, "RIFF", true)), wave(99));
}

TEST_F(RewritePlanTest, MakesTheFileThatTheOtherLengthWouldHaveMade) {
  for (const std::size_t from : {0U, 1U, 2U, 99U, 100U})
    for (const std::size_t to : {0U, 1U, 2U, 99U, 100U}) {
      const auto before = everyContainer(from);
      auto after = everyContainer(to);
      for (std::size_t i = 0; i < before.size(); ++i) {
        const Parsed expected = parsed(after[i]);
        const Parsed result = lengthened(before[i], static_cast<std::int64_t>(to));
        // The audio differs, and the count of edits in CAF.
        Bytes wanted = expected.bytes;
        std::fill_n(wanted.begin() + static_cast<std::ptrdiff_t>(expected.stream.dataOffset), to,
                    std::byte{0x55});
        if (expected.stream.description.fileTypeID == fourCCFrom("caff"))
          wanted[static_cast<std::size_t>(expected.stream.dataOffset - 1)] = std::byte{1};
        EXPECT_EQ(result.bytes, wanted) << from << " to " << to << ", container " << i;
      }
    }
}

TEST_F(RewritePlanTest, CountsNoEditWhereNoSampleChanged) {
  const Parsed file = parsed(caf(10));
  const auto kept = plan(file, {.frameCount = 10});
  EXPECT_EQ(apply(kept, file.bytes, file.audio()), file.bytes);
}

TEST_F(RewritePlanTest, CarriesSecondAudioAndFormatBehindIt) {
  const RawChunk format{"fmt ", test::waveFormatBody({.channels = 1, .bits = 8})};
  const Bytes bytes = test::formFile(
      "RIFF", "WAVE",
      {{"data", filled(9, 3)}, {"data", filled(4, 7)}, format, {"cue ", filled(28)}});
  EXPECT_EQ(unchanged(bytes), bytes);
  const Parsed longer = lengthened(bytes, 12);
  ASSERT_EQ(longer.stream.chunkList.chunks.size(), 4U);
  EXPECT_EQ(longer.stream.frameCount, 12);
  EXPECT_EQ(longer.body(longer.stream.chunkList.chunks[1]), filled(4, 7));
  EXPECT_EQ(longer.body(longer.stream.chunkList.chunks[3]), filled(28));
}

TEST_F(RewritePlanTest, ReplacesAndDropsChunks) {
  const Parsed file = parsed(wave(9));
  RewriteRequest request{.frameCount = 9};
  request.chunkChanges = {{0, filled(11, 8)}, {3, std::nullopt}, {5, Bytes{}}};
  const Parsed result = parsed(apply(plan(file, request), file.bytes, file.audio()));
  const auto& chunks = result.stream.chunkList.chunks;
  ASSERT_EQ(chunks.size(), 6U);
  EXPECT_EQ(result.body(chunks[0]), filled(11, 8));
  EXPECT_EQ(chunks[3].id, fourCCFrom("data"));
  EXPECT_EQ(chunks[4].id, fourCCFrom("odd!"));
  EXPECT_EQ(chunks[4].size, 0U);
  EXPECT_EQ(result.body(chunks[5]), filled(12, 5));
  EXPECT_EQ(result.stream.chunkList.end, result.bytes.size());
  EXPECT_EQ(unchanged(result.bytes), result.bytes);  // its sizes are true
}

TEST_F(RewritePlanTest, RefusesWhatTheContainerCannotHold) {
  constexpr std::int64_t kTwoGiB = std::int64_t{1} << 31;
  EXPECT_EQ(refusal(wave(4), 2 * kTwoGiB - 1),
            "the result is larger than a WAV file can be; save it as RF64 or BW64");
  EXPECT_EQ(refusal(wave(4), 2 * kTwoGiB - 2000), "");
  EXPECT_EQ(refusal(aiff(4), kTwoGiB),
            "the result is larger than an AIFF file can be; save it as CAF");
  EXPECT_EQ(refusal(aiff(4), kTwoGiB - 2000), "");
  for (const Bytes& bytes : {wave(4, "RF64"), wave(4, "BW64"), wave64(4), caf(4)})
    EXPECT_EQ(refusal(bytes, 10 * kTwoGiB), "");
  const Bytes law = test::formFile(
      "RIFF", "WAVE",
      {{"fmt ", test::waveFormatBody({.tag = 7, .channels = 1, .bits = 8})}, {"data", filled(4)}});
  EXPECT_EQ(refusal(law, 4),
            "only linear PCM in WAV, RF64, BW64, Wave64, AIFF and CAF is rewritten");
  const Bytes silent =
      test::formFile("RIFF", "WAVE", {{"fmt ", test::waveFormatBody({.channels = 1, .bits = 8})}});
  EXPECT_EQ(refusal(silent, 4), "the file has no place for audio");
}

TEST_F(RewritePlanTest, LongSizesTakeOverWhereTheShortOnesEnd) {
  const Parsed file = parsed(wave(4, "RF64"));
  constexpr std::int64_t kFrames = std::int64_t{5} << 30;
  const RewritePlan plan = planRewrite(InputFile(file.path), file.stream, {.frameCount = kFrames});
  // Put together without the audio: the head is all that is looked at.
  Bytes head;
  for (const auto& piece : plan.pieces) {
    if (piece.kind == RewritePlan::Piece::Kind::audio) break;
    const Bytes part = piece.kind == RewritePlan::Piece::Kind::copy
                           ? bytesAt(file.bytes, piece.offset, piece.size)
                           : piece.bytes;
    head.insert(head.end(), part.begin(), part.end());
  }
  const Bytes expected = test::longSizesBody(plan.fileBytes - 8, kFrames, kFrames);
  EXPECT_EQ(bytesAt(head, 20, 24), bytesAt(expected, 0, 24));
}

/// Any bytes give a plan or a sentence, and what a plan makes parses to the same audio.
TEST_F(RewritePlanTest, SurvivesDamagedFiles) {
  std::mt19937 random(11);
  int plans = 0;
  for (int round = 0; round < 4000; ++round) {
    auto all = everyContainer(random() % 50);
    Bytes bytes = all[random() % all.size()];
    for (std::size_t i = 0; i < 1 + random() % 4; ++i)
      bytes[random() % std::min<std::size_t>(bytes.size(), 900)] = static_cast<std::byte>(random());
    if (random() % 3 == 0) bytes.resize(bytes.size() - random() % bytes.size() / 2);
    try {
      const Parsed file = parsed(bytes);
      const auto kept = plan(file, {.frameCount = file.stream.frameCount});
      const Parsed result = parsed(apply(kept, bytes, file.audio()));
      ++plans;
      ASSERT_EQ(result.stream.frameCount, file.stream.frameCount) << round;
      ASSERT_EQ(result.stream.sample, file.stream.sample) << round;
      ASSERT_EQ(result.stream.description.dataFormat, file.stream.description.dataFormat) << round;
      ASSERT_EQ(result.audio(), file.audio()) << round;
    } catch (const PlatformError&) {
    } catch (const UnwritableFormat&) {
    }
  }
  EXPECT_GT(plans, 500);
}

/// Bytes that made up no frame once became frames when those were shorter.
TEST_F(RewritePlanTest, LeavesNoPartOfAFrameBehindShorterOnes) {
  const Parsed file = parsed(test::formFile(
      "RIFF", "WAVE", {{"fmt ", test::waveFormatBody({.bits = 16})}, {"data", filled(4 * 5 + 3)}}));
  const RewriteRequest request{
      .frameCount = 5,
      .frameBytes = 1,
      .chunkChanges = {{0, test::waveFormatBody({.channels = 1, .bits = 8})}}};
  const Parsed result = parsed(apply(plan(file, request), file.bytes, filled(5)));
  EXPECT_EQ(result.stream.frameCount, 5);
  EXPECT_EQ(result.bytes, test::waveFile({.channels = 1, .bits = 8}, filled(5)));
}

TEST_F(RewritePlanTest, PutsNewChunksInFrontOfTheAudio) {
  const RawChunk format{"fmt ", test::waveFormatBody({.channels = 1, .bits = 8})};
  const RawChunk audio{"data", filled(7)};
  const RawChunk added{"bext", filled(5, 3)};
  const RawChunk behind{"iXML", filled(3, 2)};
  const auto with = [&](const Bytes& bytes) {
    const Parsed file = parsed(bytes);
    return apply(plan(file, {.frameCount = file.stream.frameCount,
                             .newChunks = {{fourCCFrom("bext"), added.body}}}),
                 bytes, file.audio());
  };
  EXPECT_EQ(with(test::formFile("RIFF", "WAVE", {format, audio, behind})),
            test::formFile("RIFF", "WAVE", {format, added, audio, behind}));
  EXPECT_EQ(with(test::wave64File({format, audio, behind})),
            test::wave64File({format, added, audio, behind}));
  // The form may state nothing that is true, or nothing at all.
  const Bytes open = test::formFile("RIFF", "WAVE", {format, {"data", filled(8), 0}});
  EXPECT_EQ(parsed(with(open)).audio(), filled(8));
}

}  // namespace
}  // namespace orvane
