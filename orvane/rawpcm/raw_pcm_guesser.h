#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/rawpcm/raw_pcm_format.h"

/// Proposes how headerless PCM is encoded: audio that is decoded as it was meant is smooth from one
/// sample to the next, by a wrong width or byte order the same bytes turn into noise. Nothing here
/// fails.
///
/// What smoothness cannot tell: noise, and tones above about a tenth of the rate, which are not
/// smooth; quiet 8-bit audio; 32-bit samples so small that their low 24 bits hold them; the
/// rate; one silent channel counts against every encoding. Zeros are silence in all encodings but
/// u8, in which they are loud and smooth: `propose` leaves them out.
namespace orvane::RawPCMGuesser {

struct Candidate {
  RawPCMFormat format{};
  float score = -1;  ///< of the decoded preview, as `lag1Score` gives it

  bool operator==(const Candidate&) const = default;
};

/// How the work is done, beside what is ranked.
struct Execution {
  std::size_t threadCount = 1;  ///< threads of this call, the caller's included
  /// Told of every preview that is scored: the candidate and its decoded audio. Called from the
  /// threads of the call, for several candidates at once.
  std::function<void(const RawPCMFormat&, const PCMBuffer&)> onPreview{};
};

/// The 13 encodings and byte orders at that rate and channel count: interleaved, without
/// tolerance, in the order of `RawPCMFormat::allFormatTokens`. Values that no file can have are
/// taken too; ranking passes them over.
ORVANE_API std::vector<RawPCMFormat> candidateGrid(double sampleRate, std::int64_t channelCount,
                                                   std::int64_t headerSkipBytes);

/// The candidates that fit the file's size and can be decoded, smoothest first and equal ones in
/// the order given; each is judged by that many seconds behind its skip, by one frame at least.
/// Reads no more of the file than the previews. Empty when the file cannot be read. A preview of
/// more frames than 64 bits can count is a programming error.
ORVANE_API std::vector<Candidate> rank(const std::filesystem::path& url,
                                       std::span<const RawPCMFormat> candidates,
                                       double previewSeconds, const Execution& execution = {});

/// The same on the bytes of a file.
ORVANE_API std::vector<Candidate> rank(std::span<const std::byte> data,
                                       std::span<const RawPCMFormat> candidates,
                                       double previewSeconds, const Execution& execution = {});

/// How alike neighbouring samples are: the correlation of each channel with itself one sample
/// later, −1 … +1, in the mean of all channels. A silent channel counts 0. −1 for fewer than 17
/// frames, no channels, and samples that are not finite. Equal, bit for bit, on every machine.
ORVANE_API float lag1Score(const PCMBuffer& buffer);

}  // namespace orvane::RawPCMGuesser
