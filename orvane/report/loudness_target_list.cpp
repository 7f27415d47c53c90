#include "orvane/report/loudness_target_list.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <tuple>
#include <utility>
#include <variant>

#include "orvane/text/json/json_coding.h"

namespace orvane {
namespace {

enum class TreatmentKind { compliance, penalty };

std::string_view rawValue(TreatmentKind kind) {
  return kind == TreatmentKind::compliance ? "compliance" : "penalty";
}

std::optional<TreatmentKind> treatmentKindFromRawValue(std::string_view text) {
  for (const auto kind : {TreatmentKind::compliance, TreatmentKind::penalty})
    if (rawValue(kind) == text) return kind;
  return std::nullopt;
}

/// A target as it is written: its treatment lies flat among the other fields.
struct TargetRecord {
  std::optional<std::int64_t> schemaVersion{};
  std::string id{};
  std::string name{};
  core::LoudnessTargetMode mode{};
  core::LoudnessTargetSource source{};
  TreatmentKind treatmentKind{};
  float referenceLUFS = 0;
  std::optional<float> toleranceLU{};
  float truePeakCeilingDBTP = 0;
  std::optional<core::BoostBehaviour> boostBehaviour{};
  std::optional<float> noiseFloorMaxDBRMS{};
  std::optional<float> maxShortTermLUFS{};
  std::optional<float> maxSpeechPercentage{};
  std::optional<std::string> provenance{};
  std::optional<bool> isConfirmed{};
};

}  // namespace

namespace json {

template <>
struct Coding<core::LoudnessTargetMode> {
  static constexpr auto value = core::loudnessTargetModeFromRawValue;
  static constexpr const char* unknown = "is none of music, podcast, vod and broadcast.";
};

template <>
struct Coding<core::LoudnessTargetSource> {
  static constexpr auto value = core::loudnessTargetSourceFromRawValue;
  static constexpr const char* unknown = "is none of integrated, dialogGated and rms.";
};

template <>
struct Coding<core::BoostBehaviour> {
  static constexpr auto value = core::boostBehaviourFromRawValue;
  static constexpr const char* unknown = "is neither symmetric nor turnsDownOnly.";
};

template <>
struct Coding<TreatmentKind> {
  static constexpr auto value = treatmentKindFromRawValue;
  static constexpr const char* unknown = "is neither compliance nor penalty.";
};

ORVANE_JSON_FIELDS(TargetRecord, schemaVersion, id, name, mode, source, treatmentKind,
                   referenceLUFS, toleranceLU, truePeakCeilingDBTP, boostBehaviour,
                   noiseFloorMaxDBRMS, maxShortTermLUFS, maxSpeechPercentage, provenance,
                   isConfirmed);

}  // namespace json

namespace LoudnessTargetList {
namespace {

constexpr std::int64_t kSchemaVersion = 1;
/// What is no finite number is no limit either.
constexpr json::Style kStrict{.mustBeFinite = true};

bool isWord(std::string_view text) {
  const auto belongs = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.';
  };
  return !text.empty() && std::ranges::all_of(text, belongs);
}

/// Throws for a record that no target can be made of.
class Check {
 public:
  Check(json::Reader& reader, const TargetRecord& record) : reader_(reader), record_(record) {}

  void requireIdentity(const std::vector<core::LoudnessTarget>& others) const {
    if (!isWord(record_.id)) refuse("id", "is no word of letters, digits, '-', '_' and '.'.");
    if (core::LoudnessTargetCatalog::target(record_.id) ||
        std::ranges::find(others, record_.id, &core::LoudnessTarget::id) != others.end())
      refuse("id", "is the one of another target.");
    if (record_.name.empty()) refuse("name", "is empty.");
  }

  void requireLimits() const {
    const bool isPenalty = record_.treatmentKind == TreatmentKind::penalty;
    if (isPenalty && !record_.boostBehaviour) reader_.failMissing("boostBehaviour");
    if (!isPenalty && record_.boostBehaviour) refuse("boostBehaviour", "is for penalty targets.");
    const auto requireRule = [&](std::string_view key, const std::optional<float>& limit) {
      if (isPenalty && limit) refuse(key, "is for compliance targets.");
    };
    requireRule("toleranceLU", record_.toleranceLU);
    requireRule("noiseFloorMaxDBRMS", record_.noiseFloorMaxDBRMS);
    requireRule("maxShortTermLUFS", record_.maxShortTermLUFS);
    if (record_.toleranceLU.value_or(0) < 0) refuse("toleranceLU", "is below 0.");
    const float share = record_.maxSpeechPercentage.value_or(100);
    if (share <= 0 || share > 100) refuse("maxSpeechPercentage", "lies outside 0 to 100.");
  }

 private:
  [[noreturn]] void refuse(std::string_view key, const std::string& reason) const {
    const json::Reader::Step step(reader_, key);
    reader_.failCorrupted(reason);
  }

  json::Reader& reader_;
  const TargetRecord& record_;
};

core::LoudnessTarget targetOf(TargetRecord record) {
  core::LoudnessTarget target{.id = std::move(record.id),
                              .name = std::move(record.name),
                              .mode = record.mode,
                              .source = record.source,
                              .treatment = core::ComplianceTreatment{record.toleranceLU},
                              .referenceLUFS = record.referenceLUFS,
                              .truePeakCeilingDBTP = record.truePeakCeilingDBTP,
                              .noiseFloorMaxDBRMS = record.noiseFloorMaxDBRMS,
                              .maxShortTermLUFS = record.maxShortTermLUFS,
                              .maxSpeechPercentage = record.maxSpeechPercentage,
                              .provenance = std::move(record.provenance).value_or(""),
                              .isConfirmed = record.isConfirmed.value_or(true)};
  if (record.boostBehaviour) target.treatment = core::PenaltyTreatment{*record.boostBehaviour};
  return target;
}

/// A misspelt key would be passed over, and a limit with it.
void requireKnownKeys(json::Reader& reader) {
  const auto isKnown = [](std::string_view key) {
    return std::apply([key](const auto&... field) { return ((field.key == key) || ...); },
                      json::Coding<TargetRecord>::fields);
  };
  reader.beginObject();
  while (const auto key = reader.nextKey()) {
    const json::Reader::Step step(reader, *key);
    if (!isKnown(*key)) reader.failCorrupted("is a key that no target has.");
    reader.skipValue();
  }
}

void readTarget(json::Reader& reader, std::vector<core::LoudnessTarget>& targets) {
  TargetRecord record;
  json::readRecord(reader, record);
  const Check check(reader, record);
  check.requireIdentity(targets);
  check.requireLimits();
  targets.push_back(targetOf(std::move(record)));
}

/// Reads the elements of an array, or the one object that stands for it.
template <typename ReadElement>
void forEachElement(std::string_view text, ReadElement readElement) {
  json::Reader reader(text, kStrict);
  std::size_t count = 0;
  if (!reader.isAtArray()) {
    readElement(reader);
    ++count;
  } else {
    reader.beginArray();
    for (; reader.nextElement(); ++count) {
      const json::Reader::Step step(reader, count);
      readElement(reader);
    }
  }
  reader.finish();
  if (count == 0) reader.failCorrupted("holds no target.");
}

}  // namespace

std::vector<core::LoudnessTarget> read(std::string_view text) {
  forEachElement(text, requireKnownKeys);
  std::vector<core::LoudnessTarget> targets;
  forEachElement(text, [&](json::Reader& reader) { readTarget(reader, targets); });
  return targets;
}

std::string text(const core::LoudnessTarget& target, const json::Style& style) {
  const auto* compliance = std::get_if<core::ComplianceTreatment>(&target.treatment);
  TargetRecord record{
      .schemaVersion = kSchemaVersion,
      .id = target.id,
      .name = target.name,
      .mode = target.mode,
      .source = target.source,
      .treatmentKind = compliance != nullptr ? TreatmentKind::compliance : TreatmentKind::penalty,
      .referenceLUFS = target.referenceLUFS,
      .truePeakCeilingDBTP = target.truePeakCeilingDBTP,
      .noiseFloorMaxDBRMS = target.noiseFloorMaxDBRMS,
      .maxShortTermLUFS = target.maxShortTermLUFS,
      .maxSpeechPercentage = target.maxSpeechPercentage,
      .provenance = target.provenance,
      .isConfirmed = target.isConfirmed};
  if (compliance != nullptr)
    record.toleranceLU = compliance->toleranceLU;
  else
    record.boostBehaviour = std::get<core::PenaltyTreatment>(target.treatment).boostBehaviour;
  return json::encode(record, style);
}

}  // namespace LoudnessTargetList
}  // namespace orvane
