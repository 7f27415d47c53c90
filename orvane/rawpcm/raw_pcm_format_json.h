#pragma once

#include <nlohmann/json_fwd.hpp>

#include "orvane/platform/export.h"
#include "orvane/rawpcm/raw_pcm_format.h"

namespace orvane {

/// The seven fields under their names; encoding and byte order as their raw values.
ORVANE_API void to_json(nlohmann::json& json, const RawPCMFormat& format);

/// Needs all seven keys, each of its type; whole numbers may be written with a fraction of zero. A
/// rate of null, as a rate that is no number is written, is read as minus infinity. Throws
/// `nlohmann::json::exception`.
ORVANE_API void from_json(const nlohmann::json& json, RawPCMFormat& format);

}  // namespace orvane
