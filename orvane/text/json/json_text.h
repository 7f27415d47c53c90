#pragma once

#include <string>
#include <string_view>

#include "orvane/platform/export.h"
#include "orvane/text/json/decoding_error.h"
#include "orvane/text/json/encoding_error.h"
#include "orvane/text/json/json_style.h"

namespace orvane {

/// How a record is written and read; defined in the library, for the records whose headers say that
/// they have a JSON form. A record must be exported for this to be.
template <typename Record>
struct ORVANE_API JSONForm {
  static std::string encode(const Record& record, const json::Style& style);
  static Record decode(std::string_view text);
};

/// The record as one JSON object, by default in one line, its keys named and ordered as its fields.
/// Fields without a value are left out, and so are, but for those of report chapters, optional
/// numbers that are not finite; a required number that is not finite is null. Dates are ISO 8601
/// texts, UTC, in whole seconds. Numbers have the shortest digits that read back as the same
/// number. Throws `EncodingError` for a date outside the years 0 to 9999.
template <typename Record>
std::string encodeJSON(const Record& record, const json::Style& style = {}) {
  return JSONForm<Record>::encode(record, style);
}

/// The record that a JSON text holds, keys in any order but none twice. Unknown keys are passed
/// over; a null stands for an absent field, and for minus infinity in a required number and in
/// those of report chapters. Throws `DecodingError`.
template <typename Record>
Record decodeJSON(std::string_view text) {
  return JSONForm<Record>::decode(text);
}

}  // namespace orvane
