#pragma once

#include "orvane/rawpcm/raw_pcm_format.h"
#include "orvane/rawpcm/raw_pcm_preset.h"
#include "orvane/text/json/json_coding.h"

// JSON forms of a declared raw format and of a preset.
namespace orvane::json {

template <>
struct Coding<RawPCMFormat::Encoding> {
  static constexpr auto value = rawPCMEncodingFromRawValue;
};

template <>
struct Coding<RawPCMFormat::Endianness> {
  static constexpr auto value = rawPCMEndiannessFromRawValue;
};

ORVANE_JSON_FIELDS(RawPCMFormat, sampleRate, channelCount, encoding, endianness, isPlanar,
                   headerSkipBytes, trailingBytesTolerance);

ORVANE_JSON_FIELDS(RawPCMPreset, id, name, format);

}  // namespace orvane::json
