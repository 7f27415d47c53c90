#include "tests/support/container_writer.h"

#include <cmath>
#include <random>

namespace orvane::test {

std::vector<double> testValues(const SampleSpec& spec, std::size_t frames, std::size_t channels) {
  // Doubles hold 53 bits, which is all that is needed: the low bits of wider samples stay 0.
  const int bits = spec.isFloat ? 24 : std::min(spec.bits, 53);
  const double step = std::ldexp(1.0, 1 - bits);
  std::mt19937_64 random(static_cast<std::uint64_t>(spec.bits) * 1000 + channels);
  std::vector<double> values(frames * channels);
  for (double& value : values) {
    const auto integer = static_cast<std::int64_t>(random() >> (64 - bits));
    value = static_cast<double>(integer) * step - 1;
  }
  if (!values.empty()) values.front() = -1;
  if (values.size() > 1) values[1] = 1 - step;
  return values;
}

Bytes storedSamples(const SampleSpec& spec, const std::vector<double>& values) {
  ByteWriter writer(spec.order);
  const auto size = static_cast<std::size_t>(spec.bytes);
  for (const double value : values) {
    if (spec.isFloat && size == 4) {
      writer.u32(std::bit_cast<std::uint32_t>(static_cast<float>(value)));
    } else if (spec.isFloat) {
      writer.float64(value);
    } else {
      const auto integer = static_cast<std::int64_t>(std::ldexp(value, 63));
      auto shifted = static_cast<std::uint64_t>(integer) >> (64 - 8 * size);
      if (spec.isUnsigned) shifted ^= std::uint64_t{1} << (8 * size - 1);
      writer.number(shifted, size);
    }
  }
  return writer.bytes();
}

Bytes formFile(std::string_view form, std::string_view type, const std::vector<RawChunk>& chunks) {
  const bool isBig = form == "RIFX" || form == "FORM";
  const std::endian order = isBig ? std::endian::big : std::endian::little;
  ByteWriter body(order);
  for (const RawChunk& chunk : chunks) {
    body.text(chunk.id).u32(chunk.statedSize.value_or(chunk.body.size())).append(chunk.body);
    if (chunk.hasPad && chunk.body.size() % 2 != 0) body.zeros(1);
  }
  const bool isLong = form == "RF64" || form == "BW64";
  ByteWriter file(order);
  file.text(form).u32(isLong ? 0xFFFFFFFF : body.size() + 4).text(type).append(body.bytes());
  return file.bytes();
}

Bytes wave64File(const std::vector<RawChunk>& chunks) {
  const std::string_view tail("\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A", 12);
  ByteWriter body;
  for (const RawChunk& chunk : chunks) {
    const std::uint64_t size = chunk.statedSize.value_or(chunk.body.size() + 24);
    body.text(chunk.id).text(tail).u64(size).append(chunk.body);
    if (chunk.hasPad) body.zeros((8 - chunk.body.size() % 8) % 8);
  }
  ByteWriter file;
  file.text("riff").text({"\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0", 12});
  file.u64(body.size() + 40).text("wave").text(tail).append(body.bytes());
  return file.bytes();
}

Bytes cafFile(const std::vector<RawChunk>& chunks) {
  ByteWriter file(std::endian::big);
  file.text("caff").u16(1).u16(0);
  for (const RawChunk& chunk : chunks)
    file.text(chunk.id).u64(chunk.statedSize.value_or(chunk.body.size())).append(chunk.body);
  return file.bytes();
}

Bytes waveFormatBody(const WaveFormat& format, std::endian order) {
  const auto bytes = static_cast<std::uint64_t>((format.bits + 7) / 8);
  const std::uint64_t blockAlign =
      format.blockAlign.value_or(static_cast<std::uint16_t>(bytes * format.channels));
  ByteWriter writer(order);
  writer.u16(format.mask ? 0xFFFE : format.tag).u16(format.channels).u32(format.sampleRate);
  writer.u32(format.sampleRate * blockAlign).u16(blockAlign).u16(format.bits);
  if (!format.mask) return writer.bytes();
  writer.u16(22).u16(format.validBits).u32(*format.mask).u16(format.tag);
  if (format.isAmbisonic)
    writer.text({"\0\0\x21\x07\xD3\x11\x86\x44\xC8\xC1\xCA\0\0\0", 14});
  else
    writer.text({"\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14});
  return writer.bytes();
}

Bytes longSizesBody(std::uint64_t riffSize, std::uint64_t dataSize, std::uint64_t frames) {
  return ByteWriter().u64(riffSize).u64(dataSize).u64(frames).u32(0).bytes();
}

Bytes commonBody(int channels, std::uint32_t frames, int bits, double sampleRate,
                 std::string_view compression) {
  ByteWriter writer(std::endian::big);
  writer.u16(static_cast<std::uint64_t>(channels)).u32(frames);
  writer.u16(static_cast<std::uint64_t>(bits)).float80(sampleRate);
  if (!compression.empty()) writer.text(compression).u16(0);
  return writer.bytes();
}

Bytes soundBody(const Bytes& samples, std::uint32_t offset) {
  return ByteWriter(std::endian::big).u32(offset).u32(0).zeros(offset).append(samples).bytes();
}

Bytes cafDescriptionBody(double sampleRate, int channels, const SampleSpec& spec) {
  const std::uint32_t flags =
      (spec.isFloat ? 1U : 0U) | (spec.order == std::endian::little ? 2U : 0U);
  ByteWriter writer(std::endian::big);
  writer.float64(sampleRate).text("lpcm").u32(flags);
  writer.u32(static_cast<std::uint64_t>(spec.bytes * channels)).u32(1);
  writer.u32(static_cast<std::uint64_t>(channels)).u32(static_cast<std::uint64_t>(spec.bits));
  return writer.bytes();
}

Bytes cafDataBody(const Bytes& samples) {
  return ByteWriter(std::endian::big).u32(0).append(samples).bytes();
}

Bytes layoutBody(std::uint32_t tag, std::uint32_t bitmap,
                 const std::vector<std::uint32_t>& labels) {
  ByteWriter writer(std::endian::big);
  writer.u32(tag).u32(bitmap).u32(labels.size());
  for (const std::uint32_t label : labels) writer.u32(label).zeros(16);
  return writer.bytes();
}

Bytes auFile(std::uint32_t encoding, std::uint32_t sampleRate, std::uint32_t channels,
             const Bytes& samples, std::endian order, std::optional<std::uint32_t> statedSize) {
  ByteWriter writer(order);
  writer.text(order == std::endian::big ? ".snd" : "dns.").u32(24);
  writer.u32(statedSize.value_or(static_cast<std::uint32_t>(samples.size())));
  writer.u32(encoding).u32(sampleRate).u32(channels).append(samples);
  return writer.bytes();
}

Bytes waveFile(const WaveFormat& format, const Bytes& samples) {
  return formFile(
      "RIFF", "WAVE",
      {{.id = "fmt ", .body = waveFormatBody(format)}, {.id = "data", .body = samples}});
}

}  // namespace orvane::test
