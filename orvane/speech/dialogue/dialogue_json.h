#pragma once

#include <string>
#include <string_view>

#include "orvane/platform/export.h"
#include "orvane/speech/dialogue/dialogue_region.h"
#include "orvane/speech/dialogue/dialogue_sidecar.h"
#include "orvane/text/json/decoding_error.h"
#include "orvane/text/json/encoding_error.h"

/// Dialogue regions and sidecars as JSON (RFC 8259, UTF-8), with keys equal to the field names.
/// Regions leave "label" and "vadOrigin" out when they are absent; "vadOrigin" is an array of its
/// two edges. Dates are ISO 8601, UTC, in whole seconds; UUIDs are written in upper case and read
/// in either. No key may stand there twice; unknown ones
/// are passed over. Numbers must be finite.
namespace orvane::DialogueJSON {

/// One line, keys in the order of the fields. Throws `EncodingError` for a number that is not
/// finite.
ORVANE_API std::string text(const DialogueRegion& region);

/// Throws `DecodingError`. The edges stay as they are written, even in the wrong order.
ORVANE_API DialogueRegion region(std::string_view json);

/// Pretty-printed, keys in alphabetical order at every level. Throws `EncodingError` for a number
/// that is not finite and for a date outside the years 0 to 9999.
ORVANE_API std::string text(const DialogueSidecar& sidecar);

/// Throws `DecodingError`. Any schema version is read; the regions keep their order.
ORVANE_API DialogueSidecar sidecar(std::string_view json);

}  // namespace orvane::DialogueJSON
