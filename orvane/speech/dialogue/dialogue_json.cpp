#include "orvane/speech/dialogue/dialogue_json.h"

#include <chrono>
#include <cmath>
#include <optional>
#include <utility>

#include "orvane/text/json/json_layout.h"
#include "orvane/text/json/json_reader.h"
#include "orvane/text/json/json_writer.h"

namespace orvane::DialogueJSON {
namespace {

using json::Reader;
using json::Writer;

void writeNumber(Writer& writer, double value, const std::string& place) {
  if (!std::isfinite(value)) throw EncodingError(place, "is not a finite number.");
  writer.value(value);
}

void writeDate(Writer& writer, Date date, const std::string& place) {
  using namespace std::chrono;
  constexpr Date kFirst = sys_days(year(0) / January / 1);
  constexpr Date kBehind = sys_days(year(10000) / January / 1);
  if (date < kFirst || date >= kBehind)
    throw EncodingError(place, "lies outside the years 0 to 9999.");
  writer.value(ISO8601Date::text(date));
}

/// The keys of a region happen to have one order by field and another by alphabet; `isSorted`
/// chooses.
void writeRegion(Writer& writer, const DialogueRegion& region, bool isSorted,
                 const std::string& prefix) {
  const auto writeEnd = [&] {
    writer.key("end");
    writeNumber(writer, region.end, prefix + "end");
  };
  const auto writeStart = [&] {
    writer.key("start");
    writeNumber(writer, region.start, prefix + "start");
  };
  const auto writeLabel = [&] {
    if (!region.label) return;
    writer.key("label");
    writer.value(std::string_view(*region.label));
  };
  const auto writeId = [&] {
    writer.key("id");
    writer.value(std::string_view(region.id.text()));
  };
  writer.beginObject();
  if (isSorted) {
    writeEnd();
    writeId();
    writeLabel();
    writeStart();
  } else {
    writeId();
    writeStart();
    writeEnd();
    writeLabel();
  }
  if (region.vadOrigin) {
    writer.key("vadOrigin");
    writer.beginArray();
    writeNumber(writer, region.vadOrigin->lowerBound, prefix + "vadOrigin[0]");
    writeNumber(writer, region.vadOrigin->upperBound, prefix + "vadOrigin[1]");
    writer.endArray();
  }
  writer.endObject();
}

void writeAudioFile(Writer& writer, const DialogueSidecar::AudioFileInfo& audio) {
  writer.beginObject();
  writer.key("durationSeconds");
  writeNumber(writer, audio.durationSeconds, "audioFile.durationSeconds");
  writer.key("filename");
  writer.value(std::string_view(audio.filename));
  writer.key("sampleRate");
  writeNumber(writer, audio.sampleRate, "audioFile.sampleRate");
  writer.endObject();
}

/// The value of a required field, once the whole object is read.
template <typename Value>
Value required(const Reader& reader, std::optional<Value>& value, const char* key) {
  if (!value) reader.failMissing(key);
  return std::move(*value);
}

Date readDate(Reader& reader) {
  const auto date = ISO8601Date::parse(reader.readString());
  if (!date) reader.failCorrupted("is no date of the form 2024-01-31T12:00:00Z.");
  return *date;
}

UUID readUUID(Reader& reader) {
  const auto uuid = UUID::parse(reader.readString());
  if (!uuid) reader.failCorrupted("is no UUID.");
  return *uuid;
}

ClosedTimeRange readRange(Reader& reader) {
  std::vector<double> edges;
  reader.beginArray();
  while (edges.size() < 3 && reader.nextElement()) {
    const Reader::Step step(reader, edges.size());
    edges.push_back(reader.readDouble());
  }
  if (edges.size() != 2) reader.failCorrupted("does not hold two numbers.");
  if (edges[0] > edges[1]) reader.failCorrupted("ends before it starts.");
  return {.lowerBound = edges[0], .upperBound = edges[1]};
}

DialogueRegion readRegion(Reader& reader) {
  std::optional<UUID> id;
  std::optional<double> start;
  std::optional<double> end;
  std::optional<std::string> label;
  std::optional<ClosedTimeRange> vadOrigin;
  reader.beginObject();
  while (const auto key = reader.nextKey()) {
    if (*key == "id") {
      const Reader::Step step(reader, "id");
      id = readUUID(reader);
    } else if (*key == "start") {
      const Reader::Step step(reader, "start");
      start = reader.readDouble();
    } else if (*key == "end") {
      const Reader::Step step(reader, "end");
      end = reader.readDouble();
    } else if (*key == "label") {
      const Reader::Step step(reader, "label");
      if (!reader.skipNull()) label = reader.readString();
    } else if (*key == "vadOrigin") {
      const Reader::Step step(reader, "vadOrigin");
      if (!reader.skipNull()) vadOrigin = readRange(reader);
    } else {
      reader.skipValue();
    }
  }
  // The initialiser would put swapped edges right; what is read stays as it is.
  DialogueRegion region(required(reader, id, "id"), 0, 0, std::move(label), vadOrigin);
  region.start = required(reader, start, "start");
  region.end = required(reader, end, "end");
  return region;
}

std::vector<DialogueRegion> readRegions(Reader& reader) {
  std::vector<DialogueRegion> regions;
  reader.beginArray();
  while (reader.nextElement()) {
    const Reader::Step step(reader, regions.size());
    regions.push_back(readRegion(reader));
  }
  return regions;
}

DialogueSidecar::AudioFileInfo readAudioFile(Reader& reader) {
  std::optional<std::string> filename;
  std::optional<double> durationSeconds;
  std::optional<double> sampleRate;
  reader.beginObject();
  while (const auto key = reader.nextKey()) {
    if (*key == "filename") {
      const Reader::Step step(reader, "filename");
      filename = reader.readString();
    } else if (*key == "durationSeconds") {
      const Reader::Step step(reader, "durationSeconds");
      durationSeconds = reader.readDouble();
    } else if (*key == "sampleRate") {
      const Reader::Step step(reader, "sampleRate");
      sampleRate = reader.readDouble();
    } else {
      reader.skipValue();
    }
  }
  return {.filename = required(reader, filename, "filename"),
          .durationSeconds = required(reader, durationSeconds, "durationSeconds"),
          .sampleRate = required(reader, sampleRate, "sampleRate")};
}

DialogueRegionSource readSource(Reader& reader) {
  const auto source = dialogueRegionSourceFromRawValue(reader.readString());
  if (!source) reader.failCorrupted("is none of \"silero\", \"user-edited\" and \"imported\".");
  return *source;
}

/// What has been met of a sidecar so far.
struct SidecarFields {
  std::optional<std::int64_t> schemaVersion;
  std::optional<std::string> generator;
  std::optional<std::string> generatorVersion;
  std::optional<DialogueSidecar::AudioFileInfo> audioFile;
  std::optional<std::vector<DialogueRegion>> regions;
  std::optional<Date> createdAt;
  std::optional<Date> modifiedAt;
  std::optional<DialogueRegionSource> source;

  void read(Reader& reader, std::string_view key) {
    const auto take = [&](const char* name, auto& field, auto readField) {
      if (key != name) return false;
      const Reader::Step step(reader, name);
      field = readField(reader);
      return true;
    };
    const auto readText = [](Reader& from) { return from.readString(); };
    const auto readInteger = [](Reader& from) { return from.readInteger(); };
    const bool isKnown =
        take("schemaVersion", schemaVersion, readInteger) ||
        take("generator", generator, readText) ||
        take("generatorVersion", generatorVersion, readText) ||
        take("audioFile", audioFile, readAudioFile) || take("regions", regions, readRegions) ||
        take("createdAt", createdAt, readDate) || take("modifiedAt", modifiedAt, readDate) ||
        take("source", source, readSource);
    if (!isKnown) reader.skipValue();
  }

  DialogueSidecar record(const Reader& reader) {
    // In braces, so that the first missing key is the one that is named.
    DialogueSidecar result{required(reader, schemaVersion, "schemaVersion"),
                           required(reader, generator, "generator"),
                           required(reader, generatorVersion, "generatorVersion"),
                           required(reader, audioFile, "audioFile"),
                           {},
                           required(reader, createdAt, "createdAt"),
                           required(reader, modifiedAt, "modifiedAt"),
                           required(reader, source, "source")};
    result.regions = required(reader, regions, "regions");  // past the constructor, which sorts
    return result;
  }
};

}  // namespace

std::string text(const DialogueRegion& region) {
  Writer writer;
  writeRegion(writer, region, false, "");
  return writer.take();
}

DialogueRegion region(std::string_view json) {
  Reader reader(json);
  auto result = readRegion(reader);
  reader.finish();
  return result;
}

std::string text(const DialogueSidecar& sidecar) {
  Writer writer;
  writer.beginObject();
  writer.key("audioFile");
  writeAudioFile(writer, sidecar.audioFile);
  writer.key("createdAt");
  writeDate(writer, sidecar.createdAt, "createdAt");
  writer.key("generator");
  writer.value(std::string_view(sidecar.generator));
  writer.key("generatorVersion");
  writer.value(std::string_view(sidecar.generatorVersion));
  writer.key("modifiedAt");
  writeDate(writer, sidecar.modifiedAt, "modifiedAt");
  writer.key("regions");
  writer.beginArray();
  for (std::size_t i = 0; i < sidecar.regions.size(); ++i)
    writeRegion(writer, sidecar.regions[i], true, "regions[" + std::to_string(i) + "].");
  writer.endArray();
  writer.key("schemaVersion");
  writer.value(sidecar.schemaVersion);
  writer.key("source");
  writer.value(rawValue(sidecar.source));
  writer.endObject();
  return json::prettyPrinted(writer.take());
}

DialogueSidecar sidecar(std::string_view json) {
  Reader reader(json);
  SidecarFields fields;
  reader.beginObject();
  while (const auto key = reader.nextKey()) fields.read(reader, *key);
  auto result = fields.record(reader);
  reader.finish();
  return result;
}

}  // namespace orvane::DialogueJSON
