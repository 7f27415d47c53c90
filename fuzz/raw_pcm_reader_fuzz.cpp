// Reads arbitrary bytes under an arbitrary declaration and checks what comes out of it.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

#include "fuzz/require.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"
#include "orvane/rawpcm/raw_pcm_reader.h"
#include "tests/reference/sample_conversion_reference.h"

namespace {

using orvane::RawPCMFormat;

RawPCMFormat declaration(FuzzedDataProvider& provider) {
  RawPCMFormat format;
  format.sampleRate = provider.ConsumeFloatingPoint<double>();
  format.channelCount = provider.ConsumeIntegralInRange<std::int64_t>(-1, 66);
  format.encoding = provider.PickValueInArray(orvane::kAllRawPCMEncodings);
  format.endianness = provider.PickValueInArray(orvane::kAllRawPCMEndiannesses);
  format.isPlanar = provider.ConsumeBool();
  format.headerSkipBytes = provider.ConsumeBool()
                               ? provider.ConsumeIntegralInRange<std::int64_t>(-1, 64)
                               : provider.ConsumeIntegral<std::int64_t>();
  format.trailingBytesTolerance = provider.ConsumeBool()
                                      ? provider.ConsumeIntegralInRange<std::int64_t>(-1, 64)
                                      : provider.ConsumeIntegral<std::int64_t>();
  return format;
}

using orvane::fuzz::require;

/// The file's channel and frame, converted by the readable reference.
float expectedSample(const RawPCMFormat& format, std::span<const std::byte> data,
                     std::int64_t fullFrames, std::int64_t channel, std::int64_t frame) {
  using orvane::SampleEncoding;
  constexpr SampleEncoding kEncodings[] = {
      SampleEncoding::unsignedInteger(1), SampleEncoding::signedInteger(2),
      SampleEncoding::signedInteger(3),   SampleEncoding::low24In32(),
      SampleEncoding::signedInteger(4),   SampleEncoding::floatingPoint(4),
      SampleEncoding::floatingPoint(8)};
  SampleEncoding encoding = kEncodings[static_cast<std::size_t>(format.encoding)];
  encoding.isBigEndian = format.endianness == RawPCMFormat::Endianness::big;
  const std::int64_t sample =
      format.isPlanar ? channel * fullFrames + frame : frame * format.channelCount + channel;
  const std::int64_t offset =
      format.headerSkipBytes + sample * orvane::bytesPerSample(format.encoding);
  return orvane::reference::sampleToFloat(encoding,
                                          data.subspan(static_cast<std::size_t>(offset)).data());
}

void checkBuffer(const orvane::PCMBuffer& buffer, const RawPCMFormat& format,
                 std::span<const std::byte> data, std::optional<std::int64_t> maxFrames) {
  const auto count = format.frameCount(static_cast<std::int64_t>(data.size()));
  require(count.has_value());
  const std::int64_t frames = maxFrames && *maxFrames < *count ? *maxFrames : *count;
  require(buffer.frameLength() == frames && buffer.channelCount() == format.channelCount);
  for (const std::int64_t frame : {std::int64_t{0}, frames / 2, frames - 1})
    for (std::int64_t channel = 0; channel < format.channelCount; ++channel) {
      const float expected = expectedSample(format, data, *count, channel, frame);
      const float* run = buffer.channel(static_cast<std::uint32_t>(channel));
      require(std::memcmp(run + frame, &expected, sizeof expected) == 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider provider(bytes, size);
  const RawPCMFormat format = declaration(provider);
  std::optional<std::int64_t> maxFrames;
  if (provider.ConsumeBool()) maxFrames = provider.ConsumeIntegralInRange<std::int64_t>(-1, 5000);
  const auto payload = provider.ConsumeRemainingBytes<std::uint8_t>();
  const auto data = std::as_bytes(std::span(payload));
  try {
    const auto buffer = orvane::RawPCMReader::read(data, format, maxFrames, {.threadCount = 1});
    checkBuffer(*buffer, format, data, maxFrames);
  } catch (const orvane::RawPCMImportError& error) {
    require(!error.errorDescription().empty());
  }
  // A token made of the same bytes either means nothing or what it says.
  const std::string token(
      payload.begin(),
      payload.begin() + std::min<std::ptrdiff_t>(8, static_cast<std::ptrdiff_t>(payload.size())));
  if (const auto parsed = RawPCMFormat::encodingAndEndianness(token)) {
    RawPCMFormat named = format;
    std::tie(named.encoding, named.endianness) = *parsed;
    require(named.formatToken().size() == token.size());
  }
  return 0;
}
