#pragma once

#include <cstddef>
#include <vector>

#include "orvane/core/generator/generator_spec.h"

/// A sequence of tones that tells the channels apart: one after another gives as many bursts as its
/// number says, counted from 1. A burst takes 100 ms and is followed by as much silence; 300 ms
/// more pass before the next channel. The sequence is repeated as often as the duration has room
/// for the whole of it. Silent channels are passed over, the others keep their numbers.
namespace orvane::core::ChannelIdent {

/// How long one sequence takes.
double sequenceSeconds(const GeneratorSpec& spec);

std::vector<float> render(const GeneratorSpec& spec, std::size_t channel);

}  // namespace orvane::core::ChannelIdent
