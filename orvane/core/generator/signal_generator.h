#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/core/generator/generator_spec.h"
#include "orvane/platform/export.h"

namespace orvane::core::SignalGenerator {

/// The signal, channels × frames. The same specification gives the same bits on every machine.
/// `harmonicCap`, at least 1, is the most partials that a square, saw or triangle wave or a click
/// train has, the missing ones of square and triangle counted; without it they have all that lie
/// below half the sample rate. Takes 4 bytes per sample, for noise and for waves of many partials
/// some more meanwhile. Throws `GeneratorSpecError` as `GeneratorSpec::validate` does.
ORVANE_API std::vector<std::vector<float>> render(
    const GeneratorSpec& spec, std::optional<std::uint32_t> harmonicCap = std::nullopt);

}  // namespace orvane::core::SignalGenerator
