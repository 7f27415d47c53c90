#include "orvane/container/chunked/broadcast_extension.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace orvane::BroadcastExtension {
namespace {

// EBU Tech 3285 v2, 2.3: the time reference in two halves, the low one first; the version, the
// UMID, then loudness, its range, and the highest true peak, momentary and short-term loudness.
constexpr std::size_t kTimeReference = 338;
constexpr std::size_t kVersion = 346;
constexpr std::size_t kUMID = 348;
constexpr std::size_t kLoudness = 412;
constexpr std::size_t kLoudnessFields = 5;
constexpr std::size_t kBytes = 602;
constexpr std::uint64_t kNotStated = 0x7FFF;
constexpr std::uint16_t kVersionWithLoudness = 2;

using Fields = std::array<std::uint64_t, kLoudnessFields>;

/// Hundredths, rounded half away from zero, as two's complement of 16 bits.
std::uint64_t fieldOf(std::optional<float> figure) {
  constexpr double kMost = 9999;
  if (!figure || !std::isfinite(*figure)) return kNotStated;
  const double hundredths = std::round(100.0 * static_cast<double>(*figure));
  if (std::abs(hundredths) > kMost) return kNotStated;
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(hundredths)) & 0xFFFF;
}

Fields fieldsOf(const BroadcastLoudness& loudness) {
  return {fieldOf(loudness.integratedLUFS), fieldOf(loudness.rangeLU),
          fieldOf(loudness.maxTruePeakDB), fieldOf(loudness.maxMomentaryLUFS),
          fieldOf(loudness.maxShortTermLUFS)};
}

}  // namespace

void follow(ChunkEdits& edits, const std::optional<BroadcastLoudness>& loudness) {
  edits.edit(fourCCFrom("bext"), [&](const HeaderFields& body, HeaderBytes& edited) {
    const std::uint64_t reference =
        std::uint64_t{body.u32(kTimeReference + 4)} << 32U | body.u32(kTimeReference);
    const std::uint64_t moved = edits.frames().movedReference(reference);
    edited.text(body.text(0, kTimeReference)).u32(moved & 0xFFFFFFFF).u32(moved >> 32U);
    const std::uint16_t version = body.u16(kVersion);
    edited.u16(loudness ? std::max(version, kVersionWithLoudness) : version);
    edited.text(body.text(kUMID, kLoudness - kUMID));

    Fields stated{};
    for (std::size_t i = 0; i < stated.size(); ++i) stated[i] = body.u16(kLoudness + 2 * i);
    Fields fields = stated;
    if (loudness)
      fields = fieldsOf(*loudness);
    else if (version >= kVersionWithLoudness)
      fields.fill(kNotStated);
    for (const std::uint64_t field : fields) edited.u16(field);
    edited.text(body.rest(kLoudness + 2 * kLoudnessFields));

    if (moved != reference)
      edits.note("The time reference (bext) is now " +
                 std::to_string(moved > reference ? moved - reference : reference - moved) +
                 (moved > reference ? " frames later" : " frames earlier"));
    if (!loudness && fields != stated)
      edits.note("The loudness stated in bext no longer holds and is unset");
    return true;
  });
}

std::vector<std::byte> stating(const BroadcastLoudness& loudness, std::endian order) {
  HeaderBytes body(order);
  body.text(std::string(kVersion, '\0')).u16(kVersionWithLoudness);
  body.text(std::string(kLoudness - kUMID, '\0'));
  for (const std::uint64_t field : fieldsOf(loudness)) body.u16(field);
  return body.text(std::string(kBytes - body.size(), '\0')).bytes();
}

}  // namespace orvane::BroadcastExtension
