#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/targets/loudness_target.h"
#include "orvane/platform/export.h"
#include "orvane/text/json/decoding_error.h"
#include "orvane/text/json/json_style.h"

/// Delivery targets as JSON, under the names that reports use.
namespace orvane::LoudnessTargetList {

/// The targets of a document that holds one of them or an array. Nothing is passed over: a key that
/// no target has, a limit that its kind of target does not know and an identifier that is another
/// target's, or the catalogue's, throw `DecodingError`, which names the key.
ORVANE_API std::vector<core::LoudnessTarget> read(std::string_view text);

/// One target in one line, as `read` takes it.
ORVANE_API std::string text(const core::LoudnessTarget& target, const json::Style& style = {});

}  // namespace orvane::LoudnessTargetList
