// Every container at every depth decodes to exactly the values that were stored.

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::SampleSpec;

constexpr std::size_t kFrames = 61;

void expectDecoded(const std::filesystem::path& path, const SampleSpec& spec, int channels,
                   const std::vector<double>& values) {
  SCOPED_TRACE(path.filename().string() + ", " + std::to_string(spec.bits) + " bits, " +
               std::to_string(channels) + " channels");
  const auto file = AudioFile::open(path, {.execution = {.threadCount = 2}});
  const StreamDescription& format = file->description().dataFormat;
  EXPECT_EQ(format.bitsPerChannel, static_cast<std::uint32_t>(spec.bits));
  EXPECT_EQ((format.formatFlags & kFormatFlagIsFloat) != 0, spec.isFloat);
  EXPECT_EQ(file->frameLength(), static_cast<std::int64_t>(kFrames));
  EXPECT_TRUE(file->description().warnings.empty());
  const auto buffer = test::readWhole(*file);
  ASSERT_TRUE(buffer);
  test::expectSamples(*buffer, values);
}

/// Calls `write` with every integer depth from 1 to `mostBits`, left-justified in whole bytes, and
/// channel counts, and expects the files that it makes to decode to what was stored.
template <typename Write>
void expectEveryDepth(int mostBits, bool isUnsignedBelowNine, std::endian order,
                      const Write& write) {
  const test::TemporaryDirectory folder;
  for (int bits = 1; bits <= mostBits; ++bits) {
    for (const int channels : {1, 2, 6, 8}) {
      const SampleSpec spec{.bits = bits,
                            .bytes = (bits + 7) / 8,
                            .isUnsigned = isUnsignedBelowNine && bits <= 8,
                            .order = order};
      const auto values = test::testValues(spec, kFrames, static_cast<std::size_t>(channels));
      const Bytes file = write(spec, channels, test::storedSamples(spec, values));
      expectDecoded(folder.write("integer", file), spec, channels, values);
    }
  }
}

template <typename Write>
void expectFloats(std::endian order, const Write& write) {
  const test::TemporaryDirectory folder;
  for (const int bits : {32, 64}) {
    for (const int channels : {1, 2, 6, 8}) {
      const SampleSpec spec{.bits = bits, .bytes = bits / 8, .isFloat = true, .order = order};
      const auto values = test::testValues(spec, kFrames, static_cast<std::size_t>(channels));
      const Bytes file = write(spec, channels, test::storedSamples(spec, values));
      expectDecoded(folder.write("float", file), spec, channels, values);
    }
  }
}

test::WaveFormat waveFormat(const SampleSpec& spec, int channels) {
  return {.tag = static_cast<std::uint16_t>(spec.isFloat ? 3 : 1),
          .channels = static_cast<std::uint16_t>(channels),
          .bits = static_cast<std::uint16_t>(spec.bits)};
}

TEST(Decoding, Wave) {
  const auto write = [](const SampleSpec& spec, int channels, const Bytes& samples) {
    return test::waveFile(waveFormat(spec, channels), samples);
  };
  expectEveryDepth(64, true, std::endian::little, write);
  expectFloats(std::endian::little, write);
}

TEST(Decoding, BigEndianWave) {
  const auto write = [](const SampleSpec& spec, int channels, const Bytes& samples) {
    const Bytes format = test::waveFormatBody(waveFormat(spec, channels), std::endian::big);
    return test::formFile("RIFX", "WAVE",
                          {{.id = "fmt ", .body = format}, {.id = "data", .body = samples}});
  };
  expectEveryDepth(64, true, std::endian::big, write);
  expectFloats(std::endian::big, write);
}

TEST(Decoding, LongWaves) {
  for (const char* form : {"RF64", "BW64"}) {
    const auto write = [&](const SampleSpec& spec, int channels, const Bytes& samples) {
      return test::formFile(
          form, "WAVE",
          {{.id = "ds64", .body = test::longSizesBody(0, samples.size(), kFrames)},
           {.id = "fmt ", .body = test::waveFormatBody(waveFormat(spec, channels))},
           {.id = "data", .body = samples, .statedSize = 0xFFFFFFFF}});
    };
    expectEveryDepth(64, true, std::endian::little, write);
    expectFloats(std::endian::little, write);
  }
}

TEST(Decoding, Wave64) {
  const auto write = [](const SampleSpec& spec, int channels, const Bytes& samples) {
    return test::wave64File(
        {{.id = "fmt ", .body = test::waveFormatBody(waveFormat(spec, channels))},
         {.id = "data", .body = samples}});
  };
  expectEveryDepth(64, true, std::endian::little, write);
  expectFloats(std::endian::little, write);
}

TEST(Decoding, ExtensibleWaveWithFewerValidBits) {
  const test::TemporaryDirectory folder;
  for (const int bytes : {2, 3, 4}) {
    for (int bits = 8 * bytes - 7; bits <= 8 * bytes; ++bits) {
      const SampleSpec spec{.bits = bits, .bytes = bytes};
      const auto values = test::testValues(spec, kFrames, 2);
      const test::WaveFormat format{.bits = static_cast<std::uint16_t>(8 * bytes),
                                    .mask = 3,
                                    .validBits = static_cast<std::uint16_t>(bits)};
      const Bytes file = test::waveFile(format, test::storedSamples(spec, values));
      expectDecoded(folder.write("extensible", file), spec, 2, values);
    }
  }
}

TEST(Decoding, Aiff) {
  expectEveryDepth(
      64, false, std::endian::big, [](const SampleSpec& spec, int channels, const Bytes& samples) {
        return test::formFile(
            "FORM", "AIFF",
            {{.id = "COMM", .body = test::commonBody(channels, kFrames, spec.bits, 48000)},
             {.id = "SSND", .body = test::soundBody(samples)}});
      });
}

TEST(Decoding, AiffCInBothByteOrders) {
  const auto writer = [](std::string_view type) {
    return [type](const SampleSpec& spec, int channels, const Bytes& samples) {
      return test::formFile(
          "FORM", "AIFC",
          {{.id = "COMM", .body = test::commonBody(channels, kFrames, spec.bits, 48000, type)},
           {.id = "SSND", .body = test::soundBody(samples, 16)}});
    };
  };
  expectEveryDepth(64, false, std::endian::big, writer("NONE"));
  expectEveryDepth(64, false, std::endian::little, writer("sowt"));
  expectFloats(std::endian::big, [&](const SampleSpec& spec, int channels, const Bytes& samples) {
    return writer(spec.bits == 32 ? "fl32" : "fl64")(spec, channels, samples);
  });
}

TEST(Decoding, UnsignedAiffC) {
  const test::TemporaryDirectory folder;
  const SampleSpec spec{.bits = 8, .bytes = 1, .isUnsigned = true};
  const auto values = test::testValues(spec, kFrames, 2);
  const Bytes common = test::commonBody(2, kFrames, 8, 48000, "raw ");
  const Bytes sound = test::soundBody(test::storedSamples(spec, values));
  const Bytes file = test::formFile(
      "FORM", "AIFC", {{.id = "COMM", .body = common}, {.id = "SSND", .body = sound}});
  expectDecoded(folder.write("raw.aifc", file), spec, 2, values);
}

TEST(Decoding, CafInBothByteOrders) {
  for (const std::endian order : {std::endian::big, std::endian::little}) {
    const auto write = [](const SampleSpec& spec, int channels, const Bytes& samples) {
      return test::cafFile({{.id = "desc", .body = test::cafDescriptionBody(48000, channels, spec)},
                            {.id = "data", .body = test::cafDataBody(samples)}});
    };
    expectEveryDepth(64, false, order, write);
    expectFloats(order, write);
  }
}

TEST(Decoding, AuInBothByteOrders) {
  const test::TemporaryDirectory folder;
  for (const std::endian order : {std::endian::big, std::endian::little}) {
    for (std::uint32_t encoding = 2; encoding <= 7; ++encoding) {
      const bool isFloat = encoding >= 6;
      const int bytes = isFloat ? (encoding == 6 ? 4 : 8) : static_cast<int>(encoding) - 1;
      const SampleSpec spec{.bits = bytes * 8, .bytes = bytes, .isFloat = isFloat, .order = order};
      for (const int channels : {1, 2, 6, 8}) {
        const auto values = test::testValues(spec, kFrames, static_cast<std::size_t>(channels));
        const Bytes file = test::auFile(encoding, 48000, static_cast<std::uint32_t>(channels),
                                        test::storedSamples(spec, values), order);
        expectDecoded(folder.write("file.au", file), spec, channels, values);
      }
    }
  }
}

}  // namespace
}  // namespace orvane
