#pragma once

#include <string>
#include <vector>

#include "cli/output/json_output.h"
#include "orvane/edit/edit_chain.h"
#include "orvane/edit/programme_levels.h"

/// How edits and what came of them are told.
namespace orvane::cli::EditText {

/// "Fade out, linear: #2784000 to #2880000 (0:58.000 to 1:00.000)".
std::string description(const Edit& edit, double sampleRate);

/// "#2784000 (0:58.000)".
std::string place(std::int64_t frame, double sampleRate);
/// "#2784000 to #2880000 (0:58.000 to 1:00.000)".
std::string range(const FrameRange& frames, double sampleRate);
/// "96,000 frames (0:02.000)".
std::string length(std::int64_t frames, double sampleRate);

/// "Integrated -23.04 → -20.04 LUFS, true peak -3.00 → -0.01 dBTP".
std::string levels(const ProgrammeLevels& before, const ProgrammeLevels& after);

/// Whether the loudness came as close to the target as measuring can tell, to 0.1 LU.
bool isTargetReached(const Normalization& normalization);

/// "Normalized to -23.02 LUFS", and by how much that misses the target.
std::string description(const Normalization& normalization);

/// Adds `edits`: an object each with its `operation` and parameters.
void addEdits(JsonOutput::Document& document, const std::vector<Edit>& edits);

/// Adds `normalizations`: an object each with `targetLUFS`, `ceilingDBTP`, `integratedLUFS`,
/// `limiterPasses` and `isTargetReached`.
void addNormalizations(JsonOutput::Document& document,
                       const std::vector<Normalization>& normalizations);

/// Adds `integratedLUFSBefore`, `integratedLUFSAfter`, `truePeakDBBefore` and `truePeakDBAfter`.
void addLevels(JsonOutput::Document& document, const ProgrammeLevels& before,
               const ProgrammeLevels& after);

}  // namespace orvane::cli::EditText
