#pragma once

#include <cstdint>
#include <optional>
#include <variant>

#include "orvane/platform/export.h"
#include "orvane/platform/uuid.h"

/// What becomes of an analysis that ends while the user may have gone on to something else.
namespace orvane::MusicAnalysisLanding {

/// What a host shows at one moment.
struct Capture {
  std::int64_t generation = 0;
  std::int64_t epoch = 0;
  std::optional<UUID> slotID{};

  bool operator==(const Capture&) const = default;
};

/// The result is kept for a slot that is not shown now.
struct StoreForSlot {
  UUID slotID{};

  bool operator==(const StoreForSlot&) const = default;
};
struct Display {
  bool operator==(const Display&) const = default;
};
struct Discard {
  bool operator==(const Discard&) const = default;
};
using Decision = std::variant<StoreForSlot, Display, Discard>;

/// `captured` is what was shown when the analysis began, `current` what is shown at its end.
ORVANE_API Decision decide(const Capture& captured, const Capture& current);

}  // namespace orvane::MusicAnalysisLanding
