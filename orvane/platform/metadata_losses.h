#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// What a replaced file had and its replacement could not be given.
struct ORVANE_API MetadataLosses {
  bool owner = false;
  bool group = false;
  bool mode = false;  ///< some rights are gone, never are there more
  bool accessList = false;
  std::vector<std::string> attributes{};  ///< names of extended attributes, as "user.comment"
  std::uint64_t hardLinks = 0;            ///< other names of the file; they keep the old content

  bool operator==(const MetadataLosses&) const = default;

  /// A few words for each, as "the owner" or "the attribute user.comment"; empty if all was kept.
  std::vector<std::string> descriptions() const;
};

}  // namespace orvane
