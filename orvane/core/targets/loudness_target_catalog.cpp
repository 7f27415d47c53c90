// The delivery specifications. Services change theirs without notice: each row says where its
// figures were found and when, and whether the source is the service or a standards body itself.
#include <algorithm>

#include "orvane/core/targets/loudness_target.h"

namespace orvane::core::LoudnessTargetCatalog {
namespace {

using Mode = LoudnessTargetMode;
using Source = LoudnessTargetSource;

constexpr PenaltyTreatment kUpAndDown{BoostBehaviour::symmetric};
constexpr PenaltyTreatment kDownOnly{BoostBehaviour::turnsDownOnly};

ComplianceTreatment within(float toleranceLU) {
  return {toleranceLU};
}

std::vector<LoudnessTarget> musicTargets() {
  const auto row = [](const char* id, const char* name, PenaltyTreatment treatment, float reference,
                      float ceiling, const char* provenance, bool isConfirmed) {
    return LoudnessTarget{.id = id,
                          .name = name,
                          .mode = Mode::music,
                          .treatment = treatment,
                          .referenceLUFS = reference,
                          .truePeakCeilingDBTP = ceiling,
                          .provenance = provenance,
                          .isConfirmed = isConfirmed};
  };
  constexpr auto kSpotify = "the service's support page, undated, read 2025–26";
  return {
      row("spotify", "Spotify", kUpAndDown, -14, -1, kSpotify, true),
      row("apple-music", "Apple Music", kUpAndDown, -16, -1, "third-party guides, January 2025",
          false),
      row("youtube", "YouTube", kDownOnly, -14, -1, "third-party measurements, 2025", false),
      row("tidal", "TIDAL", kDownOnly, -14, -1, "third-party report, October 2016", false),
      row("spotify-loud", "Spotify Loud", kUpAndDown, -11, -1, kSpotify, true),
      row("spotify-quiet", "Spotify Quiet", kUpAndDown, -19, -1, kSpotify, true),
      row("amazon-music", "Amazon Music", kDownOnly, -14, -2, "third-party guide, 2025", false),
      row("deezer", "Deezer", kDownOnly, -15, -1, "third-party guide, 2026", false),
      row("aes-td1008-music", "AES TD1008 Music", kUpAndDown, -16, -1,
          "AES TD1008 (2021), as quoted by trade press; the ceiling is customary", false),
  };
}

std::vector<LoudnessTarget> podcastTargets() {
  return {
      {.id = "apple-podcasts",
       .name = "Apple Podcasts",
       .mode = Mode::podcast,
       .treatment = within(1),
       .referenceLUFS = -16,
       .truePeakCeilingDBTP = -1,
       .provenance = "third-party guides quoting the service, 2025",
       .isConfirmed = false},
      {.id = "acx",
       .name = "ACX / Audible",
       .mode = Mode::podcast,
       .source = Source::rms,
       .treatment = within(2.5F),
       .referenceLUFS = -20.5F,
       .truePeakCeilingDBTP = -3,
       .noiseFloorMaxDBRMS = -60.0F,
       .provenance = "third-party quotes of the submission requirements, 2025; −23 to −18 dB RMS",
       .isConfirmed = false},
      {.id = "aes-td1008-speech",
       .name = "AES TD1008 Speech",
       .mode = Mode::podcast,
       .source = Source::dialogGated,
       .treatment = within(2),
       .referenceLUFS = -18,
       .truePeakCeilingDBTP = -1,
       .provenance = "AES TD1008 (2021), as quoted by trade press; the ceiling is customary",
       .isConfirmed = false},
      {.id = "prss",
       .name = "PRSS / NPR",
       .mode = Mode::podcast,
       .treatment = within(2),
       .referenceLUFS = -24,
       .truePeakCeilingDBTP = -2,
       .provenance = "third-party copy of the loudness standard, undated",
       .isConfirmed = false},
      {.id = "spotify-podcast",
       .name = "Spotify Podcasts",
       .mode = Mode::podcast,
       .treatment = kUpAndDown,
       .referenceLUFS = -14,
       .truePeakCeilingDBTP = -1,
       .provenance = "common practice, undated",
       .isConfirmed = false},
  };
}

std::vector<LoudnessTarget> vodTargets() {
  return {
      {.id = "netflix",
       .name = "Netflix",
       .mode = Mode::vod,
       .source = Source::dialogGated,
       .treatment = within(2),
       .referenceLUFS = -27,
       .truePeakCeilingDBTP = -2,
       .provenance = "the service's delivery specification, as of 2025"},
      {.id = "netflix-lowdialog",
       .name = "Netflix, little dialogue",
       .mode = Mode::vod,
       .treatment = within(2),
       .referenceLUFS = -24,
       .truePeakCeilingDBTP = -2,
       .maxSpeechPercentage = 15.0F,
       .provenance = "the service's delivery specification, as of 2025"},
      {.id = "prime-video",
       .name = "Prime Video",
       .mode = Mode::vod,
       .source = Source::dialogGated,
       .treatment = within(2),
       .referenceLUFS = -27,
       .truePeakCeilingDBTP = -2,
       .provenance = "third-party copy of the delivery specification, 2025",
       .isConfirmed = false},
      {.id = "hulu",
       .name = "Hulu",
       .mode = Mode::vod,
       .treatment = within(2),
       .referenceLUFS = -24,
       .truePeakCeilingDBTP = -2,
       .provenance = "third-party guide, 2025",
       .isConfirmed = false},
      {.id = "apple-tv",
       .name = "Apple TV+",
       .mode = Mode::vod,
       .source = Source::dialogGated,
       .treatment = within(2),
       .referenceLUFS = -27,
       .truePeakCeilingDBTP = -2,
       .provenance = "conflicting third-party guides, 2025",
       .isConfirmed = false},
  };
}

std::vector<LoudnessTarget> broadcastTargets() {
  const auto row = [](const char* id, const char* name, float reference, float tolerance,
                      float ceiling, const char* provenance, bool isConfirmed = true) {
    return LoudnessTarget{.id = id,
                          .name = name,
                          .mode = Mode::broadcast,
                          .treatment = within(tolerance),
                          .referenceLUFS = reference,
                          .truePeakCeilingDBTP = ceiling,
                          .provenance = provenance,
                          .isConfirmed = isConfirmed};
  };
  constexpr auto kEBU = "EBU R 128 and Tech 3343 v4, November 2023";
  auto shortForm = row("ebu-r128-s1", "EBU R 128 s1 (short-form)", -23, 0.2F, -1,
                       "EBU R 128 s1 and Tech 3343 v4, November 2023");
  shortForm.maxShortTermLUFS = -18.0F;
  auto atsc = row("atsc-a85", "ATSC A/85", -24, 2, -2, "ATSC A/85:2013 (CALM Act)");
  atsc.source = Source::dialogGated;
  auto france = row("fr-csa", "France CSA (adverts)", -23, 1, -3,
                    "CSA 2011-29, July 2011; tolerance and ceiling by custom", false);
  france.maxShortTermLUFS = -20.0F;
  return {
      row("ebu-r128", "EBU R 128", -23, 0.2F, -1, kEBU),
      row("ebu-r128-live", "EBU R 128 (live)", -23, 1, -1, kEBU),
      shortForm,
      atsc,
      row("atsc-a85-programme", "ATSC A/85 (whole programme)", -24, 2, -2,
          "ATSC A/85:2013 (CALM Act), for short-form content by custom", false),
      row("ebu-r128-s3", "EBU R 128 s3 (radio)", -23, 1, -1,
          "EBU R 128 s3 and Tech 3343 v4, November 2023"),
      row("arib-tr-b32", "ARIB TR-B32", -24, 1, -1,
          "ARIB TR-B32 v1.6, March 2025; tolerance and ceiling by custom", false),
      row("freetv-op59", "Free TV OP-59", -24, 1, -2,
          "trade press of 2013; tolerance and ceiling by custom", false),
      row("uk-dpp", "UK DPP", -23, 1, -3, "common practice, undated", false),
      france,
  };
}

}  // namespace

const std::vector<LoudnessTarget>& all() {
  static const std::vector<LoudnessTarget> kTargets = [] {
    std::vector<LoudnessTarget> rows;
    for (auto part : {musicTargets(), podcastTargets(), vodTargets(), broadcastTargets()})
      rows.insert(rows.end(), part.begin(), part.end());
    return rows;
  }();
  return kTargets;
}

std::vector<LoudnessTarget> targets(LoudnessTargetMode mode) {
  std::vector<LoudnessTarget> chosen;
  std::copy_if(all().begin(), all().end(), std::back_inserter(chosen),
               [mode](const LoudnessTarget& candidate) { return candidate.mode == mode; });
  return chosen;
}

std::optional<LoudnessTarget> target(std::string_view id) {
  const auto found = std::find_if(all().begin(), all().end(),
                                  [id](const LoudnessTarget& row) { return row.id == id; });
  if (found == all().end()) return std::nullopt;
  return *found;
}

}  // namespace orvane::core::LoudnessTargetCatalog
